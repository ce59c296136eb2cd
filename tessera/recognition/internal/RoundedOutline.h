// RoundedOutline - a rectangle whose corners are quarter circles of one radius, as a hand goes round it once.
// A slot is the limit: its sides across have shrunk to nothing.
#pragma once

#include "tessera/recognition/internal/Description.h"
#include "tessera/recognition/internal/InkPath.h"

namespace Tessera::Geometry {

struct RoundedOutline {
    Point centre;
    Point axis;          ///< unit direction of the sides along
    double along = 0.0;  ///< half the length of these, without the corners
    double across = 0.0; ///< the same of the other two
    double radius = 0.0;
    double drift = 0.0; ///< by how much farther out the stroke ends than it starts: the hand's part

    bool IsSlot() const { return across <= 0.0; }
};

/// A closed stroke read as one.
struct RoundedShape {
    RoundedOutline outline;
    Description description;
    double sumSq = 0.0; ///< squared distances, all of them
};

enum class OutlineKind { Slot, Box };

/// Moves an outline towards the least squared distances from the path, in so many evaluations of them; that
/// of a slot without sides across. False where the fit fails or a side shrinks to nothing.
bool FitOutline(const InkPath& path, OutlineKind kind, int evaluations, RoundedOutline& outline);

/// How far along the stroke a point lies, from -1/2 to 1/2: the share of the drift that it has.
inline double ShareOf(const InkPath& path, int point) {
    return static_cast<double>(point) / (path.Size() - 1) - 0.5;
}

/// Squared distances of the path's points from the outline, without tails.
double SumSqFrom(const InkPath& path, const RoundedOutline& outline);

/// The outline turned about its centre onto an axis of the plane, if that lies within the angle; of one with
/// equal sides the diagonals count, too.
void SnapOutline(double snapRad, RoundedOutline& outline);

/// How far the residuals of a slot that was fitted go back, to first order, towards sides across, over its
/// radius: 0 for round ends, towards 1 for square ones, below 0 for pointed ones.
double SquarenessOf(const InkPath& path, const RoundedOutline& slot);

/// The radius that is left of a box that was fitted, to first order, when each side may be bowed: sides bowed
/// outwards make sharp corners look round.
double RadiusOverBows(const InkPath& path, const RoundedOutline& box);

} // namespace Tessera::Geometry
