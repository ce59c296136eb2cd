// SmoothForms - ink without corners that neither a chain of lines and arcs nor a round describes best: an
// elliptic arc, or one free form, open or closed.
//
// These compete by the length of their descriptions when the spread of the hand is taken from the ink itself:
// a price for each number, and the logarithm of the mean squared distance for each independent point.
#pragma once

#include <memory>
#include <optional>

#include "tessera/recognition/internal/RoundShape.h"

namespace Tessera::Geometry {

/// How briefly, and how closely, something describes the path.
struct Description {
    int numbers = 0;     ///< parameters
    double meanSq = 0.0; ///< distance of a point, sizes
    double hidden = 0.0; ///< price of what else it takes: corners passed over, poles
};

double LengthOf(const InkPath& path, const Description& description);

/// A chain by its carriers: what is lost by cutting corners off counts, where its pieces end does not.
Description Describe(const PricedPath& ink, const Chain& chain);
Description Describe(const RoundShape& round);

struct EllipticArc {
    Point centre;
    double radii[2] = {0.0, 0.0};
    double rotation = 0.0;
    double from = 0.0; ///< parameters, ascending
    double to = 0.0;
    bool isReversed = false; ///< the pen ran from `to` to `from`
    Description description;
};

/// An elliptic arc that describes the ink more briefly than the rival. Nothing for ink that goes round nearly
/// whole or runs back, and for an ellipse that is nearly a circle.
std::optional<EllipticArc> FindEllipticArc(const PricedPath& ink, const EllipseEvidence& ellipse,
                                           const Description& rival);

/// Whether the chain is one line within the tolerance (sizes) of the ink.
bool IsLoneLine(const PricedPath& ink, const Chain& chain, double tolerance);

enum class RivalKind { Open, Smooth, Closed, Round };

struct FreeShape {
    std::unique_ptr<Curve> curve; ///< in the path's frame
    bool isClosed = false;
    Description description;
};

/// A B-spline that describes the ink more briefly than the rival, closed if it may close and the ends meet
/// within the closing tolerance. Looked for only where the rival strays farther from the
/// ink than its kind usually does.
std::optional<FreeShape> FindFreeShape(const PricedPath& ink, const Description& rival, RivalKind kind,
                                       bool mayClose);

} // namespace Tessera::Geometry
