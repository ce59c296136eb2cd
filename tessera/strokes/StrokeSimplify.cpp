// Point reduction by splitting at the farthest sample (Douglas and Peucker, Cartographica 10 (1973) 112-122),
// with a stack of its own and a tree of boxes over runs of samples: the search for the farthest sample passes
// over every run whose box cannot hold it, which keeps long zigzags and spirals near linear.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "tessera/geometry/Line.h"
#include "tessera/kernel/EQ.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

// Runs short enough that looking at every sample costs less than their box.
constexpr int kRun = 16;
// Cover the rounding of squared distances and of projections against the corners of a box, relative.
constexpr double kBoundSlack = 1.0 + 1e-9;
constexpr double kMargin = 1e-9;

struct Box {
    double minX, minY, maxX, maxY;

    static Box Around(const Box& a, const Box& b) {
        return {std::min(a.minX, b.minX), std::min(a.minY, b.minY), std::max(a.maxX, b.maxX),
                std::max(a.maxY, b.maxY)};
    }
};

std::array<Point, 4> Corners(const Box& box) {
    return {Point(box.minX, box.minY), Point(box.maxX, box.minY), Point(box.maxX, box.maxY),
            Point(box.minX, box.maxY)};
}

double FarthestCornerSq(const Point& p, const Box& box) {
    const double dx = std::max(std::fabs(box.minX - p.x), std::fabs(box.maxX - p.x));
    const double dy = std::max(std::fabs(box.minY - p.y), std::fabs(box.maxY - p.y));
    return dx * dx + dy * dy;
}

struct Farthest {
    int index = -1;
    double distanceSq = 0.0;

    // The first of equally far samples wins, in whatever order they are met.
    void Offer(int i, double dSq) {
        if (dSq > distanceSq || (dSq == distanceSq && i < index)) {
            index = i;
            distanceSq = dSq;
        }
    }
};

/// The farthest sample beside a chord and the farthest beyond one of its ends.
struct FarthestPair {
    Farthest beside, beyond;
};

