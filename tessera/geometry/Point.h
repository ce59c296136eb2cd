// Point - a position in the drawing plane, model units. Comparisons go through the length tolerance of the
// kernel; divisions by zero are not guarded.
#pragma once

#include <cmath>
#include <vector>

#include "tessera/core/Export.h"

namespace Tessera::Geometry {

class Vector;

/// No virtual destructor, on purpose: points are values, freed by their static type.
class TESSERA_API Point {
public:
    Point() = default;
    Point(double px, double py) : x(px), y(py) {}
    explicit Point(const double* xy) : x(xy[0]), y(xy[1]) {}
    Point(const Point& q) = default;
    Point& operator=(const Point& q) = default;

    /// x' = (m00 x + m01 y + m02) / m22, y' likewise: affine matrices with a uniform scale in m22.
    virtual void Transform(double m[3][3]);

    /// The same object, or at most the length tolerance apart.
    bool operator==(const Point& q) const;
    bool operator!=(const Point& q) const { return !(*this == q); }
    /// Lexicographic with the length tolerance on both coordinates.
    bool operator<(const Point& q) const;
    Point operator+(const Point& q) const { return {x + q.x, y + q.y}; }
    Point operator-(const Point& q) const { return {x - q.x, y - q.y}; }
    Point& operator+=(const Point& q);
    Point& operator-=(const Point& q);
    Point operator/(double s) const { return {x / s, y / s}; }
    Point& operator/=(double s);

    double Coordinate(int i) const { return i == 0 ? x : y; }
    double Cross(const Point& q) const { return x * q.y - y * q.x; }
    double Dot(const Point& q) const { return x * q.x + y * q.y; }
    double Distance2(const Point& q) const { return (x - q.x) * (x - q.x) + (y - q.y) * (y - q.y); }
    double Distance(const Point& q) const;
    double Length() const;
    /// False and unchanged when the length is below the length tolerance (a length equal to it is
    /// normalised).
    bool Normalize();
    /// From this point to q.
    Vector PointVector(const Point& q) const;
    /// This point + t v.
    Point AffineCombine(double t, const Vector& v) const;

    /// Deletes every element and leaves nulls; the vector keeps its length.
    static void DeletePoints(std::vector<Point*>& pts);

    double x = 0.0;
    double y = 0.0;
};

inline Point operator*(const Point& p, double s) {
    return {p.x * s, p.y * s};
}
inline Point operator*(double s, const Point& p) {
    return {p.x * s, p.y * s};
}

/// By how much the direction `from` turns to that of `to`: radians in [-pi, pi], counter-clockwise positive.
/// No length is too small; 0 when one of them is zero. Vector::AngleBetween has a length tolerance.
inline double SignedAngle(const Point& from, const Point& to) {
    return std::atan2(from.Cross(to), from.Dot(to));
}

} // namespace Tessera::Geometry
