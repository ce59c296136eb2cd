// SketchRecognizer - turns the points of one stroke into analytic curves.
//
// Recognize tries the whole stroke as one curve, cuts the stroke where the pen turned or slowed, fits a
// curve to each piece, and keeps whichever reading describes the stroke better.
//
// Ownership  the results of a call belong to the caller of GetResults (curve first, then result); neither
//            the next Recognize nor the destructor deletes them.
// Errors     a message thrown inside Recognize is written to standard error; results hold what was found.
#pragma once

#include <vector>

#include "tessera/core/Export.h"
#include "tessera/geometry/CurveType.h"
#include "tessera/kernel/VexMath.h"
#include "tessera/recognition/RecognizedGeometry.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

class Arc;
class Ellipse;
class Line;
class Spline;
class Stroke;

class TESSERA_API SketchRecognizer {
public:
    SketchRecognizer() = default;
    SketchRecognizer(int strokeId, const std::vector<StrokePoint>& points);
    SketchRecognizer(const SketchRecognizer&) = delete;
    SketchRecognizer& operator=(const SketchRecognizer&) = delete;
    ~SketchRecognizer() = default;

    void SetPreferences(SketchRecognizerPreferences& preferences) { preferences_ = preferences; }
    SketchRecognizerPreferences* AskPreferences() { return &preferences_; }

    /// @param segment  false: one curve for the whole stroke.
    /// @param type     lower bound on the kinds tried (any value up to CurveType_Line tries all).
    void Recognize(Stroke& stroke, bool segment, CurveType_e type);
    void RecognizePeriodic(Stroke& stroke);
    const std::vector<RecognizedGeometry*>& GetResults() { return results_; }

    double AskClosedStrokeTolerance() const;
    /// Length of the whole poly-line.
    double GetStrokeLength() const;

private:
    friend struct SketchRecognizerAccess; ///< tests and the closing of round strokes

    void RecognizeInternal(bool segment, CurveType_e type);
    void RecognizeCurve(int first, int last, bool allowSpline, CurveType_e type);
    Line* RecognizeSingleLine(int n, Vex::Math::Point2* pts, double* maxDev);
    Arc* RecognizeSingleArc(int n, Vex::Math::Point2* pts, bool full, double closeTol, double* maxDev);
    Ellipse* RecognizeSingleEllipse(int n, Vex::Math::Point2* pts, bool full, double closeTol,
                                    double* maxDev);
    bool CheckEllipse(int n, Vex::Math::Point2* pts, double tol, Ellipse* ellipse);
    Spline* RecognizeSingleSpline(int n, Vex::Math::Point2* pts, double splineTol, double closeTol,
                                  double* maxDev);

    void GetBreaks(std::vector<int>& breaks) const;
    void GetContinuityBreaks(std::vector<int>& breaks, int minGap, double angleDeg, unsigned int k) const;
    void GetSpeedBreaks(std::vector<int>& breaks) const;
    void GetSpeedBreaks2(std::vector<int>& breaks) const;
    void MergeBreakPoints(std::vector<int>& breaks) const;

    void RemoveSmallCurves();
    void AskRecognitionTolerances(int first, int last, double tol[4]) const;
    double AskClosedStrokeTolerance(int first, int last) const;
    int AskPointInterval() const;
    double GetStrokeLength(int first, int last) const;
    void DeleteRecognizeGeometry(int index);

    SketchRecognizerPreferences preferences_;
    std::vector<RecognizedGeometry*> results_;
    std::vector<StrokePoint> points_;
    int wholeStrokeSuppressed_ = 0;
    int strokeId_ = 0;
};

} // namespace Tessera::Geometry
