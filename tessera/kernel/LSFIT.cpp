#include "tessera/kernel/LSFIT.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/kernel/NR.h"
#include "tessera/kernel/VEC2.h"
#include "tessera/kernel/internal/PointSums.h"

// The line fit: the normal is the eigenvector of the smaller eigenvalue of the scatter matrix about the
// centroid. Three passes over the points: centroid, scatter, deviations.

using Vex::Math::Point2;
using Vex::Math::Vector2;

namespace {

constexpr double kCoincidentLength = 1e-6; // model units, fixed: points all nearer to the centroid coincide
constexpr double kZeroEigenvalue = 1e-9;   // square model units, fixed
constexpr double kHugeEigenvalue = 1e19;   // no candidate from here on
constexpr double kUnitizeTol = 1e-10;
constexpr int kJacobiSweeps = 60;

struct CoordinateSums {
    double x = 0.0, y = 0.0;
    void Add(double dx, double dy) {
        x += dx;
        y += dy;
    }
    void Merge(const CoordinateSums& other) { Add(other.x, other.y); }
};

struct Scatter {
    double xx = 0.0, xy = 0.0, yy = 0.0, farthestSq = 0.0;
    void Add(double dx, double dy) {
        const double dxSq = dx * dx, dySq = dy * dy, lengthSq = dxSq + dySq;
        xx += dxSq;
        xy += dx * dy;
        yy += dySq;
        farthestSq = lengthSq > farthestSq ? lengthSq : farthestSq;
    }
    void Merge(const Scatter& other) {
        xx += other.xx;
        xy += other.xy;
        yy += other.yy;
        farthestSq = std::max(farthestSq, other.farthestSq);
    }
};

struct LineDeviations : DeviationSums {
    Vector2 normal;
    explicit LineDeviations(Vector2 unitNormal) : normal(unitNormal) {}
    void Add(double dx, double dy) { AddDeviation(std::fabs(normal.x * dx + normal.y * dy)); }
    void Merge(const LineDeviations& other) { MergeDeviations(other); }
};

// The first point of greatest length.
Vector2 FarthestVector(const Point2* pts, int n, Point2 centroid) {
    Vector2 farthest{0.0, 0.0};
    for (int i = 0; i < n; ++i) {
        const Vector2 v{pts[i].x - centroid.x, pts[i].y - centroid.y};
        if (VEC2_dot(&v, &v) > VEC2_dot(&farthest, &farthest))
            farthest = v;
    }
    return farthest;
}

// The smaller usable eigenvalue and its eigenvector; false when there is none.
bool FindSmallerEigenpair(const Scatter& scatter, double* lambda, Vector2* vector) {
    double matrix[4] = {scatter.xx, scatter.xy, scatter.xy, scatter.yy}, values[2], vectors[4];
    if (!NR_jacobi_eigen(2, matrix, kJacobiSweeps, values, vectors))
        return false;
    bool isFound = false;
    for (int j = 0; j < 2; ++j) {
        double value = values[j];
        // A scatter matrix has no negative eigenvalue; what rounding leaves below zero is zero, at any scale.
        if (value <= kZeroEigenvalue)
            value = 0.0;
        if (value < kHugeEigenvalue && (!isFound || value < *lambda)) {
            isFound = true;
            *lambda = value;
            *vector = {vectors[j], vectors[2 + j]};
        }
    }
    return isFound;
}

} // namespace

void LSFIT_ask_pts_centroid_2d(int n, Point2* pts, Point2* centroid) {
    if (n < 1) {
        centroid->x = centroid->y = std::numeric_limits<double>::quiet_NaN();
        return;
    }
    // Relative to the first point: coinciding coordinates then average to themselves, exactly.
    const CoordinateSums sums = SumOverPoints(pts, n, pts[0], CoordinateSums{});
    *centroid = {pts[0].x + sums.x / n, pts[0].y + sums.y / n};
}

void LSFIT_line_to_points_2d(Point2* pts, int n, Point2* pointOnLine, Vector2* dir, int* status,
                             double* err) {
    *dir = {0.0, 0.0};
    *status = 0;
    LSFIT_ask_pts_centroid_2d(n, pts, pointOnLine);
    const Scatter scatter = SumOverPoints(pts, n, *pointOnLine, Scatter{});
    if (std::sqrt(scatter.farthestSq) < kCoincidentLength) {
        *status = 1;
        return;
    }
    double lambda = 0.0, length = 0.0;
    Vector2 normal{0.0, 0.0};
    if (FindSmallerEigenpair(scatter, &lambda, &normal)) {
        VEC2_unitize(&normal, kUnitizeTol, &length, dir);
    } else {
        const Vector2 farthest = FarthestVector(pts, n, *pointOnLine);
        VEC2_ask_perpendicular(&farthest, &normal);
        VEC2_unitize(&normal, kUnitizeTol, &length, dir);
    }
    const LineDeviations deviations = SumOverPoints(pts, n, *pointOnLine, LineDeviations(*dir));
    err[0] = deviations.largest;
    err[1] = std::sqrt(lambda / n);
    err[2] = deviations.sum / n;
}
