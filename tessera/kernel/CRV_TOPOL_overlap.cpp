#include "tessera/kernel/CRV_TOPOL.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/CurveHits.h"
#include "tessera/kernel/internal/NearestPoint.h"
#include "tessera/kernel/internal/SmArray.h"
#include "tessera/kernel/internal/SpanTree.h"

// Two analytic pieces that coincide anywhere coincide between two of their ends. So the first record is cut
// at its own knots and at the places nearest to the ends and knots of the second, and each piece either
// follows the second curve or does not: decided at enough inner samples to tell the polynomials apart, by
// distance and by tangent. Successive pieces that follow it make a stretch.

namespace {

// A record as the other one's partner: nearest points on the bounded curve, cuts, samples per piece.
class Partner {
public:
    bool Init(KC_CURVE_struct_s* c, double distTol) {
        if (!MakeTopolCurve(c, CRV_TOPOL_BOUNDED, curve_))
            return false;
        if (c->form == kFormBCurve && !tree_.Build(static_cast<EVC_bcurve_s*>(c->data)))
            return false;
        double p[3], q[3];
        evcrve(c, 0, Low(), p);
        evcrve(c, 0, High(), q);
        const bool meets = std::hypot(p[0] - q[0], p[1] - q[1]) <= distTol;
        closed_ = c->closed || (c->form == kFormBCurve && meets);
        return true;
    }
    double Low() const { return curve_.limits[0]; }
    double High() const { return curve_.limits[1]; }
    /// Parameter length of one turn; 0 when open.
    double Period() const { return closed_ ? High() - Low() : 0.0; }
    bool IsClosed() const { return closed_; }
    KC_CURVE_struct_s* Record() const { return curve_.record; }

    bool Nearest(const double p[3], double* t, double* distance) const {
        double foot[3];
        if (curve_.record->form != kFormBCurve) {
            if (em015cBounded(curve_.record, p, t, foot, nullptr) == kInversionFailed)
                return false;
        } else {
            NearestPoint nearest(p);
            if (!tree_.FindNearest(p, nearest))
                return false;
            *t = nearest.T();
            std::copy(nearest.Point(), nearest.Point() + 3, foot);
        }
        *distance = std::hypot(foot[0] - p[0], foot[1] - p[1]);
        return true;
    }
    /// Ends and inner knots: number i of CutCount.
    int CutCount() const { return IsBcurve() ? Definition()->numPoles - Definition()->degree + 1 : 2; }
    double Cut(int i) const {
        if (!IsBcurve())
            return i == 0 ? Low() : High();
        const BCURVE_DATA* d = Definition();
        const double lo = d->knots[d->degree], hi = d->knots[d->numPoles];
        return (d->knots[d->degree + i] - lo) / (hi - lo);
    }
    /// Inner samples that tell a piece of this form from any other of its kind.
    int Samples() const {
        if (IsBcurve())
            return 2 * Definition()->degree + 3;
        return Record()->form == kFormLine ? 3 : 13;
    }

private:
    bool IsBcurve() const { return Record()->form == kFormBCurve; }
    const BCURVE_DATA* Definition() const {
        return static_cast<const EVC_bcurve_s*>(Record()->data)->definition;
    }

