// The construct list: recognised curves in an intermediate form that both entries share, and the rectangles
// among them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tessera/host/HostGeometry.h"

namespace Tessera::Geometry {
class Curve;
}

namespace Tessera::Host {

enum ConstructKind_e : std::int32_t {
    ConstructKind_Line = 1,         ///< p0 start, p1 end
    ConstructKind_OpenArc = 2,      ///< p0 start, p1 mid point, p2 end
    ConstructKind_Circle = 8,       ///< p0 centre, p1.x radius
    ConstructKind_Ellipse = 16,     ///< p0 centre, p1 major-radius point, p2 minor-radius point
    ConstructKind_EllipticArc = 64, ///< p0 start, p1 end, p2 mid point, p3 centre
    ConstructKind_BSpline = 128     ///< degree, periodic, poles
};

inline constexpr tagGPosition2d kUnsetPosition{kUnsetCoordinate, kUnsetCoordinate};

struct ConstructEntry {
    std::int32_t kind = 0;
    tagGPosition2d p0 = kUnsetPosition;
    tagGPosition2d p1 = kUnsetPosition;
    tagGPosition2d p2 = kUnsetPosition;
    tagGPosition2d p3 = kUnsetPosition;
    std::uint8_t degree = 0;
    std::int32_t periodic = 0; ///< 1: periodic
    std::vector<InputPoint> poles;
    // What only the ink entry's services take.
    std::vector<double> knots;
    std::vector<double> weights;                               ///< empty when all are 1
    tagGPosition2d axes[2] = {kUnsetPosition, kUnsetPosition}; ///< of an elliptic arc: ends of its two axes
    bool endsExchanged = false;                                ///< the curve's end is the entry's start
};
using ConstructList = std::vector<ConstructEntry>;

/// One side of a four-sided shape, in drawing order.
struct SideSegment {
    tagGPosition2d start;
    tagGPosition2d end;
};

/// Corners of an accepted rectangle, in drawing order; corner i joins side i and side i + 1.
struct Rectangle {
    tagGPosition2d corners[4];
};

/// Where rectangles are gathered. Handing one over switches rectangle handling on.
struct RectangleSink {
    std::vector<Rectangle> rectangles;
};

/// Recognises a poly-line and fills the list (cleared first; it stays empty for fewer than two points, for
/// points that are not finite and when nothing is recognised). A null sink switches rectangles off.
/// May throw std::bad_alloc; recognition messages never leave it.
void BuildConstructList(const std::vector<InputPoint>& points, ConstructList& list, RectangleSink* sink);

/// Appends one entry for each curve; none may be of zero length.
void AppendCurvesToConstructList(std::span<const Geometry::Curve* const> curves, ConstructList& list);

/// Whether four sides, in drawing order, form a rectangle worth constructing: every corner within 30 degrees
/// of square and no bow tie. Sides that are exactly parallel are not taken, and coordinates are judged in
/// whole units.
bool IsRectangleCandidate(const SideSegment sides[4]);

/// The rectangle nearest to four sides: one direction for all of them (length-weighted mean), each side
/// through the middle of its segment. Appends its four lines to the list and its corners to the sink.
/// @return 0; 0x80004005 with nothing appended when the sides do not turn the same way round.
std::int32_t AddTesseraRectangleToConstructList(const SideSegment sides[4], ConstructList& list,
                                                RectangleSink& sink);

} // namespace Tessera::Host
