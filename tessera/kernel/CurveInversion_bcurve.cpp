#include "tessera/kernel/CurveInversion.h"

#include <algorithm>
#include <cmath>

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/BernsteinRoots.h"
#include "tessera/kernel/internal/NearestPoint.h"
#include "tessera/kernel/internal/SmArray.h"

// Nearest point of a B-curve. Every knot span lies in the hull of its poles, which bounds its distance from
// below and above; spans whose lower bound exceeds the least upper bound are out without ever being put in
// Bezier form. The survivors are taken nearest first. On each, the coefficients of the squared distance give
// a sharper bound, and all sign changes of its derivative are found (T. W. Sederberg and T. Nishita,
// Computer-Aided Design 22 (1990) 538-549; Y. L. Ma and W. T. Hewitt, Computer Aided Geometric Design 20
// (2003) 79-99, use the same equation), so that no local minimum hides another. Span ends always take part,
// which covers kinks.

namespace {

struct Candidate {
    double boundSq;
    int span;
};

// Least and largest squared distance from p to the box and the poles first .. last.
void HullBounds(const BCURVE_DATA* d, int first, int last, const double p[3], double* leastSq,
                double* mostSq) {
    double lo[3] = {}, hi[3] = {};
    *mostSq = 0.0;
    for (int i = first; i <= last; ++i) {
        double distanceSq = 0.0;
        for (int k = 0; k < 3; ++k) {
            const double x = d->poles[i][k] - p[k];
            lo[k] = i == first ? x : std::min(lo[k], x);
            hi[k] = i == first ? x : std::max(hi[k], x);
            distanceSq += x * x;
        }
        *mostSq = std::max(*mostSq, distanceSq);
    }
    *leastSq = 0.0;
    for (int k = 0; k < 3; ++k) {
        const double gap = std::max({lo[k], -hi[k], 0.0});
        *leastSq += gap * gap;
    }
}

// One Bezier span seen from p.
class SpanSearch {
public:
    /// Parameters are those of span `span` of d, or of the piece itself when d is null.
    SpanSearch(const BCURVE_DATA* d, int span, const double* bezier, int degree, bool polynomial,
               const double p[3], NearestPoint& nearest)
        : d_(d), span_(span), bezier_(bezier), degree_(degree), polynomial_(polynomial), p_(p),
          nearest_(nearest) {}

    void Run() {
        const int n = degree_;
        double moved[3][Bernstein::kMaxSpanDegree + 1];
        for (int i = 0; i <= n; ++i) {
            w_[i] = bezier_[4 * i + 3];
            for (int k = 0; k < 3; ++k)
                moved[k][i] = bezier_[4 * i + k] - w_[i] * p_[k];
        }
        Offer(0.0);
        Offer(1.0);
        double square[Bernstein::kMaxCoefficients] = {}, slope[Bernstein::kMaxCoefficients] = {};
        for (const double* x : {moved[0], moved[1], moved[2]}) {
            double dx[Bernstein::kMaxSpanDegree + 1], term[Bernstein::kMaxCoefficients];
            Bernstein::Product(x, n, x, n, term);
            Accumulate(term, 2 * n, square);
            Bernstein::Derivative(x, n, dx);
            Bernstein::Product(x, n, dx, n - 1, term);
            Accumulate(term, 2 * n - 1, slope);
        }
        if (!CanBeNearer(square))
            return;
        int slopeDegree = 2 * n - 1;
        if (!polynomial_)
            slopeDegree = MakeRationalSlope(square, slope);
        OfferStationary(slope, slopeDegree);
    }

private:
    static void Accumulate(const double* term, int degree, double* sum) {
        for (int i = 0; i <= degree; ++i)
            sum[i] += term[i];
    }

    // False when |X|^2 - reach^2 w^2 has no negative coefficient: the whole span is farther than the best.
    bool CanBeNearer(const double* square) const {
        double weightSq[Bernstein::kMaxCoefficients];
        Bernstein::Product(w_, degree_, w_, degree_, weightSq);
        for (int i = 0; i <= 2 * degree_; ++i)
            if (square[i] <= nearest_.ReachSq() * weightSq[i])
                return true;
        return false;
    }

