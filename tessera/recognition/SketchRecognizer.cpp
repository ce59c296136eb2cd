// The pipeline: the pieces of the stroke between its break points, the choice between these and the whole
// stroke, and where that falls on the whole one curve for all of it. Break points are found in
// internal/Segmentation, curves in internal/SingleShapes and internal/SplineRecognition.
#include "tessera/recognition/SketchRecognizer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/recognition/internal/FullShape.h"
#include "tessera/recognition/internal/PathLengths.h"
#include "tessera/recognition/internal/RecognitionTolerances.h"
#include "tessera/recognition/internal/ReportErrors.h"
#include "tessera/recognition/internal/Segmentation.h"
#include "tessera/recognition/internal/SingleShapes.h"
#include "tessera/recognition/internal/SplineRecognition.h"
#include "tessera/recognition/internal/StrokePiece.h"
#include "tessera/recognition/internal/WholeStroke.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

constexpr int kContinuityGap = 5;   // samples between two continuity breaks
constexpr double kRoundDeg = 340.0; // turning from which a stroke has gone round
constexpr double kNoLimit = std::numeric_limits<double>::infinity();

void DeleteResult(RecognizedGeometry* result) {
    delete &result->GetResult();
    delete result;
}

} // namespace

SketchRecognizer::SketchRecognizer(int strokeId, const std::vector<StrokePoint>& points)
    : points_(points), strokeId_(strokeId) {
    SumPathLengths(points_, lengthTo_);
}

// --- Pipeline

void SketchRecognizer::Recognize(Stroke& stroke, bool segment, CurveType_e type) {
    ReportErrors([&] {
        TakeStroke(stroke);
        RecognizeInternal(segment, type);
    });
}

void SketchRecognizer::RecognizePeriodic(Stroke& stroke) {
    ReportErrors([&] {
        TakeStroke(stroke);
        RecognizeRounds();
    });
}

// The results of the last call belong to whoever took them. When memory runs out there are neither points nor
// lengths: the two always go together.
void SketchRecognizer::TakeStroke(const Stroke& stroke) {
    results_.clear();
    points_.clear();
    lengthTo_.clear();
    lengthTo_.reserve(stroke.GetPoints().size());
    points_ = stroke.GetPoints();
    strokeId_ = stroke.GetId();
    SumPathLengths(points_, lengthTo_);
}

// The whole stroke counts where the pieces do not speak for themselves: it is fitted only then. Without
// breaks the only piece is the whole stroke.
void SketchRecognizer::RecognizeInternal(bool segment, CurveType_e type) {
    const int last = static_cast<int>(points_.size()) - 1;
    const bool tryWhole = segment && wholeStrokeSuppressed_ == 0;
    StrokePiece whole;
    if (tryWhole && !TakePiece(0, last, whole)) // throws unless all points are finite
        return;
    std::vector<int> breaks;
    if (segment)
        GetBreaks(breaks);
    int start = 0;
    for (const int b : breaks) {
        RecognizeCurve(start, b, true, type);
        start = b;
    }
    RecognizeCurve(start, last, true, type);
    if (!tryWhole || breaks.empty() || !(results_.empty() || IsWholeStrokePreferred(results_)))
        return;
    const std::size_t pieces = results_.size();
    RecognizeCurve(0, last, false, type);
    if (results_.size() > pieces)
        for (std::size_t i = pieces; i-- > 0;)
            DeleteRecognizeGeometry(static_cast<int>(i));
}

void SketchRecognizer::RecognizeCurve(int first, int last, bool allowSpline, CurveType_e type) {
    StrokePiece piece;
    if (!TakePiece(first, last, piece))
        return;
    double maxDev = 0.0;
    std::unique_ptr<Curve> curve;
    if (type <= CurveType_Line)
        curve = RecognizeLine(piece.pts, piece.tol[0], &maxDev);
    if (!curve && type <= CurveType_Arc)
        curve = RecognizeArc(piece.pts, false, piece.closeTol, piece.tol[1], &maxDev);
    if (!curve && type <= CurveType_Ellipse) {
        auto ellipse = RecognizeEllipse(piece.pts, false, piece.tol[2], &maxDev);
        if (ellipse && Geometry::CheckEllipse(piece.pts, piece.tol[2], *ellipse))
            curve = std::move(ellipse);
    }
    if (!curve && allowSpline)
        curve.reset(RecognizeSpline(piece.pts, AskPointInterval(), piece.tol[3], piece.closeTol, &maxDev));
    if (curve)
        AppendResult(std::move(curve), piece, maxDev);
}

// False when there is nothing to fit a curve to.
bool SketchRecognizer::TakePiece(int first, int last, StrokePiece& piece) {
    if (last <= first)
        return false;
    const auto count = static_cast<std::size_t>(last - first) + 1;
    const std::span<const StrokePoint> samples(points_.data() + first, count);
    if (!piece.Normalize(samples, scratch_))
        return false;
    piece.first = first;
    piece.last = last;
    AskRecognitionTolerances(first, last, piece.tol);
    for (double& tol : piece.tol)
        tol /= piece.scale;
    piece.closeTol = AskClosedStrokeTolerance(first, last) / piece.scale;
    return true;
}

void SketchRecognizer::AppendResult(std::unique_ptr<Curve> curve, const StrokePiece& piece, double maxDev) {
    piece.MapBack(*curve);
    auto result =
        std::make_unique<RecognizedGeometry>(*curve, strokeId_, piece.first, piece.last, maxDev, &points_);
    results_.push_back(nullptr);
    results_.back() = result.release();
    static_cast<void>(curve.release()); // now reached through the result
}

