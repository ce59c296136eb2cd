// A point's distance from the outline is its distance from the rectangle of the corners' centres, less the
// radius: smooth everywhere but deep inside. Levenberg-Marquardt steps find the outline together with the
// drift, as for rounds.
#include "tessera/recognition/internal/RoundedOutline.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/NR.h"
#include "tessera/recognition/internal/AxisSnap.h"

namespace Tessera::Geometry {

namespace {

// Points from one that a box is fitted to, to the next: the path is smooth at this spacing, and most that are
// tried are none.
constexpr int kBoxStride = 2;
constexpr double kRelativeFall = 1e-6;
constexpr double kAbsoluteFall = 1e-9; // squared sizes
constexpr double kRidge = 1e-6;        // of the normal equations: terms that the path does not show vanish
// Keeps the drift small: straight lines guide the pen back to its start better than a swing round does.
constexpr double kDriftPrice = 4.0;
constexpr double kBow = 0.03; // sagitta of a side that a quick hand draws, of its length: one sigma

enum Parameter : int { kX, kY, kAngle, kAlong, kRadius, kDrift, kAcross, kTerms };
using Parameters = std::array<double, kTerms>;

constexpr int kBowed = kTerms + 4; // and the bow of each side

constexpr int CountOf(OutlineKind kind) {
    return kind == OutlineKind::Slot ? kAcross : kTerms;
}

// Distance of a point, less what the drift explains, with its derivatives.
struct Residual {
    double value = 0.0;
    std::array<double, kTerms> slope{};
};

// The parameters with the direction worked out.
struct Trial {
    Trial(const double* parameters, OutlineKind kind)
        : p(parameters), across(kind == OutlineKind::Box ? parameters[kAcross] : 0.0),
          axis(std::cos(parameters[kAngle]), std::sin(parameters[kAngle])) {}

    Residual At(const Point& point, double share) const {
        const Point d = point - Point(p[kX], p[kY]);
        const double u = axis.Dot(d);
        const double v = axis.Cross(d);
        const double beyondU = std::fabs(u) - p[kAlong];
        const double beyondV = std::fabs(v) - across;
        double nu = beyondU;
        double nv = beyondV;
        double rho = 0.0;
        if (beyondU <= 0.0 || beyondV <= 0.0) { // nearest to a side
            rho = std::max(beyondU, beyondV);
            nu = beyondU > beyondV ? 1.0 : 0.0;
            nv = 1.0 - nu;
        } else {
            rho = std::max(std::sqrt(beyondU * beyondU + beyondV * beyondV), 1e-12);
            nu /= rho;
            nv /= rho;
        }
        const double slopeU = -nu;
        const double slopeV = -nv;
        nu = std::copysign(nu, u);
        nv = std::copysign(nv, v);
        return {rho - p[kRadius] - p[kDrift] * share,
                {axis.y * nv - axis.x * nu, -axis.y * nu - axis.x * nv, nu * v - nv * u, slopeU, -1.0, -share,
                 slopeV}};
    }