    // (X . X') w - |X|^2 w' in place of X . X'.
    int MakeRationalSlope(const double* square, double* slope) const {
        double dw[Bernstein::kMaxSpanDegree + 1], first[Bernstein::kMaxCoefficients],
            second[Bernstein::kMaxCoefficients];
        Bernstein::Derivative(w_, degree_, dw);
        Bernstein::Product(slope, 2 * degree_ - 1, w_, degree_, first);
        Bernstein::Product(square, 2 * degree_, dw, degree_ - 1, second);
        for (int i = 0; i <= 3 * degree_ - 1; ++i)
            slope[i] = first[i] - second[i];
        return 3 * degree_ - 1;
    }

    void OfferStationary(const double* slope, int slopeDegree) {
        double largest = 0.0, root[Bernstein::kMaxCoefficients];
        for (int i = 0; i <= slopeDegree; ++i)
            largest = std::max(largest, std::fabs(slope[i]));
        const int roots = Bernstein::SignChanges(slope, slopeDegree, 1e-16 * largest, root);
        for (int i = 0; i < roots; ++i) {
            const double u = Polish(root[i]);
            Offer(u);
        }
    }

    // Newton on (P - p) . P' = 0, kept only while the distance does not grow.
    double Polish(double u) const {
        double p[3], d1[3], d2[3];
        double bestSq = 1e300, best = u;
        for (int step = 0; step < 4; ++step) {
            EvaluateBezier(bezier_, degree_, u, p, d1, d2);
            double distanceSq = 0.0, slope = 0.0, curvature = 0.0;
            for (int k = 0; k < 3; ++k) {
                const double x = p[k] - p_[k];
                distanceSq += x * x;
                slope += x * d1[k];
                curvature += d1[k] * d1[k] + x * d2[k];
            }
            if (!(distanceSq < bestSq))
                break;
            bestSq = distanceSq;
            best = u;
            const double next = u - slope / curvature;
            if (!(curvature > 0.0) || !(next >= 0.0 && next <= 1.0) || next == u)
                break;
            u = next;
        }
        return best;
    }

    void Offer(double u) {
        double p[3], d1[3], d2[3];
        EvaluateBezier(bezier_, degree_, u, p, d1, d2);
        nearest_.Offer(d_ ? SpanParameter(d_, span_, u) : u, p);
    }

    const BCURVE_DATA* d_;
    int span_;
    const double* bezier_;
    int degree_;
    bool polynomial_;
    const double* p_;
    NearestPoint& nearest_;
    double w_[Bernstein::kMaxSpanDegree + 1];
};

// A straight span, from its poles.
void SearchStraight(const BCURVE_DATA* d, int s, const double p[3], NearestPoint& nearest) {
    const double *a = d->poles[s - 1], *b = d->poles[s];
    double along = 0.0, lengthSq = 0.0;
    for (int k = 0; k < 3; ++k) {
        along += (p[k] - a[k]) * (b[k] - a[k]);
        lengthSq += (b[k] - a[k]) * (b[k] - a[k]);
    }
    const double f = lengthSq > 0.0 ? std::clamp(along / lengthSq, 0.0, 1.0) : 0.0;
    double foot[3], distanceSq = 0.0;
    for (int k = 0; k < 3; ++k) {
        foot[k] = (1.0 - f) * a[k] + f * b[k];
        distanceSq += (foot[k] - p[k]) * (foot[k] - p[k]);
    }
    if (distanceSq > nearest.ReachSq())
        return;
    // Weights shift the parameter of a straight span, not its points.
    const double u = f * a[3] / (b[3] * (1.0 - f) + f * a[3]);
    nearest.Offer(SpanParameter(d, s, u), foot);
}

} // namespace

