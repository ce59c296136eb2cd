#include "tessera/kernel/CRV_TOPOL.h"

#include <algorithm>
#include <cmath>

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/BezierPair.h"
#include "tessera/kernel/internal/CurveHits.h"
#include "tessera/kernel/internal/SpanTree.h"

// B-curve against B-curve. Each curve gets a binary tree of boxes over its spans, so that only spans near
// each other are ever paired (P. A. Koparkar and S. P. Mudur, Computer-Aided Design 15 (1983) 41-45); pairs
// of straight spans are solved at once, the others by BezierPair.

namespace {

double Extent(const SpanBox& b) {
    return std::max(b.hi[0] - b.lo[0], b.hi[1] - b.lo[1]);
}

class TreePair {
public:
    TreePair(CurveHits& hits, EVC_bcurve_s* a, EVC_bcurve_s* b) : hits_(hits), a_(a), b_(b) {}

    bool Run() {
        if (!treeA_.Build(a_) || !treeB_.Build(b_))
            return false;
        // Arcs that part by less than the tolerance within this length cannot be told apart.
        const double size = std::min(hits_.A().size, hits_.B().size);
        resolution_ = std::max(0.5 * std::sqrt(hits_.Tol() * size), 1e-7 * size);
        Descend(1, 1);
        return !failed_ && !hits_.HasFailed();
    }

private:
    void Descend(int i, int j) {
        if (failed_ || hits_.HasFailed() || !BoxesMeet(treeA_.At(i), treeB_.At(j), hits_.Tol()))
            return;
        const bool leafA = treeA_.IsLeaf(i), leafB = treeB_.IsLeaf(j);
        if (leafA && leafB) {
            if (a_->definition->degree == 1 && b_->definition->degree == 1)
                IntersectStraight(treeA_.SpanOf(i), treeB_.SpanOf(j));
            else
                IntersectSpans(treeA_.SpanOf(i), treeB_.SpanOf(j));
        } else if (leafB || (!leafA && Extent(treeA_.At(i)) >= Extent(treeB_.At(j)))) {
            Descend(2 * i, j);
            Descend(2 * i + 1, j);
        } else {
            Descend(i, 2 * j);
            Descend(i, 2 * j + 1);
        }
    }

    bool AskSpan(EVC_bcurve_s* b, int s, double straight[8], BezierSpan& out) {
        const BCURVE_DATA* d = b->definition;
        out = {straight, d->degree, d->polynomial != 0};
        if (d->degree == 1) {
            StraightSpan(d, s, straight);
            return true;
        }
        const BCURVE_SEGMENT* segment = BCEV_ask_bez_segment(b, s);
        if (!segment)
            return false;
        out.bezier = segment->bezier;
        return true;
    }

    void IntersectSpans(int s, int r) {
        double straightA[8], straightB[8];
        BezierSpan first, second;
        if (!AskSpan(a_, s, straightA, first) || !AskSpan(b_, r, straightB, second)) {
            failed_ = true;
            return;
        }
        PairHit found[kMaxPairHits];
        const int n = IntersectBezierPair(first, second, hits_.Tol(), resolution_, found);
        for (int i = 0; i < n; ++i)
            hits_.Offer(SpanParameter(a_->definition, s, found[i].u),
                        SpanParameter(b_->definition, r, found[i].v), found[i].kind);
    }

    // Fraction along a straight span of the point with the fraction f of its length.
    static double Fraction(const BCURVE_DATA* d, int s, double f) {
        const double w0 = d->poles[s - 1][3], w1 = d->poles[s][3];
        return SpanParameter(d, s, f * w0 / (w1 * (1.0 - f) + f * w0));
    }

    void IntersectStraight(int s, int r) {
        const BCURVE_DATA *d = a_->definition, *e = b_->definition;
        const double *p0 = d->poles[s - 1], *p1 = d->poles[s], *q0 = e->poles[r - 1], *q1 = e->poles[r];
        const double px = p1[0] - p0[0], py = p1[1] - p0[1], qx = q1[0] - q0[0], qy = q1[1] - q0[1];
        const double cross = px * qy - py * qx, lengthP = std::hypot(px, py), lengthQ = std::hypot(qx, qy);
        if (std::fabs(cross) > 1e-12 * lengthP * lengthQ) {
            const double gx = q0[0] - p0[0], gy = q0[1] - p0[1];
            const double u = (gx * qy - gy * qx) / cross, v = (gx * py - gy * px) / cross;
            if (u >= -1e-12 && u <= 1.0 + 1e-12 && v >= -1e-12 && v <= 1.0 + 1e-12)
                hits_.Offer(Fraction(d, s, std::clamp(u, 0.0, 1.0)), Fraction(e, r, std::clamp(v, 0.0, 1.0)),
                            HitKind::Crossing);
        }
        // Vertices that lie on the other side: corners that only touch, and ends.
        for (const double f : {0.0, 1.0}) {
            const double* p = f == 0.0 ? p0 : p1;
            const double* q = f == 0.0 ? q0 : q1;
            const double v =
                lengthQ > 0.0 ? ((p[0] - q0[0]) * qx + (p[1] - q0[1]) * qy) / (lengthQ * lengthQ) : 0.0;
            const double u =
                lengthP > 0.0 ? ((q[0] - p0[0]) * px + (q[1] - p0[1]) * py) / (lengthP * lengthP) : 0.0;
            OfferVertex(d, s, f, e, r, std::clamp(v, 0.0, 1.0));
            OfferVertex(d, s, std::clamp(u, 0.0, 1.0), e, r, f);
        }
    }

    void OfferVertex(const BCURVE_DATA* d, int s, double u, const BCURVE_DATA* e, int r, double v) {
        double gapSq = 0.0;
        for (int k = 0; k < 2; ++k) {
            const double p = d->poles[s - 1][k] + u * (d->poles[s][k] - d->poles[s - 1][k]);
            const double q = e->poles[r - 1][k] + v * (e->poles[r][k] - e->poles[r - 1][k]);
            gapSq += (p - q) * (p - q);
        }
        if (gapSq <= hits_.Tol() * hits_.Tol())
            hits_.Offer(Fraction(d, s, u), Fraction(e, r, v), HitKind::End);
    }

    CurveHits& hits_;
    EVC_bcurve_s *a_, *b_;
    SpanTree treeA_, treeB_;
    double resolution_ = 0.0;
    bool failed_ = false;
};

} // namespace

bool IntersectBcurves(CurveHits& hits) {
    return TreePair(hits, static_cast<EVC_bcurve_s*>(hits.A().record->data),
                    static_cast<EVC_bcurve_s*>(hits.B().record->data))
        .Run();
}
