// The reflection across a line: it needs points, which core does not know.
#include "tessera/core/NumericHelpers.h"
#include "tessera/geometry/Point.h"
#include "tessera/geometry/Vector.h"

namespace Tessera::Core {

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes the points by value
void ComposeMirrorTransform(Geometry::Point a, Geometry::Point b, double M[3][3]) {
    ComposeIdentityTransform(M);
    Geometry::Vector u(a, b);
    if (!u.Normalize()) {
        return; // coincident points name no line: nothing is reflected
    }
    // rotate(u) diag(1, -1) rotate(u)^-1, then the translation that keeps a in place.
    const double cosTwice = u.x * u.x - u.y * u.y;
    const double sinTwice = 2.0 * u.x * u.y;
    M[0][0] = cosTwice;
    M[0][1] = sinTwice;
    M[1][0] = sinTwice;
    M[1][1] = -cosTwice;
    M[0][2] = a.x - (cosTwice * a.x + sinTwice * a.y);
    M[1][2] = a.y - (sinTwice * a.x - cosTwice * a.y);
}

} // namespace Tessera::Core
