#include "tessera/kernel/internal/BCLS.h"

#include <algorithm>
#include <cmath>

#include "tessera/kernel/NR.h"

// The basis of every span is expanded once into powers of v in [-1, 1]. A data point then adds only the
// powers of its v to the moments of its span, and the normal matrix is assembled from the moments: the
// cost by point does not depend on the poles. The power form is harmless at these orders because v is
// centred. The matrix is symmetric with half bandwidth order - 1 (de Boor, A Practical Guide to Splines,
// chapter XIV); on a closed curve one more unknown, the seam's half chord, couples both ends and is
// eliminated by its Schur complement.

namespace {

using Vex::Math::Point3;

// Weight of the poles' second differences against one data point per pole: keeps spans without data
// determinate and is too small to be seen where there are data. A pure number.
constexpr double kSmoothing = 1e-11;
// A seam pivot below this share of its diagonal is rounding noise. A pure number.
constexpr double kPivotShare = 1e-15;

// f := f * (a + b v), f holding `count` coefficients before and one more afterwards.
void MultiplyLinear(double* f, int count, double a, double b) {
    f[count] = 0.0;
    for (int i = count; i > 0; --i)
        f[i] = a * f[i] + b * f[i - 1];
    f[0] *= a;
}

// Templates on kFixed take the order from there, unless it is 0: loops of known length unroll.

// The order basis functions that live on one span, as powers of v (Cox and de Boor's recurrence on
// polynomials).
template <int kFixed>
void ExpandSpan(const double* knots, int numOrder, int s, double* basis) {
    constexpr int kMost = kFixed > 0 ? kFixed : kBclsMaxOrder;
    const int order = kFixed > 0 ? kFixed : numOrder;
    const double mid = 0.5 * (knots[s] + knots[s + 1]), half = 0.5 * (knots[s + 1] - knots[s]);
    double now[kMost][kMost + 1], next[kMost][kMost + 1];
    now[0][0] = 1.0;
    for (int degree = 1; degree < order; ++degree) {
        for (int j = 0; j <= degree; ++j)
            std::fill_n(next[j], degree + 1, 0.0);
        // now[j] is the function number s - (degree - 1) + j of the degree below.
        for (int j = 0; j < degree; ++j) {
            const int i = s - degree + 1 + j;
            const double width = knots[i + degree] - knots[i];
            double rising[kMost + 1], falling[kMost + 1];
            std::copy(now[j], now[j] + degree, rising);
            std::copy(now[j], now[j] + degree, falling);
            MultiplyLinear(rising, degree, (mid - knots[i]) / width, half / width);
            MultiplyLinear(falling, degree, (knots[i + degree] - mid) / width, -half / width);
            for (int c = 0; c <= degree; ++c) {
                next[j + 1][c] += rising[c];
                next[j][c] += falling[c];
            }
        }
        for (int j = 0; j <= degree; ++j)
            std::copy(next[j], next[j] + degree + 1, now[j]);
    }
    for (int j = 0; j < order; ++j)
        std::copy(now[j], now[j] + order, basis + j * order);
}

int SpanOf(const BCLS_curve_t& curve, double tau) {
    return std::clamp(static_cast<int>(tau), 0, curve.numSpans - 1);
}

template <int kFixed>
int OrderOf(const BCLS_curve_t& curve) {
    return kFixed > 0 ? kFixed : curve.order;
}

template <int kFixed>
void CollectMoments(const BCLS_curve_t& curve, int n, const Point3* pts, const double* tau,
                    const BCLS_scratch_t& scratch) {
    const int order = OrderOf<kFixed>(curve), powers = 2 * order - 1;
    std::fill_n(scratch.moments, curve.numSpans * powers, 0.0);
    std::fill_n(scratch.loads, curve.numSpans * order * 3, 0.0);
    for (int i = 0; i < n; ++i) {
        const int s = SpanOf(curve, tau[i]);
        const double v = 2.0 * (tau[i] - s) - 1.0;
        double* moment = scratch.moments + s * powers;
        double* load = scratch.loads + s * order * 3;
        double power = 1.0;
        for (int j = 0; j < order; ++j, power *= v) {
            moment[j] += power;
            load[3 * j] += power * pts[i].x;
            load[3 * j + 1] += power * pts[i].y;
            load[3 * j + 2] += power * pts[i].z;
        }
        for (int j = order; j < powers; ++j, power *= v)
            moment[j] += power;
    }
}

template <int kFixed>
void AssembleSpan(const BCLS_curve_t& curve, int s, const BCLS_scratch_t& scratch) {
    const int order = OrderOf<kFixed>(curve);
    const double* basis = curve.basis + s * order * order;
    const double* moment = scratch.moments + s * (2 * order - 1);
    const double* load = scratch.loads + s * order * 3;
    for (int a = 0; a < order; ++a) {
        double row[kFixed > 0 ? kFixed : kBclsMaxOrder] = {}; // basis function a against the powers
        double* rhs = scratch.rhs + 4 * (s + a);
        for (int i = 0; i < order; ++i) {
            const double weight = basis[a * order + i];
            for (int j = 0; j < order; ++j)
                row[j] += weight * moment[i + j];
            for (int c = 0; c < 3; ++c)
                rhs[c] += weight * load[3 * i + c];
        }
        for (int b = a; b < order; ++b) {
            double sum = 0.0;
            for (int j = 0; j < order; ++j)
                sum += row[j] * basis[b * order + j];
            scratch.band[(s + b) * order + order - 1 - (b - a)] += sum;
        }
    }
}

void AddSmoothing(const BCLS_curve_t& curve, double weight, double* band) {
    const int order = curve.order, reach = std::min(order - 1, 2);
    const double difference[3] = {1.0, reach == 2 ? -2.0 : -1.0, 1.0};
    for (int i = 0; i + reach < curve.numPoles; ++i)
        for (int a = 0; a <= reach; ++a)
            for (int b = a; b <= reach; ++b)
                band[(i + b) * order + order - 1 - (b - a)] += weight * difference[a] * difference[b];
}

// A(i, j) of the symmetric band.
double BandEntry(const BCLS_curve_t& curve, const double* band, int i, int j) {
    const int high = std::max(i, j), apart = high - std::min(i, j);
    return apart < curve.order ? band[high * curve.order + curve.order - 1 - apart] : 0.0;
}

// Solves rows lo .. hi for all four columns; false when they are not positive definite.
bool SolveRows(const BCLS_curve_t& curve, const BCLS_scratch_t& scratch, int lo, int hi) {
    const int rows = hi - lo + 1, half = curve.order - 1;
    if (rows <= 0)
        return true;
    double* band = scratch.band + lo * curve.order;
    if (!NR_band_cholesky_decomp(rows, half, band))
        return false;
    NR_band_cholesky_solve(rows, half, band, 4, scratch.rhs + 4 * lo);
    return true;
}

bool SolveOpen(BCLS_curve_t& curve, const BCLS_scratch_t& scratch) {
    const int lo = 1, hi = curve.numPoles - 2;
    for (int i = lo; i <= hi; ++i)
        for (int c = 0; c < 3; ++c)
            scratch.rhs[4 * i + c] -= BandEntry(curve, scratch.band, i, 0) * curve.poles[0][c] +
                                      BandEntry(curve, scratch.band, i, hi + 1) * curve.poles[hi + 1][c];
    if (!SolveRows(curve, scratch, lo, hi))
        return false;
    for (int i = lo; i <= hi; ++i)
        std::copy_n(scratch.rhs + 4 * i, 3, curve.poles[i]);
    return true;
}

// Unknowns: the inner poles and q, with P[1] = S + q and P[n - 2] = S - q about the seam S. S is added back
// to the inner poles; the equations are those of the poles relative to S.
bool SolveClosed(BCLS_curve_t& curve, const BCLS_scratch_t& scratch) {
    const int last = curve.numPoles - 1, lo = 2, hi = last - 2;
    double* rhs = scratch.rhs;
    // Data sums were taken over absolute positions: move them to the seam (basis functions sum to 1).
    for (int i = 1; i < last; ++i) {
        double rowSum = 0.0;
        for (int j = std::max(0, i - curve.order + 1); j <= std::min(last, i + curve.order - 1); ++j)
            rowSum += BandEntry(curve, scratch.band, i, j);
        for (int c = 0; c < 3; ++c)
            rhs[4 * i + c] -= rowSum * curve.poles[0][c];
    }
    for (int i = lo; i <= hi; ++i)
        rhs[4 * i + 3] = BandEntry(curve, scratch.band, i, 1) - BandEntry(curve, scratch.band, i, last - 1);
    double diagonal = BandEntry(curve, scratch.band, 1, 1) +
                      BandEntry(curve, scratch.band, last - 1, last - 1) -
                      2.0 * BandEntry(curve, scratch.band, 1, last - 1);
    const double whole = diagonal;
    double load[3];
    for (int c = 0; c < 3; ++c)
        load[c] = rhs[4 + c] - rhs[4 * (last - 1) + c];
    double coupling[2 * kBclsMaxOrder];
    int rows[2 * kBclsMaxOrder], used = 0;
    for (int i = lo; i <= hi; ++i)
        if (rhs[4 * i + 3] != 0.0 && used < 2 * kBclsMaxOrder) {
            rows[used] = i;
            coupling[used++] = rhs[4 * i + 3];
        }
    if (!SolveRows(curve, scratch, lo, hi))
        return false;
    for (int k = 0; k < used; ++k) {
        diagonal -= coupling[k] * rhs[4 * rows[k] + 3];
        for (int c = 0; c < 3; ++c)
            load[c] -= coupling[k] * rhs[4 * rows[k] + c];
    }
    if (!(diagonal > kPivotShare * whole))
        return false;
    for (int c = 0; c < 3; ++c) {
        const double seam = curve.poles[0][c], q = load[c] / diagonal;
        curve.poles[1][c] = seam + q;
        curve.poles[last - 1][c] = seam - q;
        for (int i = lo; i <= hi; ++i)
            curve.poles[i][c] = seam + rhs[4 * i + c] - q * rhs[4 * i + 3];
    }
    return true;
}

template <int kFixed>
void FillPowerForm(BCLS_curve_t& curve) {
    const int order = OrderOf<kFixed>(curve);
    for (int s = 0; s < curve.numSpans; ++s) {
        const double* basis = curve.basis + s * order * order;
        double(*power)[3] = curve.power + s * order;
        for (int i = 0; i < order; ++i)
            for (int c = 0; c < 3; ++c) {
                double sum = 0.0;
                for (int j = 0; j < order; ++j)
                    sum += basis[j * order + i] * curve.poles[s + j][c];
                power[i][c] = sum;
            }
    }
}

template <int kFixed>
bool Solve(BCLS_curve_t& curve, int n, const Point3* pts, const double* tau, const double first[3],
           const double last[3], const BCLS_scratch_t& scratch) {
    std::fill_n(scratch.band, curve.numPoles * curve.order, 0.0);
    std::fill_n(scratch.rhs, curve.numPoles * 4, 0.0);
    std::copy_n(first, 3, curve.poles[0]);
    std::copy_n(last, 3, curve.poles[curve.numPoles - 1]);
    CollectMoments<kFixed>(curve, n, pts, tau, scratch);
    for (int s = 0; s < curve.numSpans; ++s)
        AssembleSpan<kFixed>(curve, s, scratch);
    AddSmoothing(curve, kSmoothing * n / curve.numPoles, scratch.band);
    // A poly-line has no tangent to keep at its seam.
    if (!(curve.closed && curve.order > 2 ? SolveClosed(curve, scratch) : SolveOpen(curve, scratch)))
        return false;
    FillPowerForm<kFixed>(curve);
    return true;
}

// Squared distance of a point from the curve, and the derivatives of half of it by tau.
struct Jet {
    double distSq = 0.0;
    double slope = 0.0;   // (C - p) C'
    double bend = 0.0;    // C' C' + (C - p) C''
    double speedSq = 0.0; // C' C'
};

// The recogniser's curves: order 3, in the plane z = 0.
inline Jet PlanarJetAt(const BCLS_curve_t& curve, const Point3& p, double tau) {
    const int s = SpanOf(curve, tau);
    const double v = 2.0 * (tau - s) - 1.0;
    const double(*power)[3] = curve.power + 3 * static_cast<std::ptrdiff_t>(s);
    const double ex = 2.0 * power[2][0], ey = 2.0 * power[2][1];
    const double dx = power[1][0] + v * ex, dy = power[1][1] + v * ey;
    const double rx = power[0][0] + v * (power[1][0] + v * power[2][0]) - p.x;
    const double ry = power[0][1] + v * (power[1][1] + v * power[2][1]) - p.y;
    Jet jet;
    jet.distSq = rx * rx + ry * ry;
    jet.slope = 2.0 * (rx * dx + ry * dy);
    jet.speedSq = 4.0 * (dx * dx + dy * dy);
    jet.bend = jet.speedSq + 4.0 * (rx * ex + ry * ey);
    return jet;
}

inline Jet GeneralJetAt(const BCLS_curve_t& curve, const Point3& p, double tau) {
    const int order = curve.order, s = SpanOf(curve, tau);
    const double v = 2.0 * (tau - s) - 1.0;
    const double(*power)[3] = curve.power + static_cast<std::ptrdiff_t>(s) * order;
    double r[3], d[3], e[3];
    for (int c = 0; c < 3; ++c) {
        double value = power[order - 1][c], slope = 0.0, half = 0.0;
        for (int i = order - 2; i >= 0; --i) {
            half = half * v + slope;
            slope = slope * v + value;
            value = value * v + power[i][c];
        }
        r[c] = value;
        d[c] = slope;
        e[c] = 2.0 * half;
    }
    r[0] -= p.x;
    r[1] -= p.y;
    r[2] -= p.z;
    Jet jet;
    jet.distSq = r[0] * r[0] + r[1] * r[1] + r[2] * r[2];
    jet.slope = 2.0 * (r[0] * d[0] + r[1] * d[1] + r[2] * d[2]);
    jet.speedSq = 4.0 * (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    jet.bend = jet.speedSq + 4.0 * (r[0] * e[0] + r[1] * e[1] + r[2] * e[2]);
    return jet;
}

inline Jet JetAt(const BCLS_curve_t& curve, const Point3& p, double tau) {
    return curve.order == 3 && curve.isPlanar ? PlanarJetAt(curve, p, tau) : GeneralJetAt(curve, p, tau);
}

// Degree 1: the exact foot points on the own and the neighbouring segments.
double FootOnPolyline(const BCLS_curve_t& curve, const Point3& p, double& tau) {
    const int own = SpanOf(curve, tau);
    double best = HUGE_VAL;
    for (int s = std::max(0, own - 1); s <= std::min(curve.numSpans - 1, own + 1); ++s) {
        const Jet start = JetAt(curve, p, s);
        const double u = start.speedSq > 0.0 ? std::clamp(-start.slope / start.speedSq, 0.0, 1.0) : 0.0;
        const double a[3] = {curve.poles[s][0], curve.poles[s][1], curve.poles[s][2]};
        const double* b = curve.poles[s + 1];
        const double dx = a[0] + u * (b[0] - a[0]) - p.x, dy = a[1] + u * (b[1] - a[1]) - p.y,
                     dz = a[2] + u * (b[2] - a[2]) - p.z;
        const double distSq = dx * dx + dy * dy + dz * dz;
        if (distSq < best) {
            best = distSq;
            tau = s + u;
        }
    }
    return best;
}

template <Jet (*kJetAt)(const BCLS_curve_t&, const Point3&, double)>
double FootNear(const BCLS_curve_t& curve, const Point3& p, double resolution, double& tau) {
    constexpr int kMaxSteps = 12;
    constexpr double kLongestStep = 0.75; // spans: a longer one leaves the neighbourhood of the start
    const double end = curve.numSpans;
    Jet jet = kJetAt(curve, p, tau);
    for (int i = 0; i < kMaxSteps; ++i) {
        // Newton where the squared distance is clearly convex, Gauss-Newton elsewhere.
        const bool isConvex = jet.bend > 0.1 * jet.speedSq;
        const double curvature = isConvex ? jet.bend : jet.speedSq;
        if (!(curvature > 0.0))
            break;
        const double wanted = -jet.slope / curvature;
        double next = std::clamp(tau + std::clamp(wanted, -kLongestStep, kLongestStep), 0.0, end);
        const double step = next - tau;
        if (step * step * jet.speedSq <= resolution * resolution) {
            tau = next;
            // The minimum of the parabola through the last jet: exact to third order in the step.
            return std::max(0.0, jet.distSq + step * (2.0 * jet.slope + step * jet.bend));
        }
        Jet trial = kJetAt(curve, p, next);
        for (int halving = 0; halving < 4 && trial.distSq > jet.distSq; ++halving) {
            next = 0.5 * (next + tau);
            trial = kJetAt(curve, p, next);
        }
        if (trial.distSq >= jet.distSq)
            break;
        tau = next;
        jet = trial;
    }
    return jet.distSq;
}

} // namespace

void BCLS_set_knots(BCLS_curve_t& curve, int numSpans, int numBreaks, const double* breaks) {
    const int degree = curve.order - 1;
    curve.numSpans = numSpans;
    curve.numPoles = numSpans + degree;
    curve.isUniform = breaks == nullptr;
    std::fill_n(curve.knots, curve.order, 0.0);
    for (int i = 1; i < numSpans; ++i) {
        double knot = static_cast<double>(i) / numSpans;
        if (breaks) {
            const double place = knot * numBreaks;
            const int j = std::min(static_cast<int>(place), numBreaks - 1);
            knot = breaks[j] + (place - j) * (breaks[j + 1] - breaks[j]);
        }
        curve.knots[degree + i] = knot;
    }
    std::fill_n(curve.knots + curve.numPoles, curve.order, 1.0);
    const int size = curve.order * curve.order;
    for (int s = 0; s < numSpans; ++s) {
        // Uniform spans whose functions feel no end knot share one basis.
        const bool repeats = !breaks && s >= curve.order - 1 && s <= numSpans - curve.order;
        if (repeats)
            std::copy_n(curve.basis + (s - 1) * size, size, curve.basis + s * size);
        else if (curve.order == 3)
            ExpandSpan<3>(curve.knots, 3, s + degree, curve.basis + s * size);
        else
            ExpandSpan<0>(curve.knots, curve.order, s + degree, curve.basis + s * size);
    }
}

double BCLS_ask_tau(const BCLS_curve_t& curve, double t) {
    if (curve.isUniform)
        return std::clamp(t, 0.0, 1.0) * curve.numSpans;
    const double* first = curve.knots + curve.order; // end of span 0
    const double* end = first + (curve.numSpans - 1);
    const int s = static_cast<int>(std::upper_bound(first, end, t) - first);
    const double from = curve.knots[curve.order - 1 + s], to = curve.knots[curve.order + s];
    return s + std::clamp((t - from) / (to - from), 0.0, 1.0);
}

bool BCLS_solve(BCLS_curve_t& curve, int n, const Point3* pts, const double* tau, const double first[3],
                const double last[3], const BCLS_scratch_t& scratch) {
    return curve.order == 3 ? Solve<3>(curve, n, pts, tau, first, last, scratch)
                            : Solve<0>(curve, n, pts, tau, first, last, scratch);
}

double BCLS_foot_near(const BCLS_curve_t& curve, const Point3& p, double resolution, double& tau) {
    if (curve.order == 2)
        return FootOnPolyline(curve, p, tau);
    return curve.order == 3 && curve.isPlanar ? FootNear<PlanarJetAt>(curve, p, resolution, tau)
                                              : FootNear<GeneralJetAt>(curve, p, resolution, tau);
}

double BCLS_foot_around(const BCLS_curve_t& curve, const Point3& p, double resolution, double& tau) {
    constexpr int kReach = 2, kSamplesPerSpan = 2;
    const double end = curve.numSpans;
    double bestTau = tau, bestSq = JetAt(curve, p, tau).distSq;
    for (int i = -kReach * kSamplesPerSpan; i <= kReach * kSamplesPerSpan; ++i) {
        double at = tau + static_cast<double>(i) / kSamplesPerSpan;
        if (curve.closed)
            at += at < 0.0 ? end : (at > end ? -end : 0.0);
        at = std::clamp(at, 0.0, end);
        const double distSq = JetAt(curve, p, at).distSq;
        if (distSq < bestSq) {
            bestSq = distSq;
            bestTau = at;
        }
    }
    const double nearSq = BCLS_foot_near(curve, p, resolution, bestTau);
    tau = bestTau;
    return nearSq;
}
