// Lengths are square roots of plain sums, not hypot: tolerance decisions depend on the last bit.
#include "tessera/geometry/Vector.h"

#include <cmath>
#include <numbers>

#include "tessera/geometry/Point.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/VEC2.h"

namespace Tessera::Geometry {

namespace {

constexpr double kPerpendicularTol = 1e-10; // does not follow the length scale

Vex::Math::Vector2 ToKernel(const Vector& v) {
    return {v.x, v.y};
}

} // namespace

Vector::Vector(const Point& p, const Point& q) : x(q.x - p.x), y(q.y - p.y) {}

bool Vector::operator==(const Vector& w) const {
    return this == &w || DistanceSq(w) <= EQ_ask_length_squared_tolerance();
}

Vector& Vector::operator+=(const Vector& w) {
    x += w.x;
    y += w.y;
    return *this;
}

Vector& Vector::operator-=(const Vector& w) {
    x -= w.x;
    y -= w.y;
    return *this;
}

Vector& Vector::operator/=(double s) {
    x /= s;
    y /= s;
    return *this;
}

double Vector::Distance(const Vector& w) const {
    return std::sqrt(DistanceSq(w));
}

double Vector::Length() const {
    return std::sqrt(LengthSq());
}

bool Vector::IsZero() const {
    const double tol = EQ_ask_length_tolerance();
    return LengthSq() <= tol * tol;
}

bool Vector::Normalize() {
    const double length = Length();
    if (length <= EQ_ask_length_tolerance()) {
        return false;
    }
    *this /= length;
    return true;
}

double Vector::AngleBetween(Vector w) const {
    Vector v = *this;
    if (!v.Normalize() || !w.Normalize()) {
        return 0.0;
    }
    const double angle = std::atan2(v.Cross(w), v.Dot(w));
    // A cross product of -0 makes atan2 answer -pi for opposite vectors.
    return angle <= -std::numbers::pi ? std::numbers::pi : angle;
}

void Vector::Rotate(double a) {
    const double c = std::cos(a);
    const double s = std::sin(a);
    *this = {c * x - s * y, s * x + c * y};
}

Vector Vector::GetPerpendicular() const {
    const Vex::Math::Vector2 v = ToKernel(*this);
    Vex::Math::Vector2 perpendicular{};
    Vex::Math::Vector2 unit{};
    double length = 0.0;
    VEC2_ask_perpendicular(&v, &perpendicular);
    VEC2_unitize(&perpendicular, kPerpendicularTol, &length, &unit);
    return {unit.x, unit.y};
}

bool Vector::IsParallel(const Vector& w, double tol) const {
    const Vex::Math::Vector2 a = ToKernel(*this);
    const Vex::Math::Vector2 b = ToKernel(w);
    return VEC2_is_parallel(&a, &b, tol);
}

bool Vector::IsPerpendicular(const Vector& w, double tol) const {
    const Vex::Math::Vector2 a = ToKernel(*this);
    const Vex::Math::Vector2 b = ToKernel(w);
    return VEC2_is_perpendicular(&a, &b, tol);
}

} // namespace Tessera::Geometry
