// Points, tangents and sizes of a sketch's curves as functions of their parameters, for double and Dual
// alike.
#pragma once

#include <cmath>

#include "tessera/recognition/internal/Dual.h"
#include "tessera/recognition/internal/SketchParameters.h"

// The analyzer loses that a curve's kind says how many parameters it has.
// NOLINTBEGIN(clang-analyzer-core.UndefinedBinaryOperatorResult,clang-analyzer-core.CallAndMessage)
namespace Tessera::Geometry {

template <class T>
struct Pair {
    T x;
    T y;
};

template <class T>
Pair<T> operator+(const Pair<T>& a, const Pair<T>& b) {
    return {a.x + b.x, a.y + b.y};
}
template <class T>
Pair<T> operator-(const Pair<T>& a, const Pair<T>& b) {
    return {a.x - b.x, a.y - b.y};
}
template <class T>
Pair<T> operator*(double s, const Pair<T>& a) {
    return {T(s) * a.x, T(s) * a.y};
}
template <class T>
T DotOf(const Pair<T>& a, const Pair<T>& b) {
    return a.x * b.x + a.y * b.y;
}
template <class T>
T CrossOf(const Pair<T>& a, const Pair<T>& b) {
    return a.x * b.y - a.y * b.x;
}
template <class T>
T LengthOf(const Pair<T>& a) {
    using std::sqrt;
    return sqrt(DotOf(a, a));
}

/// centre + r1 cos(t) u + turn r2 sin(t) u', u the unit vector at the ellipse's rotation.
template <class T>
Pair<T> EllipsePoint(const SketchCurve& c, const T* p, const T& t) {
    using std::cos;
    using std::sin;
    const Pair<T> u{cos(p[4]), sin(p[4])};
    const T along = p[2] * cos(t);
    const T across = T(c.turn) * p[3] * sin(t);
    return {p[0] + along * u.x - across * u.y, p[1] + along * u.y + across * u.x};
}

template <class T>
Pair<T> ArcPoint(const T* p, const T& angle) {
    using std::cos;
    using std::sin;
    return {p[0] + p[2] * cos(angle), p[1] + p[2] * sin(angle)};
}

/// p: the curve's parameters. The curve has such a point; the middle is a line's only.
template <class T>
Pair<T> SketchPointOf(const SketchCurve& c, const T* p, SnapPointType_e which) {
    if (which == SnapPointType_Center)
        return {p[0], p[1]};
    const bool start = which == SnapPointType_Start;
    if (which == SnapPointType_Mid)
        return {T(0.5) * (p[0] + p[2]), T(0.5) * (p[1] + p[3])};
    if (c.shape == SketchShape::Arc)
        return ArcPoint(p, start ? p[3] : p[4]);
    if (c.shape == SketchShape::EllipseArc)
        return EllipsePoint(c, p, start ? p[5] : p[6]);
    return start ? Pair<T>{p[0], p[1]} : Pair<T>{p[2], p[3]};
}

/// Direction of travel at the start or end of a curve with ends; not normalised.
template <class T>
Pair<T> SketchTangentOf(const SketchCurve& c, const T* p, SnapPointType_e end) {
    using std::cos;
    using std::sin;
    const bool start = end == SnapPointType_Start;
    if (c.shape == SketchShape::Arc) {
        const T& angle = start ? p[3] : p[4];
        return {T(-c.turn) * sin(angle), T(c.turn) * cos(angle)};
    }
    if (c.shape == SketchShape::EllipseArc) {
        const T& t = start ? p[5] : p[6];
        const Pair<T> u{cos(p[4]), sin(p[4])};
        const T along = T(-1.0) * p[2] * sin(t);
        const T across = T(c.turn) * p[3] * cos(t);
        return {along * u.x - across * u.y, along * u.y + across * u.x};
    }
    if (c.shape == SketchShape::Line || c.count == 4)
        return {p[2] - p[0], p[3] - p[1]};
    if (start)
        return {p[4] - p[0], p[5] - p[1]};
    const int handle = c.count - 2; // the last but one pole, or the only inner one
    return {p[2] - p[handle], p[3] - p[handle + 1]};
}

} // namespace Tessera::Geometry
// NOLINTEND(clang-analyzer-core.UndefinedBinaryOperatorResult,clang-analyzer-core.CallAndMessage)
