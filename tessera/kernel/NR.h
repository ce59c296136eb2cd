// NR - dense and banded linear algebra for small systems and spline fits.
//
// Matrices   n x n doubles, row by row, element (i, j) at i n + j; n >= 1. Factorisations work in place.
// Result     1 on success, 0 when the matrix is singular (or not positive definite) to working precision or
//            an iteration limit is met; outputs are undefined then. A matrix with a NaN fails.
// Memory     none: the caller passes all scratch.
#pragma once

#include "tessera/core/Export.h"

/// Eigenvalues and orthonormal eigenvectors of a symmetric matrix by cyclic Jacobi rotations.
///
/// @param a         n x n symmetric; only the upper triangle is read; destroyed.
/// @param maxSweeps limit on sweeps over all off-diagonal elements; 60 is far beyond need (6 to 10 usual).
/// @param values    [out] n eigenvalues, in the order in which they arise, not sorted.
/// @param vectors   [out] n x n; COLUMN j is the unit eigenvector of values[j].
///
/// O(n^3) a sweep. Source: C. G. J. Jacobi (1846); rotation formulas of H. Rutishauser, Numer. Math. 9
/// (1966).
TESSERA_API int NR_jacobi_eigen(int n, double* a, int maxSweeps, double* values, double* vectors);

/// Symmetric generalized eigenproblem C x = lambda M x with M positive definite, reduced by M = L L^T to the
/// symmetric matrix L^-1 C L^-T.
///
/// @param c         n x n symmetric, read only.
/// @param m         n x n symmetric positive definite, read only; only the lower triangle is read.
/// @param maxSweeps as for NR_jacobi_eigen.
/// @param values    [out] n eigenvalues, not sorted.
/// @param vectors   [out] n x n; column j is the vector x of values[j], with x^T M x = 1.
/// @param work      2 n^2 doubles of scratch.
///
/// Source: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed. (2013), 8.7.2.
TESSERA_API int NR_generalized_eigen(int n, const double* c, const double* m, int maxSweeps, double* values,
                                     double* vectors, double* work);

/// Cholesky factor of a symmetric positive definite matrix.
///
/// @param a  n x n; the lower triangle is read and replaced by L; the strict upper triangle is left alone.
///
/// A pivot must exceed the rounding of its diagonal element. O(n^3 / 6).
TESSERA_API int NR_cholesky_decomp(int n, double* a);
/// Solves L L^T x = b in place of b (n values), with the factor of NR_cholesky_decomp.
TESSERA_API void NR_cholesky_solve(int n, const double* l, double* b);

/// LU factors with partial pivoting by rows, scaled implicitly (Crout).
///
/// @param a     n x n; replaced by U and, below the diagonal, the multipliers of L (unit diagonal).
/// @param perm  [out] n indices: row exchanges, row j with row perm[j], in order.
/// @param sign  [out] +1 or -1: the parity of the exchanges; the determinant is sign times the product of U's
///              diagonal.
///
/// A pivot must exceed the rounding of the products it was made from. O(n^3 / 3).
TESSERA_API int ludcmp_a(int n, double* a, int* perm, double* sign);
/// Solves A x = b in place of b (n values), with the factors of ludcmp_a.
TESSERA_API void lubksb_a(int n, const double* lu, const int* perm, double* b);

/// LU factors of a band matrix with partial pivoting by rows.
///
/// @param lower, upper  number of diagonals below and above the main one, >= 0.
/// @param a     n rows of lower + upper + 1: row i holds A(i, i - lower) ... A(i, i + upper), places outside
///              the matrix are ignored. Replaced by U: row i holds U(i, i) ... U(i, i + lower + upper).
/// @param l     [out] n rows of lower multipliers (may be null when lower is 0).
/// @param perm  [out] n indices: row exchanges, row k with row perm[k], in order.
/// @param sign  [out] +1 or -1: the parity of the exchanges.
///
/// Fails on a pivot that is exactly zero or not finite. O(n lower (lower + upper)).
/// Source: R. S. Martin, J. H. Wilkinson, Numer. Math. 9 (1967) 279-301.
TESSERA_API int bandec(int n, int lower, int upper, double* a, double* l, int* perm, double* sign);
/// Solves A x = b in place of b (n values), with the factors of bandec. O(n (2 lower + upper)).
TESSERA_API void banbks(int n, int lower, int upper, const double* a, const double* l, const int* perm,
                        double* b);

/// Cholesky factor of a symmetric positive definite band matrix: the normal equations of a spline fit.
///
/// @param half  half bandwidth: number of diagonals below the main one, >= 0.
/// @param a     n rows of half + 1: row i holds A(i, i - half) ... A(i, i), the diagonal last; places outside
///              the matrix are ignored. Replaced by L in the same places.
///
/// A pivot must exceed the rounding of its diagonal element. O(n half^2).
TESSERA_API int NR_band_cholesky_decomp(int n, int half, double* a);
/// Solves L L^T X = B in place of B: n rows of columns values (x, y, z of a pole, say). O(n half columns).
TESSERA_API void NR_band_cholesky_solve(int n, int half, const double* l, int columns, double* b);
