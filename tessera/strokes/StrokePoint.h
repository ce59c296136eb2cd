// StrokePoint - one pen sample: position and pen speed.
#pragma once

#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

/// The speed is held in single precision, which keeps a sample at four 64-bit words.
class TESSERA_API StrokePoint : public Point {
public:
    StrokePoint() = default;
    StrokePoint(double px, double py, double speed) : Point(px, py), speed_(static_cast<float>(speed)) {}

    /// Length units per time unit of the input.
    double GetSpeed() const { return speed_; }

private:
    float speed_ = 0.0F;
};

} // namespace Tessera::Geometry
