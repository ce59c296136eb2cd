// SketchRecognizer - turns the points of one stroke into analytic curves.
//
// Recognize cuts the stroke where the pen turned or slowed and fits a curve to each piece; where the pieces'
// kinds do not speak for themselves, one curve for the whole stroke takes their place if there is one.
//
// Ownership  the results of a call belong to the caller of GetResults (curve first, then result); neither
//            the next Recognize nor the destructor deletes them.
// Errors     a message thrown inside Recognize is written to standard error; results hold what was found.
#pragma once

#include <memory>
#include <vector>

#include "tessera/core/Export.h"
#include "tessera/geometry/CurveType.h"
#include "tessera/kernel/VexMath.h"
#include "tessera/recognition/RecognizedGeometry.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

class Arc;
class Curve;
class Ellipse;
class Line;
class Spline;
class Stroke;
struct StrokePiece;

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
    /// A closed round shape drawn once or several times over, in either sense: one full circle or ellipse
    /// within the arc or ellipse tolerance, or no result. The pen has gone round by 340 degrees or more, or
    /// by whole turns within periodicAngleThreshold; a single round must end near its start.
    void RecognizePeriodic(Stroke& stroke);
    /// In stroke order; borrowed until the next call that recognises.
    const std::vector<RecognizedGeometry*>& GetResults() { return results_; }

    double AskClosedStrokeTolerance() const;
    /// Length of the whole poly-line.
    double GetStrokeLength() const;

private:
    friend class Stroke;                  ///< the search for cusps
    friend struct SketchRecognizerAccess; ///< tests, the closing of round strokes and the sweeping of crumbs

    // --- Pipeline
    void TakeStroke(const Stroke& stroke);
    void RecognizeInternal(bool segment, CurveType_e type);
    void RecognizeRounds();
    void RecognizeCurve(int first, int last, bool allowSpline, CurveType_e type);
    bool TakePiece(int first, int last, StrokePiece& piece);
    void AppendResult(std::unique_ptr<Curve> curve, const StrokePiece& piece, double maxDev);
    void DeleteRecognizeGeometry(int index);
    void RemoveSmallCurves();

    // --- One curve for all points; caller deletes
    Line* RecognizeSingleLine(int n, Vex::Math::Point2* pts, double* maxDev);
    Arc* RecognizeSingleArc(int n, Vex::Math::Point2* pts, bool full, double closeTol, double* maxDev);
    Ellipse* RecognizeSingleEllipse(int n, Vex::Math::Point2* pts, bool full, double closeTol,
                                    double* maxDev);
    bool CheckEllipse(int n, Vex::Math::Point2* pts, double tol, Ellipse* ellipse);
    Spline* RecognizeSingleSpline(int n, Vex::Math::Point2* pts, double splineTol, double closeTol,
                                  double* maxDev);

    // --- Break points, ascending
    void GetBreaks(std::vector<int>& breaks) const;
    void GetContinuityBreaks(std::vector<int>& breaks, int minGap, double angleDeg, unsigned int k) const;
    void GetSpeedBreaks(std::vector<int>& breaks) const;
    void GetSpeedBreaks2(std::vector<int>& breaks) const;
    void MergeBreakPoints(std::vector<int>& breaks) const;

    // --- Measures of a piece, model units
    /// Line, arc, ellipse and spline tolerance.
    void AskRecognitionTolerances(int first, int last, double tol[4]) const;
    double AskClosedStrokeTolerance(int first, int last) const;
    /// Look-ahead of the tangent tests in samples.
    int AskPointInterval() const;
    /// The segment that ends at `last` is left out.
    double GetStrokeLength(int first, int last) const;

    SketchRecognizerPreferences preferences_;
    std::vector<RecognizedGeometry*> results_;
    std::vector<StrokePoint> points_;
    int wholeStrokeSuppressed_ = 0;
    int strokeId_ = 0;
    std::vector<double> lengthTo_;           ///< along the poly-line, from the first sample to each
    std::vector<Vex::Math::Point2> scratch_; ///< positions of the piece at hand, in its own frame
};

} // namespace Tessera::Geometry
