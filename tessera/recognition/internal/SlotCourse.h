// SlotCourse - how the pen runs along the outline of a slot.
//
// Lengths are counted from the start of a line, piece 0, the way that the pen goes: line, half circle, line,
// half circle, and so on round by round.
#pragma once

#include <algorithm>
#include <numbers>
#include <vector>

#include "tessera/recognition/internal/InkPath.h"
#include "tessera/recognition/internal/SlotShape.h"

namespace Tessera::Geometry {

class SlotCourse {
public:
    SlotCourse(const InkPath& path, const SlotShape& slot);

    double Line() const { return 2.0 * slot_.half; }
    double HalfCircle() const { return std::numbers::pi * slot_.radius; }
    double Outline() const { return 2.0 * (Line() + HalfCircle()); }
    double Turns() const { return (run_.back() - run_.front()) / Outline(); }
    /// What is missing of one round.
    double Gap() const { return std::max(0.0, 1.0 - Turns()) * Outline(); }
    /// Where a point of the path lies.
    double At(int point) const { return run_[static_cast<std::size_t>(point)]; }

    /// Where piece k begins.
    double Joint(int k) const;
    int PieceAt(double length) const;
    /// The last point of the path before it passes a length; its first one if it starts beyond.
    int PointAt(double length) const;
    /// Direction of the outline, radians, counter-clockwise positive.
    double HeadingAt(double length) const;
    /// The point of the plane where piece k begins.
    Point StartOf(int k) const;
    /// The middle of the half circle that is piece k.
    Point TipOf(int k) const;

private:
    Point InPlane(double u, double v) const;
    double AlongOutline(const Point& p) const;

    SlotShape slot_;
    double side_ = 1.0;       // -1 for a pen that goes round clockwise: the outline mirrored in the axis
    std::vector<double> run_; // length for each point, growing on from round to round
};

} // namespace Tessera::Geometry