    TopolCurve curve_{};
    SpanTree tree_;
    bool closed_ = false;
};

struct Tolerances {
    double distance, sine;
};

// A stretch: parameters on both records, unwrapped over the second's seam.
struct Stretch {
    double a0 = 0.0, a1 = 0.0, b0 = 0.0, b1 = 0.0;
    double Length() const { return a1 - a0; }
};

// Ascending parameters of the first record at which a common stretch can begin or end.
class Cuts {
public:
    bool Collect(const Partner& a, const Partner& b, double distTol) {
        const int room = a.CutCount() + b.CutCount();
        t_ = MakeSmArray<double>(static_cast<std::size_t>(room), "CRV_TOPOL_overlap:0");
        if (!t_)
            return false;
        for (int i = 0; i < a.CutCount(); ++i)
            t_[static_cast<std::size_t>(count_++)] = a.Cut(i);
        for (int i = 0; i < b.CutCount(); ++i) {
            double p[3], t = 0.0, distance = 0.0;
            evcrve(b.Record(), 0, b.Cut(i), p);
            if (!a.Nearest(p, &t, &distance))
                return false;
            if (distance <= distTol)
                t_[static_cast<std::size_t>(count_++)] = t;
        }
        std::sort(t_.get(), t_.get() + count_);
        int kept = 0;
        for (int i = 0; i < count_; ++i)
            if (kept == 0 || !IsOneCut(a, t_[static_cast<std::size_t>(kept - 1)],
                                       t_[static_cast<std::size_t>(i)], distTol))
                t_[static_cast<std::size_t>(kept++)] = t_[static_cast<std::size_t>(i)];
        count_ = kept;
        t_[static_cast<std::size_t>(kept - 1)] = a.High();
        return true;
    }
    int Pieces() const { return count_ - 1; }
    double operator[](int i) const { return t_[static_cast<std::size_t>(i)]; }

private:
    // Cuts at one place, up to rounding and the tolerance, are one: no piece between them could be judged.
    static bool IsOneCut(const Partner& a, double t, double next, double distTol) {
        const double range = a.High() - a.Low();
        if (next - t <= 1e-12 * range)
            return true;
        double p[3], q[3];
        if (next - t > 1e-6 * range)
            return false;
        evcrve(a.Record(), 0, t, p);
        evcrve(a.Record(), 0, next, q);
        return std::hypot(p[0] - q[0], p[1] - q[1]) <= distTol;
    }

    SmArray<double> t_;
    int count_ = 0;
};

bool TangentsAgree(const Partner& a, double t, const Partner& b, double u, double sine) {
    double p[6], q[6];
    evcrve(a.Record(), 1, t, p);
    evcrve(b.Record(), 1, u, q);
    const double lengths = std::hypot(p[3], p[4]) * std::hypot(q[3], q[4]);
    return std::fabs(p[3] * q[4] - p[4] * q[3]) <= sine * lengths;
}

enum class Verdict { Apart, Follows, Failed };

// Whether the first record follows the second from t0 to t1, and where on the second that is.
Verdict JudgePiece(const Partner& a, const Partner& b, double t0, double t1, const Tolerances& tol,
                   Stretch* out) {
    const int samples = std::max(a.Samples(), b.Samples());
    double last = 0.0;
    for (int i = 0; i <= samples + 1; ++i) {
        const double t = i > samples ? t1 : t0 + (t1 - t0) * i / (samples + 1);
        double p[3], u = 0.0, distance = 0.0;
        evcrve(a.Record(), 0, t, p);
        if (!b.Nearest(p, &u, &distance))
            return Verdict::Failed;
        const bool inner = i > 0 && i <= samples;
        if (distance > tol.distance || (inner && !TangentsAgree(a, t, b, u, tol.sine)))
            return Verdict::Apart;
        if (i > 0 && b.IsClosed())
            u = last + std::remainder(u - last, b.Period());
        if (i == 0)
            out->b0 = u;
        last = u;
    }
    out->a0 = t0;
    out->a1 = t1;
    out->b1 = last;
    return Verdict::Follows;
}

// Appends a piece that begins where the stretch ends.
void Extend(Stretch& stretch, const Stretch& piece) {
    stretch.a1 += piece.Length();
    stretch.b1 += piece.b1 - piece.b0;
}

bool FindLongest(const Partner& a, const Partner& b, const Cuts& cuts, const Tolerances& tol,
                 Stretch* longest) {
    Stretch run, first;
    bool inRun = false, fromStart = false;
    *longest = {};
    for (int i = 0; i < cuts.Pieces(); ++i) {
        Stretch piece;
        const Verdict verdict = JudgePiece(a, b, cuts[i], cuts[i + 1], tol, &piece);
        if (verdict == Verdict::Failed)
            return false;
        if (verdict == Verdict::Apart) {
            inRun = false;
            continue;
        }
        if (inRun) {
            Extend(run, piece);
        } else {
            run = piece;
            fromStart = i == 0;
        }
        inRun = true;
        if (fromStart)
            first = run;
        if (run.Length() > longest->Length())
            *longest = run;
    }
    // On a closed curve the last run goes on over the seam.
    if (inRun && !fromStart && a.IsClosed() && first.Length() > 0.0) {
        Extend(run, first);
        if (run.Length() > longest->Length())
            *longest = run;
    }
    return true;
}

// The parameters lie so near that the tolerance explains the difference.
bool IsSamePlace(const Partner& c, double t, double u, double distTol) {
    double p[3], q[3];
    evcrve(c.Record(), 0, t, p);
    evcrve(c.Record(), 0, u, q);
    return std::fabs(t - u) <= 0.25 * (c.High() - c.Low()) && std::hypot(p[0] - q[0], p[1] - q[1]) <= distTol;
}

// From one end to the other, or once round wherever it begins.
bool Covers(const Partner& c, double t0, double t1, double distTol) {
    if (t0 > t1)
        std::swap(t0, t1);
    if (c.IsClosed())
        return t1 - t0 >= c.Period() || IsSamePlace(c, t1, t0 + c.Period(), distTol);
    return IsSamePlace(c, t0, c.Low(), distTol) && IsSamePlace(c, t1, c.High(), distTol);
}

CRV_TOPOL_state_t StateOf(const Partner& a, const Partner& b, const Stretch& s, double distTol) {
    const bool coversA = Covers(a, s.a0, s.a1, distTol), coversB = Covers(b, s.b0, s.b1, distTol);
    if (coversA)
        return coversB ? CRV_TOPOL_IDENTICAL : CRV_TOPOL_CONTAINED;
    return coversB ? CRV_TOPOL_CONTAINS : CRV_TOPOL_PARTIAL;
}

// True when the stretch has a length that the tolerance does not explain.
bool IsLong(const Partner& a, const Stretch& s, double paramTol, double distTol) {
    double p[3], q[3], farthest = 0.0;
    evcrve(a.Record(), 0, s.a0, p);
    for (const double f : {0.5, 1.0}) {
        evcrve(a.Record(), 0, s.a0 + f * s.Length(), q);
        farthest = std::max(farthest, std::hypot(q[0] - p[0], q[1] - p[1]));
    }
    return s.Length() > 0.0 && s.Length() >= paramTol && farthest > distTol;
}

} // namespace