class SampleTree {
public:
    explicit SampleTree(const std::vector<StrokePoint>& points) : points_(points) {
        const int n = static_cast<int>(points.size());
        leaves_ = 1;
        while (leaves_ * kRun < n) {
            leaves_ *= 2;
        }
        const Box none{HUGE_VAL, HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
        boxes_.assign(2 * static_cast<std::size_t>(leaves_), none);
        for (int i = 0; i < n; ++i) {
            Box& leaf = boxes_[leaves_ + i / kRun];
            leaf = Box::Around(leaf, {points[i].x, points[i].y, points[i].x, points[i].y});
        }
        for (int node = leaves_ - 1; node > 0; --node) {
            boxes_[node] = Box::Around(boxes_[2 * node], boxes_[2 * node + 1]);
        }
    }

    /// Over the samples strictly between first and last, from the chord that joins these.
    FarthestPair FindFarthest(int first, int last) const {
        const Query query{points_[first], points_[last], first + 1, last - 1,
                          EQ_ask_length_squared_tolerance()};
        FarthestPair found;
        Visit(query, BoundedNode(query, 1, 0, leaves_ * kRun - 1), found);
        return found;
    }

private:
    struct Query {
        Point a, b;
        int from, to;
        double noChordSq; ///< square of the length below which a and b are one point
    };

    struct Bound {
        double besideSq = 0.0, beyondSq = 0.0;

        double Larger() const { return std::max(besideSq, beyondSq); }
        bool MayBeat(const FarthestPair& found) const {
            return besideSq > found.beside.distanceSq || beyondSq > found.beyond.distanceSq;
        }
    };

    struct Node {
        int index;     // in boxes_
        int low, high; // samples, both inclusive
        Bound bound;
    };

    // Squares of the largest distances that samples in the box can have to the chord's line, and, where the
    // box reaches beyond an end of the chord, to that end.
    static Bound FarthestInBox(const Query& q, const Box& box) {
        const double dx = q.b.x - q.a.x;
        const double dy = q.b.y - q.a.y;
        const double lengthSq = dx * dx + dy * dy;
        if (lengthSq < q.noChordSq) { // every sample counts as beyond the start
            return {0.0, FarthestCornerSq(q.a, box) * kBoundSlack};
        }
        const double margin = lengthSq * kMargin;
        double crossSq = 0.0;
        bool isBeforeStart = false, isBeyondEnd = false;
        for (const Point& corner : Corners(box)) {
            const double cross = dx * (corner.y - q.a.y) - dy * (corner.x - q.a.x);
            const double along = dx * (corner.x - q.a.x) + dy * (corner.y - q.a.y);
            crossSq = std::max(crossSq, cross * cross);
            isBeforeStart = isBeforeStart || along <= margin;
            isBeyondEnd = isBeyondEnd || along >= lengthSq - margin;
        }
        const double beyondSq = std::max(isBeforeStart ? FarthestCornerSq(q.a, box) : 0.0,
                                         isBeyondEnd ? FarthestCornerSq(q.b, box) : 0.0);
        return {crossSq / lengthSq * kBoundSlack, beyondSq * kBoundSlack};
    }

    // Nothing lies far in a node outside the range asked about.
    Node BoundedNode(const Query& q, int index, int low, int high) const {
        const bool isOutside = high < q.from || low > q.to;
        return {index, low, high, isOutside ? Bound{} : FarthestInBox(q, boxes_[index])};
    }

    // The more promising half comes first: what it holds spares most of the other one.
    void Visit(const Query& q, const Node& node, FarthestPair& found) const {
        if (!node.bound.MayBeat(found)) {
            return;
        }
        if (node.index >= leaves_) {
            Scan(q, std::max(node.low, q.from), std::min(node.high, q.to), found);
            return;
        }
        const int middle = (node.low + node.high) / 2;
        const Node left = BoundedNode(q, 2 * node.index, node.low, middle);
        const Node right = BoundedNode(q, 2 * node.index + 1, middle + 1, node.high);
        const bool isLeftFirst = left.bound.Larger() >= right.bound.Larger();
        Visit(q, isLeftFirst ? left : right, found);
        Visit(q, isLeftFirst ? right : left, found);
    }

    void Scan(const Query& q, int from, int to, FarthestPair& found) const {
        for (int i = from; i <= to; ++i) {
            int where = 0;
            const double lineSq = Line::PointToLineDistance2(points_[i], q.a, q.b, &where);
            if (where == 1) {
                found.beside.Offer(i, lineSq);
            } else {
                found.beyond.Offer(i, points_[i].Distance2(where == 2 ? q.b : q.a));
            }
        }
    }

    const std::vector<StrokePoint>& points_;
    int leaves_ = 1;
    std::vector<Box> boxes_; // heap order: children of node i are 2i and 2i + 1
};

// The sample to split at, -1 when it lies within the tolerance.
int Exceeding(const Farthest& f, double tolSq) {
    return f.distanceSq > tolSq ? f.index : -1;
}

std::vector<bool> MarkKept(const std::vector<StrokePoint>& points, double tolSq) {
    const SampleTree tree(points);
    const int last = static_cast<int>(points.size()) - 1;
    std::vector<bool> isKept(points.size(), false);
    isKept.front() = isKept.back() = true;
    std::vector<std::pair<int, int>> ranges{{0, last}};
    while (!ranges.empty()) {
        const auto [from, to] = ranges.back();
        ranges.pop_back();
        if (to - from < 2) {
            continue;
        }
        const FarthestPair far = tree.FindFarthest(from, to);
        int previous = from;
        const int beside = Exceeding(far.beside, tolSq);
        const int beyond = Exceeding(far.beyond, tolSq);
        for (const int split : {std::min(beside, beyond), std::max(beside, beyond)}) {
            if (split > 0) {
                isKept[split] = true;
                ranges.emplace_back(previous, split);
                previous = split;
            }
        }
        if (previous != from) {
            ranges.emplace_back(previous, to);
        }
    }
    return isKept;
}

} // namespace

bool Stroke::Simplify(double tol) {
    if (AskNumberOfPoints() < 3) {
        return false;
    }
    LogForChange();
    const std::vector<bool> isKept = MarkKept(points_, tol * tol);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < points_.size(); ++i) {
        if (isKept[i]) {
            points_[kept++] = points_[i];
        }
    }
    points_.resize(kept);
    PointsChanged();
    UpdateBoundingBox();
    return true;
}

} // namespace Tessera::Geometry
