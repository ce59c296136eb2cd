// AngleRange - the angles that an arc covers, compared modulo full turns: an arc may run from -225 to -135
// degrees while a point on it comes at 180. Radians.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessera::Dimension {

inline constexpr double kTurn = 2.0 * std::numbers::pi;
inline constexpr double kDegPerRad = 57.29577951308232;
inline constexpr double kAngleTol = 1e-10; // angles closer than this are equal

/// The angle plus whole turns, within half a turn of the reference; as it is when it lies there already.
inline double NearestTurn(double angle, double reference) {
    return angle - kTurn * std::round((angle - reference) / kTurn);
}

struct AngleRange {
    double start;
    double end; // start <= end

    double Sweep() const { return end - start; }
    double Mid() const { return (start + end) / 2.0; }
    /// Ends included.
    bool Contains(double angle) const {
        return std::fabs(NearestTurn(angle, Mid()) - Mid()) <= Sweep() / 2.0 + kAngleTol;
    }
    /// The nearer end for an angle outside.
    double Clamp(double angle) const { return std::clamp(NearestTurn(angle, Mid()), start, end); }
    /// How far to turn counter-clockwise from an angle outside to the start, and from the end to that angle.
    double BeforeStart(double angle) const { return Forward(start - angle); }
    double BeyondEnd(double angle) const { return Forward(angle - end); }

private:
    static double Forward(double turn) { return turn - kTurn * std::floor(turn / kTurn); }
};

} // namespace Tessera::Dimension