void SketchRecognizer::RecognizeRounds() {
    StrokePiece piece;
    if (!TakePiece(0, static_cast<int>(points_.size()) - 1, piece))
        return;
    double maxDev = 0.0;
    std::unique_ptr<Curve> shape = FitFullShape(piece, &maxDev);
    if (!shape)
        return;
    const double windingDeg = std::fabs(WindingAbout(*shape, piece)) * 180.0 / std::numbers::pi;
    const double offWholeTurns = std::fabs(std::remainder(windingDeg, 360.0));
    const bool isRound = windingDeg >= kRoundDeg ||
                         (windingDeg > 180.0 && offWholeTurns <= preferences_.AskPeriodicAngleThreshold());
    // A single round that stops short of its start is open, unless the ends nearly meet.
    const bool isOpen =
        windingDeg < 360.0 && points_.front().Distance(points_.back()) > AskClosedStrokeTolerance();
    if (isRound && !isOpen)
        AppendResult(std::move(shape), piece, maxDev);
}

void SketchRecognizer::DeleteRecognizeGeometry(int index) {
    if (index < 0 || index >= static_cast<int>(results_.size()))
        return;
    RecognizedGeometry* result = results_[static_cast<std::size_t>(index)];
    results_.erase(results_.begin() + index);
    DeleteResult(result);
}

// The limit is measured along the stroke, the length tested is the fitted curve's own.
void SketchRecognizer::RemoveSmallCurves() {
    double longest = 0.0;
    for (const RecognizedGeometry* result : results_)
        longest = std::max(longest, GetStrokeLength(result->GetStartIndex(), result->GetEndIndex()));
    const double limit = SmallCurveLength(longest);
    for (int i = static_cast<int>(results_.size()) - 1; i >= 0; --i)
        if (results_[static_cast<std::size_t>(i)]->GetResult().Length() < limit)
            DeleteRecognizeGeometry(i);
}

// --- One curve for all points

Line* SketchRecognizer::RecognizeSingleLine(int n, Vex::Math::Point2* pts, double* maxDev) {
    return RecognizeLine({pts, static_cast<std::size_t>(n)}, kNoLimit, maxDev).release();
}

Arc* SketchRecognizer::RecognizeSingleArc(int n, Vex::Math::Point2* pts, bool full, double closeTol,
                                          double* maxDev) {
    return RecognizeArc({pts, static_cast<std::size_t>(n)}, full, closeTol, kNoLimit, maxDev).release();
}

// An elliptical arc is not tested against closeTol: its covered sweep decides.
Ellipse* SketchRecognizer::RecognizeSingleEllipse(int n, Vex::Math::Point2* pts, bool full, double,
                                                  double* maxDev) {
    return RecognizeEllipse({pts, static_cast<std::size_t>(n)}, full, kNoLimit, maxDev).release();
}

bool SketchRecognizer::CheckEllipse(int n, Vex::Math::Point2* pts, double tol, Ellipse* ellipse) {
    return Geometry::CheckEllipse({pts, static_cast<std::size_t>(n)}, tol, *ellipse);
}

Spline* SketchRecognizer::RecognizeSingleSpline(int n, Vex::Math::Point2* pts, double splineTol,
                                                double closeTol, double* maxDev) {
    return RecognizeSpline({pts, static_cast<std::size_t>(n)}, AskPointInterval(), splineTol, closeTol,
                           maxDev);
}

// --- Break points

void SketchRecognizer::GetBreaks(std::vector<int>& breaks) const {
    GetContinuityBreaks(breaks, kContinuityGap, preferences_.AskTangentAngleThreshold(),
                        static_cast<unsigned int>(AskPointInterval()));
    std::vector<int> speedBreaks;
    if (preferences_.AskSegmentationScheme() == SketchRecognizerPreferences::SegmentationScheme_Speed1)
        GetSpeedBreaks(speedBreaks);
    else if (preferences_.AskSegmentationScheme() == SketchRecognizerPreferences::SegmentationScheme_Speed2)
        GetSpeedBreaks2(speedBreaks);
    JoinBreaks(static_cast<int>(points_.size()), speedBreaks, breaks);
    MergeBreakPoints(breaks);
}

void SketchRecognizer::GetContinuityBreaks(std::vector<int>& breaks, int minGap, double angleDeg,
                                           unsigned int k) const {
    FindContinuityBreaks(points_, minGap, angleDeg, k, breaks);
}

void SketchRecognizer::GetSpeedBreaks(std::vector<int>& breaks) const {
    FindSlowBreaks(points_, preferences_.AskSpeed1Ratio(), breaks);
}

void SketchRecognizer::GetSpeedBreaks2(std::vector<int>& breaks) const {
    FindVaryingSpeedBreaks(points_, preferences_.AskSpeed2Ratio(), breaks);
}

void SketchRecognizer::MergeBreakPoints(std::vector<int>& breaks) const {
    MergeShortPieces(lengthTo_, breaks);
}

// --- Measures of a piece

void SketchRecognizer::AskRecognitionTolerances(int first, int last, double tol[4]) const {
    RecognitionTolerances(preferences_, GetStrokeLength(first, last), tol);
}

double SketchRecognizer::AskClosedStrokeTolerance(int first, int last) const {
    return ClosedStrokeTolerance(preferences_, GetStrokeLength(first, last));
}

double SketchRecognizer::AskClosedStrokeTolerance() const {
    return AskClosedStrokeTolerance(0, static_cast<int>(points_.size()) - 1);
}

double SketchRecognizer::GetStrokeLength() const {
    return GetStrokeLength(0, static_cast<int>(points_.size()));
}

double SketchRecognizer::GetStrokeLength(int first, int last) const {
    return PieceLength(lengthTo_, first, last);
}

int SketchRecognizer::AskPointInterval() const {
    return PointInterval(points_.size(), preferences_.AskTangentPointInterval());
}

} // namespace Tessera::Geometry
