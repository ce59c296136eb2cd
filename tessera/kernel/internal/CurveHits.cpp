#include "tessera/kernel/internal/CurveHits.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/ConicFrame.h"

// The solvers report crossings, touches and span ends as they find them, sometimes twice; ends of the curves
// are added here. Hits that belong together are those between which the curves never part by more than the
// tolerance: a touch that rounding split into two crossings, a crossing at a flat angle beside an end. Curves
// with contact of order m part like s^(m+1); m is 3 where the apexes of two ellipses osculate, so such a
// place is at most about (tol size^3)^(1/4) long. Anything longer is a stretch on which the curves coincide.

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
constexpr double kTangentSine = 1e-6; // flatter crossings count as touches: they leave 1e-12 of their size

// Parameter length after which the curve is back where it was; 0 for open curves.
double Period(const TopolCurve& c) {
    const bool turns = c.record->form == kFormArc || c.record->form == kFormConic;
    if (turns)
        return !c.bounded || c.record->closed ? kTwoPi : 0.0;
    return c.record->form == kFormBCurve && c.record->closed ? 1.0 : 0.0;
}

// Fits a carrier parameter into the limits, an overshoot of `slack` included.
bool FitParameter(const TopolCurve& c, double tol, double* t) {
    const int form = c.record->form;
    if (form == kFormLine) {
        if (!c.bounded)
            return true;
        const double slack = tol / c.size;
        if (!(*t >= -slack && *t <= 1.0 + slack))
            return false;
        *t = std::clamp(*t, 0.0, 1.0);
        return true;
    }
    if (form == kFormBCurve) {
        if (c.record->closed && !(*t >= 0.0 && *t <= 1.0)) // merging goes on over the seam
            *t -= std::floor(*t);
        *t = std::clamp(*t, 0.0, 1.0);
        return true;
    }
    double out[6];
    evcrve(c.record, 1, *t, out);
    const double slack = std::clamp(tol / std::hypot(out[3], out[4]), 1e-12, 0.1);
    if (LiftAngle(c.limits, c.bounded ? slack : 1e-10, t))
        return true;
    *t = std::remainder(*t, kTwoPi);
    return !c.bounded;
}

double SineBetween(KC_CURVE_struct_s* a, double t1, KC_CURVE_struct_s* b, double t2) {
    double p[6], q[6];
    evcrve(a, 1, t1, p);
    evcrve(b, 1, t2, q);
    const double lengths = std::hypot(p[3], p[4]) * std::hypot(q[3], q[4]);
    return lengths > 0.0 ? std::fabs(p[3] * q[4] - p[4] * q[3]) / lengths : 1.0;
}

// Nearest parameter to (x, y) between lo and hi by Newton's method from t; good for curves that nearly
// coincide.
double LocalFoot(KC_CURVE_struct_s* c, double x, double y, double t, double lo, double hi, double* distance) {
    double out[9];
    for (int step = 0;; ++step) {
        evcrve(c, 2, t, out);
        const double dx = out[0] - x, dy = out[1] - y;
        *distance = std::hypot(dx, dy);
        const double speedSq = out[3] * out[3] + out[4] * out[4];
        const double slope = dx * out[3] + dy * out[4], bend = speedSq + dx * out[6] + dy * out[7];
        const double next = std::clamp(t - slope / (bend > 0.1 * speedSq ? bend : speedSq), lo, hi);
        if (step == 12 || !(std::fabs(next - t) > 1e-15))
            return t;
        t = next;
    }
}

// True when the first curve from t0 to t1 keeps within tol of the second between u0 and u1.
bool Follows(KC_CURVE_struct_s* a, double t0, double t1, KC_CURVE_struct_s* b, double u0, double u1,
             double tol) {
    const double lo = std::min(u0, u1), hi = std::max(u0, u1);
    for (const double f : {0.5, 0.25, 0.75, 0.1, 0.9}) {
        double p[3], distance = 0.0;
        evcrve(a, 0, t0 + f * (t1 - t0), p);
        LocalFoot(b, p[0], p[1], u0 + f * (u1 - u0), lo, hi, &distance);
        if (!(distance <= tol))
            return false;
    }
    return true;
}

double LargestRadius(const ConicFrame& f) {
    return std::max(f.a, f.b);
}

