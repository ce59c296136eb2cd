// A point's distance from a slot is its distance from the segment between the two centres, less the radius:
// smooth everywhere outside that segment. Levenberg-Marquardt steps from the moments of the path find the
// slot, together with a drift that grows evenly along the stroke, as for rounds.
//
// A slot is the limit of a rectangle whose corners are rounded more and more. How far the residuals go back
// towards a smaller rounding (to first order), against the radius, tells whether the ends were drawn round;
// for an ellipse they go the other way.
#include "tessera/recognition/internal/SlotShape.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/NR.h"
#include "tessera/recognition/internal/AxisSnap.h"
#include "tessera/recognition/internal/SlotCourse.h"

namespace Tessera::Geometry {

namespace {

constexpr int kNumbers = 5;
constexpr int kEvaluations = 20; // of the model: five to eight settle a drawn slot
constexpr double kRelativeFall = 1e-6;
constexpr double kAbsoluteFall = 1e-9; // squared sizes
constexpr double kRidge = 1e-6;        // of the normal equations: terms that the path does not show vanish
// Keeps the drift small: straight lines guide the pen back to its start better than a swing round does.
constexpr double kDriftPrice = 4.0;

// Nothing guides the pen round the ends: there it strays farther than along a line.
constexpr double kSpreadShare = 0.15;

// What the decision rests on, measured on drawn ovals, circles and rectangles, and on slots of a simulated
// hand.
constexpr double kShortest = 0.6;         // length of a line over the radius
constexpr double kHopeful = 0.53;         // half of it, as the moments have it: they overrate short lines
constexpr double kHopelessCorners = 20.0; // price of corners that nothing makes good
constexpr double kRoundEnds = 0.3; // by how much of the radius the corners' rounding may seem to differ
constexpr double kMostTurns = 2.2; // of the pen: a slot drawn twice
constexpr double kOpenEnd = 0.5;   // of a half circle, what may be missing
constexpr double kBendReach = 2.0; // points to either side over which the outline's bend is averaged
constexpr double kAtJoint = 0.25;  // steps before a joint, the pen starts in the joint
constexpr double kNearly = 1.0;    // steps before its end, a piece counts as drawn to it

enum Parameter : int { kX, kY, kAngle, kHalf, kRadius, kDrift, kFitted, kSquareness = kFitted, kTerms };

// Distance of a point, less what the drift explains, with its derivatives; the last one is by how much the
// corners' rounding falls short of the radius.
struct Residual {
    double value = 0.0;
    std::array<double, kTerms> slope{};
};

// The parameters with the direction worked out.
struct Trial {
    explicit Trial(const double* parameters)
        : p(parameters), axis(std::cos(parameters[kAngle]), std::sin(parameters[kAngle])) {}

    Residual At(const Point& point, double share) const {
        const Point d = point - Point(p[kX], p[kY]);
        const double u = axis.Dot(d);
        const double v = axis.Cross(d);
        const double foot = std::clamp(u, -p[kHalf], p[kHalf]);
        const double rho = std::max(std::sqrt((u - foot) * (u - foot) + v * v), 1e-12);
        const double nu = (u - foot) / rho;
        const double nv = v / rho;
        const bool isEnd = u != foot;
        return {rho - p[kRadius] - p[kDrift] * share,
                {axis.y * nv - axis.x * nu, -axis.y * nu - axis.x * nv, nu * v - nv * u, -std::fabs(nu), -1.0,
                 -share, isEnd ? 1.0 - std::fabs(nu) - std::fabs(nv) : 0.0}};
    }

