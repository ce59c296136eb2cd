// Knot spans of a B-curve: their limits, their parameters, and evaluation of their Bezier form.
#pragma once

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/internal/BernsteinRoots.h"

/// Definition of a form 9 record that the routines here can treat: degree 1 to Bernstein::kMaxSpanDegree and
/// a non-empty parameter interval; else null.
const BCURVE_DATA* AskUsableBcurve(const KC_CURVE_struct_s* c);

/// True when every weight is positive: only then does a span lie in the hull of its poles.
bool HasPositiveWeights(const BCURVE_DATA* d);

/// Span s (degree <= s < numPoles) covers some parameters.
inline bool IsSpan(const BCURVE_DATA* d, int s) {
    return d->knots[s] < d->knots[s + 1];
}
/// Curve parameter (0 to 1) of the fraction u of span s; exact at both ends of the curve.
double SpanParameter(const BCURVE_DATA* d, int s, double u);

/// Bezier form of span s of a degree 1 curve, straight from its poles: 2 x 4 homogeneous coefficients.
void StraightSpan(const BCURVE_DATA* d, int s, double bezier[8]);

/// Position and two derivatives by u of a homogeneous Bezier span (order x 4) at u; three doubles each.
void EvaluateBezier(const double* bezier, int degree, double u, double p[3], double d1[3], double d2[3]);