/// Hands every z of a record to visit, by reference.
template <class Visit>
void VisitHeights(KC_CURVE_struct_s* c, Visit visit) {
    const auto each = [&visit](auto&... xyz) { (visit(xyz[2]), ...); };
    if (c->form == kFormLine) {
        auto* line = static_cast<EVC_line_s*>(c->data);
        each(line->base, line->direction);
    } else if (c->form == kFormArc) {
        auto* arc = static_cast<EVC_arc_s*>(c->data);
        each(arc->centre, arc->xAxis, arc->yAxis);
    } else if (c->form == kFormConic) {
        auto* conic = static_cast<EVC_conic_s*>(c->data);
        each(conic->centre, conic->majorAxis, conic->minorAxis);
    } else if (c->form == kFormBCurve) {
        const BCURVE_DATA* d = static_cast<EVC_bcurve_s*>(c->data)->definition;
        for (int i = 0; i < d->numPoles; ++i)
            visit(d->poles[i][2]);
    }
}

} // namespace

bool FlattenRecord(KC_CURVE_struct_s*& c, RecordPtr& flat) {
    if (!c || !c->data)
        return true;
    bool isFlat = true;
    VisitHeights(c, [&isFlat](double z) { isFlat = isFlat && z == 0.0; });
    if (isFlat)
        return true;
    flat.reset(evcrvCopy(c));
    if (!flat)
        return false;
    c = flat.get();
    VisitHeights(c, [](double& z) { z = 0.0; });
    return true;
}

bool MakeTopolCurve(KC_CURVE_struct_s* c, CRV_TOPOL_extent_t extent, TopolCurve& out) {
    if (!c || !c->data)
        return false;
    out = {c, extent == CRV_TOPOL_BOUNDED, {0.0, 1.0}, 0.0, 0.0};
    evcrvp(c, out.limits);
    if (c->form == kFormLine) {
        const auto* line = static_cast<const EVC_line_s*>(c->data);
        out.size = std::hypot(line->direction[0], line->direction[1]);
        for (int k = 0; k < 2; ++k)
            out.reach = std::max(
                {out.reach, std::fabs(line->base[k]), std::fabs(line->base[k] + line->direction[k])});
        return std::isfinite(out.size + out.reach);
    }
    if (c->form == kFormArc || c->form == kFormConic) {
        const ConicFrame f = MakeConicFrame(c);
        out.size = LargestRadius(f);
        out.reach = std::max(std::fabs(f.centre[0]), std::fabs(f.centre[1])) + out.size;
        return std::isfinite(out.reach);
    }
    const BCURVE_DATA* d = c->form == kFormBCurve ? AskUsableBcurve(c) : nullptr;
    if (!d)
        return false;
    out.bounded = true;
    double lo[2] = {1e300, 1e300}, hi[2] = {-1e300, -1e300};
    for (int i = 0; i < d->numPoles; ++i) {
        for (int k = 0; k < 2; ++k) {
            lo[k] = std::min(lo[k], d->poles[i][k]);
            hi[k] = std::max(hi[k], d->poles[i][k]);
            out.reach += 0.0 * d->poles[i][k]; // keeps a NaN or an infinity
        }
    }
    out.size = std::hypot(hi[0] - lo[0], hi[1] - lo[1]);
    out.reach += std::max({std::fabs(lo[0]), std::fabs(lo[1]), std::fabs(hi[0]), std::fabs(hi[1])});
    return std::isfinite(out.reach);
}

void CurveHits::Offer(double t1, double t2, HitKind kind) {
    if (failed_ || !std::isfinite(t1) || !std::isfinite(t2) || !FitParameter(a_, tol_, &t1) ||
        !FitParameter(b_, tol_, &t2))
        return;
    double p[3], q[3];
    evcrve(a_.record, 0, t1, p);
    evcrve(b_.record, 0, t2, q);
    const double gap = std::hypot(p[0] - q[0], p[1] - q[1]);
    if (!(gap <= tol_))
        return;
    if (count_ == capacity_) {
        const int grown = capacity_ ? 2 * capacity_ : 16;
        auto* block = static_cast<Hit*>(
            SM_realloc(hits_.get(), static_cast<std::size_t>(grown) * sizeof(Hit), "CRV_TOPOL_intersect:0"));
        if (!block) {
            failed_ = true;
            return;
        }
        hits_.release();
        hits_.reset(block);
        capacity_ = grown;
    }
    hits_[static_cast<std::size_t>(count_++)] = {t1, t2, 0.5 * (p[0] + q[0]), 0.5 * (p[1] + q[1]), gap, kind};
}

