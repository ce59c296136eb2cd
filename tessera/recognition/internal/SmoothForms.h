// SmoothForms - ink without corners that neither a chain of lines and arcs nor a round describes best: an
// elliptic arc, or one free form, open or closed.
#pragma once

#include <memory>
#include <optional>

#include "tessera/recognition/internal/RoundShape.h"

namespace Tessera::Geometry {

/// Mean squared distance of the ink from the carriers of a chain: what is lost by cutting corners off counts.
double MeanSqFrom(const PricedPath& ink, const Chain& chain);

struct EllipticArc {
    Point centre;
    double radii[2] = {0.0, 0.0};
    double rotation = 0.0;
    double from = 0.0; ///< parameters, ascending
    double to = 0.0;
    bool isReversed = false; ///< the pen ran from `to` to `from`
    Description description;
};

/// Nothing for ink that goes round nearly whole or runs back, and for an ellipse that is nearly a circle.
std::optional<EllipticArc> FindEllipticArc(const PricedPath& ink, const EllipseEvidence& ellipse);

/// Whether the chain is one line or arc within the tolerance (sizes) of the ink.
bool IsLoneCurve(const PricedPath& ink, const Chain& chain, double tolerance);

enum class RivalKind { Open, Smooth, Closed, SmoothClosed, Round };

struct FreeShape {
    std::unique_ptr<Curve> curve; ///< in the path's frame
    bool isClosed = false;
    Description description;
};

/// A B-spline, closed if it may close and the ends meet within the closing tolerance. Looked for only where
/// the rival strays farther from the ink than its kind usually does.
///
/// @param rivalMeanSq  squared distance of the rival from a point of the ink.
std::optional<FreeShape> FindFreeShape(const PricedPath& ink, double rivalMeanSq, RivalKind kind,
                                       bool mayClose);

} // namespace Tessera::Geometry
