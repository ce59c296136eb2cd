// SketchRecognizerAccess - what the closing of round strokes and the tests reach of a recogniser.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/recognition/internal/StrokePiece.h"

namespace Tessera::Geometry {

struct SketchRecognizerAccess {
    SketchRecognizer& recognizer;

    const std::vector<StrokePoint>& Points() const { return recognizer.points_; }
    void SuppressWholeStroke() const { recognizer.wholeStrokeSuppressed_ = 1; }
    bool TakePiece(int first, int last, StrokePiece& piece) const {
        return recognizer.TakePiece(first, last, piece);
    }
    void AppendResult(std::unique_ptr<Curve> curve, const StrokePiece& piece, double maxDev) const {
        recognizer.AppendResult(std::move(curve), piece, maxDev);
    }
    void DeleteResult(int index) const { recognizer.DeleteRecognizeGeometry(index); }
    /// Results of the same stroke in place of the recogniser's own, which are deleted.
    void TakeResultsOf(SketchRecognizer& other) const {
        recognizer.results_.swap(other.results_);
        for (RecognizedGeometry* result : recognizer.results_)
            result->SetStrokeId(recognizer.strokeId_);
        while (!other.results_.empty())
            other.DeleteRecognizeGeometry(0);
    }
    void RemoveSmallCurves() const { recognizer.RemoveSmallCurves(); }

    void GetBreaks(std::vector<int>& breaks) const { recognizer.GetBreaks(breaks); }
    void MergeBreakPoints(std::vector<int>& breaks) const { recognizer.MergeBreakPoints(breaks); }
    void AskRecognitionTolerances(int first, int last, double tol[4]) const {
        recognizer.AskRecognitionTolerances(first, last, tol);
    }
    int AskPointInterval() const { return recognizer.AskPointInterval(); }
    double GetStrokeLength(int first, int last) const { return recognizer.GetStrokeLength(first, last); }
};

} // namespace Tessera::Geometry
