#include "tessera/kernel/internal/BcurveSpans.h"

#include <algorithm>

const BCURVE_DATA* AskUsableBcurve(const KC_CURVE_struct_s* c) {
    const BCURVE_DATA* d = static_cast<const EVC_bcurve_s*>(c->data)->definition;
    const bool usable = d->degree >= 1 && d->degree <= Bernstein::kMaxSpanDegree && d->numPoles > d->degree &&
                        d->knots[d->degree] < d->knots[d->numPoles];
    return usable ? d : nullptr;
}

bool HasPositiveWeights(const BCURVE_DATA* d) {
    if (d->polynomial)
        return true;
    for (int i = 0; i < d->numPoles; ++i)
        if (!(d->poles[i][3] > 0.0))
            return false;
    return true;
}

double SpanParameter(const BCURVE_DATA* d, int s, double u) {
    const double from = d->knots[s], to = d->knots[s + 1];
    const double lo = d->knots[d->degree], hi = d->knots[d->numPoles];
    const double knot = u >= 1.0 ? to : from + u * (to - from);
    return knot >= hi ? 1.0 : std::max(0.0, (knot - lo) / (hi - lo));
}

void StraightSpan(const BCURVE_DATA* d, int s, double bezier[8]) {
    for (int i = 0; i < 2; ++i)
        for (int k = 0; k < 4; ++k)
            bezier[4 * i + k] = d->poles[s - 1 + i][k] * (k < 3 ? d->poles[s - 1 + i][3] : 1.0);
}

void EvaluateBezier(const double* bezier, int degree, double u, double p[3], double d1[3], double d2[3]) {
    double c[Bernstein::kMaxSpanDegree + 1][4];
    std::copy(bezier, bezier + 4 * (degree + 1), &c[0][0]);
    double first[4] = {}, second[4] = {};
    for (int level = degree; level > 0; --level) {
        if (level == 2)
            for (int k = 0; k < 4; ++k)
                second[k] = degree * (degree - 1) * (c[2][k] - 2.0 * c[1][k] + c[0][k]);
        if (level == 1)
            for (int k = 0; k < 4; ++k)
                first[k] = degree * (c[1][k] - c[0][k]);
        for (int i = 0; i < level; ++i) // not c + u (c' - c): a small weight would drown in a large one
            for (int k = 0; k < 4; ++k)
                c[i][k] = (1.0 - u) * c[i][k] + u * c[i + 1][k];
    }
    const double w = c[0][3];
    for (int k = 0; k < 3; ++k) {
        p[k] = c[0][k] / w;
        d1[k] = (first[k] - first[3] * p[k]) / w;
        d2[k] = (second[k] - 2.0 * first[3] * d1[k] - second[3] * p[k]) / w;
    }
}
