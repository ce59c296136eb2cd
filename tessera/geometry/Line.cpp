#include "tessera/geometry/Line.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/internal/BoundedLine.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/VEC2.h"

// Every operation works on the two ends read from the record; nothing here allocates except what is returned.

namespace Tessera::Geometry {
namespace {

constexpr double kParallelSine = 1e-7;    // sine of the angle between parallel lines
constexpr double kOnLineTol = 1e-10;      // least length of a direction and slack of the cosine in OnLine
constexpr double kMinDeterminant = 1e-10; // sine below which lines have no intersection
constexpr double kTangentTol = 1e-10;     // discriminant of a line that touches a circle; model units^4

KC_CURVE_struct_s* CheckedRecord(KC_CURVE_struct_s* c) {
    if (c == nullptr || c->form != kFormLine)
        Core::ThrowMessage("Input CURVE data structure is not of Line type");
    return c;
}

KC_CURVE_struct_s* MakeRecord(const Point& start, const Point& end) {
    const double from[3] = {start.x, start.y, 0.0};
    const double to[3] = {end.x, end.y, 0.0};
    return ev03p0(from, to);
}

/// Normal of a line, of unit length unless the line has none.
Vector Normal(const Point& start, const Point& end) {
    Vector n(end.y - start.y, start.x - end.x);
    n.Normalize();
    return n;
}

Vector Unit(const Vector& v) {
    const Vex::Math::Vector2 given = {v.x, v.y};
    Vex::Math::Vector2 unit = {0.0, 0.0};
    double length = 0.0;
    VEC2_unitize(&given, kOnLineTol, &length, &unit);
    return {unit.x, unit.y};
}

} // namespace

Line::Line(const Point& start, const Point& end) {
    Install(MakeRecord(start, end), "Line::Line - out of memory");
    UpdateBoundingBox();
    UpdateCachedBasePoint();
}

Line::Line(const Point& start, double length, double angle)
    : Line(start, Point(start.x + length * std::cos(angle), start.y + length * std::sin(angle))) {}

Line::Line(KC_CURVE_struct_s* c) {
    Adopt(CheckedRecord(c));
    UpdateCachedBasePoint();
}

Line* Line::Copy() const {
    return static_cast<Line*>(Curve::Copy());
}

void Line::Transform(double m[3][3]) {
    Curve::Transform(m);
    UpdateCachedBasePoint();
}

bool Line::Replace(Core::TaggedObject* other) {
    if (!Curve::Replace(other))
        return false;
    const auto& line = static_cast<const Line&>(*other);
    reflectCenterLine_ = line.reflectCenterLine_;
    cachedBasePoint_ = line.cachedBasePoint_;
    return true;
}

void Line::SetIsReflectCenterLine(bool value) {
    LogForChange();
    reflectCenterLine_ = value;
}

void Line::UpdateCachedBasePoint() {
    cachedBasePoint_ = Bisect();
}

// --- Measures

Vector Line::GetDirection() const {
    return Vector(LineData(Record("Line::GetDirection - CURVE is NULL")).direction);
}

double Line::Length() const {
    return GetStart().Distance(GetEnd());
}

bool Line::IsZeroLength() const {
    const double t = EQ_ask_length_tolerance();
    const double* d = LineData(Record("Line::IsZeroLength - CURVE is NULL")).direction;
    return std::fabs(d[0]) <= t && std::fabs(d[1]) <= t;
}

bool Line::IsHorizontal() const {
    return std::fabs(GetStart().y - GetEnd().y) <= EQ_ask_length_tolerance();
}

bool Line::IsVertical() const {
    return std::fabs(GetStart().x - GetEnd().x) <= EQ_ask_length_tolerance();
}

bool Line::IsParallel(const Line* other) const {
    if (other == nullptr)
        return false;
    Vector u = GetDirection();
    Vector v = other->GetDirection();
    return u.Normalize() && v.Normalize() && std::fabs(u.Cross(v)) <= kParallelSine;
}

double Line::AngleBetween(const Line& other) const {
    return GetDirection().AngleBetween(other.GetDirection());
}

Point Line::Bisect() const {
    return (GetStart() + GetEnd()) / 2.0;
}

Line* Line::Perpendicular(const Point& p) const {
    const Point d = GetEnd() - GetStart();
    return new Line(p, Point(p.x - d.y, p.y + d.x));
}

int Line::AskNumberOfSampledPoints(double /*tol*/) const {
    return 2;
}

// --- Points against the line

double Line::Distance(const Point& p) const {
    const Point start = GetStart();
    return std::fabs(Normal(start, GetEnd()).Dot(Vector(start, p)));
}

Point Line::Project(const Point& p) const {
    return BoundedLine(GetStart(), GetEnd()).Project(p);
}

double Line::DistanceBounded(const Point& p) const {
    return BoundedLine(GetStart(), GetEnd()).Distance(p);
}

bool Line::WithinBounds(const Point& p) const {
    const Point start = GetStart();
    const Point end = GetEnd();
    if (Vector(start, end).Dot(Vector(start, p)) < -BoundedLine::kBoundsTol)
        return false;
    return p.Distance(start) <= start.Distance(end) + BoundedLine::kBoundsTol;
}

bool Line::OnLine(const Point& p) const {
    const Point start = GetStart();
    const Vector u = Unit(Vector(start, GetEnd()));
    const Vector v = Unit(Vector(start, p));
    return std::fabs(std::fabs(u.Dot(v)) - 1.0) <= kOnLineTol;
}

// --- Against other curves

bool Line::IsSameCurve(const Curve* other) const {
    if (other == this)
        return true;
    if (other == nullptr || other->GetType() != CurveType_Line)
        return false;
    return GetStart() == other->GetStart() && GetEnd() == other->GetEnd();
}

void Line::Intersect(const Curve& other, std::vector<Point>& out) const {
    switch (other.GetType()) {
    case CurveType_Line: {
        Point p0 = GetStart();
        Point p1 = GetEnd();
        Point q0 = other.GetStart();
        Point q1 = other.GetEnd();
        Point hit;
        if (LineLineIntersect(p0, p1, q0, q1, hit))
            out.push_back(hit);
        return;
    }
    case CurveType_Arc:
        IntersectCircle(static_cast<const Arc&>(other), out);
        return;
    case CurveType_Ellipse:
    case CurveType_Spline:
        other.Intersect(*this, out);
        return;
    }
    Core::ThrowMessage("Line::Intersect: Unsupported case");
}

void Line::IntersectCircle(const Arc& arc, std::vector<Point>& out) const {
    if (IsZeroLength())
        return;
    const Point start = GetStart();
    const Vector d = GetDirection();
    const double r = arc.GetRadius();
    const Vector toStart(arc.GetCenter(), start);
    const double a = d.Dot(d);
    const double b = 2.0 * toStart.Dot(d);
    const double c = toStart.Dot(toStart) - r * r;
    const double discriminant = b * b - 4.0 * a * c;
    if (discriminant < 0.0)
        return;
    const double root = std::sqrt(discriminant);
    out.push_back(start.AffineCombine((root - b) / (2.0 * a), d));
    if (!(std::fabs(discriminant) < kTangentTol))
        out.push_back(start.AffineCombine((-b - root) / (2.0 * a), d));
}

void Line::SetLimits(const Point& a, const Point& b) {
    EVC_line_s& data = LineData(Record("Line::SetLimits - CURVE data cannot be NULL"));
    LogForChange();
    Point base = Project(a);
    Point tip = Project(b);
    if (Vector(base, tip).Dot(GetDirection()) < 0.0)
        std::swap(base, tip);
    data = {{base.x, base.y, 0.0}, {tip.x - base.x, tip.y - base.y, 0.0}};
    FlagBoundingBoxForUpdate();
}

bool Line::Merge(std::unordered_set<Curve*> curves) {
    LogForChange();
    std::vector<Point> ends = {GetStart(), GetEnd()};
    for (const Curve* curve : curves) {
        if (curve != nullptr) {
            ends.push_back(curve->GetStart());
            ends.push_back(curve->GetEnd());
        }
    }
    // The set's order depends on addresses; which of several coincident ends is kept must not.
    std::sort(ends.begin(), ends.end(),
              [](const Point& p, const Point& q) { return p.x < q.x || (p.x == q.x && p.y < q.y); });
    const std::set<Point> distinct(ends.begin(), ends.end());
    if (distinct.size() < 2)
        return false;
    SetLimits(*distinct.begin(), *distinct.rbegin());
    return true;
}

// --- Statics

bool Line::Colinear(const std::vector<Point>& pts, double tol) {
    if (pts.size() < 3)
        return true;
    const Point& start = pts.front();
    const Vector n = Normal(start, pts.back());
    for (std::size_t i = 1; i + 1 < pts.size(); ++i)
        if (std::fabs(n.Dot(Vector(start, pts[i]))) > tol)
            return false;
    return true;
}

bool Line::LineLineIntersect(Point& p0, Point& p1, Point& q0, Point& q1, Point& out) {
    Vector u(p0, p1);
    Vector v(q0, q1);
    if (!u.Normalize() || !v.Normalize())
        return false;
    const double det = u.Cross(v);
    if (std::fabs(det) < kMinDeterminant)
        return false;
    const double s = ((q0.x - p0.x) * u.y + (p0.y - q0.y) * u.x) / det;
    out = q0.AffineCombine(s, v);
    return true;
}

double Line::PointToLineDistance2(const Point& p, const Point& a, const Point& b, int* where) {
    const double tolSq = EQ_ask_length_squared_tolerance();
    const Vector v(a, b);
    const double lengthSq = v.LengthSq();
    if (lengthSq < tolSq) {
        *where = -1;
        return a.Distance2(p);
    }
    const Vector w(a, p);
    const double k = w.Dot(v);
    *where = k < -tolSq ? 0 : (k * k / lengthSq > lengthSq + tolSq ? 2 : 1);
    return w.LengthSq() - k * k / lengthSq;
}

} // namespace Tessera::Geometry