bool CurveHits::OfferEndsOf(const TopolCurve& from, const TopolCurve& onto, bool swapped) {
    if (!from.bounded || (from.record->closed && from.size > 0.0))
        return true;
    for (const double t : from.limits) {
        double p[3], q[3], other = 0.0;
        evcrve(from.record, 0, t, p);
        const int state = onto.bounded ? em015cBounded(onto.record, p, &other, q, nullptr)
                                       : em015c(onto.record, p, 0, &other, q, nullptr);
        if (state == kInversionFailed)
            return false;
        Offer(swapped ? other : t, swapped ? t : other, HitKind::End);
    }
    return true;
}

bool CurveHits::OfferEnds() {
    return OfferEndsOf(a_, b_, false) && OfferEndsOf(b_, a_, true);
}

// Sweeps along x; of hits within the tolerance of each other the best stays.
void CurveHits::MergeNear() {
    Hit* hits = hits_.get();
    std::sort(hits, hits + count_,
              [](const Hit& p, const Hit& q) { return p.x < q.x || (p.x == q.x && p.y < q.y); });
    const double exact = 8.0 * 2.2e-16 * std::max(a_.reach, b_.reach);
    const auto rank =
        [exact](const Hit& h) { // an end that lies on the other curve to rounding keeps its parameter
            return h.kind == HitKind::End ? (h.gap <= exact ? -1 : 3) : static_cast<int>(h.kind);
        };
    int kept = 0;
    for (int i = 0; i < count_; ++i) {
        int same = kept - 1;
        while (same >= 0 && hits[i].x - hits[same].x <= tol_ && std::fabs(hits[i].y - hits[same].y) > tol_)
            --same;
        if (same < 0 || hits[i].x - hits[same].x > tol_) {
            hits[kept++] = hits[i];
            continue;
        }
        const bool touch = hits[same].kind == HitKind::Touch || hits[i].kind == HitKind::Touch;
        const int left = rank(hits[same]), right = rank(hits[i]);
        if (right < left || (right == left && hits[i].t1 < hits[same].t1)) {
            const double x = hits[same].x; // the sweep needs its order kept
            hits[same] = hits[i];
            hits[same].x = x;
        }
        if (touch)
            hits[same].kind = HitKind::Touch;
    }
    count_ = kept;
}

// True when the curves stay within the tolerance all the way from one hit to the next. Walked along either
// curve: the parameters of one may hardly move it, where poles coincide.
bool CurveHits::StaysWithin(const Hit& from, const Hit& to) const {
    double back = to.t2;
    const double period = Period(b_);
    if (period > 0.0)
        back = from.t2 + std::remainder(to.t2 - from.t2, period);
    return Follows(a_.record, from.t1, to.t1, b_.record, from.t2, back, tol_) &&
           Follows(b_.record, from.t2, back, a_.record, from.t1, to.t1, tol_);
}

double CurveHits::LongestTouch() const {
    const double size = std::min(a_.record->form == kFormLine && !a_.bounded ? b_.size : a_.size,
                                 b_.record->form == kFormLine && !b_.bounded ? a_.size : b_.size);
    return 4.0 * std::sqrt(std::sqrt(tol_ * size) * size);
}

// True when, going forwards (side 1) or backwards (-1) along the first curve, the second stays within the
// tolerance for longer than a touch can last.
bool CurveHits::CoincidesBeside(const Hit& hit, double side) const {
    const double length = 1.25 * LongestTouch();
    double p[6], q[6];
    evcrve(a_.record, 1, hit.t1, p);
    evcrve(b_.record, 1, hit.t2, q);
    const double stepA = length / std::hypot(p[3], p[4]), stepB = length / std::hypot(q[3], q[4]);
    const double end = hit.t1 + side * stepA;
    const bool ends = Period(a_) == 0.0 && (a_.bounded && (end < a_.limits[0] || end > a_.limits[1]));
    if (!std::isfinite(stepA + stepB) || ends)
        return false;
    double lo = hit.t2 - 2.0 * stepB, hi = hit.t2 + 2.0 * stepB;
    if (b_.bounded && Period(b_) == 0.0) {
        lo = std::max(lo, b_.limits[0]);
        hi = std::min(hi, b_.limits[1]);
    }
    for (const double f : {1.0, 0.5, 0.8}) {
        evcrve(a_.record, 0, hit.t1 + side * f * stepA, p);
        double forwards = 0.0, backwards = 0.0;
        LocalFoot(b_.record, p[0], p[1], std::min(hi, hit.t2 + f * stepB), lo, hi, &forwards);
        LocalFoot(b_.record, p[0], p[1], std::max(lo, hit.t2 - f * stepB), lo, hi, &backwards);
        if (!(std::min(forwards, backwards) <= tol_))
            return false;
    }
    return true;
}

