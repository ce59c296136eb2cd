#include "tessera/geometry/Arc.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "tessera/geometry/Line.h"
#include "tessera/geometry/internal/Angles.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/EQ.h"

// The record's axes always stand unturned, (r, 0) and (0, r), so that its parameter is the angle that the
// class speaks of; a record that arrives turned or mirrored is brought into that frame.

namespace Tessera::Geometry {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kMinSagitta = 1e-7; // tolerance over radius below which chords are not counted
constexpr double kEndTol = 1e-10;    // of a relative parameter beyond 0 and 1

KC_CURVE_struct_s* CheckedRecord(KC_CURVE_struct_s* c) {
    if (c == nullptr || c->form != kFormArc)
        Core::ThrowMessage("Input CURVE data structure is not of Arc type");
    return c;
}

/// Axes (r, 0) and (0, r): the record's parameter is the angle from +x.
bool IsUnturned(const EVC_arc_s& arc) {
    return arc.xAxis[0] == arc.radius && arc.xAxis[1] == 0.0 && arc.yAxis[0] == 0.0 &&
           arc.yAxis[1] == arc.radius;
}

/// Half the angle of a chord whose sagitta is q radii.
double HalfChordAngle(double q) {
    const double cosine = 1.0 - q;
    if (std::fabs(cosine) <= 1.0)
        return std::acos(cosine);
    return std::fabs(cosine + 1.0) <= 1e-10 ? kPi : 0.0;
}

} // namespace

Arc::Arc(const Point& start, const Point& end, const Point& centre) {
    double a = ComputeAngleFromPoint(start, centre);
    const double b = ComputeAngleFromPoint(end, centre);
    if (a > b)
        a -= kTwoPi;
    const double position[3] = {centre.x, centre.y, 0.0};
    Install(ev05p0(position, start.Distance(centre), a, b), "Arc::Arc - out of memory");
    UpdateBoundingBox();
}

Arc::Arc(const Point& centre, double radius) {
    const double position[3] = {centre.x, centre.y, 0.0};
    Install(ev05p0(position, radius, 0.0, kTwoPi), "Arc::Arc - out of memory");
    UpdateBoundingBox();
}

Arc::Arc(double centre[3], double radius, double start, double end) {
    Install(ev05p0(centre, radius, start, end), "Arc::Arc - out of memory");
    UpdateBoundingBox();
}

Arc::Arc(KC_CURVE_struct_s* c) {
    Adopt(CheckedRecord(c));
    if (!IsUnturned(ArcData(*c)))
        evcrvNormalizeAxes(c);
}

Arc* Arc::Copy() const {
    return static_cast<Arc*>(Curve::Copy());
}

void Arc::Transform(double m[3][3]) {
    Curve::Transform(m);
    evcrvNormalizeAxes(curve_);
}

// --- Construction through points

double Arc::ComputeAngleFromPoint(const Point& p, const Point& centre) {
    return std::atan2(p.y - centre.y, p.x - centre.x);
}

Point Arc::FindCenter(const Point& a, const Point& b, const Point& c) {
    if (Line::Colinear({a, b, c}, EQ_ask_length_tolerance()))
        Core::ThrowMessage("Cannot create an arc from colinear points");
    // The perpendicular bisectors of a b and b c, each through two of its points.
    Point p0 = (a + b) / 2.0;
    Point p1(p0.x - (b.y - a.y), p0.y + (b.x - a.x));
    Point q0 = (b + c) / 2.0;
    Point q1(q0.x - (c.y - b.y), q0.y + (c.x - b.x));
    Point centre;
    if (!Line::LineLineIntersect(p0, p1, q0, q1, centre))
        Core::ThrowMessage("Arc::FindCenter: center could not be found");
    return centre;
}

Arc* Arc::FromThreePoints(const Point& a, const Point& b, const Point& c) {
    const Point centre = FindCenter(a, b, c);
    auto arc = std::make_unique<Arc>(a, c, centre);
    KC_CURVE_struct_s& record = arc->Record("Arc::FromThreePoints - CURVE cannot be NULL");
    const double angleA = ComputeAngleFromPoint(a, centre);
    double angleB = ComputeAngleFromPoint(b, centre);
    double angleC = ComputeAngleFromPoint(c, centre);
    if (angleB < angleA)
        angleB += kTwoPi;
    if (angleC < angleA)
        angleC += kTwoPi;
    if (angleB > angleC) {
        const EVC_arc_s& data = ArcData(record);
        StoreArc(record, centre, data.radius, data.endAngle, data.startAngle + kTwoPi);
        arc->FlagBoundingBoxForUpdate();
        arc->UpdateBoundingBox();
    }
    return arc.release();
}

