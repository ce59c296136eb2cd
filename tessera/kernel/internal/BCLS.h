// BCLS - linear least squares for a clamped B-curve whose data parameters are given.
//
// Data parameters are counted in spans: tau in [0, numSpans], its whole part the span, its fraction the
// place in it, whatever the knots. All arrays are the caller's; nothing here allocates.
#pragma once

#include "tessera/kernel/VexMath.h"

inline constexpr int kBclsMaxOrder = 16;

/// A clamped B-curve under construction, with the power form of its spans.
struct BCLS_curve_t {
    int order = 0;
    int numPoles = 0;
    int numSpans = 0;        ///< numPoles - order + 1
    bool closed = false;     ///< last pole = first pole, P1 and P[n-2] mirror images about it
    bool isUniform = false;  ///< knots spread evenly
    bool isPlanar = false;   ///< data and poles lie in the plane z = 0
    double* knots = nullptr; ///< numPoles + order, from 0 to 1
    double (*poles)[3] = nullptr;
    double* basis = nullptr;      ///< span x order x order: basis function by power of v
    double (*power)[3] = nullptr; ///< span x order: the curve by power of v, v in [-1, 1] over the span
};

/// Room for one solution: sizes as BCLS_ask_scratch_doubles adds them up.
struct BCLS_scratch_t {
    double* moments = nullptr; ///< span x (2 order - 1)
    double* loads = nullptr;   ///< span x order x 3
    double* band = nullptr;    ///< numPoles x order, row i holds A(i, i - order + 1 .. i)
    double* rhs = nullptr;     ///< numPoles x 4, the last column couples the seam
};

/// Sets the knots of numSpans spans: uniform, or spread evenly over the given breaks (numBreaks + 1 values
/// from 0 to 1), and the basis that goes with them.
void BCLS_set_knots(BCLS_curve_t& curve, int numSpans, int numBreaks, const double* breaks);

/// tau of a parameter t in [0, 1].
double BCLS_ask_tau(const BCLS_curve_t& curve, double t);

/// Poles that minimise the sum of squared distances of n points from the curve at their tau, the end poles
/// given. O(n + numPoles order^2): moments by span, one symmetric band factor. False when the matrix is not
/// positive definite to working accuracy. Fills the power form.
bool BCLS_solve(BCLS_curve_t& curve, int n, const Vex::Math::Point3* pts, const double* tau,
                const double first[3], const double last[3], const BCLS_scratch_t& scratch);

/// Squared distance of p from the curve near tau, which moves to the foot point; an upper bound of the
/// distance from the whole curve. Steps below `resolution` (a length) end the search.
double BCLS_foot_near(const BCLS_curve_t& curve, const Vex::Math::Point3& p, double resolution, double& tau);

/// As BCLS_foot_near, started from the best of samples up to two spans either side of tau and, on a
/// closed curve, across the seam.
double BCLS_foot_around(const BCLS_curve_t& curve, const Vex::Math::Point3& p, double resolution,
                        double& tau);
