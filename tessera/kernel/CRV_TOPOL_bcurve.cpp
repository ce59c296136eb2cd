#include "tessera/kernel/CRV_TOPOL.h"

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/CurveHits.h"
#include "tessera/kernel/internal/ImplicitCurve.h"

// A line or conic against a B-curve: span by span, each in one polynomial (ImplicitCurve.h). Spans whose
// poles stay clear of the carrier are passed over before their Bezier form is made, and straight spans never
// need one, so that a poly-line of any length costs one scan.

namespace {

// Zeros along one span, told to the list with the parameters of both curves.
void OfferZeros(CurveHits& hits, const ImplicitCurve& carrier, const BCURVE_DATA* d, int span,
                const double* bezier) {
    const PlanarBezier piece = MakePlanarBezier(bezier, d->degree);
    ImplicitCurve::Zero zero[2 * Bernstein::kMaxCoefficients];
    const int n = carrier.FindZeros(piece, hits.Tol(), zero);
    for (int i = 0; i < n; ++i) {
        double p[3], d1[3], d2[3];
        EvaluateBezier(bezier, d->degree, zero[i].s, p, d1, d2);
        hits.Offer(carrier.Parameter(p[0], p[1]), SpanParameter(d, span, zero[i].s), zero[i].kind);
    }
}

} // namespace

bool IntersectWithBcurve(CurveHits& hits) {
    auto* b = static_cast<EVC_bcurve_s*>(hits.B().record->data);
    const BCURVE_DATA* d = b->definition;
    const ImplicitCurve carrier(hits.A());
    const bool inHull = HasPositiveWeights(d);
    for (int s = d->degree; s < d->numPoles && !hits.HasFailed(); ++s) {
        if (!IsSpan(d, s))
            continue;
        if (inHull && !carrier.MayMeetHull(d->poles[s - d->degree], d->degree + 1, 4, hits.Tol()))
            continue;
        if (d->degree == 1) {
            double line[8];
            StraightSpan(d, s, line);
            OfferZeros(hits, carrier, d, s, line);
            continue;
        }
        const BCURVE_SEGMENT* segment = BCEV_ask_bez_segment(b, s);
        if (!segment)
            return false;
        OfferZeros(hits, carrier, d, s, segment->bezier);
    }
    return !hits.HasFailed();
}
