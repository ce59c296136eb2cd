#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/kernel/ARC_SPLINE.h"
#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/NR.h"
#include "tessera/kernel/internal/PointSums.h"

// Pratt's fit minimises the squares of a0 + a1 x + a2 y + a3 r^2 under a1^2 + a2^2 - 4 a0 a3 = 1, which makes
// the gradient on the circle 1 and so the terms distances. The minimum is the largest eigenvalue lambda of C
// a = lambda M a with M the scatter matrix of (1, x, y, r^2) and C the matrix of the constraint. Points
// exactly on a circle make M singular, so a shift at the level of its rounding keeps the Cholesky factor;
// points on a line make it singular too, but twice, and are told apart first. The points are measured in
// their rms radius.

using Vex::Math::Point2;
using Vex::Math::Vector2;

namespace {

constexpr double kFailedRadius = 1e19;
constexpr double kFailedDeviation = 1e19;
constexpr double kSmallestEigenvalue = 1e-10; // 1 / square model units: below, the three-point fallback
constexpr double kCandidateEigenvalue = 1e-19;
constexpr double kSmallestQuadratic = 1e-19; // 1 / model units: half the curvature
constexpr double kLineRms = 0.005;      // model units: in the fallback, points nearer to a line are a line
constexpr double kLineRelative = 1e-12; // of the rms radius: largest deviation of collinear points
constexpr double kCoordinateRounding = 2.0 * std::numeric_limits<double>::epsilon(); // far from the origin
constexpr double kShift = 1e-15; // of the trace of M: a few roundings of its elements
// Over very many points the sums round off more: the shift grows until the factor exists.
constexpr double kShiftGrowth = 10.0;
constexpr int kShiftAttempts = 6;
// Below this ratio of the scatter's determinant to its squared trace rounding hides whether the points are
// collinear, and the line fit decides.
constexpr double kSlenderScatter = 1e-12;
constexpr int kJacobiSweeps = 60;

struct CircleScatter {
    // r stands for r^2 = x^2 + y^2. x and y sum to what the rounding of the centroid leaves: next to nothing,
    // yet far from the origin enough to make the matrix of points on a circle indefinite.
    double x = 0.0, y = 0.0, xx = 0.0, xy = 0.0, yy = 0.0, rx = 0.0, ry = 0.0, rr = 0.0;
    void Add(double dx, double dy) {
        const double dxSq = dx * dx, dySq = dy * dy, rSq = dxSq + dySq;
        x += dx;
        y += dy;
        xx += dxSq;
        xy += dx * dy;
        yy += dySq;
        rx += rSq * dx;
        ry += rSq * dy;
        rr += rSq * rSq;
    }
    void Merge(const CircleScatter& other) {
        x += other.x;
        y += other.y;
        xx += other.xx;
        xy += other.xy;
        yy += other.yy;
        rx += other.rx;
        ry += other.ry;
        rr += other.rr;
    }
};

struct CircleDeviations : DeviationSums {
    double radius;
    explicit CircleDeviations(double circleRadius) : radius(circleRadius) {}
    void Add(double dx, double dy) { AddDeviation(std::fabs(std::sqrt(dx * dx + dy * dy) - radius)); }
    void Merge(const CircleDeviations& other) { MergeDeviations(other); }
};

struct Input {
    Point2* pts;
    int n;
    Point2 centroid;
    CircleScatter scatter;
    double rms; // root mean square distance from the centroid
};

struct Circle {
    Point2 centre;
    double radius;
};

struct LineCheck {
    int status = 0;
    double err[3] = {0.0, 0.0, 0.0};
    explicit LineCheck(const Input& in) {
        Point2 point;
        Vector2 normal;
        LSFIT_line_to_points_2d(in.pts, in.n, &point, &normal, &status, err);
    }
};

bool IsLine(const Input& in) {
    if (!(in.rms > 0.0) || !std::isfinite(in.rms))
        return true;
    const double trace = in.scatter.xx + in.scatter.yy;
    const double determinant = in.scatter.xx * in.scatter.yy - in.scatter.xy * in.scatter.xy;
    if (determinant > kSlenderScatter * trace * trace)
        return false;
    const LineCheck line(in);
    const double rounding = kCoordinateRounding * (std::fabs(in.centroid.x) + std::fabs(in.centroid.y));
    return line.status != 0 || line.err[0] <= kLineRelative * in.rms + rounding;
}

// Eigenpairs of (C, M), with M shifted by as little as keeps it definite.
bool SolveShifted(const double scatter[16], double values[4], double vectors[16]) {
    constexpr double kConstraint[16] = {0, 0, 0, -2, 0, 1, 0, 0, 0, 0, 1, 0, -2, 0, 0, 0};
    const double trace = scatter[0] + scatter[5] + scatter[10] + scatter[15];
    double shift = kShift;
    for (int attempt = 0; attempt < kShiftAttempts; ++attempt, shift *= kShiftGrowth) {
        double shifted[16], work[32];
        std::copy(scatter, scatter + 16, shifted);
        for (int i = 0; i < 4; ++i)
            shifted[5 * i] += shift * trace;
        if (NR_generalized_eigen(4, kConstraint, shifted, kJacobiSweeps, values, vectors, work))
            return true;
    }
    return false;
}

// The coefficients a of the unit-gradient equation, in rms radii, and lambda in model units; false when the
// eigenvalue is unusable.
bool SolvePratt(const Input& in, double a[4], double* lambda) {
    const double s = in.rms, sSq = s * s, n = in.n;
    const CircleScatter& m = in.scatter;
    const double x = m.x / s, y = m.y / s, xx = m.xx / sSq, xy = m.xy / sSq, yy = m.yy / sSq;
    const double rx = m.rx / (sSq * s), ry = m.ry / (sSq * s), rr = m.rr / (sSq * sSq);
    const double scatter[16] = {n, x, y, xx + yy, x, xx, xy, rx, y, xy, yy, ry, xx + yy, rx, ry, rr};
    double values[4], vectors[16];
    if (!SolveShifted(scatter, values, vectors))
        return false;
    int best = -1;
    for (int j = 0; j < 4; ++j)
        if (values[j] / sSq > kCandidateEigenvalue && (best < 0 || values[j] > values[best]))
            best = j;
    if (best < 0)
        return false;
    *lambda = values[best] / sSq;
    // The vectors have a^T M a = 1, that is a^T C a = lambda.
    const double gradient = std::sqrt(values[best]);
    for (int i = 0; i < 4; ++i)
        a[i] = vectors[4 * i + best] / gradient;
    return *lambda >= kSmallestEigenvalue;
}

bool FitThreePoints(const Input& in, Circle* circle) {
    const LineCheck line(in);
    if (line.status != 0 || line.err[1] < kLineRms)
        return false;
    circle->centre = {0.0, 0.0};
    circle->radius = kFailedRadius;
    ARC_SPLINE_cre_circle_thru_3_points_2d(&in.pts[0], &in.pts[in.n / 2], &in.pts[in.n - 1], &circle->centre,
                                           &circle->radius);
    return true;
}

// False when the circle is so flat that it has no centre.
bool MakeCircle(const Input& in, const double a[4], Circle* circle) {
    if (!(std::fabs(a[3] / in.rms) > kSmallestQuadratic))
        return false;
    const double cx = -a[1] / (2.0 * a[3]), cy = -a[2] / (2.0 * a[3]);
    circle->radius = in.rms * std::sqrt(std::fabs(cx * cx + cy * cy - a[0] / a[3]));
    circle->centre = {in.centroid.x + in.rms * cx, in.centroid.y + in.rms * cy};
    return true;
}

} // namespace

