#include "tessera/kernel/PNT3.h"

#include <cmath>

#include "tessera/kernel/VEC3.h"

using Vex::Math::Point3;
using Vex::Math::Vector3;

double PNT3_distance_squared(const Point3* a, const Point3* b) {
    Vector3 v;
    PNT3_ask_vector(a, b, &v);
    return VEC3_dot(&v, &v);
}

double PNT3_distance(const Point3* a, const Point3* b) {
    return std::sqrt(PNT3_distance_squared(a, b));
}

bool PNT3_is_equal(const Point3* a, const Point3* b, double tol) {
    return PNT3_distance_squared(a, b) <= tol * tol;
}

void PNT3_ask_vector(const Point3* a, const Point3* b, Vector3* out) {
    *out = {b->x - a->x, b->y - a->y, b->z - a->z};
}

void PNT3_interpolate(const Point3* a, const Point3* b, double t, Point3* out) {
    const double s = 1.0 - t;
    *out = {s * a->x + t * b->x, s * a->y + t * b->y, s * a->z + t * b->z};
}
