#include "tessera/recognition/internal/ConstraintDeviation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/SketchGeometry.h"

namespace Tessera::Geometry {

namespace {

/// Two lines compared: each has a spread of its own.
constexpr double kPairSpread = std::numbers::sqrt2;
/// Curves that touch without a joint are held to a sixth of the tolerance zone: a line half a zone inside a
/// circle already crosses it at a clear angle.
constexpr double kTouchSpread = 1.0 / 6.0;

double InDegrees(double radians) {
    return radians * 180.0 / std::numbers::pi;
}

/// Deviations of a constraint's elements in the sketch's present state.
class Measure {
public:
    Measure(const InferredConstraint& c, const SketchParameters& sketch, const ConstraintOptions& options)
        : c_(c), sketch_(sketch), options_(options) {}

    const SketchCurve& CurveAt(int e) const { return sketch_.At(c_.elements[e].curve); }
    const double* Params(int e) const { return sketch_.Of(c_.elements[e].curve); }
    bool IsNamed(int e) const { return c_.elements[e].point != SnapPointType_None; }
    Pair<double> PointAt(int e) const { return SketchPointOf(CurveAt(e), Params(e), c_.elements[e].point); }
    Pair<double> StartOf(int e) const { return {Params(e)[0], Params(e)[1]}; }
    Pair<double> Along(int e) const { return {Params(e)[2] - Params(e)[0], Params(e)[3] - Params(e)[1]}; }
    Pair<double> MiddleOf(int e) const { return StartOf(e) + 0.5 * Along(e); }