    const double* p;
    double across;
    Point axis;
};

// Adds a residual to normal equations, terms x terms row by row (lower triangle).
template <int terms>
void AddRow(const double* slope, double value, double* jtj, double* jtr) {
    for (int a = 0; a < terms; ++a) {
        for (int b = 0; b <= a; ++b)
            jtj[a * terms + b] += slope[a] * slope[b];
        jtr[a] += slope[a] * value;
    }
}

// Returns the sum of squares.
template <int terms>
double AddDrift(const Trial& trial, double* jtj, double* jtr) {
    const double drift = trial.p[kDrift];
    jtj[kDrift * (terms + 1)] += kDriftPrice;
    jtr[kDrift] += kDriftPrice * drift;
    return kDriftPrice * drift * drift;
}

// Normal equations over the first `terms` slopes.
template <int terms>
double Accumulate(const InkPath& path, const Trial& trial, int stride, double* jtj, double* jtr) {
    std::fill(jtj, jtj + terms * terms, 0.0);
    std::fill(jtr, jtr + terms, 0.0);
    double sumSq = 0.0;
    for (int i = 0; i < path.Size(); i += stride) {
        const Residual residual = trial.At(path.At(i), ShareOf(path, i));
        AddRow<terms>(residual.slope.data(), residual.value, jtj, jtr);
        sumSq += residual.value * residual.value;
    }
    return sumSq + AddDrift<terms>(trial, jtj, jtr);
}

struct Model {
    const InkPath& path;
    OutlineKind kind;
};

int EvaluateModel(void* context, const double* p, double* jtj, double* jtr, double* sumSq) {
    const Model& model = *static_cast<const Model*>(context);
    const bool isBox = model.kind == OutlineKind::Box;
    if (!(p[kAlong] >= 0.0) || !(p[kRadius] > 0.0) || (isBox && !(p[kAcross] >= 0.0)))
        return 0;
    const Trial trial(p, model.kind);
    *sumSq = isBox ? Accumulate<kTerms>(model.path, trial, kBoxStride, jtj, jtr)
                   : Accumulate<kAcross>(model.path, trial, 1, jtj, jtr);
    return 1;
}

Parameters ParametersOf(const RoundedOutline& outline) {
    Parameters p{};
    p[kX] = outline.centre.x;
    p[kY] = outline.centre.y;
    p[kAngle] = std::atan2(outline.axis.y, outline.axis.x);
    p[kAlong] = outline.along;
    p[kRadius] = outline.radius;
    p[kDrift] = outline.drift;
    p[kAcross] = outline.across;
    return p;
}

// One step to the least squares; false where there is none.
bool Solve(int terms, double* jtj, double* step) {
    for (int i = 0; i < terms; ++i)
        jtj[i * (terms + 1)] += kRidge;
    if (!NR_cholesky_decomp(terms, jtj))
        return false;
    NR_cholesky_solve(terms, jtj, step);
    return true;
}

} // namespace

bool FitOutline(const InkPath& path, OutlineKind kind, int evaluations, RoundedOutline& outline) {
    Model model{path, kind};
    Parameters p = ParametersOf(outline);
    double sumSq = 0.0;
    int status = 1;
    LSFIT_nonlinear_function(CountOf(kind), p.data(), EvaluateModel, &model, evaluations, kRelativeFall,
                             kAbsoluteFall, &sumSq, &status);
    const Trial best(p.data(), kind);
    outline = {{p[kX], p[kY]}, best.axis, p[kAlong], best.across, p[kRadius], p[kDrift]};
    return std::isfinite(sumSq) && p[kAlong] > 0.0 && (kind == OutlineKind::Slot || best.across > 0.0);
}

double SumSqFrom(const InkPath& path, const RoundedOutline& outline) {
    const Parameters p = ParametersOf(outline);
    const Trial trial(p.data(), OutlineKind::Box);
    double sumSq = 0.0;
    for (int i = 0; i < path.Size(); ++i)
        sumSq += SquareWithoutTail(trial.At(path.At(i), ShareOf(path, i)).value);
    return sumSq;
}

void SnapOutline(double snapRad, RoundedOutline& outline) {
    const Point left(-outline.axis.y, outline.axis.x);
    const Point diagonal = (outline.axis + left) / std::numbers::sqrt2;
    if (const std::optional<Point> axis = AxisNear(outline.axis, snapRad))
        outline.axis = *axis;
    else if (const std::optional<Point> onto = AxisNear(diagonal, snapRad);
             onto && outline.along == outline.across)
        outline.axis = (*onto + Point(onto->y, -onto->x)) / std::numbers::sqrt2;
}

double SquarenessOf(const InkPath& path, const RoundedOutline& slot) {
    const Parameters p = ParametersOf(slot);
    double jtj[kTerms * kTerms];
    double step[kTerms];
    Accumulate<kTerms>(path, Trial(p.data(), OutlineKind::Slot), 1, jtj, step);
    return Solve(kTerms, jtj, step) ? -step[kAcross] / slot.radius : 0.0;
}

double RadiusOverBows(const InkPath& path, const RoundedOutline& box) {
    const Parameters p = ParametersOf(box);
    const Trial trial(p.data(), OutlineKind::Box);
    const Point half(box.along + box.radius, box.across + box.radius);
    double jtj[kBowed * kBowed] = {};
    double step[kBowed] = {};
    double sumSq = 0.0;
    for (int i = 0; i < path.Size(); ++i) {
        const Residual residual = trial.At(path.At(i), ShareOf(path, i));
        double slope[kBowed] = {};
        std::copy(residual.slope.begin(), residual.slope.end(), slope);
        const Point d = path.At(i) - box.centre;
        const double u = trial.axis.Dot(d) / half.x;
        const double v = trial.axis.Cross(d) / half.y;
        slope[v < 0.0 ? kTerms : kTerms + 1] = slope[kAcross] * std::max(0.0, 1.0 - u * u);
        slope[u < 0.0 ? kTerms + 2 : kTerms + 3] = slope[kAlong] * std::max(0.0, 1.0 - v * v);
        AddRow<kBowed>(slope, residual.value, jtj, step);
        sumSq += residual.value * residual.value;
    }
    AddDrift<kBowed>(trial, jtj, step);
    for (int k = kTerms; k < kBowed; ++k) {
        const double bow = kBow * 2.0 * (k < kTerms + 2 ? half.x : half.y);
        jtj[k * (kBowed + 1)] += sumSq / path.Size() / (bow * bow);
    }
    return Solve(kBowed, jtj, step) ? box.radius - step[kRadius] : box.radius;
}

} // namespace Tessera::Geometry
