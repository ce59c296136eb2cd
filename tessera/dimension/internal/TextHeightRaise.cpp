#include "tessera/dimension/internal/TextHeightRaise.h"

#include <cmath>

namespace Tessera::Dimension {
namespace {

constexpr double kBandTolDeg = 1e-10; // degrees

bool IsAt(double angleDeg, double bandDeg) {
    return std::fabs(angleDeg - bandDeg) <= kBandTolDeg;
}

} // namespace

double TextHeightRaise(double angleDeg, double heightOffset, double fontHeight, double tolerance) {
    const bool isLevel = IsAt(angleDeg, 0.0) || IsAt(angleDeg, 180.0) || IsAt(angleDeg, 360.0);
    const bool isFalling = angleDeg > 270.0000000001 && angleDeg < 359.9999999999;
    if (isLevel || isFalling)
        return heightOffset < -tolerance ? -fontHeight : 0.0;
    const bool isRising = angleDeg > 1e-10 && angleDeg < 89.9999999999;
    if (isRising || IsAt(angleDeg, 90.0))
        return heightOffset > tolerance ? fontHeight : 0.0;
    return 0.0;
}

} // namespace Tessera::Dimension
