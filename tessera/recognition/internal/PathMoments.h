// PathMoments - lines and circles through any run of a path's points, each in constant time.
//
// Sums of powers up to the fourth are kept up to each point; the path is centred and of unit size, so the
// differences of these sums keep their digits. Runs may be joined (a side that crosses the start of a closed
// stroke), because sums add.
//
// Sources  K. Pearson, Phil. Mag. 2 (1901) 559-572 (line); G. Taubin, IEEE PAMI 13 (1991) 1115-1138 (circle).
#pragma once

#include <span>
#include <vector>

#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

struct Moments {
    double n = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0, xz = 0, yz = 0, zz = 0; ///< z = x x + y y

    Moments& operator+=(const Moments& m);
    Moments& operator-=(const Moments& m);
    void Add(const Point& p);
};

struct LineFit {
    Point centre;
    Point direction; ///< unit; either sense
    double sumSq = 0.0;
};

struct CircleFit {
    Point centre;
    double radius = 0.0; ///< 0: none
    double sumSq = 0.0;  ///< of the distances, to first order
};

LineFit FitLine(const Moments& m);
/// Without radius for points on a line and fewer than three points.
CircleFit FitCircle(const Moments& m);

class PathMoments {
public:
    explicit PathMoments(std::span<const Point> pts);
    /// Points first to last, both included; empty when last < first.
    Moments Of(int first, int last) const {
        if (last < first)
            return {};
        Moments m = upTo_[static_cast<std::size_t>(last) + 1];
        m -= upTo_[static_cast<std::size_t>(first)];
        return m;
    }
    /// Sum of the points before the given one.
    Point SumBefore(int point) const {
        const Moments& m = upTo_[static_cast<std::size_t>(point)];
        return {m.x, m.y};
    }

private:
    std::vector<Moments> upTo_; ///< of the points before each
};

} // namespace Tessera::Geometry
