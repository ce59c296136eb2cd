#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/host/internal/ReferenceDocument.h"

// How far elements are from a constraint, from their curves alone. What does not exist (the end of a circle,
// the radius of a line) answers "nothing", and the error is then infinite.
namespace Tessera::Host {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

/// One member with its element's curve.
struct Member {
    const ElementCurve* element;
    std::int32_t point;

    const Curve& CurveOfMember() const { return *element->curve; }
    bool IsLine() const { return CurveOfMember().GetType() == Geometry::CurveType_Line; }
    bool IsCircular() const { return CurveOfMember().GetType() == Geometry::CurveType_Arc; }
    /// Those of a B-spline may be the same point.
    bool HasEnds() const {
        return !CurveOfMember().IsClosed() || CurveOfMember().GetType() == Geometry::CurveType_Spline;
    }
    bool IsEnd() const { return point == kHostPointStart || point == kHostPointEnd; }
    /// Whether the member names the end at which the curve's parameter is lowest.
    bool IsAtLow() const { return (point == kHostPointStart) != element->endsExchanged; }
    Vector Direction() const { return {CurveOfMember().GetStart(), CurveOfMember().GetEnd()}; }
};

std::optional<Point> CentreOf(const Member& m) {
    if (m.IsCircular()) {
        return static_cast<const Geometry::Arc&>(m.CurveOfMember()).GetCenter();
    }
    if (m.CurveOfMember().GetType() == Geometry::CurveType_Ellipse) {
        return static_cast<const Geometry::Ellipse&>(m.CurveOfMember()).AskCenter();
    }
    return std::nullopt;
}

std::optional<Point> PointOf(const Member& m) {
    switch (m.point) {
    case kHostPointStart:
    case kHostPointEnd:
        if (!m.HasEnds()) {
            return std::nullopt;
        }
        return m.IsAtLow() ? m.CurveOfMember().GetStart() : m.CurveOfMember().GetEnd();
    case kHostPointMid:
        return m.CurveOfMember().GetMidPoint();
    case kHostPointCentre:
        return CentreOf(m);
    default:
        return std::nullopt;
    }
}

double Between(const std::optional<Point>& a, const std::optional<Point>& b) {
    return a && b ? a->Distance(*b) : kInfinite;
}

/// Sine of the angle between two directions as a distance over the shorter extent.
double Turned(const Vector& a, const Vector& b, double extent) {
    const double size = a.Length() * b.Length();
    return size > 0.0 ? std::fabs(a.Cross(b)) / size * extent : kInfinite;
}

double LineError(std::int32_t kind, const Member& a, const Member& b) {
    if (!a.IsLine() || !b.IsLine()) {
        return kInfinite;
    }
    const Vector u = a.Direction();
    const Vector v = b.Direction();
    const double extent = std::min(u.Length(), v.Length());
    switch (kind) {
    case kHostConstraintHorizontal:
        return std::fabs(u.y);
    case kHostConstraintVertical:
        return std::fabs(u.x);
    case kHostConstraintParallel:
        return Turned(u, v, extent);
    case kHostConstraintPerpendicular:
        return Turned({-u.y, u.x}, v, extent);
    case kHostConstraintEqualLength:
        return std::fabs(u.Length() - v.Length());
    default: // collinear
        return std::max(a.CurveOfMember().Distance(b.CurveOfMember().GetStart()),
                        a.CurveOfMember().Distance(b.CurveOfMember().GetEnd()));
    }
}

/// Direction at the named end, or where the curve comes nearest to `near`.
Vector SlopeOf(const Member& m, const Point& near) {
    const Curve& curve = m.CurveOfMember();
    double t = 0.0;
    Point foot;
    Vector slope;
    if (m.IsEnd()) {
        double limits[2];
        curve.AskRange(limits);
        curve.EvaluateAtParameter(m.IsAtLow() ? limits[0] : limits[1], foot, slope);
    } else {
        curve.GetParametersAtPoint(near, 0, t, foot, slope);
    }
    return slope;
}

/// Line and circle, or two circles, that touch somewhere.
double TouchError(const Member& a, const Member& b, int side) {
    if (a.IsLine() == b.IsLine()) {
        if (!a.IsCircular() || !b.IsCircular()) {
            return kInfinite;
        }
        const auto& p = static_cast<const Geometry::Arc&>(a.CurveOfMember());
        const auto& q = static_cast<const Geometry::Arc&>(b.CurveOfMember());
        const double reach =
            side > 0 ? p.GetRadius() + q.GetRadius() : std::fabs(p.GetRadius() - q.GetRadius());
        return std::fabs(p.GetCenter().Distance(q.GetCenter()) - reach);
    }
    const Member& line = a.IsLine() ? a : b;
    const Member& round = a.IsLine() ? b : a;
    if (!round.IsCircular()) {
        return kInfinite;
    }
    const auto& circle = static_cast<const Geometry::Arc&>(round.CurveOfMember());
    const Vector u = line.Direction();
    const Vector toCentre(line.CurveOfMember().GetStart(), circle.GetCenter());
    return std::fabs(u.Cross(toCentre) / u.Length() - side * circle.GetRadius());
}

double TangentError(const Member& a, const Member& b, int side) {
    if (!a.IsEnd() && !b.IsEnd()) {
        return TouchError(a, b, side);
    }
    const std::optional<Point> at = a.IsEnd() ? PointOf(a) : PointOf(b);
    if (!at || (a.IsEnd() && b.IsEnd() && !PointOf(b))) {
        return kInfinite;
    }
    return Turned(SlopeOf(a, *at), SlopeOf(b, *at),
                  std::min(a.CurveOfMember().Length(), b.CurveOfMember().Length()));
}

double RadiusError(const Member& a, const Member& b) {
    if (!a.IsCircular() || !b.IsCircular()) {
        return kInfinite;
    }
    return std::fabs(static_cast<const Geometry::Arc&>(a.CurveOfMember()).GetRadius() -
                     static_cast<const Geometry::Arc&>(b.CurveOfMember()).GetRadius());
}

double SymmetryError(const Member& a, const Member& b, const Member& axis) {
    const std::optional<Point> p = PointOf(a);
    const std::optional<Point> q = PointOf(b);
    if (!p || !q || !axis.IsLine()) {
        return kInfinite;
    }
    const Point foot = axis.CurveOfMember().Project(*p);
    return q->Distance(foot + (foot - *p));
}

} // namespace

