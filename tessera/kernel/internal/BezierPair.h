// Intersection of two planar Bezier spans by subdivision.
#pragma once

#include "tessera/kernel/internal/BernsteinRoots.h"
#include "tessera/kernel/internal/CurveHits.h"

/// A span of a B-curve: order x 4 homogeneous coefficients of positive weight.
struct BezierSpan {
    const double* bezier;
    int degree;
    bool polynomial;
};

/// Where a pair of spans meets, in span parameters.
struct PairHit {
    double u, v;
    HitKind kind;
};

inline constexpr int kMaxPairHits = 512;

/// All places at which two spans cross or come within tol of each other, some of them more than once, for
/// CurveHits to confirm and merge; none for spans that coincide over a stretch.
///
/// @param resolution pieces shorter than this are not told apart.
/// @param out        room for kMaxPairHits; later hits are lost.
/// @return how many were written.
///
/// Pieces are discarded by boxes and fat lines (T. W. Sederberg and T. Nishita, Computer-Aided Design 22
/// (1990) 538-549). Pieces whose tangent cones share no direction meet once at most (T. W. Sederberg and R.
/// J. Meyers, Computer Aided Geometric Design 5 (1988) 161-171): Newton's method finds that point. The others
/// are halved down to the resolution, where the touch, if any, is solved for. Work is bounded: pairs that
/// keep splitting are tested for coincidence.
int IntersectBezierPair(const BezierSpan& a, const BezierSpan& b, double tol, double resolution,
                        PairHit* out);
