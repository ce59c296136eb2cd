#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/internal/EllipseDistances.h"
#include "tessera/kernel/internal/EllipseFit.h"

// The ellipse fit: at most 512 samples, brought to a box with a longer side of 1; direct start; Newton steps
// on orthogonal distances; checks; deviations of all points. The parameters are the coefficients of the
// conic: unlike axes and their angle they are as well determined at a circle and at a parabola as anywhere
// else.

using Vex::Math::Point2;

namespace {

constexpr double kFailed = 1e19; // axes and deviations on failure
constexpr int kFewestPoints = 5;
constexpr double kSmallestAxisRatio = 1e-4;
constexpr double kLargestAxis = 1e3; // of the box's longer side
// The fit of all points lies within 1e-5 of its own standard error. Where only samples are fitted, their
// choice weighs more than a hundredth of that error.
constexpr double kRelativeTol = 1e-11;
constexpr double kSampledRelativeTol = 1e-7;
constexpr int kIterations = 30; // 2 to 5 are usual
// Most of the way is made on few samples; all of them then need a step or two. Data without an ellipse do not
// settle: their fit is bad whatever follows, and none of the rest is worth its time.
constexpr int kCoarseShare = 4; // of the samples
constexpr int kFewestCoarseSamples = 16;
constexpr int kMostCoarseSamples = 64;
constexpr int kCoarseIterations = 12;
constexpr double kCoarseTol = 1e-3;
constexpr double kHopelessRms = 0.03;    // of the box's longer side
constexpr double kAbsoluteTolSq = 1e-31; // of the box, for each sample: below the coordinates' rounding

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
void TakeSamples(const Point2* pts, int n, Point2 origin, double scale, EllipseSamples* samples) {
    const double inverse = 1.0 / scale;
    samples->count = std::min(n, kMostEllipseSamples);
    for (int k = 0; k < samples->count; ++k) {
        const long long index = static_cast<long long>(k) * (n - 1) / (samples->count - 1);
        samples->x[k] = (pts[index].x - origin.x) * inverse;
        samples->y[k] = (pts[index].y - origin.y) * inverse;
        samples->roots[k] = 1.0;
    }
}

void TakeCoarseSamples(const EllipseSamples& all, EllipseSamples* samples) {
    samples->count = std::clamp(all.count / kCoarseShare, kFewestCoarseSamples, kMostCoarseSamples);
    std::copy(all.spread, all.spread + 2, samples->spread);
    for (int k = 0; k < samples->count; ++k) {
        const int index = k * (all.count - 1) / (samples->count - 1);
        samples->x[k] = all.x[index];
        samples->y[k] = all.y[index];
        samples->roots[k] = 1.0;
    }
}

struct Refinement {
    bool isSettled;
    double rms;
};

Refinement Approach(EllipseSamples* samples, int iterations, double relativeTol, double* params) {
    double sumSq = 0.0;
    int status = 0;
    LSFIT_nonlinear_function(kEllipseParameters, params, EvaluateEllipseDistances, samples, iterations,
                             relativeTol, kAbsoluteTolSq * samples->count, &sumSq, &status);
    return {status == 0, std::sqrt(sumSq / samples->count)};
}

bool IsRunaway(const EllipseSamples& samples, const double* params) {
    EllipseShape ellipse;
    return !FindEllipseOfConic(samples, params, &ellipse) || ellipse.a > kLargestAxis;
}

} // namespace

bool EllipseFitter::FindStart(EllipseShape* start) {
    if (n_ < kFewestPoints || !FindBox(pts_, n_, &origin_, &scale_))
        return false;
    TakeSamples(pts_, n_, origin_, scale_, &samples_);
    return FindStartConic(&samples_, params_) && MapToPoints(start);
}

// From the frame of the samples to that of the points; the angle in [0, pi).
bool EllipseFitter::MapToPoints(EllipseShape* e) const {
    if (!FindEllipseOfConic(samples_, params_, e))
        return false;
    const double(&axis)[2][2] = samples_.axis;
    const double x = e->centre.x, y = e->centre.y;
    e->centre.x = origin_.x + scale_ * (samples_.mean.x + x * axis[0][0] + y * axis[1][0]);
    e->centre.y = origin_.y + scale_ * (samples_.mean.y + x * axis[0][1] + y * axis[1][1]);
    e->a *= scale_;
    e->b *= scale_;
    e->angle = std::remainder(e->angle + std::atan2(axis[0][1], axis[0][0]), std::numbers::pi);
    if (e->angle < 0.0)
        e->angle += std::numbers::pi;
    if (e->angle >= std::numbers::pi) // a tiny negative angle rounds up
        e->angle = 0.0;
    return true;
}

// Whether an unsettled fit will do is judged by its shape, and by the caller from its deviations. False too
// when no ellipse comes within `limit` of all points: at the least sum of squares of some of them not even
// their root mean square does.
bool EllipseFitter::RefineSamples(double limit) {
    bool isHopeless = false;
    if (samples_.count >= kCoarseShare * kFewestCoarseSamples) {
        EllipseSamples coarse;
        TakeCoarseSamples(samples_, &coarse);
        const Refinement first = Approach(&coarse, kCoarseIterations, kCoarseTol, params_);
        if (first.isSettled && first.rms * (1.0 - kCoarseTol) > limit)
            return false;
        isHopeless = !first.isSettled && (first.rms > kHopelessRms || IsRunaway(samples_, params_));
    }
    if (isHopeless)
        return true;
    const double tol = n_ <= kMostEllipseSamples ? kRelativeTol : kSampledRelativeTol;
    const Refinement last = Approach(&samples_, kIterations, tol, params_);
    return std::isfinite(last.rms) && !(last.isSettled && last.rms * (1.0 - kSampledRelativeTol) > limit);
}

bool EllipseFitter::Refine(double limit, EllipseShape* ellipse) {
    return RefineSamples(limit / scale_) && MapToPoints(ellipse) && ellipse->a <= kLargestAxis * scale_ &&
           ellipse->b >= kSmallestAxisRatio * ellipse->a;
}

bool EllipseFitter::Refine(double limit, EllipseShape* ellipse, double err[3]) {
    if (!Refine(limit, ellipse))
        return false;
    MeasureEllipseDeviations(pts_, n_, *ellipse, err);
    return std::isfinite(err[2]) && err[0] <= limit;
}

void LSFIT_ellipse_to_points_2d(Point2* pts, int n, Point2* centre, double* a, double* b, double* angle,
                                int* status, double* err) {
    EllipseShape ellipse;
    double deviations[3];
    constexpr double kNoLimit = std::numeric_limits<double>::infinity();
    EllipseFitter fitter(pts, n);
    const bool isFitted = fitter.FindStart(&ellipse) && fitter.Refine(kNoLimit, &ellipse, deviations);
    if (!isFitted) {
        ellipse = {{0.0, 0.0}, kFailed, kFailed, 0.0};
        std::fill(deviations, deviations + 3, kFailed);
    }
    *status = isFitted ? 0 : 1;
    *centre = ellipse.centre;
    *a = ellipse.a;
    *b = ellipse.b;
    *angle = ellipse.angle;
    std::copy(deviations, deviations + 3, err);
}
