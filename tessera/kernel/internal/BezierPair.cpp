#include "tessera/kernel/internal/BezierPair.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/NearestPoint.h"

namespace {

constexpr int kMaxPoles = Bernstein::kMaxSpanDegree + 1;
constexpr int kSuspicious = 150; // pieces after which coincidence is tested: a hundred times a plain crossing
constexpr int kMaxPieces = 6000; // bound of the work on one pair
constexpr int kMaxDepth = 45;

// A part [from, from + width] of a span with its poles, box, chord and tangent cone.
struct Piece {
    int degree;
    bool polynomial;
    double from, width;
    double c[3][kMaxPoles]; // homogeneous
    double x[kMaxPoles], y[kMaxPoles];
    double lo[2], hi[2];
    double dx, dy;   // chord
    double coneHalf; // half angle of the tangent cone about the chord; negative when there is no cone
    double extent;

    void Measure() {
        for (int i = 0; i <= degree; ++i) {
            x[i] = polynomial ? c[0][i] : c[0][i] / c[2][i];
            y[i] = polynomial ? c[1][i] : c[1][i] / c[2][i];
        }
        lo[0] = *std::min_element(x, x + degree + 1);
        hi[0] = *std::max_element(x, x + degree + 1);
        lo[1] = *std::min_element(y, y + degree + 1);
        hi[1] = *std::max_element(y, y + degree + 1);
        dx = x[degree] - x[0];
        dy = y[degree] - y[0];
        extent = std::max(hi[0] - lo[0], hi[1] - lo[1]);
        double steepest = 0.0;
        bool isCone = dx != 0.0 || dy != 0.0;
        for (int i = 0; i < degree && isCone; ++i) {
            const double ex = x[i + 1] - x[i], ey = y[i + 1] - y[i];
            const double along = ex * dx + ey * dy, across = std::fabs(ex * dy - ey * dx);
            if (across > steepest * along)
                steepest = along > 0.0 ? across / along : -1.0;
            isCone = steepest >= 0.0 && along >= 0.0;
        }
        coneHalf = isCone ? std::atan(steepest) : -1.0;
    }
};

Piece MakePiece(const BezierSpan& span) {
    assert(span.degree >= 1 && span.degree <= Bernstein::kMaxSpanDegree);
    Piece piece{};
    piece.degree = span.degree;
    piece.polynomial = span.polynomial;
    piece.from = 0.0;
    piece.width = 1.0;
    for (int i = 0; i <= span.degree; ++i) {
        piece.c[0][i] = span.bezier[4 * i];
        piece.c[1][i] = span.bezier[4 * i + 1];
        piece.c[2][i] = span.bezier[4 * i + 3];
    }
    piece.Measure();
    return piece;
}

void Halve(const Piece& piece, Piece& left, Piece& right) {
    left.degree = right.degree = piece.degree;
    left.polynomial = right.polynomial = piece.polynomial;
    left.width = right.width = 0.5 * piece.width;
    left.from = piece.from;
    right.from = piece.from + left.width;
    for (int k = 0; k < 3; ++k)
        Bernstein::Split(piece.c[k], piece.degree, 0.5, left.c[k], right.c[k]);
    left.Measure();
    right.Measure();
}

bool BoxesMeet(const Piece& a, const Piece& b, double tol) {
    return a.lo[0] <= b.hi[0] + tol && b.lo[0] <= a.hi[0] + tol && a.lo[1] <= b.hi[1] + tol &&
           b.lo[1] <= a.hi[1] + tol;
}

// False when the other piece lies wholly beside the fat line around a's chord.
bool FatLinesMeet(const Piece& a, const Piece& b, double tol) {
    const double length = std::hypot(a.dx, a.dy);
    if (length == 0.0)
        return true;
    const double nx = -a.dy / length, ny = a.dx / length;
    double alo = 0.0, ahi = 0.0, blo = 1e300, bhi = -1e300;
    for (int i = 1; i < a.degree; ++i) {
        const double h = nx * (a.x[i] - a.x[0]) + ny * (a.y[i] - a.y[0]);
        alo = std::min(alo, h);
        ahi = std::max(ahi, h);
    }
    for (int i = 0; i <= b.degree; ++i) {
        const double h = nx * (b.x[i] - a.x[0]) + ny * (b.y[i] - a.y[0]);
        blo = std::min(blo, h);
        bhi = std::max(bhi, h);
    }
    return alo <= bhi + tol && blo <= ahi + tol;
}

// Tangents of the two pieces never agree: they meet once at most.
bool ConesDiffer(const Piece& a, const Piece& b) {
    if (a.coneHalf < 0.0 || b.coneHalf < 0.0)
        return false;
    const double cross = std::fabs(a.dx * b.dy - a.dy * b.dx), dot = std::fabs(a.dx * b.dx + a.dy * b.dy);
    return std::atan2(cross, dot) > a.coneHalf + b.coneHalf + 1e-9;
}

class PairSearch {
public:
    PairSearch(const BezierSpan& a, const BezierSpan& b, double tol, double resolution, PairHit* out)
        : a_(a), b_(b), tol_(tol), resolution_(resolution), out_(out) {}

