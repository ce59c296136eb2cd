// Vector - a direction or displacement in the drawing plane. Lengths in model units, angles in radians;
// comparisons go through the length tolerance of the kernel.
#pragma once

#include "tessera/core/Export.h"

namespace Tessera::Geometry {

class Point;

class TESSERA_API Vector {
public:
    Vector() = default;
    Vector(double vx, double vy) : x(vx), y(vy) {}
    explicit Vector(const double* xy) : x(xy[0]), y(xy[1]) {}
    /// From p to q.
    Vector(const Point& p, const Point& q);

    /// The same object, or end points within the length tolerance.
    bool operator==(const Vector& w) const;
    bool operator!=(const Vector& w) const { return !(*this == w); }
    Vector operator+(const Vector& w) const { return {x + w.x, y + w.y}; }
    Vector operator-(const Vector& w) const { return {x - w.x, y - w.y}; }
    Vector& operator+=(const Vector& w);
    Vector& operator-=(const Vector& w);
    Vector operator/(double s) const { return {x / s, y / s}; }
    Vector& operator/=(double s);

    double Coordinate(int i) const { return i == 0 ? x : y; }
    double Cross(const Vector& w) const { return x * w.y - y * w.x; }
    double Dot(const Vector& w) const { return x * w.x + y * w.y; }
    double XSq(const Vector& w) const { return (x - w.x) * (x - w.x); }
    double YSq(const Vector& w) const { return (y - w.y) * (y - w.y); }
    double DistanceSq(const Vector& w) const { return XSq(w) + YSq(w); }
    double Distance(const Vector& w) const;
    double LengthSq() const { return x * x + y * y; }
    double Length() const;
    /// Length at most the length tolerance.
    bool IsZero() const;
    /// False and unchanged when the length is at most the length tolerance.
    bool Normalize();
    /// Signed angle to w in (-pi, pi], counter-clockwise positive; 0 when either is (near) zero.
    double AngleBetween(Vector w) const;
    /// Counter-clockwise by a radians.
    void Rotate(double a);
    /// Unit perpendicular (VEC2_ask_perpendicular); (0, 0) for a (near) zero vector.
    Vector GetPerpendicular() const;
    /// Sine (cosine) of the enclosed angle at most tol in magnitude; true when either vector is (near) zero.
    bool IsParallel(const Vector& w, double tol) const;
    bool IsPerpendicular(const Vector& w, double tol) const;

    double x = 0.0;
    double y = 0.0;
};

inline Vector operator*(double s, const Vector& v) {
    return {s * v.x, s * v.y};
}

} // namespace Tessera::Geometry
