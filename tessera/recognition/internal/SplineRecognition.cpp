#include "tessera/recognition/internal/SplineRecognition.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "tessera/kernel/BCRVFIT.h"
#include "tessera/kernel/internal/RecordPtr.h"

// The points are thinned before the fit: their chord length, from which the fit takes its parameters, is then
// that of the shape and not of the hand's tremor. The deviation is measured on all points.

namespace Tessera::Geometry {

namespace {

using Vex::Math::Point2;
using Vex::Math::Point3;
using Vex::Math::Vector2;

constexpr int kFewestPoints = 4;
constexpr int kOrder = 3;
// cos 30 degrees: how far tangents and gap may turn where a curve closes (included).
constexpr double kClosingCosine = 0.86602540378443865;
// Share of the tolerance by which a point may fall back along a chord and still count as advancing.
// PNTLST_thin grants all of it and so drops points of narrow folds, which the fit's parameters would then
// miss.
constexpr double kFallBackShare = 0.25;

Vector2 Between(const Point2& from, const Point2& to) {
    return {to.x - from.x, to.y - from.y};
}
double Dot(const Vector2& a, const Vector2& b) {
    return a.x * b.x + a.y * b.y;
}
double Cross(const Vector2& a, const Vector2& b) {
    return a.x * b.y - a.y * b.x;
}
double Length(const Vector2& v) {
    return std::sqrt(Dot(v, v));
}

// The directions in which a chord from its start passes every point so far within a tolerance.
class ChordSector {
public:
    ChordSector(const Point2& start, double tol) : start_(start), tol_(tol) {}

    /// Whether the chord to p keeps the points so far; p then counts as one of them.
    bool Reaches(const Point2& p) {
        const Vector2 v = Between(start_, p);
        const double length = Length(v);
        if (length < longest_ - kFallBackShare * tol_)
            return false;
        if (isBounded_ && (Cross(right_, v) < 0.0 || Cross(v, left_) < 0.0 || Dot(v, axis_) <= 0.0))
            return false;
        longest_ = std::max(longest_, length);
        if (length > tol_)
            Narrow(v, length);
        return true;
    }

private:
    void Narrow(const Vector2& v, double length) {
        const double sine = tol_ / length, cosine = std::sqrt(1.0 - sine * sine);
        const Vector2 u{v.x / length, v.y / length};
        const Vector2 left{cosine * u.x - sine * u.y, sine * u.x + cosine * u.y};
        const Vector2 right{cosine * u.x + sine * u.y, cosine * u.y - sine * u.x};
        if (!isBounded_ || Cross(left, left_) > 0.0)
            left_ = left;
        if (!isBounded_ || Cross(right_, right) > 0.0)
            right_ = right;
        axis_ = u;
        isBounded_ = true;
    }

    Point2 start_;
    double tol_;
    double longest_ = 0.0;
    bool isBounded_ = false;
    Vector2 left_{}, right_{}, axis_{};
};

// Indices of the points with the least and the greatest x and y.
struct Extremes {
    std::size_t index[4] = {};
    explicit Extremes(std::span<const Point2> pts) {
        for (std::size_t i = 1; i < pts.size(); ++i) {
            index[0] = pts[i].x < pts[index[0]].x ? i : index[0];
            index[1] = pts[i].x > pts[index[1]].x ? i : index[1];
            index[2] = pts[i].y < pts[index[2]].y ? i : index[2];
            index[3] = pts[i].y > pts[index[3]].y ? i : index[3];
        }
    }
    bool Has(std::size_t i) const { return std::find(index, index + 4, i) != index + 4; }
};

// Drops points within tol of the chord of their neighbours that stay, at most `window` points apart; ends and
// extremes stay. Every point is looked at once.
std::vector<Point3> Thin(std::span<const Point2> pts, std::size_t window, double tol) {
    const Extremes extremes(pts);
    std::vector<Point3> kept;
    kept.reserve(pts.size() + 1);
    kept.push_back({pts[0].x, pts[0].y, 0.0});
    ChordSector sector(pts[0], tol);
    std::size_t from = 0;
    const auto keep = [&](std::size_t i) {
        kept.push_back({pts[i].x, pts[i].y, 0.0});
        from = i;
        sector = ChordSector(pts[i], tol);
    };
    for (std::size_t i = 1; i < pts.size(); ++i) {
        if (i - from > 1 && (i - from > window || !sector.Reaches(pts[i])))
            keep(i - 1);
        if (i - from == 1)
            sector.Reaches(pts[i]);
        if (i + 1 == pts.size() || extremes.Has(i))
            keep(i);
    }
    return kept;
}

bool IsWithinClosingAngle(const Vector2& a, const Vector2& b) {
    return Dot(a, b) >= kClosingCosine * Length(a) * Length(b) && Dot(a, b) > 0.0;
}

// Whether the pen, going on as it ended, came back to its start and went off as it had begun.
bool IsGapBridged(std::span<const Point2> pts, std::size_t interval) {
    const std::size_t last = pts.size() - 1, k = std::min(interval, last);
    const Vector2 leaving = Between(pts[0], pts[k]), arriving = Between(pts[last - k], pts[last]);
    const Vector2 gap = Between(pts[last], pts[0]);
    return IsWithinClosingAngle(arriving, leaving) && IsWithinClosingAngle(arriving, gap) &&
           IsWithinClosingAngle(gap, leaving);
}

} // namespace

Spline* RecognizeSpline(std::span<const Point2> pts, int interval, double splineTol, double closeTol,
                        double* maxDev) {
    if (pts.size() < kFewestPoints)
        return nullptr;
    const auto k = static_cast<std::size_t>(std::max(1, interval));
    std::vector<Point3> kept = Thin(pts, 2 * k, splineTol);
    std::vector<Point3> all(pts.size());
    std::transform(pts.begin(), pts.end(), all.begin(), [](const Point2& p) {
        return Point3{p.x, p.y, 0.0};
    });

    const double gap = Length(Between(pts.front(), pts.back()));
    const bool isLoop = gap <= splineTol;
    const bool isClosed = isLoop || (gap <= closeTol && IsGapBridged(pts, k));
    if (isLoop)
        kept.back() = kept.front();
    else if (isClosed)
        kept.push_back(kept.front());
    if (kept.size() < kOrder) // a piece that thins to its ends
        kept.insert(kept.begin() + 1, all[all.size() / 2]);

    int status = 1;
    double deviation[3];
    RecordPtr record(BCRVFIT_least_squares_fit(static_cast<int>(kept.size()), kept.data(),
                                               static_cast<int>(all.size()), all.data(), kOrder, isClosed,
                                               BCRVFIT_KNOTS_UNIFORM, splineTol, &status, deviation));
    if (status != 0)
        return nullptr;
    auto spline = std::make_unique<Spline>(record.get());
    static_cast<void>(record.release()); // only now does the spline own the record
    if (maxDev)
        *maxDev = deviation[0];
    return spline.release();
}

} // namespace Tessera::Geometry