    int Run() {
        Search(MakePiece(a_), MakePiece(b_), 0);
        return coincident_ ? 0 : count_;
    }

private:
    struct Frame { // positions and derivatives of both spans
        double p[3], p1[3], p2[3], q[3], q1[3], q2[3];
    };

    void Search(const Piece& a, const Piece& b, int depth) {
        if (coincident_ || pieces_ > kMaxPieces || !BoxesMeet(a, b, tol_) || !FatLinesMeet(a, b, tol_) ||
            !FatLinesMeet(b, a, tol_))
            return;
        if (++pieces_ == kSuspicious && Coincide()) {
            coincident_ = true;
            return;
        }
        if (ConesDiffer(a, b) && SolveCrossing(a, b))
            return;
        const bool smallA = a.extent <= resolution_, smallB = b.extent <= resolution_;
        if ((smallA && smallB) || depth >= kMaxDepth) {
            SolveTouch(a, b);
            return;
        }
        Piece left, right;
        if (!smallA && (smallB || a.extent >= b.extent)) {
            Halve(a, left, right);
            Search(left, b, depth + 1);
            Search(right, b, depth + 1);
        } else {
            Halve(b, left, right);
            Search(a, left, depth + 1);
            Search(a, right, depth + 1);
        }
    }

    void Evaluate(double u, double v, Frame& f) const {
        EvaluateBezier(a_.bezier, a_.degree, u, f.p, f.p1, f.p2);
        EvaluateBezier(b_.bezier, b_.degree, v, f.q, f.q1, f.q2);
    }

    void Emit(double u, double v, HitKind kind) {
        if (count_ < kMaxPairHits)
            out_[count_++] = {u, v, kind};
    }

