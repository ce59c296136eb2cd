// Dual - a value with its gradient by the parameters of up to three curves (forward differentiation).
//
// The equations of the constraints are written once as templates: with double they give residuals, with Dual
// the Jacobian rows, which then cannot disagree. Source: R. E. Wengert, Comm. ACM 7 (1964) 463-464.
#pragma once

#include <cmath>

// The analyzer loses that a curve's kind says how many parameters it has.
// NOLINTBEGIN(clang-analyzer-core.UndefinedBinaryOperatorResult,clang-analyzer-core.CallAndMessage)
namespace Tessera::Geometry {

/// Three splines of eight parameters.
inline constexpr int kMaxDualSize = 24;

/// All variables of one equation have the same size; a constant has size 0. Only `size` places are filled.
struct Dual {
    Dual() = default;
    Dual(double constant) : value(constant) {} // implicit: constants mix with variables
    Dual(double v, int n, int place) : value(v), size(n) {
        for (int i = 0; i < n; ++i)
            gradient[i] = i == place ? 1.0 : 0.0;
    }
    Dual(const Dual& o) : value(o.value), size(o.size) { CopyGradient(o); }
    Dual& operator=(const Dual& o) {
        if (this == &o)
            return *this;
        value = o.value;
        size = o.size;
        CopyGradient(o);
        return *this;
    }
    void CopyGradient(const Dual& o) {
        for (int i = 0; i < o.size; ++i)
            gradient[i] = o.gradient[i];
    }

    double value = 0.0;
    int size = 0;
    double gradient[kMaxDualSize]; // NOLINT: places from size on stay unset, on purpose
};

/// v with gradient da grad a + db grad b.
inline Dual ChainRule(double v, const Dual& a, double da, const Dual& b, double db) {
    Dual r(v);
    if (a.size == 0 || b.size == 0) {
        const Dual& only = a.size == 0 ? b : a;
        const double factor = a.size == 0 ? db : da;
        r.size = only.size;
        for (int i = 0; i < r.size; ++i)
            r.gradient[i] = factor * only.gradient[i];
        return r;
    }
    r.size = a.size;
    for (int i = 0; i < r.size; ++i)
        r.gradient[i] = da * a.gradient[i] + db * b.gradient[i];
    return r;
}
inline Dual ChainRule(double v, const Dual& a, double da) {
    return ChainRule(v, a, da, Dual(), 0.0);
}

inline Dual operator+(const Dual& a, const Dual& b) {
    return ChainRule(a.value + b.value, a, 1.0, b, 1.0);
}
inline Dual operator-(const Dual& a, const Dual& b) {
    return ChainRule(a.value - b.value, a, 1.0, b, -1.0);
}
inline Dual operator*(const Dual& a, const Dual& b) {
    return ChainRule(a.value * b.value, a, b.value, b, a.value);
}
inline Dual operator/(const Dual& a, const Dual& b) {
    const double q = a.value / b.value;
    return ChainRule(q, a, 1.0 / b.value, b, -q / b.value);
}
inline Dual sqrt(const Dual& a) {
    const double root = std::sqrt(a.value);
    return ChainRule(root, a, 0.5 / root);
}
inline Dual sin(const Dual& a) {
    return ChainRule(std::sin(a.value), a, std::cos(a.value));
}
inline Dual cos(const Dual& a) {
    return ChainRule(std::cos(a.value), a, -std::sin(a.value));
}

} // namespace Tessera::Geometry
// NOLINTEND(clang-analyzer-core.UndefinedBinaryOperatorResult,clang-analyzer-core.CallAndMessage)
