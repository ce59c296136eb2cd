#include <algorithm>
#include <cmath>

#include "tessera/kernel/internal/EllipseFit.h"
#include "tessera/kernel/internal/EllipseFoot.h"
#include "tessera/kernel/internal/PointSums.h"

// Few points are solved exactly. The exact foot of every one of many would cost more than the rest of the
// fit: then the mean and the root mean square take first-order distances, and the largest distance starts
// from some points spread over the stroke, solved exactly; every point is bounded from above, first by its
// distance along the ray to the centre (no root, no division), then by the distance parallel to the minor
// axis, last by the distance to a foot one gradient step away, and only a point that still beats the maximum
// so far is solved exactly.

using Vex::Math::Point2;

namespace {

constexpr double kNearLevel = 0.1; // |F| of points within some 5 % of the ellipse: first-order distances hold
constexpr int kAllSolved = 512;    // points: no more than the iteration solved several times
constexpr double kResolution = 1e-15; // of the axis a: below, deviations are rounding and not worth a foot

class EllipseDeviations : public DeviationSums {
public:
    // largestSoFar: of some of the points; spares deviations that grow along the stroke.
    EllipseDeviations(const EllipseShape& e, double largestSoFar)
        : a_(e.a), b_(e.b), inverseA_(1.0 / e.a), inverseB_(1.0 / e.b), cos_(std::cos(e.angle)),
          sin_(std::sin(e.angle)), resolution_(kResolution * e.a) {
        largest = largestSoFar;
        SetThreshold(std::max(resolution_, largest));
    }

    void Add(double dx, double dy) {
        const double u = cos_ * dx + sin_ * dy, v = cos_ * dy - sin_ * dx; // in the ellipse's axes
        const double x = u * inverseA_, y = v * inverseB_, q = x * x + y * y;
        const double level = q - 1.0, levelSq = level * level; // F = q - 1
        const double gu = x * inverseA_, gv = y * inverseB_;   // half its gradient
        // The ray meets the ellipse at 1 / sqrt(q) of the way; sqrt(q) + 1 >= min(q, 1) + 1.
        const double bound = std::min(q, 1.0) + 1.0;
        const bool mayBeLargest = (u * u + v * v) * levelSq >= thresholdSq_ * q * bound * bound;
        double distance = std::fabs(level) / (2.0 * std::sqrt(gu * gu + gv * gv));
        if (mayBeLargest || levelSq > kNearLevel * kNearLevel)
            distance = MeasureCarefully(u, v, distance);
        sum += distance;
        sumSq_ += distance * distance;
    }
    void Merge(const EllipseDeviations& other) {
        MergeDeviations(other);
        sumSq_ += other.sumSq_;
    }
    double SumSq() const { return sumSq_; }

private:
    void SetThreshold(double distance) {
        threshold_ = distance;
        thresholdSq_ = distance * distance;
    }

    // The distance to use in the sums; raises the maximum.
    double MeasureCarefully(double u, double v, double firstOrder) {
        const double x = u * inverseA_, y = v * inverseB_, level = x * x + y * y - 1.0;
        const bool isNear = level * level <= kNearLevel * kNearLevel;
        if (x * x < 1.0) {
            const double parallel = b_ * std::fabs(std::fabs(y) - std::sqrt(1.0 - x * x));
            if (parallel < threshold_)
                return isNear ? firstOrder : parallel;
        }
        const double gu = x * inverseA_, gv = y * inverseB_, gradientSq = gu * gu + gv * gv;
        const double step = gradientSq > 0.0 ? 0.5 * level / gradientSq : 0.0;
        const double fu = u - step * gu, fv = v - step * gv;
        const double stretch = std::sqrt(fu * inverseA_ * fu * inverseA_ + fv * inverseB_ * fv * inverseB_);
        const double du = stretch > 0.0 ? u - fu / stretch : u,
                     dv = stretch > 0.0 ? v - fv / stretch : v - b_;
        const double boundSq = du * du + dv * dv;
        if (boundSq < thresholdSq_)
            return isNear ? firstOrder : std::sqrt(boundSq);
        return SolveExactly(u, v);
    }

    double SolveExactly(double u, double v) {
        const EllipseFoot foot = FindEllipseFoot(a_, b_, u, v);
        const double du = u - a_ * foot.cosT, dv = v - b_ * foot.sinT,
                     distance = std::sqrt(du * du + dv * dv);
        largest = std::max(largest, distance);
        SetThreshold(std::max(resolution_, largest));
        return distance;
    }

    double a_, b_, inverseA_, inverseB_, cos_, sin_, resolution_;
    double threshold_ = 0.0, thresholdSq_ = 0.0, sumSq_ = 0.0;
};

// Exact distances of every stride-th point.
struct ExactDeviations : DeviationSums {
    double sumSq = 0.0;
    ExactDeviations(const Point2* pts, int count, int stride, const EllipseShape& e) {
        const double c = std::cos(e.angle), s = std::sin(e.angle);
        for (int from = 0; from < count; from += kEllipseFootBlock) {
            const int size = std::min(kEllipseFootBlock, count - from);
            double u[kEllipseFootBlock], v[kEllipseFootBlock];
            for (int i = 0; i < size; ++i) {
                const Point2& p = pts[static_cast<std::ptrdiff_t>(from + i) * stride];
                const double dx = p.x - e.centre.x, dy = p.y - e.centre.y;
                u[i] = c * dx + s * dy;
                v[i] = c * dy - s * dx;
            }
            AddBlock(e.a, e.b, size, u, v);
        }
    }

private:
    void AddBlock(double a, double b, int size, const double* u, const double* v) {
        double roots[kEllipseFootBlock], cosT[kEllipseFootBlock], sinT[kEllipseFootBlock];
        std::fill(roots, roots + size, 1.0);
        FindEllipseFeet(a, b, size, u, v, roots, cosT, sinT);
        for (int i = 0; i < size; ++i) {
            const double du = u[i] - a * cosT[i], dv = v[i] - b * sinT[i], distanceSq = du * du + dv * dv;
            AddDeviation(std::sqrt(distanceSq));
            sumSq += distanceSq;
        }
    }
};

} // namespace

void MeasureEllipseDeviations(const Point2* pts, int n, const EllipseShape& ellipse, double err[3]) {
    double sumSq = 0.0;
    DeviationSums total;
    if (n <= kAllSolved) {
        const ExactDeviations exact(pts, n, 1, ellipse);
        total = exact;
        sumSq = exact.sumSq;
    } else {
        const int stride = n / kEllipseFootBlock;
        const ExactDeviations first(pts, kEllipseFootBlock, stride, ellipse);
        const EllipseDeviations all =
            SumOverPoints(pts, n, ellipse.centre, EllipseDeviations(ellipse, first.largest));
        total = all;
        sumSq = all.SumSq();
    }
    err[0] = total.largest;
    // First-order distances may exceed the true ones by a little: never report a mean above the maximum.
    err[1] = std::min(std::sqrt(sumSq / n), total.largest);
    err[2] = std::min(total.sum / n, err[1]);
}
