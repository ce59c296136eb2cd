// ConstraintInference - which geometric constraints a person meant by a drawn sketch.
//
// In         curves of any kind; nothing is known of a host. Model units, angles in degrees where so named.
// Out        an ordered list of constraints, none redundant and no two in conflict, and a copy of the
//            curves that satisfies all of them with no point moved by the tolerance zone or more.
// Method     Pairs that nearly satisfy a constraint are found by sorting and hashing. Each gets a deviation
//            in units of the spread of a hand; three spreads is the limit. Strongest first, a candidate
//            enters only when its equations raise the rank of the Jacobian of those already in, and when the
//            sketch can be adjusted to satisfy it with them (minimum-motion Gauss-Newton steps).
//            docs/constraints.md tells the whole.
// Errors     thrown as char* texts (see ThrowMessage) before anything is changed.
// Ownership  curves handed in are borrowed for the call; adjusted copies belong to the result.
// Cost       near-linear search; what enters costs what is connected with it, up to 200 curves, and beyond
//            that windows of it, and attempts on the whole within a bound that is linear in the number of
//            curves. A chain of 20 joined lines takes half a millisecond, one of 100 lines in any direction
//            20 milliseconds, one of 1000 half a second.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tessera/core/Export.h"
#include "tessera/recognition/SnapPoint.h"

namespace Tessera::Geometry {

class Curve;

enum ConstraintKind_e : std::int32_t {
    ConstraintKind_Coincident = 0,    ///< two points: ends, or an end and a centre
    ConstraintKind_Horizontal = 1,    ///< a line
    ConstraintKind_Vertical = 2,      ///< a line
    ConstraintKind_Parallel = 3,      ///< two lines
    ConstraintKind_Perpendicular = 4, ///< two lines
    ConstraintKind_Collinear = 5,     ///< two lines
    /// Two curves. Named by ends when they are joined there; a line's end that only lies on a circle is named
    /// with the circle itself; with neither end named they touch wherever they do, on the side that `side`
    /// tells.
    ConstraintKind_Tangent = 6,
    ConstraintKind_Concentric = 7,    ///< two centres
    ConstraintKind_EqualLength = 8,   ///< two lines
    ConstraintKind_EqualRadius = 9,   ///< two arcs or circles
    ConstraintKind_PointOnCurve = 10, ///< a point, then the curve (its carrier)
    ConstraintKind_MidPoint = 11,     ///< a point, then the line's middle
    ConstraintKind_Symmetric = 12     ///< two points, then the axis line
};
inline constexpr int kConstraintKindCount = 13;

/// The bit of a kind in ConstraintOptions::kinds.
constexpr std::uint32_t ConstraintKindBit(ConstraintKind_e kind) {
    return std::uint32_t{1} << static_cast<std::uint32_t>(kind);
}

/// A curve, by its index in the input, or one of its points. SnapPointType_None is the curve itself.
struct SketchElement {
    int curve = 0;
    SnapPointType_e point = SnapPointType_None;
    bool operator==(const SketchElement&) const = default;
};

struct InferredConstraint {
    ConstraintKind_e kind = ConstraintKind_Coincident;
    int elementCount = 0;                    ///< 1 to 3, in the order told at the kind
    std::array<SketchElement, 3> elements{}; ///< places from elementCount on are unused
    /// Tangent without named ends only. Line and circle: +1 when the centre lies left of the line. Two
    /// circles: +1 when each is outside the other, -1 when the second lies inside the first. Else 0.
    int side = 0;
    /// exp(-d^2 / 2), d the deviation in spreads of the curves as drawn, or as given where nothing is known
    /// of the drawing: 1 exact. Curves as given are within three spreads, 0.011; what made them tidy may have
    /// taken them farther from the drawing.
    double confidence = 0.0;
};

struct ConstraintOptions {
    /// Model units, > 0: joined points may lie this far apart, and nothing moves as far. Take it from the
    /// pick radius of the view, or 3 to 4 hundredths of a sketch's size.
    double toleranceZone = 0.0;
    /// Which kinds may be inferred.
    std::uint32_t kinds = (std::uint32_t{1} << kConstraintKindCount) - 1;
    /// Spread (standard deviation) of a hand-drawn line's direction, degrees, > 0. Lines up to three spreads
    /// off are taken for horizontal or vertical.
    double directionSpreadDeg = 1.0;
    /// Spread of the angle at a joint that is meant to be smooth, degrees, > 0. Larger than for lines: the
    /// end tangent of a fitted arc is its least certain part.
    double tangentSpreadDeg = 10.0 / 3.0;
    /// Spread of a length or radius that is meant to equal another, relative, > 0. The difference is also
    /// limited by the tolerance zone.
    double sizeSpread = 0.04;
    /// The first curves, so many, stay as they are: what the others have to fit to. Constraints among
    /// themselves are not inferred.
    int fixedCount = 0;
    /// What the hand drew for the curves, where they have been made tidy since (CurvesAsDrawn): confidences
    /// are told by it. Empty, or one for each curve; null or of another kind: the curve as given. Borrowed.
    std::span<const Curve* const> drawn;
};

struct InferredConstraints {
    /// Strongest first; then what in a large sketch could be satisfied at the end only.
    std::vector<InferredConstraint> constraints;
    std::vector<std::unique_ptr<Curve>> adjusted; ///< one for each curve given, satisfying all constraints
    double largestMotion = 0.0;                   ///< of any point of any curve; below the tolerance zone
};

/// Infers the constraints of a sketch.
///
/// Closed or unclamped splines take no part. Throws "InferConstraints - curve cannot be NULL",
/// "InferConstraints - CURVE cannot be NULL" (a curve without a record), "InferConstraints - tolerance zone
/// must be positive", "InferConstraints - spreads must be positive", "InferConstraints - fixed count is out
/// of range" or "InferConstraints - drawn curves do not match".
TESSERA_API InferredConstraints InferConstraints(std::span<const Curve* const> curves,
                                                 const ConstraintOptions& options);

/// Gives each curve the adjusted geometry; identifiers, display data and dimensions stay. `curves` are those
/// that were given to InferConstraints, in that order. Throws "ApplyConstraints - curves do not match" when
/// number or kinds differ, with nothing changed.
TESSERA_API void ApplyConstraints(const InferredConstraints& inferred, std::span<Curve* const> curves);

} // namespace Tessera::Geometry
