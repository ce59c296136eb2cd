// Every box ends in Build: a centre and half-size vectors give axes, extents and corners. Transform moves the
// corners and builds the box again from them, so a side that collapses loses its axis; along a zero axis
// every local coordinate is 0 and lies inside.
#include "tessera/geometry/BoundingBox.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Point.h"
#include "tessera/kernel/BoxCurve.h"
#include "tessera/kernel/EQ.h"

namespace Tessera::Geometry {

namespace {

constexpr double kParameterTol = 1e-10; // on curve parameters and on fractions of a segment

// A solid box answers six although it stores eight corners; whoever needs a solid's corners rejects it first.
int CornerCount(int dimension) {
    return dimension == 0 ? 1 : 2 * dimension;
}

double Dot3(const double a[3], const double b[3]) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Length of v and its unit vector; both zero below the length tolerance.
double Unitize(const double v[3], double tol, double unit[3]) {
    const double length = std::sqrt(Dot3(v, v));
    const bool isZero = length < tol;
    for (int k = 0; k < 3; ++k) {
        unit[k] = isZero ? 0.0 : v[k] / length;
    }
    return isZero ? 0.0 : length;
}

void SetVector(double out[3], double x, double y, double z) {
    out[0] = x;
    out[1] = y;
    out[2] = z;
}

struct Interval {
    double from, to;
};

bool Overlap(const Interval& a, const Interval& b) {
    return a.to + kParameterTol > b.from && b.to > a.from - kParameterTol;
}

} // namespace

BoundingBox::BoundingBox() {
    for (int k = 0; k < 3; ++k) {
        axes_[k][k] = 1.0;
    }
}

BoundingBox::BoundingBox(double cx, double cy, double width, double height) : BoundingBox() {
    const double w = width / 2.0;
    const double h = height / 2.0;
    dimension_ = 2;
    SetVector(localMin_, -w, -h, 0.0);
    SetVector(localMax_, w, h, 0.0);
    SetVector(corners_[0], cx - w, cy - h, 0.0);
    SetVector(corners_[1], cx + w, cy - h, 0.0);
    SetVector(corners_[2], cx + w, cy + h, 0.0);
    SetVector(corners_[3], cx - w, cy + h, 0.0);
    SetVector(offset_, -cx, -cy, 0.0);
}

BoundingBox::BoundingBox(int dimension, const double centre[3], const double halfSizes[3][3])
    : BoundingBox() {
    Build(dimension, centre, halfSizes);
}

BoundingBox::BoundingBox(KC_CURVE_struct_s* curve) : BoundingBox() {
    GetBBoxFromCurve(curve);
}

void BoundingBox::GetBBoxFromCurve(KC_CURVE_struct_s* curve) {
    if (curve == nullptr) {
        Core::ThrowMessage("BoundingBox::GetBBoxFromCurve - CURVE cannot be NULL");
    }
    int dimension = 0;
    double limits[2] = {};
    double centre[3] = {};
    double halfSizes[3][3] = {};
    evcrvp(curve, limits);
    if (std::fabs(limits[1] - limits[0]) <= kParameterTol) {
        evcrve(curve, 0, limits[0], centre);
    } else if (BoxCurve(curve, limits, &dimension, centre, halfSizes) != 0) {
        Core::ThrowMessage("BoundingBox::GetBBoxFromCurve - CURVE cannot be boxed");
    }
    Build(dimension, centre, halfSizes);
}

void BoundingBox::Build(int dimension, const double centre[3], const double halfSizes[3][3]) {
    const double tol = EQ_ask_length_tolerance();
    *this = BoundingBox();
    dimension_ = dimension;
    for (int k = 0; k < dimension; ++k) {
        localMax_[k] = Unitize(halfSizes[k], tol, axes_[k]);
        localMin_[k] = -localMax_[k];
    }
    const double* a = axes_[0];
    const double* b = axes_[1];
    if (dimension == 1) {
        SetVector(axes_[1], -a[1], a[0], 0.0);
    } else if (dimension == 2) {
        SetVector(axes_[2], a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
    }
    // Signs of the half-size vectors at each corner.
    static constexpr int kSigns[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                         {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    const int stored = 1 << dimension;
    for (int i = 0; i < stored; ++i) {
        for (int k = 0; k < 3; ++k) {
            corners_[i][k] = centre[k];
            for (int side = 0; side < dimension; ++side) {
                corners_[i][k] += kSigns[i][side] * halfSizes[side][k];
            }
        }
    }
    SetVector(offset_, -centre[0], -centre[1], -centre[2]);
}

void BoundingBox::AskCorners(int* count, double corners[][3]) const {
    *count = CornerCount(dimension_);
    std::memcpy(corners, corners_, static_cast<std::size_t>(*count) * sizeof corners_[0]);
}

void BoundingBox::ToLocal(const double p[3], double local[3]) const {
    const double shifted[3] = {p[0] + offset_[0], p[1] + offset_[1], p[2] + offset_[2]};
    for (int k = 0; k < 3; ++k) {
        local[k] = Dot3(axes_[k], shifted);
    }
}

bool BoundingBox::IsPointInBBox(const double p[3], double tol) const {
    double q[3];
    ToLocal(p, q);
    for (int k = 0; k < 3; ++k) {
        if (!(localMin_[k] - tol < q[k] && q[k] < localMax_[k] + tol)) {
            return false;
        }
    }
    return true;
}

bool BoundingBox::IsLineThruBBox(const double p0[3], const double p1[3], double tol) const {
    const double lengthTol = EQ_ask_length_tolerance();
    double q0[3];
    double q1[3];
    ToLocal(p0, q0);
    ToLocal(p1, q1);
    // The whole segment, then the stretch of it inside each pair of faces; all four must meet pairwise.
    Interval intervals[4] = {{0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0}};
    for (int k = 0; k < 3; ++k) {
        const double low = localMin_[k] - tol;
        const double high = localMax_[k] + tol;
        const double delta = q1[k] - q0[k];
        if (std::fabs(delta) <= lengthTol) {
            if (q0[k] < low - lengthTol || q0[k] > high + lengthTol) {
                return false;
            }
            continue;
        }
        const double s = (low - q0[k]) / delta;
        const double t = (high - q0[k]) / delta;
        intervals[k + 1] = {std::min(s, t), std::max(s, t)};
    }
    for (int i = 0; i < 4; ++i) {
        for (int j = i + 1; j < 4; ++j) {
            if (!Overlap(intervals[i], intervals[j])) {
                return false;
            }
        }
    }
    return true;
}

bool BoundingBox::IsAlignedInX(const BoundingBox* other, double tol) const {
    for (int i = 0; i < CornerCount(other->dimension_); ++i) {
        double q[3];
        ToLocal(other->corners_[i], q);
        for (int k = 1; k < 3; ++k) {
            if (!(localMin_[k] - tol < q[k] && q[k] < localMax_[k] + tol)) {
                return false;
            }
        }
    }
    return true;
}

bool BoundingBox::IsIntersecting(const BoundingBox* other, double tol) const {
    if (dimension_ == 3 || other->dimension_ == 3) {
        Core::ThrowMessage("BoundingBox::IsIntersecting: 3 dimension bbox intersection is not supported yet");
    }
    if (dimension_ == 0 && other->dimension_ == 0) {
        const Point p(corners_[0]);
        return p.Distance(Point(other->corners_[0])) < tol + EQ_ask_length_tolerance();
    }
    if (dimension_ == 0) {
        return other->IsPointInBBox(corners_[0], tol);
    }
    if (other->dimension_ == 0) {
        return IsPointInBBox(other->corners_[0], tol);
    }
    const BoundingBox* lower = dimension_ < other->dimension_ ? this : other;
    const BoundingBox* higher = lower == this ? other : this;
    const int corners = CornerCount(lower->dimension_);
    const int edges = corners == 2 ? 1 : corners;
    for (int i = 0; i < edges; ++i) {
        if (higher->IsLineThruBBox(lower->corners_[i], lower->corners_[(i + 1) % corners], tol)) {
            return true;
        }
    }
    return lower->IsPointInBBox(higher->corners_[0], tol);
}

void BoundingBox::Transform(double m[3][3]) {
    const int count = CornerCount(dimension_);
    double moved[8][3] = {};
    double centre[3] = {};
    for (int i = 0; i < count; ++i) {
        Point corner(corners_[i]);
        corner.Transform(m);
        SetVector(moved[i], corner.x, corner.y, corners_[i][2]);
        for (int k = 0; k < 3; ++k) {
            centre[k] += moved[i][k];
        }
    }
    for (double& coordinate : centre) {
        coordinate /= count;
    }
    // The corner pairs whose differences are twice the half-size vectors.
    static constexpr int kSides[3][2] = {{0, 1}, {1, 2}, {0, 4}};
    double halfSizes[3][3] = {};
    for (int side = 0; side < dimension_; ++side) {
        for (int k = 0; k < 3; ++k) {
            halfSizes[side][k] = (moved[kSides[side][1]][k] - moved[kSides[side][0]][k]) / 2.0;
        }
    }
    Build(dimension_, centre, halfSizes);
}

} // namespace Tessera::Geometry