int Arc::ComputeNumberOfDisplaySegments(double radius, double sweep, double tol) {
    const double q = tol / radius;
    if (!(q > kMinSagitta))
        return 0;
    const double chordAngle = 2.0 * HalfChordAngle(q);
    // A tolerance beyond the diameter: any chord will do.
    if (!(chordAngle > 0.0))
        return 1;
    const double chords = 1.0 + std::floor(std::fabs(sweep) / chordAngle);
    return chords < std::numeric_limits<int>::max() ? static_cast<int>(chords)
                                                    : std::numeric_limits<int>::max() - 1;
}

// --- Accessors

Point Arc::GetCenter() const {
    return Point(ArcData(Record("Arc::GetCenter - CURVE cannot be NULL")).centre);
}

double Arc::GetRadius() const {
    return ArcData(Record("Arc::GetRadius - CURVE cannot be NULL")).radius;
}

double Arc::GetStartAngle() const {
    return ArcData(Record("getAngle in Arc - CURVE cannot be NULL")).startAngle;
}

double Arc::GetEndAngle() const {
    return ArcData(Record("getAngle in Arc - CURVE cannot be NULL")).endAngle;
}

double Arc::GetAngleFromPoint(const Point& p) const {
    return ComputeAngleFromPoint(p, GetCenter());
}

Point Arc::GetPointFromAngle(double theta) const {
    const EVC_arc_s& data = ArcData(Record("Arc::GetRadius - CURVE cannot be NULL"));
    return {data.centre[0] + data.radius * std::cos(theta), data.centre[1] + data.radius * std::sin(theta)};
}

Point Arc::GetPointFromArcDistance(double s) const {
    return GetPointFromAngle(s / GetRadius());
}

double Arc::GetMidParam() const {
    const double start = GetStartAngle();
    const double end = GetEndAngle();
    if (start <= end + kAngleTol)
        return (start + end) / 2.0;
    return (start + end + kTwoPi) / 2.0 - kTwoPi;
}

double Arc::GetRelativeParam(double theta) const {
    const double start = GetStartAngle();
    double end = GetEndAngle();
    if (start - kAngleTol > end) {
        theta += kTwoPi;
        end += kTwoPi;
    }
    return RelativeAngle(theta, start, end);
}

double Arc::GetParamFromRelativeParam(double u) const {
    if (!(u > -kEndTol && u < 1.0 + kEndTol))
        return 0.0;
    const double start = GetStartAngle();
    const double end = GetEndAngle();
    if (!(start - kAngleTol > end))
        return start + u * (end - start);
    const double theta = start + u * (end + kTwoPi - start);
    return theta > kTwoPi + kAngleTol ? theta - kTwoPi : theta;
}

bool Arc::IsMajorArc() const {
    return GetEndAngle() - GetStartAngle() > kPi + kAngleTol;
}

// --- Measures

double Arc::Length() const {
    const double radius = GetRadius();
    if (IsClosed())
        return kTwoPi * radius;
    double a = GetAngleFromPoint(GetStart());
    const double b = GetAngleFromPoint(GetEnd());
    if (a > b)
        a -= kTwoPi;
    return radius * (b - a);
}

bool Arc::IsZeroLength() const {
    const EVC_arc_s& data = ArcData(Record("Arc::IsZeroLength - CURVE cannot be NULL"));
    const double t = EQ_ask_length_tolerance();
    return data.radius <= t || std::fabs(data.endAngle - data.startAngle) <= t;
}

int Arc::AskNumberOfSampledPoints(double tol) const {
    const double span = std::fabs(GetEndAngle() - GetStartAngle());
    return SamplesOfSweep(ComputeNumberOfDisplaySegments(GetRadius(), span, tol), span, IsClosed());
}

// --- Points against the arc

double Arc::Distance(const Point& p) const {
    return std::fabs(p.Distance(GetCenter()) - GetRadius());
}

Point Arc::Project(const Point& p) const {
    const Point centre = GetCenter();
    Vector direction(centre, p);
    // From the centre every point of the circle is nearest; take the one at angle zero.
    if (!direction.Normalize())
        direction = Vector(1.0, 0.0);
    return centre.AffineCombine(GetRadius(), direction);
}

bool Arc::WithinBounds(const Point& p) const {
    if (IsClosed())
        return true;
    const double a = GetAngleFromPoint(GetStart());
    double b = GetAngleFromPoint(GetEnd());
    double theta = GetAngleFromPoint(p);
    if (SameAngle(theta, a) || SameAngle(theta, b))
        return true;
    if (a > b + kAngleTol) {
        if (theta < b - kAngleTol)
            theta += kTwoPi;
        b += kTwoPi;
    }
    return a + kAngleTol < theta && theta < b - kAngleTol;
}

