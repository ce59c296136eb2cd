// InkPath - the pen's path in a frame of its own: evenly spaced points about the origin, of unit size.
//
// All decisions of the interpretation are made in this frame, so that they do not depend on where the ink
// lies, how large it is, which way it is turned, how the device sampled it, or from which end it was drawn.
#pragma once

#include <span>
#include <vector>

#include "tessera/geometry/Point.h"
#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Geometry {

struct InkPath {
    std::vector<Point> pts;     ///< evenly spaced along the ink, about its centroid
    std::vector<double> source; ///< for each point, the sample it lies at (between two samples, a fraction)
    double step = 0.0;          ///< distance along the ink between two points
    double length = 0.0;        ///< of the whole path
    double scale = 1.0;         ///< model units per unit of this frame
    double closingLength = 0.0; ///< of whose length gaps between the ends are shares
    Point origin;               ///< model position of (0, 0)

    int Size() const { return static_cast<int>(pts.size()); }
    /// Of a closed path indices beyond either end go on at the other.
    int Within(int i) const { return i < 0 ? i + Size() : i < Size() ? i : i - Size(); }
    const Point& At(int i) const { return pts[static_cast<std::size_t>(Within(i))]; }
    double Gap() const { return pts.front().Distance(pts.back()); }
    Point ToModel(const Point& p) const { return {origin.x + scale * p.x, origin.y + scale * p.y}; }
    Point FromModel(const Point& p) const { return {(p.x - origin.x) / scale, (p.y - origin.y) / scale}; }
};

/// In units of the drawing's size, the root mean square distance from its centroid. Empty when the samples
/// hold no two different positions, and when they lie so far apart that the size is no number. O(n).
InkPath MakeInkPath(std::span<const InkSample> samples);

/// The path in units that suit its pieces: of a drawing of many (a flight of stairs, the outline of a gear)
/// each is as long then as those of a simple shape, with as many points. The path itself when it has few
/// pieces, or when the ink is too rough or too sparse to tell. O(n).
///
/// The pieces are counted by how much the pen turned, a right angle each, at the widest spacing of points at
/// which corners lie apart from each other.
///
/// A narrow outline of few pieces (a beam, a channel, up to seventeen times as long as it is broad) is
/// brought to units in which its breadth takes eight points: of four, both corners of an end look like one.
/// Lines with a jog are brought to units in which its two corners lie apart.
///
/// @param samples  those that the path was made from.
InkPath FitToPieces(std::span<const InkSample> samples, InkPath path);

/// The first point that lies not before a sample; the last one where none does.
int PointAt(const InkPath& path, int sample);

/// Speed of the pen about each point of a path, of the speed that it exceeds for a quarter of the path.
struct PenPace {
    std::vector<double> wide;  ///< over a few points: the clock of the device is uneven
    std::vector<double> close; ///< from the point before to the one behind; as wide where the clock is coarse
};

/// Empty when the times do not grow from end to end, and when the pen never slows down: these are not the
/// times of a hand.
PenPace PaceAlong(const InkPath& path, std::span<const InkSample> samples);

} // namespace Tessera::Geometry