    // Newton on A(u) = B(v) from the crossing of the chords. True when the only crossing the pieces can have
    // is found; one that lies outside them is left to the subdivision to disprove.
    bool SolveCrossing(const Piece& a, const Piece& b) {
        const double cross = a.dx * b.dy - a.dy * b.dx, gx = b.x[0] - a.x[0], gy = b.y[0] - a.y[0];
        double u = a.from + a.width * std::clamp((gx * b.dy - gy * b.dx) / cross, 0.0, 1.0);
        double v = b.from + b.width * std::clamp((gx * a.dy - gy * a.dx) / cross, 0.0, 1.0);
        // An overshoot by the tolerance counts: the curve's end, or its kink, is then on the other one.
        const double slackU = a.width * std::min(0.5, 1e-9 + tol_ / std::hypot(a.dx, a.dy));
        const double slackV = b.width * std::min(0.5, 1e-9 + tol_ / std::hypot(b.dx, b.dy));
        for (int step = 0; step < 12; ++step) {
            Frame f;
            Evaluate(u, v, f);
            const double det = f.p1[0] * f.q1[1] - f.p1[1] * f.q1[0];
            const double ex = f.q[0] - f.p[0], ey = f.q[1] - f.p[1];
            const double du = (ex * f.q1[1] - ey * f.q1[0]) / det, dv = (ex * f.p1[1] - ey * f.p1[0]) / det;
            if (!std::isfinite(du) || !std::isfinite(dv))
                return false;
            u += du;
            v += dv;
            if (u < a.from - 0.5 * a.width || u > a.from + 1.5 * a.width || v < b.from - 0.5 * b.width ||
                v > b.from + 1.5 * b.width)
                return false;
            if (std::fabs(du) <= 4e-16 + 1e-13 * a.width && std::fabs(dv) <= 4e-16 + 1e-13 * b.width)
                break;
            if (step == 11)
                return false;
        }
        if (u < a.from - slackU || u > a.from + a.width + slackU || v < b.from - slackV ||
            v > b.from + b.width + slackV)
            return false;
        Emit(std::clamp(u, 0.0, 1.0), std::clamp(v, 0.0, 1.0), HitKind::Crossing);
        return true;
    }

    // Pieces too small to halve: first the point of parallel tangents on a common normal, then the nearest
    // pair.
    void SolveTouch(const Piece& a, const Piece& b) {
        double u = a.from + 0.5 * a.width, v = b.from + 0.5 * b.width;
        const double startU = u, startV = v;
        bool found = false;
        for (int step = 0; step < 10; ++step) {
            Frame f;
            Evaluate(u, v, f);
            const double ex = f.p[0] - f.q[0], ey = f.p[1] - f.q[1];
            const double g1 = f.p1[0] * f.q1[1] - f.p1[1] * f.q1[0], g2 = ex * f.p1[0] + ey * f.p1[1];
            const double a11 = f.p2[0] * f.q1[1] - f.p2[1] * f.q1[0],
                         a12 = f.p1[0] * f.q2[1] - f.p1[1] * f.q2[0];
            const double a21 = f.p1[0] * f.p1[0] + f.p1[1] * f.p1[1] + ex * f.p2[0] + ey * f.p2[1];
            const double a22 = -(f.q1[0] * f.p1[0] + f.q1[1] * f.p1[1]);
            const double det = a11 * a22 - a12 * a21;
            const double du = (a12 * g2 - a22 * g1) / det, dv = (a21 * g1 - a11 * g2) / det;
            if (!std::isfinite(du) || !std::isfinite(dv))
                break;
            u += du;
            v += dv;
            // A touch farther off belongs to other pieces.
            if (std::fabs(u - startU) > 64.0 * a.width || std::fabs(v - startV) > 64.0 * b.width)
                break;
            found = std::fabs(du) <= 1e-14 && std::fabs(dv) <= 1e-14;
            if (found)
                break;
        }
        if (found && u >= 0.0 && u <= 1.0 && v >= 0.0 && v <= 1.0)
            Emit(u, v, HitKind::Touch);
        SolveNearest(startU, startV, a.width, b.width);
    }