    const double* p;
    Point axis;
};

// Normal equations over the first `terms` slopes, m x m row by row (lower triangle).
double Accumulate(const InkPath& path, const Trial& trial, int terms, double* jtj, double* jtr) {
    std::fill(jtj, jtj + terms * terms, 0.0);
    std::fill(jtr, jtr + terms, 0.0);
    double sumSq = 0.0;
    const int n = path.Size();
    for (int i = 0; i < n; ++i) {
        const double share = static_cast<double>(i) / (n - 1) - 0.5;
        const Residual residual = trial.At(path.At(i), share);
        for (int a = 0; a < terms; ++a) {
            const double slope = residual.slope[static_cast<std::size_t>(a)];
            for (int b = 0; b <= a; ++b)
                jtj[a * terms + b] += slope * residual.slope[static_cast<std::size_t>(b)];
            jtr[a] += slope * residual.value;
        }
        sumSq += residual.value * residual.value;
    }
    jtj[kDrift * (terms + 1)] += kDriftPrice;
    jtr[kDrift] += kDriftPrice * trial.p[kDrift];
    return sumSq + kDriftPrice * trial.p[kDrift] * trial.p[kDrift];
}

int EvaluateModel(void* context, const double* p, double* jtj, double* jtr, double* sumSq) {
    if (!(p[kHalf] >= 0.0) || !(p[kRadius] > 0.0))
        return 0;
    *sumSq = Accumulate(**static_cast<const InkPath* const*>(context), Trial(p), kFitted, jtj, jtr);
    return 1;
}

using Parameters = std::array<double, kFitted>;

// From the second moments, by formulas that are near those of slots of any length.
Parameters Start(const PricedPath& ink) {
    const int n = ink.path.Size();
    const Moments moments = ink.moments.Of(0, n - 1);
    const LineFit fit = FitLine(moments);
    const double across = std::sqrt(fit.sumSq / n);
    const double all = (moments.xx + moments.yy) / n - fit.centre.Dot(fit.centre);
    const double along = std::sqrt(std::max(0.0, all - across * across));
    const double radius = 1.15 * across;
    return {fit.centre.x,
            fit.centre.y,
            std::atan2(fit.direction.y, fit.direction.x),
            std::max(0.1 * radius, 1.6 * along - radius),
            radius,
            0.0};
}

bool Fit(const InkPath& path, Parameters& p) {
    const InkPath* context = &path;
    double sumSq = 0.0;
    int status = 1;
    LSFIT_nonlinear_function(kFitted, p.data(), EvaluateModel, &context, kEvaluations, kRelativeFall,
                             kAbsoluteFall, &sumSq, &status);
    return std::isfinite(sumSq) && p[kHalf] > 0.0;
}

SlotShape Describe(const InkPath& path, const Parameters& p) {
    const Trial trial(p.data());
    const int n = path.Size();
    double sumSq = 0.0;
    for (int i = 0; i < n; ++i) {
        const double share = static_cast<double>(i) / (n - 1) - 0.5;
        sumSq += SquareWithoutTail(trial.At(path.At(i), share).value);
    }
    return {
        {p[kX], p[kY]}, trial.axis, p[kHalf], p[kRadius], {kNumbers * kNumberPrice, kSpreadShare * sumSq}};
}

// 0 for round ends, towards 1 for square ones, below 0 for pointed ones.
double SquarenessOf(const InkPath& path, const Parameters& p) {
    double jtj[kTerms * kTerms];
    double step[kTerms];
    Accumulate(path, Trial(p.data()), kTerms, jtj, step);
    for (int i = 0; i < kTerms; ++i)
        jtj[i * (kTerms + 1)] += kRidge;
    if (!NR_cholesky_decomp(kTerms, jtj))
        return 0.0;
    NR_cholesky_solve(kTerms, jtj, step);
    return -step[kSquareness] / p[kRadius];
}

// As if each turn stood in the middle of a half circle.
double LeastPriceOfCorners(const PricedPath& ink, double radius) {
    return PriceOfHiddenCorners(
        ink, [=](const TurningPeak& peak) { return std::copysign(1.0 / radius, peak.turn); });
}

double PriceOfCorners(const PricedPath& ink, const SlotCourse& course) {
    const double reach = kBendReach * ink.path.step;
    return PriceOfHiddenCorners(ink, [&](const TurningPeak& peak) {
        const double at = course.At(peak.at);
        return (course.HeadingAt(at + reach) - course.HeadingAt(at - reach)) / (2.0 * reach);
    });
}

} // namespace

std::optional<SlotShape> FitSlot(const PricedPath& ink) {
    Parameters p = Start(ink);
    if (!Fit(ink.path, p))
        return std::nullopt;
    return Describe(ink.path, p);
}

std::optional<SlotShape> FindSlot(const PricedPath& ink) {
    if (ink.path.Gap() > ink.closing)
        return std::nullopt;
    Parameters p = Start(ink);
    if (p[kHalf] < kHopeful * p[kRadius] || LeastPriceOfCorners(ink, p[kRadius]) > kHopelessCorners ||
        !Fit(ink.path, p) || 2.0 * p[kHalf] < kShortest * p[kRadius] ||
        std::fabs(SquarenessOf(ink.path, p)) > kRoundEnds)
        return std::nullopt;
    SlotShape slot = Describe(ink.path, p);
    const SlotCourse course(ink.path, slot);
    if (course.Gap() > std::min(ink.closing, kOpenEnd * course.HalfCircle()) || course.Turns() > kMostTurns)
        return std::nullopt;
    slot.description.price += PriceOfCorners(ink, course);
    return slot;
}

void SnapSlot(double snapRad, SlotShape& slot) {
    slot.axis = AxisNear(slot.axis, snapRad).value_or(slot.axis);
}

ExactChain MakeSlot(const InkPath& path, const SlotShape& slot) {
    const SlotCourse course(path, slot);
    const int begin = course.PieceAt(course.At(0) + kAtJoint * path.step);
    ExactChain exact;
    exact.isClosed = true;
    for (int k = begin; k < begin + 4; ++k) {
        const bool isArc = k % 2 != 0;
        exact.pieces.push_back({isArc ? PieceKind::Arc : PieceKind::Line, course.StartOf(k),
                                course.StartOf(k + 1), isArc ? course.TipOf(k) : Point(),
                                course.PointAt(course.Joint(k)), course.PointAt(course.Joint(k + 1))});
    }
    // The pen came back to the piece in which it began, or to the end of that piece, too.
    const double end = course.At(path.Size() - 1);
    ExactPiece& first = exact.pieces.front();
    if (end >= course.Joint(begin + 4))
        first.first = course.PointAt(course.Joint(begin + 4));
    if (end >= course.Joint(begin + 5) - kNearly * path.step) {
        first.last = course.PointAt(course.Joint(begin + 5));
        ++exact.pieces[1].first; // no break with the piece before: not on this one's ink
    }
    return exact;
}

} // namespace Tessera::Geometry
