#include "tessera/recognition/ClosedShape.h"

#include <cmath>
#include <iostream>
#include <memory>

#include "tessera/recognition/internal/SingleShapes.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tessera/recognition/internal/StrokePiece.h"

namespace Tessera::Geometry {

namespace {

// The arc tolerance is wide (4 % of the length are an eighth of a circle's diameter), so a circle alone
// would swallow every fat ellipse.
constexpr double kBetterFit = 0.5;    // an ellipse's share of the circle's deviation
constexpr double kOblongRadii = 0.12; // difference of the radii, of the larger one

bool IsOblong(const Ellipse& ellipse) {
    double r1 = 0.0;
    double r2 = 0.0;
    ellipse.AskRadii(r1, r2);
    return std::fabs(r1 - r2) > kOblongRadii * std::max(r1, r2);
}

std::unique_ptr<Curve> FitFullShape(const StrokePiece& piece, double* maxDev) {
    double circleDev = 0.0;
    double ellipseDev = 0.0;
    auto circle = RecognizeArc(piece.pts, true, piece.closeTol, piece.tol[1], &circleDev);
    auto ellipse = RecognizeEllipse(piece.pts, true, piece.tol[2], &ellipseDev);
    if (ellipse && !CheckEllipse(piece.pts, piece.tol[2], *ellipse))
        ellipse.reset();
    if (circle && ellipse && ellipseDev < kBetterFit * circleDev && IsOblong(*ellipse))
        circle.reset();
    *maxDev = circle ? circleDev : ellipseDev;
    if (circle)
        return circle;
    return ellipse;
}

// One spline over samples 0 to last, or nothing.
bool HasOpenQuestion(const std::vector<RecognizedGeometry*>& results, int last) {
    if (results.empty())
        return true;
    const RecognizedGeometry& only = *results.front();
    return results.size() == 1 && only.GetResult().GetType() == CurveType_Spline &&
           only.GetStartIndex() == 0 && only.GetEndIndex() == last;
}

bool TryClose(SketchRecognizer& recognizer) {
    const SketchRecognizerAccess access{recognizer};
    const std::vector<StrokePoint>& points = access.Points();
    const int last = static_cast<int>(points.size()) - 1;
    if (last < 1 || !HasOpenQuestion(recognizer.GetResults(), last) ||
        points.front().Distance(points.back()) > recognizer.AskClosedStrokeTolerance())
        return false;
    StrokePiece piece;
    if (!access.TakePiece(0, last, piece))
        return false;
    double maxDev = 0.0;
    std::unique_ptr<Curve> shape = FitFullShape(piece, &maxDev);
    if (!shape)
        return false;
    access.AppendResult(std::move(shape), piece, maxDev);
    if (recognizer.GetResults().size() > 1)
        access.DeleteResult(0);
    return true;
}

} // namespace

bool CloseRoundStroke(SketchRecognizer& recognizer) {
    try {
        return TryClose(recognizer);
    } catch (const char* message) {
        std::cerr << message << std::endl;
    } catch (...) {
        std::cerr << "unknown error" << std::endl;
    }
    return false;
}

} // namespace Tessera::Geometry