    // Levenberg-Marquardt on |A - B| within the spans; contacts of any order, ends and cusps.
    void SolveNearest(double u, double v, double reachU, double reachV) {
        const double loU = std::max(0.0, u - reachU), hiU = std::min(1.0, u + reachU);
        const double loV = std::max(0.0, v - reachV), hiV = std::min(1.0, v + reachV);
        double damping = 1e-6;
        Frame f;
        Evaluate(u, v, f);
        double gap = std::hypot(f.p[0] - f.q[0], f.p[1] - f.q[1]);
        for (int step = 0; step < 20 && gap > 0.0; ++step) {
            const double ex = f.p[0] - f.q[0], ey = f.p[1] - f.q[1];
            const double h11 = (f.p1[0] * f.p1[0] + f.p1[1] * f.p1[1]) * (1.0 + damping);
            const double h22 = (f.q1[0] * f.q1[0] + f.q1[1] * f.q1[1]) * (1.0 + damping);
            const double h12 = -(f.p1[0] * f.q1[0] + f.p1[1] * f.q1[1]);
            const double g1 = ex * f.p1[0] + ey * f.p1[1], g2 = -(ex * f.q1[0] + ey * f.q1[1]);
            const double det = h11 * h22 - h12 * h12;
            const double nextU = std::clamp(u - (h22 * g1 - h12 * g2) / det, loU, hiU);
            const double nextV = std::clamp(v - (h11 * g2 - h12 * g1) / det, loV, hiV);
            if (!std::isfinite(nextU) || !std::isfinite(nextV) || (nextU == u && nextV == v))
                break;
            Frame next;
            Evaluate(nextU, nextV, next);
            const double nextGap = std::hypot(next.p[0] - next.q[0], next.p[1] - next.q[1]);
            if (nextGap < gap) {
                u = nextU, v = nextV, gap = nextGap, f = next;
                damping = std::max(1e-12, 0.1 * damping);
            } else {
                damping *= 30.0;
                if (damping > 1e8)
                    break;
            }
        }
        if (gap <= tol_)
            Emit(u, v, HitKind::Crossing);
    }

    static double DistanceTo(const BezierSpan& span, const double p[3], double* u) {
        const double flat[3] = {p[0], p[1], 0.0};
        double bezier[4 * kMaxPoles]; // without z
        for (int i = 0; i <= span.degree; ++i)
            for (int k = 0; k < 4; ++k)
                bezier[4 * i + k] = k == 2 ? 0.0 : span.bezier[4 * i + k];
        NearestPoint nearest(flat);
        OfferNearestOnBezier(bezier, span.degree, span.polynomial, flat, nearest);
        *u = nearest.T();
        return std::sqrt(nearest.DistanceSq());
    }

    // Analytic pieces that share more than isolated points coincide between two of their ends.
    bool Coincide() const {
        double lo = 2.0, hi = -1.0;
        Frame f;
        for (const double end : {0.0, 1.0}) {
            double other = 0.0;
            Evaluate(end, end, f);
            if (DistanceTo(b_, f.p, &other) <= tol_)
                lo = std::min(lo, end), hi = std::max(hi, end);
            if (DistanceTo(a_, f.q, &other) <= tol_)
                lo = std::min(lo, other), hi = std::max(hi, other);
        }
        const int samples = 2 * std::max(a_.degree, b_.degree) + 1;
        if (!(hi > lo))
            return false;
        double first[3], last[3];
        EvaluateBezier(a_.bezier, a_.degree, lo, first, f.p1, f.p2);
        EvaluateBezier(a_.bezier, a_.degree, hi, last, f.p1, f.p2);
        double length = 0.0;
        for (int i = 1; i <= samples; ++i) {
            double other = 0.0;
            const double u = lo + (hi - lo) * i / (samples + 1);
            EvaluateBezier(a_.bezier, a_.degree, u, f.p, f.p1, f.p2);
            if (DistanceTo(b_, f.p, &other) > tol_)
                return false;
            length = std::max(length, std::hypot(f.p[0] - first[0], f.p[1] - first[1]));
        }
        return length > 4.0 * resolution_;
    }

    const BezierSpan &a_, &b_;
    double tol_, resolution_;
    PairHit* out_;
    int count_ = 0, pieces_ = 0;
    bool coincident_ = false;
};

} // namespace

int IntersectBezierPair(const BezierSpan& a, const BezierSpan& b, double tol, double resolution,
                        PairHit* out) {
    return PairSearch(a, b, tol, resolution, out).Run();
}
