#include "tessera/kernel/VEC2.h"

#include <cmath>

using Vex::Math::Vector2;

namespace {

constexpr double kZeroLengthSq = 1e-20; // squared model units, fixed

// Compares product^2 / (|a|^2 |b|^2) with tol^2, where product is the dot or the cross product.
bool IsProductWithin(double product, const Vector2* a, const Vector2* b, double tol) {
    const double aSq = VEC2_dot(a, a), bSq = VEC2_dot(b, b);
    if (aSq <= kZeroLengthSq || bSq <= kZeroLengthSq)
        return true;
    return product * product / (aSq * bSq) <= tol * tol;
}

} // namespace

double VEC2_dot(const Vector2* a, const Vector2* b) {
    return a->x * b->x + a->y * b->y;
}

double VEC2_cross(const Vector2* a, const Vector2* b) {
    return a->x * b->y - a->y * b->x;
}

// The plain sum, not hypot: callers compare lengths with limits to the last bit.
double VEC2_length(const Vector2* v) {
    return std::sqrt(VEC2_dot(v, v));
}

int VEC2_ask_perpendicular(const Vector2* v, Vector2* out) {
    const Vector2 in = *v;
    if (VEC2_dot(&in, &in) <= kZeroLengthSq) {
        *out = {0.0, 0.0};
        return 0;
    }
    *out = std::fabs(in.y) > std::fabs(in.x) ? Vector2{-in.y, in.x} : Vector2{in.y, -in.x};
    return 1;
}

int VEC2_unitize(const Vector2* v, double tol, double* length, Vector2* out) {
    const Vector2 in = *v;
    if (VEC2_dot(&in, &in) <= tol * tol) {
        *length = 0.0;
        *out = {0.0, 0.0};
        return 0;
    }
    *length = VEC2_length(&in);
    *out = {in.x / *length, in.y / *length};
    return 1;
}

bool VEC2_is_parallel(const Vector2* a, const Vector2* b, double tol) {
    return IsProductWithin(VEC2_cross(a, b), a, b, tol);
}

bool VEC2_is_perpendicular(const Vector2* a, const Vector2* b, double tol) {
    return IsProductWithin(VEC2_dot(a, b), a, b, tol);
}
