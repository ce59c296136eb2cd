#include "tessera/recognition/internal/FullShape.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/SingleShapes.h"

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

} // namespace

std::unique_ptr<Curve> FitFullShape(const StrokePiece& piece, double* maxDev) {
    double circleDev = 0.0;
    double ellipseDev = 0.0;
    auto circle = RecognizeArc(piece.pts, true, piece.closeTol, piece.tol[1], &circleDev);
    // Beside a circle a better ellipse alone counts.
    const double limit = circle ? std::min(piece.tol[2], kBetterFit * circleDev) : piece.tol[2];
    auto ellipse = RecognizeEllipse(piece.pts, true, limit, &ellipseDev);
    if (ellipse && !CheckEllipse(piece.pts, piece.tol[2], *ellipse))
        ellipse.reset();
    if (circle && !(ellipse && ellipseDev < kBetterFit * circleDev && IsOblong(*ellipse))) {
        *maxDev = circleDev;
        return circle;
    }
    *maxDev = ellipseDev;
    return ellipse;
}

double WindingAbout(const Curve& shape, const StrokePiece& piece) {
    const Point centre = shape.GetType() == CurveType_Arc ? static_cast<const Arc&>(shape).GetCenter()
                                                          : static_cast<const Ellipse&>(shape).AskCenter();
    double winding = 0.0;
    for (std::size_t i = 1; i < piece.pts.size(); ++i) {
        const Point from(piece.pts[i - 1].x - centre.x, piece.pts[i - 1].y - centre.y);
        const Point to(piece.pts[i].x - centre.x, piece.pts[i].y - centre.y);
        winding += SignedAngle(from, to);
    }
    return winding;
}

} // namespace Tessera::Geometry