double ConstraintError(const HostDocument& document, const HostConstraint2d& constraint) {
    const int expected =
        constraint.kind == kHostConstraintSymmetric                                                  ? 3
        : constraint.kind == kHostConstraintHorizontal || constraint.kind == kHostConstraintVertical ? 1
                                                                                                     : 2;
    if (constraint.memberCount != expected) {
        return kInfinite;
    }
    Member m[3]{};
    for (int i = 0; i < expected; ++i) {
        m[i] = {&document.Find(constraint.members[i].element)->curve, constraint.members[i].point};
    }
    switch (constraint.kind) {
    case kHostConstraintCoincident:
    case kHostConstraintConcentric:
        return Between(PointOf(m[0]), PointOf(m[1]));
    case kHostConstraintHorizontal:
    case kHostConstraintVertical:
        return LineError(constraint.kind, m[0], m[0]);
    case kHostConstraintParallel:
    case kHostConstraintPerpendicular:
    case kHostConstraintCollinear:
    case kHostConstraintEqualLength:
        return LineError(constraint.kind, m[0], m[1]);
    case kHostConstraintTangent:
        return TangentError(m[0], m[1], constraint.side);
    case kHostConstraintEqualRadius:
        return RadiusError(m[0], m[1]);
    case kHostConstraintPointOnCurve: {
        const std::optional<Point> p = PointOf(m[0]);
        return p ? m[1].CurveOfMember().Distance(*p) : kInfinite;
    }
    case kHostConstraintMidPoint:
        return m[1].IsLine() ? Between(PointOf(m[0]), m[1].CurveOfMember().GetMidPoint()) : kInfinite;
    case kHostConstraintSymmetric:
        return SymmetryError(m[0], m[1], m[2]);
    default:
        return kInfinite;
    }
}

} // namespace Tessera::Host
