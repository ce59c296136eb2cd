// SmoothForms - ink without corners that neither a chain of lines and arcs nor a round describes best: an
// elliptic arc, or one free form, open or closed.
#pragma once

#include <memory>
#include <optional>

#include "tessera/recognition/internal/Description.h"
#include "tessera/recognition/internal/EllipseEvidence.h"

namespace Tessera::Geometry {

/// Price of an elliptic arc's numbers: five of the ellipse and two ends; but oblongness and rotation are
/// hardly known, one by one.
inline constexpr double kEllipticPrice = 6.0 * kNumberPrice;

struct EllipticArc {
    Point centre;
    double radii[2] = {0.0, 0.0};
    double rotation = 0.0;
    double from = 0.0; ///< parameters, ascending
    double to = 0.0;
    bool isReversed = false; ///< the pen ran from `to` to `from`
    Description description;
};

Point PointOn(const EllipticArc& arc, double parameter);

/// Nothing for ink that goes round nearly whole or runs back, and for an ellipse that is nearly a circle.
std::optional<EllipticArc> FindEllipticArc(const PricedPath& ink, const EllipseEvidence& ellipse);

struct FreeShape {
    std::unique_ptr<Curve> curve; ///< in the path's frame
    bool isClosed = false;
    Description description;
};

/// A B-spline, closed if it may close and the ends meet within the closing tolerance. Looked for only where
/// the rival strays farther from the ink than its kind usually does.
///
/// @param rivalMeanSq  squared distance of the rival from a point of the ink.
std::optional<FreeShape> FindFreeShape(const PricedPath& ink, double rivalMeanSq, RivalKind rival,
                                       bool mayClose);

} // namespace Tessera::Geometry
