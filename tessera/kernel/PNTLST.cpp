#include "tessera/kernel/PNTLST.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tessera/kernel/MTX4.h"
#include "tessera/kernel/PNT3.h"
#include "tessera/kernel/VEC2.h"

// Thinning keeps, from the last kept point on, the sector of directions that pass every later point within
// the tolerance. The chord to a new point serves all points between as long as it lies in the sector, so each
// point is looked at once, whatever the window.

using Vex::Math::Point3;
using Vex::Math::TransformMatrix;
using Vex::Math::Vector2;

namespace {

class Sector {
public:
    Sector(Point3 apex, double tol) : apex_(apex), tol_(tol) {}

    // Whether the chord to p serves all points added so far.
    bool Admits(const Point3& p) const {
        const Vector2 w = From(p);
        const double length = VEC2_length(&w);
        if (length < farthest_ - tol_)
            return false;
        if (!isBounded_)
            return true;
        const Vector2 middle{left_.x + right_.x, left_.y + right_.y};
        return VEC2_cross(&right_, &w) >= 0.0 && VEC2_cross(&w, &left_) >= 0.0 && VEC2_dot(&middle, &w) > 0.0;
    }

    void Add(const Point3& p) {
        const Vector2 w = From(p);
        const double length = VEC2_length(&w);
        farthest_ = std::max(farthest_, length);
        if (length <= tol_)
            return;
        const double sine = tol_ / length, cosine = std::sqrt((1.0 - sine) * (1.0 + sine));
        const Vector2 left{cosine * w.x - sine * w.y, cosine * w.y + sine * w.x};
        const Vector2 right{cosine * w.x + sine * w.y, cosine * w.y - sine * w.x};
        if (!isBounded_ || VEC2_cross(&left, &left_) > 0.0)
            left_ = left;
        if (!isBounded_ || VEC2_cross(&right_, &right) > 0.0)
            right_ = right;
        isBounded_ = true;
    }

private:
    Vector2 From(const Point3& p) const { return {p.x - apex_.x, p.y - apex_.y}; }

    Point3 apex_;
    double tol_, farthest_ = 0.0;
    bool isBounded_ = false;
    Vector2 left_{0.0, 0.0}, right_{0.0, 0.0};
};

// Indices of the first smallest and largest x and y, ascending.
std::array<int, 4> FindExtremes(int n, const Point3* pts) {
    std::array<int, 4> extremes{};
    for (int i = 1; i < n; ++i) {
        if (pts[i].x < pts[extremes[0]].x)
            extremes[0] = i;
        if (pts[i].x > pts[extremes[1]].x)
            extremes[1] = i;
        if (pts[i].y < pts[extremes[2]].y)
            extremes[2] = i;
        if (pts[i].y > pts[extremes[3]].y)
            extremes[3] = i;
    }
    std::sort(extremes.begin(), extremes.end());
    return extremes;
}

} // namespace

int PNTLST_ask_extent(int n, const Point3* pts, Point3* min, Point3* max) {
    if (n < 1)
        return 0;
    Point3 lo = pts[0], hi = pts[0];
    for (int i = 1; i < n; ++i) {
        lo = {std::min(lo.x, pts[i].x), std::min(lo.y, pts[i].y), std::min(lo.z, pts[i].z)};
        hi = {std::max(hi.x, pts[i].x), std::max(hi.y, pts[i].y), std::max(hi.z, pts[i].z)};
    }
    *min = lo;
    *max = hi;
    return 1;
}

int PNTLST_ask_centroid(int n, const Point3* pts, Point3* centroid) {
    if (n < 1)
        return 0;
    // Relative to the first point, so that a list far from the origin keeps its digits.
    const Point3 origin = pts[0];
    Point3 sum{0.0, 0.0, 0.0};
    for (int i = 0; i < n; ++i)
        sum = {sum.x + (pts[i].x - origin.x), sum.y + (pts[i].y - origin.y), sum.z + (pts[i].z - origin.z)};
    *centroid = {origin.x + sum.x / n, origin.y + sum.y / n, origin.z + sum.z / n};
    return 1;
}

double PNTLST_ask_length(int n, const Point3* pts) {
    double length = 0.0;
    for (int i = 1; i < n; ++i)
        length += PNT3_distance(&pts[i - 1], &pts[i]);
    return length;
}

void PNTLST_transform(int n, Point3* pts, const TransformMatrix* matrix) {
    for (int i = 0; i < n; ++i)
        MTX4_transform_point(matrix, &pts[i], &pts[i]);
}

int PNTLST_thin(int n, const Point3* pts, int window, double tol, Point3* out) {
    if (n < 1)
        return 0;
    const std::array<int, 4> extremes = FindExtremes(n, pts);
    // out may be pts: nothing is written beyond the index that has been read.
    Point3 previous = pts[0];
    Sector sector(previous, tol);
    int kept = 0, lastKept = 0, nextExtreme = 0;
    bool isPreviousExtreme = true;
    out[kept++] = previous;
    for (int i = 1; i < n; ++i) {
        const Point3 p = pts[i];
        const bool mustKeep = isPreviousExtreme || i - lastKept + 1 > window || !sector.Admits(p);
        if (i - 1 > lastKept && mustKeep) {
            out[kept++] = previous;
            lastKept = i - 1;
            sector = Sector(previous, tol);
        }
        sector.Add(p);
        while (nextExtreme < 4 && extremes[nextExtreme] < i)
            ++nextExtreme;
        isPreviousExtreme = nextExtreme < 4 && extremes[nextExtreme] == i;
        previous = p;
    }
    if (n > 1)
        out[kept++] = previous;
    return kept;
}