bool OfferNearestOnSpan(EVC_bcurve_s* b, int span, const double p[3], NearestPoint& nearest) {
    const BCURVE_DATA* d = b->definition;
    if (d->degree == 1 && d->poles[span - 1][3] > 0.0 && d->poles[span][3] > 0.0) {
        SearchStraight(d, span, p, nearest);
        return true;
    }
    const BCURVE_SEGMENT* segment = BCEV_ask_bez_segment(b, span);
    if (!segment)
        return false;
    SpanSearch(d, span, segment->bezier, d->degree, d->polynomial != 0, p, nearest).Run();
    return true;
}

void OfferNearestOnBezier(const double* bezier, int degree, bool polynomial, const double p[3],
                          NearestPoint& nearest) {
    SpanSearch(nullptr, 0, bezier, degree, polynomial, p, nearest).Run();
}

namespace {

bool SearchCurved(EVC_bcurve_s* b, const double p[3], NearestPoint& nearest) {
    const BCURVE_DATA* d = b->definition;
    SmArray<Candidate> list = MakeSmArray<Candidate>(static_cast<std::size_t>(d->numPoles), "em015c:0");
    if (!list)
        return false;
    const bool inHull = HasPositiveWeights(d);
    double reachSq = 1e300;
    int n = 0;
    for (int s = d->degree; s < d->numPoles; ++s) {
        if (!IsSpan(d, s))
            continue;
        double leastSq = 0.0, mostSq = 1e300;
        if (inHull)
            HullBounds(d, s - d->degree, s, p, &leastSq, &mostSq);
        reachSq = std::min(reachSq, mostSq);
        if (leastSq <= reachSq)
            list[static_cast<std::size_t>(n++)] = {leastSq, s};
    }
    // The bound only tightened during the pass: drop what it has overtaken, then nearest first.
    Candidate* end =
        std::remove_if(list.get(), list.get() + n, [&](const Candidate& c) { return c.boundSq > reachSq; });
    std::sort(list.get(), end, [](const Candidate& x, const Candidate& y) {
        return x.boundSq < y.boundSq || (x.boundSq == y.boundSq && x.span < y.span);
    });
    for (const Candidate* c = list.get(); c != end && c->boundSq <= nearest.ReachSq(); ++c) {
        if (!OfferNearestOnSpan(b, c->span, p, nearest))
            return false;
    }
    return true;
}

} // namespace

void NearestPoint::Offer(double t, const double point[3]) {
    constexpr double kTie = 1e-12; // relative, of squared distances: rounding of two evaluations
    double distanceSq = 0.0, apartSq = 0.0, sizeSq = 0.0;
    for (int k = 0; k < 3; ++k) {
        distanceSq += (point[k] - p_[k]) * (point[k] - p_[k]);
        apartSq += (point[k] - point_[k]) * (point[k] - point_[k]);
        sizeSq = std::max(sizeSq, point[k] * point[k]);
    }
    if (distanceSq > reachSq_)
        return;
    const bool tie = distanceSq >= distanceSq_ * (1.0 - kTie) && distanceSq_ < 1e300;
    const bool elsewhere = apartSq > 1e-16 * distanceSq_ + 1e-28 * sizeSq;
    if (!tie)
        ambiguous_ = false;
    else if (elsewhere)
        ambiguous_ = true;
    if (tie && elsewhere ? t < t_ : distanceSq < distanceSq_ || (distanceSq == distanceSq_ && t < t_)) {
        t_ = t;
        std::copy(point, point + 3, point_);
        distanceSq_ = distanceSq;
    }
    reachSq_ = std::min(reachSq_, distanceSq * (1.0 + kTie));
}

bool FindNearestOnBcurve(KC_CURVE_struct_s* c, const double p[3], NearestPoint& nearest) {
    const BCURVE_DATA* d = AskUsableBcurve(c);
    if (!d)
        return false;
    if (d->degree == 1 && HasPositiveWeights(d)) {
        for (int s = 1; s < d->numPoles; ++s) // one pass over the poles, no Bezier forms
            if (IsSpan(d, s))
                SearchStraight(d, s, p, nearest);
        return true;
    }
    return SearchCurved(static_cast<EVC_bcurve_s*>(c->data), p, nearest);
}
