#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/internal/EllipseFit.h"
#include "tessera/kernel/internal/EllipseFoot.h"

// The ellipse fit: at most 512 samples, brought to a box with a longer side of 1; direct start;
// Levenberg-Marquardt steps on orthogonal distances; checks; deviations of all points. A signed distance r =
// n.(p - foot) has the derivatives -n.(d foot / d parameter) with the foot's parameter held, since the foot
// moves along the tangent.

using Vex::Math::Point2;

namespace {

constexpr double kFailed = 1e19; // axes and deviations on failure
constexpr int kFewestPoints = 5;
constexpr int kMostSamples = 512;
constexpr double kSmallestAxisRatio = 1e-4;
constexpr double kLargestAxis = 1e3; // of the box's longer side
constexpr int kParameters = 5;       // centre x, y, axes a, b, angle
// The fit of all points lies within 1e-5 of its own standard error. Where only samples are fitted, their
// choice weighs more than a hundredth of that error.
constexpr double kRelativeTol = 1e-11;
constexpr double kSampledRelativeTol = 1e-7;
constexpr int kIterations = 50; // 3 to 8 are usual
// Most of the way is made on few samples; all of them then need a step or two. Data without an ellipse do not
// settle: their fit is bad whatever follows, and none of the rest is worth its time.
constexpr int kCoarseSamples = 64;
constexpr int kCoarseIterations = 20;
constexpr double kHopelessRms = 0.03;    // of the box's longer side
constexpr double kAbsoluteTolSq = 1e-31; // of the box, for each sample: below the coordinates' rounding
// The iteration may pass through worse ellipses than the answer may be.
constexpr double kLargestTrialAxis = 1e6;
constexpr double kSmallestTrialAxis = 1e-9;

struct Samples {
    int count;
    Point2 pts[kMostSamples]; // relative to the centre of the points' box, in its longer side
};

// Centre and longer side of the box. False when the points coincide or are not finite.
bool FindBox(const Point2* pts, int n, Point2* origin, double* scale) {
    Point2 lo = pts[0], hi = pts[0];
    for (int i = 1; i < n; ++i) {
        lo.x = pts[i].x < lo.x ? pts[i].x : lo.x;
        lo.y = pts[i].y < lo.y ? pts[i].y : lo.y;
        hi.x = pts[i].x > hi.x ? pts[i].x : hi.x;
        hi.y = pts[i].y > hi.y ? pts[i].y : hi.y;
    }
    *origin = {lo.x + 0.5 * (hi.x - lo.x), lo.y + 0.5 * (hi.y - lo.y)};
    *scale = std::max(hi.x - lo.x, hi.y - lo.y);
    return *scale > 0.0 && std::isfinite(*scale);
}

// Evenly by index, both ends included.
Samples TakeSamples(const Point2* pts, int n, Point2 origin, double scale, int most) {
    Samples samples;
    samples.count = std::min(n, most);
    for (int k = 0; k < samples.count; ++k) {
        const long long index = static_cast<long long>(k) * (n - 1) / (samples.count - 1);
        samples.pts[k] = {(pts[index].x - origin.x) / scale, (pts[index].y - origin.y) / scale};
    }
    return samples;
}

// Lower triangle of J^T J.
void AddOuterProduct(const double gradient[kParameters], double residual, double* jtj, double* jtr) {
    for (int i = 0; i < kParameters; ++i) {
        jtr[i] += gradient[i] * residual;
        for (int j = 0; j <= i; ++j)
            jtj[i * kParameters + j] += gradient[i] * gradient[j];
    }
}

int EvaluateEllipse(void* context, const double* params, double* jtj, double* jtr, double* sumSq) {
    const Samples& samples = *static_cast<const Samples*>(context);
    const double a = params[2], b = params[3], c = std::cos(params[4]), s = std::sin(params[4]);
    if (!(std::min(a, b) >= kSmallestTrialAxis && std::max(a, b) <= kLargestTrialAxis))
        return 0;
    std::fill(jtj, jtj + kParameters * kParameters, 0.0);
    std::fill(jtr, jtr + kParameters, 0.0);
    *sumSq = 0.0;
    for (int k = 0; k < samples.count; ++k) {
        const double dx = samples.pts[k].x - params[0], dy = samples.pts[k].y - params[1];
        const double u = c * dx + s * dy, v = c * dy - s * dx;
        const EllipseFoot foot = FindEllipseFoot(a, b, u, v);
        double nu = b * foot.cosT, nv = a * foot.sinT; // outward normal
        const double length = std::sqrt(nu * nu + nv * nv);
        nu /= length;
        nv /= length;
        const double residual = nu * (u - a * foot.cosT) + nv * (v - b * foot.sinT);
        const double gradient[kParameters] = {nv * s - nu * c, -(nu * s + nv * c), -nu * foot.cosT,
                                              -nv * foot.sinT, nu * b * foot.sinT - nv * a * foot.cosT};
        AddOuterProduct(gradient, residual, jtj, jtr);
        *sumSq += residual * residual;
    }
    return std::isfinite(*sumSq) ? 1 : 0;
}

// Longer axis first, its direction in [0, pi).
void Normalize(EllipseShape* e) {
    if (e->a < e->b) {
        std::swap(e->a, e->b);
        e->angle += 0.5 * std::numbers::pi;
    }
    e->angle = std::remainder(e->angle, std::numbers::pi);
    if (e->angle < 0.0)
        e->angle += std::numbers::pi;
    if (e->angle >= std::numbers::pi) // a tiny negative angle rounds up
        e->angle = 0.0;
}

struct Refinement {
    bool isSettled;
    double rms;
};

Refinement Refine(Samples* samples, int iterations, double relativeTol, double params[kParameters]) {
    double sumSq = 0.0;
    int status = 0;
    LSFIT_nonlinear_function(kParameters, params, EvaluateEllipse, samples, iterations, relativeTol,
                             kAbsoluteTolSq * samples->count, &sumSq, &status);
    return {status == 0, std::sqrt(sumSq / samples->count)};
}

// The ellipse in the points' box. Whether an unsettled fit will do is judged by its shape, and by the caller
// from its deviations.
bool FitEllipse(const Point2* pts, int n, Point2 origin, double scale, EllipseShape* ellipse) {
    Samples samples = TakeSamples(pts, n, origin, scale, kMostSamples);
    if (!FindStartEllipse(samples.pts, samples.count, ellipse))
        return false;
    double params[kParameters] = {ellipse->centre.x, ellipse->centre.y, ellipse->a, ellipse->b,
                                  ellipse->angle};
    Samples coarse = TakeSamples(pts, n, origin, scale, kCoarseSamples);
    const Refinement first = Refine(&coarse, kCoarseIterations, kSampledRelativeTol, params);
    const bool isHopeless = !first.isSettled && first.rms > kHopelessRms;
    if (!isHopeless &&
        !std::isfinite(
            Refine(&samples, kIterations, n > kMostSamples ? kSampledRelativeTol : kRelativeTol, params).rms))
        return false;
    *ellipse = {{params[0], params[1]}, params[2], params[3], params[4]};
    Normalize(ellipse);
    return ellipse->a <= kLargestAxis && ellipse->b >= kSmallestAxisRatio * ellipse->a;
}

} // namespace

void LSFIT_ellipse_to_points_2d(Point2* pts, int n, Point2* centre, double* a, double* b, double* angle,
                                int* status, double* err) {
    *centre = {0.0, 0.0};
    *a = *b = kFailed;
    *angle = 0.0;
    *status = 1;
    err[0] = err[1] = err[2] = kFailed;

    Point2 origin;
    double scale = 0.0;
    EllipseShape ellipse;
    if (n < kFewestPoints || !FindBox(pts, n, &origin, &scale) ||
        !FitEllipse(pts, n, origin, scale, &ellipse))
        return;
    ellipse.centre = {origin.x + scale * ellipse.centre.x, origin.y + scale * ellipse.centre.y};
    ellipse.a *= scale;
    ellipse.b *= scale;
    double deviations[3];
    MeasureEllipseDeviations(pts, n, ellipse, deviations);
    if (!std::isfinite(deviations[2]))
        return;
    *status = 0;
    *centre = ellipse.centre;
    *a = ellipse.a;
    *b = ellipse.b;
    *angle = ellipse.angle;
    std::copy(deviations, deviations + 3, err);
}
