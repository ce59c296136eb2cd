#include "tessera/kernel/CRV_TOPOL.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tessera/kernel/internal/CurveHits.h"

// The records are put into a fixed order first, by form and then by content, so that swapped arguments run
// through the same arithmetic. The solver of the pair reports what it finds on the carriers, the ends of
// bounded curves are added, and CurveHits makes one hit of what belongs together.

namespace {

constexpr double kRounding = 32.0 * 2.2e-16; // of the largest coordinate: no tolerance is finer

// A fixed order of two records, the same whichever comes first.
bool ComesAfter(const TopolCurve& a, const TopolCurve& b) {
    if (a.record->form != b.record->form)
        return a.record->form > b.record->form;
    if (a.bounded != b.bounded)
        return a.bounded;
    if (a.size != b.size)
        return a.size > b.size;
    for (const double f : {0.0, 1.0, 0.375}) {
        double p[3], q[3];
        evcrve(a.record, 0, a.limits[0] + f * (a.limits[1] - a.limits[0]), p);
        evcrve(b.record, 0, b.limits[0] + f * (b.limits[1] - b.limits[0]), q);
        if (p[0] != q[0] || p[1] != q[1])
            return p[0] > q[0] || (p[0] == q[0] && p[1] > q[1]);
    }
    return false;
}

bool Solve(CurveHits& hits) {
    const int first = hits.A().record->form, second = hits.B().record->form;
    const bool isPoint = (first == kFormLine && hits.A().size == 0.0) ||
                         (second == kFormLine && hits.B().size == 0.0) || hits.A().size == 0.0 ||
                         hits.B().size == 0.0;
    if (isPoint) // nothing to cross: its ends say it all
        return true;
    if (second == kFormBCurve)
        return first == kFormBCurve ? IntersectBcurves(hits) : IntersectWithBcurve(hits);
    if (second == kFormLine)
        IntersectLines(hits);
    else if (first == kFormLine)
        IntersectLineConic(hits);
    else
        IntersectConics(hits);
    return true;
}

} // namespace

int CRV_TOPOL_intersect(KC_CURVE_struct_s* a, CRV_TOPOL_extent_t extentA, KC_CURVE_struct_s* b,
                        CRV_TOPOL_extent_t extentB, double tol, int* n, CRV_TOPOL_hit_t** hits) {
    TopolCurve first, second;
    RecordPtr flatA, flatB;
    if (!n || !hits || !(tol > 0.0) || !FlattenRecord(a, flatA) || !FlattenRecord(b, flatB) ||
        !MakeTopolCurve(a, extentA, first) || !MakeTopolCurve(b, extentB, second))
        return 1;
    const bool swapped = ComesAfter(first, second);
    if (swapped)
        std::swap(first, second);
    CurveHits list(first, second, std::max(tol, kRounding * std::max(first.reach, second.reach)));
    if (!Solve(list) || !list.OfferEnds() || !list.Merge())
        return 1;
    SmArray<CRV_TOPOL_hit_t> out;
    if (list.Count() > 0) {
        out = MakeSmArray<CRV_TOPOL_hit_t>(static_cast<std::size_t>(list.Count()), "CRV_TOPOL_intersect:1");
        if (!out)
            return 1;
    }
    for (int i = 0; i < list.Count(); ++i) {
        const Hit& hit = list[i];
        CRV_TOPOL_hit_t& to = out[static_cast<std::size_t>(i)];
        to.t1 = swapped ? hit.t2 : hit.t1;
        to.t2 = swapped ? hit.t1 : hit.t2;
        to.point[0] = hit.x;
        to.point[1] = hit.y;
        to.point[2] = 0.0;
        to.tangent = hit.kind == HitKind::Touch ? 1 : 0;
    }
    std::sort(out.get(), out.get() + list.Count(), [](const CRV_TOPOL_hit_t& p, const CRV_TOPOL_hit_t& q) {
        return p.t1 < q.t1 || (p.t1 == q.t1 && p.t2 < q.t2);
    });
    *n = list.Count();
    *hits = out.release();
    return 0;
}
