#include "tessera/kernel/VEC3.h"

#include <cmath>

using Vex::Math::Vector3;

double VEC3_dot(const Vector3* a, const Vector3* b) {
    return a->x * b->x + a->y * b->y + a->z * b->z;
}

void VEC3_cross(const Vector3* a, const Vector3* b, Vector3* out) {
    *out = {a->y * b->z - a->z * b->y, a->z * b->x - a->x * b->z, a->x * b->y - a->y * b->x};
}

double VEC3_length(const Vector3* v) {
    return std::sqrt(VEC3_dot(v, v));
}

int VEC3_unitize(const Vector3* v, double tol, double* length, Vector3* out) {
    const Vector3 in = *v;
    if (VEC3_dot(&in, &in) <= tol * tol) {
        *length = 0.0;
        *out = {0.0, 0.0, 0.0};
        return 0;
    }
    *length = VEC3_length(&in);
    *out = {in.x / *length, in.y / *length, in.z / *length};
    return 1;
}
