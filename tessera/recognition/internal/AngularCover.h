// AngularCover - which part of a turn a set of directions covers, without computing or sorting their angles.
//
// Directions fall into 128 bins by a rational stand-in for the angle that grows with it. A bin spans 0.031
// to 0.063 rad, so every gap above 0.126 rad (2 % of a turn) leaves a whole bin empty, and only the
// directions next to empty bins need their true angle.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Tessera::Geometry {

/// Angles in radians, counter-clockwise from start to end; start in [0, 2 pi).
struct AngularRange {
    double start;
    double end;
};

class AngularCover {
public:
    /// Any vector but zero.
    void Add(double x, double y) {
        const double slope = y / (std::fabs(x) + std::fabs(y));
        const double key = x < 0.0 ? 2.0 - slope : (y < 0.0 ? 4.0 + slope : slope); // 0 to 4 per turn
        Bin& bin = bins_[std::min(kBins - 1, static_cast<std::size_t>(key * kBinsPerUnit))];
        if (key < bin.first.key)
            bin.first = {key, x, y};
        if (key > bin.last.key)
            bin.last = {key, x, y};
    }

    /// The turn without its widest gap (the first of equals, counted from angle 0; the gap across angle 0
    /// comes last). A full turn [0, 2 pi] when no gap leaves a bin empty, or when nothing was added.
    AngularRange Covered() const;

private:
    static constexpr std::size_t kBins = 128;
    static constexpr double kBinsPerUnit = kBins / 4.0;

    struct Direction {
        double key;
        double x, y;
    };
    struct Bin {
        Direction first{std::numeric_limits<double>::infinity(), 0.0, 0.0};
        Direction last{-std::numeric_limits<double>::infinity(), 0.0, 0.0};
        bool IsEmpty() const { return last.key < first.key; }
    };
    std::array<Bin, kBins> bins_;
};

} // namespace Tessera::Geometry
