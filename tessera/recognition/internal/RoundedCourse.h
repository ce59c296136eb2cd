// RoundedCourse - how the pen runs along a rounded outline.
//
// Lengths are counted from the start of a side, piece 0, the way that the pen goes: line, arc, line, arc, and
// so on round by round.
#pragma once

#include <array>
#include <vector>

#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/PricedPath.h"
#include "tessera/recognition/internal/RoundedOutline.h"

namespace Tessera::Geometry {

class RoundedCourse {
public:
    RoundedCourse(const InkPath& path, const RoundedOutline& outline);

    const RoundedOutline& Outline() const { return outline_; }

    double Turns() const { return (run_.back() - run_.front()) / Round(); }
    /// What is missing of one round.
    double Gap() const;
    /// Where a point of the path lies.
    double At(int point) const { return run_[static_cast<std::size_t>(point)]; }
    /// Direction of the outline, radians, counter-clockwise positive.
    double HeadingAt(double length) const;

    /// The outline as the pen drew it, from the piece in which it began. Where the pen came back to that
    /// piece, its ink crosses the start of the path; where it ran to the piece's end, that is the ink, and
    /// what else was drawn of the piece, and beyond it, stands for nothing.
    ExactChain AsChain(const InkPath& path) const;

private:
    double Round() const { return 2.0 * half_; }
    /// Where piece k begins.
    double Joint(int k) const;
    int PieceAt(double length) const;
    /// The last point of the path before it passes a length; its first one if it starts beyond.
    int PointAt(double length) const;
    /// The point of the plane where piece k begins; the middle of the arc that is piece k.
    Point StartOf(int k) const;
    Point TipOf(int k) const;
    Point InPlane(double u, double v) const;
    double AlongOutline(const Point& p) const;

    RoundedOutline outline_;
    std::array<double, 4> joints_; ///< in half a round; of a slot the first two
    int count_;                    ///< pieces in half a round
    double half_;                  ///< its length
    double side_ = 1.0;            ///< -1 for a pen that goes round clockwise: mirrored in the axis
    std::vector<double> run_;      ///< length for each point, growing on from round to round
};

inline constexpr double kMostTurns = 2.2; ///< of the pen: an outline drawn twice

/// The outline of so many numbers that the pen takes this course along.
/// @param sumSq  of the outline, as SumSqFrom tells.
RoundedShape Describe(const PricedPath& ink, const RoundedCourse& course, int numbers, double sumSq);

} // namespace Tessera::Geometry