int CRV_TOPOL_overlap(KC_CURVE_struct_s* a, KC_CURVE_struct_s* b, double distTol, double angTolRad,
                      double paramTol, CRV_TOPOL_state_t* state, double rangeA[2], double rangeB[2]) {
    RecordPtr flatA, flatB; // outlive the partners
    Partner first, second;
    Cuts cuts;
    Stretch stretch;
    if (!(distTol > 0.0) || !(angTolRad >= 0.0) || !state || !FlattenRecord(a, flatA) ||
        !FlattenRecord(b, flatB) || !first.Init(a, distTol) || !second.Init(b, distTol))
        return 1;
    const double sine = angTolRad < 0.5 * std::numbers::pi ? std::sin(angTolRad) : 1.0;
    const Tolerances tol{distTol, std::max(sine, 1e-9)};
    if (!cuts.Collect(first, second, distTol) || !FindLongest(first, second, cuts, tol, &stretch))
        return 1;
    if (!IsLong(first, stretch, paramTol, distTol)) {
        *state = CRV_TOPOL_SEPARATE;
        return 0;
    }
    *state = StateOf(first, second, stretch, distTol);
    if (second.IsClosed()) { // back to the turn that begins inside the limits
        const double low = std::min(stretch.b0, stretch.b1), turn = second.Period();
        const double shift = turn * std::floor((low - second.Low()) / turn + 1e-12);
        stretch.b0 -= shift;
        stretch.b1 -= shift;
    }
    if (rangeA) {
        rangeA[0] = stretch.a0;
        rangeA[1] = stretch.a1;
    }
    if (rangeB) {
        rangeB[0] = stretch.b0;
        rangeB[1] = stretch.b1;
    }
    return 0;
}
