// Lengths are square roots of plain sums, not hypot: tolerance decisions depend on the last bit.
#include "tessera/geometry/Point.h"

#include <cmath>

#include "tessera/geometry/Vector.h"
#include "tessera/kernel/EQ.h"

namespace Tessera::Geometry {

void Point::Transform(double m[3][3]) {
    const double px = x;
    x = (m[0][0] * px + m[0][1] * y + m[0][2]) / m[2][2];
    y = (m[1][0] * px + m[1][1] * y + m[1][2]) / m[2][2];
}

bool Point::operator==(const Point& q) const {
    return this == &q || Distance2(q) <= EQ_ask_length_squared_tolerance();
}

bool Point::operator<(const Point& q) const {
    const double tol = EQ_ask_length_tolerance();
    if (x < q.x - tol) {
        return true;
    }
    if (x > q.x + tol) {
        return false;
    }
    return y < q.y - tol;
}

Point& Point::operator+=(const Point& q) {
    x += q.x;
    y += q.y;
    return *this;
}

Point& Point::operator-=(const Point& q) {
    x -= q.x;
    y -= q.y;
    return *this;
}

Point& Point::operator/=(double s) {
    x /= s;
    y /= s;
    return *this;
}

double Point::Distance(const Point& q) const {
    return std::sqrt(Distance2(q));
}

double Point::Length() const {
    return std::sqrt(x * x + y * y);
}

bool Point::Normalize() {
    const double length = Length();
    if (!(length >= EQ_ask_length_tolerance())) {
        return false;
    }
    *this /= length;
    return true;
}

Vector Point::PointVector(const Point& q) const {
    return {*this, q};
}

Point Point::AffineCombine(double t, const Vector& v) const {
    return {x + t * v.x, y + t * v.y};
}

void Point::DeletePoints(std::vector<Point*>& pts) {
    for (Point*& slot : pts) {
        const Point* point = slot;
        slot = nullptr;
        delete point;
    }
}

} // namespace Tessera::Geometry