void LSFIT_circle_to_points_2d(Point2* pts, int n, Point2* centre, double* radius, int* status, double* err) {
    *centre = {0.0, 0.0};
    *radius = kFailedRadius;
    *status = 1;
    err[0] = err[1] = err[2] = kFailedDeviation;

    Input in{pts, n, {}, {}, 0.0};
    LSFIT_ask_pts_centroid_2d(n, pts, &in.centroid);
    in.scatter = SumOverPoints(pts, n, in.centroid, CircleScatter{});
    in.rms = std::sqrt((in.scatter.xx + in.scatter.yy) / n);
    if (IsLine(in))
        return;
    double a[4], lambda = 0.0, algebraicRms = 0.0;
    Circle circle{};
    if (!SolvePratt(in, a, &lambda)) {
        if (!FitThreePoints(in, &circle))
            return;
    } else {
        if (!MakeCircle(in, a, &circle))
            return;
        algebraicRms = std::sqrt(n / lambda);
    }
    *status = 0;
    *centre = circle.centre;
    *radius = circle.radius;
    const CircleDeviations deviations = SumOverPoints(pts, n, circle.centre, CircleDeviations(circle.radius));
    err[0] = deviations.largest;
    err[1] = algebraicRms;
    err[2] = deviations.sum / n;
}