double Arc::DistanceBounded(const Point& p) const {
    // By the angle from the middle of the sweep, without slack: at the limits both measures agree, and a
    // slack in radians would be a long way along a huge radius. A full turn or more leaves no gap.
    const double middle = 0.5 * (GetStartAngle() + GetEndAngle());
    const double reach = 0.5 * std::fabs(GetEndAngle() - GetStartAngle());
    const Vector direction(std::cos(middle), std::sin(middle));
    const Vector toPoint(GetCenter(), p);
    const double angle = std::atan2(direction.Cross(toPoint), direction.Dot(toPoint));
    if (IsClosed() || std::fabs(angle) <= reach)
        return Distance(p);
    return std::min(p.Distance(GetStart()), p.Distance(GetEnd()));
}

// --- Against other curves

bool Arc::IsSameCurve(const Curve* other) const {
    if (other == this)
        return true;
    if (other == nullptr || other->GetType() != CurveType_Arc)
        return false;
    const auto& arc = static_cast<const Arc&>(*other);
    return GetCenter() == arc.GetCenter() &&
           std::fabs(GetRadius() - arc.GetRadius()) <= EQ_ask_length_tolerance() &&
           SameAngle(GetStartAngle(), arc.GetStartAngle()) && SameAngle(GetEndAngle(), arc.GetEndAngle());
}

void Arc::Intersect(const Curve& other, std::vector<Point>& out) const {
    switch (other.GetType()) {
    case CurveType_Arc:
        IntersectCircle(static_cast<const Arc&>(other), out);
        return;
    case CurveType_Line:
    case CurveType_Ellipse:
    case CurveType_Spline:
        other.Intersect(*this, out);
        return;
    }
    Core::ThrowMessage("Arc::Intersect: Unsupported case");
}

void Arc::IntersectCircle(const Arc& other, std::vector<Point>& out) const {
    const double tolSq = EQ_ask_length_squared_tolerance();
    const Point c1 = GetCenter();
    const double r1 = GetRadius();
    const double r2 = other.GetRadius();
    const Vector v(c1, other.GetCenter());
    const double distanceSq = v.Dot(v);
    const double beyondSum = distanceSq - (r1 + r2) * (r1 + r2);
    if (distanceSq < tolSq || beyondSum > tolSq)
        return;
    if (std::fabs(beyondSum) < tolSq) {
        out.push_back(c1.AffineCombine(r1 / (r1 + r2), v));
        return;
    }
    if (distanceSq - (r1 - r2) * (r1 - r2) < -tolSq)
        return;
    const double d = std::sqrt(distanceSq);
    const double a = (r1 * r1 - r2 * r2 + distanceSq) / (2.0 * d);
    // Circles that touch from inside: rounding may leave the square slightly negative.
    const double h = std::sqrt(std::max(r1 * r1 - a * a, 0.0));
    const Point m = c1.AffineCombine(a / d, v);
    out.emplace_back(m.x + h * v.y / d, m.y - h * v.x / d);
    out.emplace_back(m.x - h * v.y / d, m.y + h * v.x / d);
}

// --- Changes

void Arc::SetCenter(const Point& c) {
    KC_CURVE_struct_s& record = Record("Arc::SetCenter - Curve data cannot be NULL");
    LogForChange();
    StoreArc(record, c, GetRadius(), GetStartAngle(), GetEndAngle());
    FlagBoundingBoxForUpdate();
}

void Arc::SetRadius(double r) {
    KC_CURVE_struct_s& record = Record("Arc::SetRadius - CURVE data does not exist");
    LogForChange();
    StoreArc(record, GetCenter(), r, GetStartAngle(), GetEndAngle());
    FlagBoundingBoxForUpdate();
}

void Arc::SetClosed() {
    KC_CURVE_struct_s& record = Record("Arc::SetClosed - CURVE cannot be NULL");
    LogForChange();
    StoreArc(record, GetCenter(), GetRadius(), 0.0, kTwoPi);
    FlagBoundingBoxForUpdate();
}

void Arc::SetLimits(const Point& a, const Point& b) {
    KC_CURVE_struct_s& record = Record("Arc::SetLimits - Curve data cannot be NULL");
    LogForChange();
    double start = GetAngleFromPoint(a);
    double end = GetAngleFromPoint(b);
    const bool coincide = SameAngle(start, end);
    if (coincide && GetEndAngle() - GetStartAngle() > kPi - kAngleTol) {
        SetClosed();
        return;
    }
    // Coincident limits of a small arc leave nothing of it; rounding must not make them a full turn.
    if (coincide)
        end = start;
    if (start > end)
        start -= kTwoPi;
    if (start < 0.0) {
        start += kTwoPi;
        end += kTwoPi;
    }
    StoreArc(record, GetCenter(), GetRadius(), start, end);
    FlagBoundingBoxForUpdate();
}

} // namespace Tessera::Geometry
