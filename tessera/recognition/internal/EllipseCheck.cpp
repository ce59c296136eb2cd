// CheckEllipse: consecutive samples of an ellipse that fits lie near consecutive segments of the poly-line,
// so each sample is looked for outward from the segment that answered for the sample before. The first
// sample without a near segment ends the test.
#include <cmath>
#include <vector>

#include "tessera/recognition/internal/SingleShapes.h"

namespace Tessera::Geometry {

using Vex::Math::Point2;

namespace {

// Whether the segment a b comes within the tolerance of p; squares throughout, no division.
bool IsNearSegment(const Point& p, const Point2& a, const Point2& b, double tolSq) {
    const double vx = b.x - a.x;
    const double vy = b.y - a.y;
    const double wx = p.x - a.x;
    const double wy = p.y - a.y;
    const double along = vx * wx + vy * wy;
    if (along <= 0.0)
        return wx * wx + wy * wy <= tolSq;
    const double lengthSq = vx * vx + vy * vy;
    if (along >= lengthSq)
        return (p.x - b.x) * (p.x - b.x) + (p.y - b.y) * (p.y - b.y) <= tolSq;
    const double across = vx * wy - vy * wx;
    return across * across <= tolSq * lengthSq;
}

class NearSegmentSearch {
public:
    NearSegmentSearch(std::span<const Point2> pts, double tol)
        : pts_(pts), segments_(pts.size() - 1), tolSq_(tol * tol) {}

    bool Find(const Point& p) {
        std::size_t below = hit_; // segments [below, above) are tested
        std::size_t above = hit_;
        while (below > 0 || above < segments_) {
            if (above < segments_ && Test(p, above++))
                return true;
            if (below > 0 && Test(p, --below))
                return true;
        }
        return false;
    }

private:
    bool Test(const Point& p, std::size_t segment) {
        if (!IsNearSegment(p, pts_[segment], pts_[segment + 1], tolSq_))
            return false;
        hit_ = segment;
        return true;
    }

    std::span<const Point2> pts_;
    std::size_t segments_;
    double tolSq_;
    std::size_t hit_ = 0;
};

} // namespace

bool CheckEllipse(std::span<const Point2> pts, double tol, const Ellipse& ellipse) {
    if (pts.size() < 2)
        return false;
    const int count = ellipse.AskNumberOfSampledPoints(tol);
    std::vector<Point> samples;
    samples.reserve(static_cast<std::size_t>(count));
    ellipse.CreatePolylinePoints(count, samples);
    NearSegmentSearch search(pts, tol);
    for (const Point& p : samples)
        if (!search.Find(p))
            return false;
    return true;
}

} // namespace Tessera::Geometry