// Hits that stand alone on a stretch, such as a knot of one curve or the seam of a closed one.
void CurveHits::DropStretches() {
    Hit* end = std::remove_if(hits_.get(), hits_.get() + count_, [this](const Hit& hit) {
        return CoincidesBeside(hit, 1.0) || CoincidesBeside(hit, -1.0);
    });
    count_ = static_cast<int>(end - hits_.get());
}

// A run of joined hits becomes one touch, or nothing when it is longer than a touch can be.
void CurveHits::ReplaceCluster(int first, int last, Hit* kept) {
    const Hit* hits = hits_.get();
    double extent = 0.0;
    int touch = -1;
    for (int i = first; i <= last; ++i) {
        if (i > first)
            extent += std::hypot(hits[i].x - hits[i - 1].x, hits[i].y - hits[i - 1].y);
        if (hits[i].kind == HitKind::Touch && (touch < 0 || hits[i].gap < hits[touch].gap))
            touch = i;
    }
    kept->gap = -1.0;
    if (extent > LongestTouch())
        return;
    *kept = hits[touch >= 0 ? touch : first];
    if (touch < 0) {
        double p[3], distance = 0.0;
        const double t1 = 0.5 * (hits[first].t1 + hits[last].t1);
        evcrve(a_.record, 0, t1, p);
        const double span = Period(b_) > 0.0 ? std::remainder(hits[last].t2 - hits[first].t2, Period(b_))
                                             : hits[last].t2 - hits[first].t2;
        const double lo = hits[first].t2 + std::min(0.0, span), hi = hits[first].t2 + std::max(0.0, span);
        const double t2 = LocalFoot(b_.record, p[0], p[1], 0.5 * (lo + hi), lo, hi, &distance);
        *kept = {t1, t2, p[0], p[1], distance, HitKind::Touch};
    }
    kept->kind = HitKind::Touch;
}

void CurveHits::MergeJoined() {
    Hit* hits = hits_.get();
    std::sort(hits, hits + count_, [](const Hit& p, const Hit& q) { return p.t1 < q.t1; });
    // On a closed first curve start after a place where the curves part, so that no run is cut by the seam.
    const double period = Period(a_);
    if (period > 0.0 && count_ > 1) {
        int cut = -1;
        for (int i = 0; i < count_ && cut < 0; ++i) {
            Hit next = hits[(i + 1) % count_];
            next.t1 += i + 1 == count_ ? period : 0.0;
            if (!StaysWithin(hits[i], next))
                cut = i;
        }
        if (cut < 0) { // the curves coincide all round
            count_ = 0;
            return;
        }
        for (int i = 0; i <= cut; ++i)
            hits[i].t1 += period;
        std::rotate(hits, hits + cut + 1, hits + count_);
    }
    int kept = 0;
    for (int first = 0; first < count_;) {
        int last = first;
        while (last + 1 < count_ && StaysWithin(hits[last], hits[last + 1]))
            ++last;
        Hit hit = hits[first];
        if (last > first)
            ReplaceCluster(first, last, &hit);
        if (hit.gap >= 0.0)
            hits[kept++] = hit;
        first = last + 1;
    }
    count_ = kept;
}

bool CurveHits::Merge() {
    if (failed_)
        return false;
    MergeNear();
    MergeJoined();
    DropStretches();
    for (int i = 0; i < count_; ++i) {
        Hit& hit = hits_[static_cast<std::size_t>(i)];
        FitParameter(a_, tol_, &hit.t1);
        FitParameter(b_, tol_, &hit.t2);
        if (SineBetween(a_.record, hit.t1, b_.record, hit.t2) <= kTangentSine)
            hit.kind = HitKind::Touch;
        double p[3], q[3];
        evcrve(a_.record, 0, hit.t1, p);
        evcrve(b_.record, 0, hit.t2, q);
        hit.x = 0.5 * (p[0] + q[0]);
        hit.y = 0.5 * (p[1] + q[1]);
    }
    return true;
}