    double OfDistance(double d) const { return std::fabs(d) * kDeviationLimit / options_.toleranceZone; }
    /// Angle between the infinite lines along a and b.
    double OfDirections(const Pair<double>& a, const Pair<double>& b, double spreadDeg) const {
        return InDegrees(std::atan2(std::fabs(CrossOf(a, b)), std::fabs(DotOf(a, b)))) / spreadDeg;
    }
    /// A tangent that continues: directions of travel away from the joint are opposite.
    double OfJoint() const {
        Pair<double> a = SketchTangentOf(CurveAt(0), Params(0), c_.elements[0].point);
        Pair<double> b = SketchTangentOf(CurveAt(1), Params(1), c_.elements[1].point);
        if (c_.elements[0].point == c_.elements[1].point)
            b = -1.0 * b;
        return InDegrees(std::atan2(std::fabs(CrossOf(a, b)), DotOf(a, b))) / options_.tangentSpreadDeg;
    }
    double OfSizes(double a, double b) const {
        const double spread =
            std::min(options_.sizeSpread * std::max(a, b), options_.toleranceZone / kDeviationLimit);
        return std::fabs(a - b) / spread;
    }
    double OfTouching() const {
        if (IsNamed(0) && IsNamed(1))
            return OfJoint();
        const Pair<double> centre{Params(1)[0], Params(1)[1]};
        if (IsNamed(0)) {
            const Pair<double> radius = PointAt(0) - centre;
            return OfDirections(Along(0), {-radius.y, radius.x}, options_.tangentSpreadDeg);
        }
        double gap = 0.0;
        if (CurveAt(0).shape == SketchShape::Line)
            gap = c_.side * CrossOf(Along(0), centre - StartOf(0)) / LengthOf(Along(0)) - Params(1)[2];
        else
            gap = LengthOf(centre - StartOf(0)) - (Params(0)[2] + c_.side * Params(1)[2]);
        return std::fabs(gap) / (kTouchSpread * options_.toleranceZone);
    }
    double FromCarrier(const Pair<double>& p, int e) const {
        const double* q = Params(e);
        if (CurveAt(e).shape == SketchShape::Line)
            return OfDistance(CrossOf(Along(e), p - StartOf(e)) / LengthOf(Along(e)));
        const Pair<double> away = p - StartOf(e); // the centre comes first
        const double distance = LengthOf(away);
        if (CurveAt(e).IsCircular())
            return OfDistance(distance - q[2]);
        const Pair<double> u{std::cos(q[4]), std::sin(q[4])};
        const Pair<double> unit{DotOf(away, u) / q[2], CrossOf(u, away) / q[3]};
        const double scale = LengthOf(unit); // 1 on the ellipse; the radial distance is a fair bound
        return OfDistance(scale > 0.0 ? distance * (1.0 - 1.0 / scale) : std::min(q[2], q[3]));
    }
    /// Line e's nearer end from the infinite line `from`, whose direction is uncertain: more so with the
    /// distance.
    double OfOffset(int e, int from) const {
        const Pair<double> towardsStart = StartOf(e) - MiddleOf(from);
        const Pair<double> towardsEnd = towardsStart + Along(e);
        const bool startIsNear = DotOf(towardsStart, towardsStart) < DotOf(towardsEnd, towardsEnd);
        const Pair<double> away = startIsNear ? towardsStart : towardsEnd;
        const double swing = LengthOf(away) * options_.directionSpreadDeg * std::numbers::pi / 180.0;
        return std::fabs(CrossOf(Along(from), away)) / LengthOf(Along(from)) /
               std::hypot(options_.toleranceZone / kDeviationLimit, swing);
    }
    double OfSymmetry() const {
        const Pair<double> axis = Along(2);
        const Pair<double> p = PointAt(0);
        const double across = CrossOf(axis, p - StartOf(2)) / DotOf(axis, axis);
        const Pair<double> mirrored = p - 2.0 * Pair<double>{-across * axis.y, across * axis.x};
        return LengthOf(mirrored - PointAt(1)) / MirrorSpread(LengthOf(p - MiddleOf(2)), options_);
    }

private:
    const InferredConstraint& c_;
    const SketchParameters& sketch_;
    const ConstraintOptions& options_;
};

} // namespace

double ConfidenceOf(double deviation) {
    return std::exp(-0.5 * deviation * deviation);
}

double MirrorSpread(double distanceFromAxisMiddle, const ConstraintOptions& options) {
    // Turning the axis about its middle carries the image twice as far round.
    const double turned =
        2.0 * distanceFromAxisMiddle * options.directionSpreadDeg * std::numbers::pi / 180.0;
    return std::hypot(options.toleranceZone / kDeviationLimit, turned);
}

bool IsKeptByOthers(ConstraintKind_e kind) {
    switch (kind) {
    case ConstraintKind_Horizontal:
    case ConstraintKind_Vertical:
    case ConstraintKind_Parallel:
    case ConstraintKind_Perpendicular:
    case ConstraintKind_Collinear:
    case ConstraintKind_EqualLength:
    case ConstraintKind_EqualRadius:
        return true;
    default:
        return false;
    }
}

double DeviationOf(const InferredConstraint& c, const SketchParameters& sketch,
                   const ConstraintOptions& options) {
    const Measure m(c, sketch, options);
    const double spread = options.directionSpreadDeg;
    switch (c.kind) {
    case ConstraintKind_Coincident:
    case ConstraintKind_Concentric:
    case ConstraintKind_MidPoint:
        return m.OfDistance(LengthOf(m.PointAt(0) - m.PointAt(1)));
    case ConstraintKind_Horizontal:
        return m.OfDirections(m.Along(0), {1.0, 0.0}, spread);
    case ConstraintKind_Vertical:
        return m.OfDirections(m.Along(0), {0.0, 1.0}, spread);
    case ConstraintKind_Parallel:
        return m.OfDirections(m.Along(0), m.Along(1), kPairSpread * spread);
    case ConstraintKind_Perpendicular:
        return m.OfDirections(m.Along(0), {-m.Along(1).y, m.Along(1).x}, kPairSpread * spread);
    case ConstraintKind_Collinear:
        return std::max({m.OfDirections(m.Along(0), m.Along(1), kPairSpread * spread), m.OfOffset(0, 1),
                         m.OfOffset(1, 0)});
    case ConstraintKind_Tangent:
        return m.OfTouching();
    case ConstraintKind_EqualLength:
        return m.OfSizes(LengthOf(m.Along(0)), LengthOf(m.Along(1)));
    case ConstraintKind_EqualRadius:
        return m.OfSizes(m.Params(0)[2], m.Params(1)[2]);
    case ConstraintKind_PointOnCurve:
        return m.FromCarrier(m.PointAt(0), 1);
    case ConstraintKind_Symmetric:
        return m.OfSymmetry();
    }
    return 2.0 * kDeviationLimit;
}

} // namespace Tessera::Geometry
