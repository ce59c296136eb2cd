// Polynomials on [0, 1] in Bernstein form: evaluation, products, and the points where they change sign.
//
// A polynomial is its degree + 1 coefficients. Nothing here allocates; degrees go up to kMaxDegree, which
// serves rational spans up to kMaxSpanDegree (a stationary point of their distance has degree 3 d - 1).
#pragma once

namespace Bernstein {

inline constexpr int kMaxSpanDegree = 31;
inline constexpr int kMaxDegree = 3 * kMaxSpanDegree + 2;
inline constexpr int kMaxCoefficients = kMaxDegree + 1;

/// Value at t, by the nested form: O(degree).
double Value(const double* c, int degree, double t);
/// Coefficients of the derivative, degree of them; none for degree 0.
void Derivative(const double* c, int degree, double* out);
/// Coefficients of f g, of degree m + n <= kMaxDegree; out must not overlap the factors.
void Product(const double* f, int m, const double* g, int n, double* out);
/// Halves at t by de Casteljau: coefficients over [0, t] and [t, 1]. left may be c itself.
void Split(const double* c, int degree, double t, double* left, double* right);

/// Ascending parameters inside (0, 1) at which the polynomial changes sign. A cluster that lies closer
/// than 1e-12, or that rounding alone (magnitude `noise`) makes change sign, yields one of its points, so
/// callers that use the answers as break points may get a few too many, never too few.
///
/// @param noise values of this magnitude count as zero, >= 0.
/// @param out   room for kMaxCoefficients.
/// @return how many were written.
/// Source: Descartes' rule on Bernstein coefficients with bisection, J. M. Lane and R. F. Riesenfeld,
/// BIT 21 (1981) 112-117; bracketed roots by the method of N. Anderson and A. Bjorck, BIT 13 (1973) 253-264.
int SignChanges(const double* c, int degree, double noise, double* out);

/// The root of the polynomial in [a, b], whose end values fa and fb differ in sign.
double BracketedRoot(const double* c, int degree, double a, double fa, double b, double fb);

} // namespace Bernstein
