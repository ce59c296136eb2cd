// SegmentTree - a static box tree over the consecutive segments of a poly-line.
//
// The tree stores boxes only and is handed the points again with every query: any type with x and y will do
// (pen samples, kernel points). Runs of kLeafSegments segments share one leaf box; the nodes stand in
// preorder in one array, so a node's left child follows it and the right child follows the left one's whole
// subtree. Built in linear time with one allocation; queries allocate nothing. A tree is stale as soon as a
// point moves. Segment i runs from point i to point i + 1. NaN coordinates are never near anything.
#pragma once

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace Tessera::Geometry {

/// Closed axis-aligned region; empty until it is extended.
struct PlaneRegion {
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();
    double minX = kInfinity, minY = kInfinity, maxX = -kInfinity, maxY = -kInfinity;

    void Extend(double x, double y) {
        minX = x < minX ? x : minX;
        minY = y < minY ? y : minY;
        maxX = x > maxX ? x : maxX;
        maxY = y > maxY ? y : maxY;
    }
    void Extend(const PlaneRegion& other) {
        minX = std::min(minX, other.minX);
        minY = std::min(minY, other.minY);
        maxX = std::max(maxX, other.maxX);
        maxY = std::max(maxY, other.maxY);
    }
    bool Meets(const PlaneRegion& other) const {
        return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
    }
    double DistanceSq(double x, double y) const {
        const double dx = std::max({minX - x, 0.0, x - maxX});
        const double dy = std::max({minY - y, 0.0, y - maxY});
        return dx * dx + dy * dy;
    }
};

/// Squared distance from (x, y) to the segment a b, which may have no length.
template <class P>
double SegmentDistanceSq(const P& a, const P& b, double x, double y) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double ex = x - a.x;
    const double ey = y - a.y;
    const double along = ex * dx + ey * dy;
    const double lengthSq = dx * dx + dy * dy;
    if (along <= 0.0) {
        return ex * ex + ey * ey;
    }
    if (along >= lengthSq) {
        return (x - b.x) * (x - b.x) + (y - b.y) * (y - b.y);
    }
    const double cross = dx * ey - dy * ex;
    return cross * cross / lengthSq;
}

template <class P>
PlaneRegion SegmentRegion(std::span<const P> points, int segment) {
    PlaneRegion region;
    region.Extend(points[segment].x, points[segment].y);
    region.Extend(points[segment + 1].x, points[segment + 1].y);
    return region;
}

/// Number of segments of a poly-line; its points are counted in int throughout the library.
template <class P>
int SegmentCount(std::span<const P> points) {
    return points.empty() ? 0 : static_cast<int>(points.size()) - 1;
}

class SegmentTree {
public:
    template <class P>
    explicit SegmentTree(std::span<const P> points)
        : segments_(SegmentCount(points)), leaves_((segments_ + kLeafSegments - 1) / kLeafSegments) {
        if (leaves_ > 0) {
            nodes_.resize(2 * static_cast<std::size_t>(leaves_) - 1);
            Build(points, Root());
        }
    }

    /// Squared distance to the nearest segment; infinite without segments.
    template <class P>
    double DistanceSq(std::span<const P> points, double x, double y) const;

    /// Some segment at most `tol` away, or -1.
    template <class P>
    int FindWithin(std::span<const P> points, double x, double y, double tol) const;

    /// Calls visit(i) for every segment whose box meets the region, in ascending order.
    template <class P, class Visit>
    void VisitMeeting(std::span<const P> points, const PlaneRegion& region, Visit visit) const;

private:
    static constexpr int kLeafSegments = 8;
    static constexpr int kMaxDepth = 32; // of a tree over at most 2^31 segments

    struct Node {
        int index;     // in nodes_
        int low, high; // leaves low .. high - 1
        double boxDistanceSq = 0.0;

        bool IsLeaf() const { return high - low == 1; }
        Node Left() const { return {index + 1, low, low + (high - low) / 2}; }
        Node Right() const {
            const int middle = low + (high - low) / 2;
            return {index + 2 * (middle - low), middle, high};
        }
    };
    struct Stack {
        Node nodes[kMaxDepth + 1];
        int size = 0;
        void Push(const Node& node) { nodes[size++] = node; }
        Node Pop() { return nodes[--size]; }
    };

    Node Root() const { return {0, 0, leaves_}; }
    int FirstSegment(const Node& leaf) const { return leaf.low * kLeafSegments; }
    int EndSegment(const Node& leaf) const { return std::min(segments_, leaf.high * kLeafSegments); }
    Node WithDistance(Node node, double x, double y) const {
        node.boxDistanceSq = nodes_[node.index].DistanceSq(x, y);
        return node;
    }

    template <class P>
    void Build(std::span<const P> points, const Node& node);
    /// Calls stopsAt(i), in ascending order, for the segments of every leaf that no box on the way to it
    /// keeps out, until it answers true.
    template <class Enters, class StopsAt>
    void Walk(Enters enters, StopsAt stopsAt) const;

    int segments_;
    int leaves_;
    std::vector<PlaneRegion> nodes_;
};

template <class P>
void SegmentTree::Build(std::span<const P> points, const Node& node) {
    PlaneRegion& region = nodes_[node.index];
    if (node.IsLeaf()) {
        for (int i = FirstSegment(node); i <= EndSegment(node); ++i) {
            region.Extend(points[i].x, points[i].y);
        }
        return;
    }
    Build(points, node.Left());
    Build(points, node.Right());
    region.Extend(nodes_[node.Left().index]);
    region.Extend(nodes_[node.Right().index]);
}

template <class P>
double SegmentTree::DistanceSq(std::span<const P> points, double x, double y) const {
    double best = std::numeric_limits<double>::infinity();
    Stack stack;
    if (leaves_ > 0) {
        stack.Push(WithDistance(Root(), x, y));
    }
    while (stack.size > 0) {
        const Node node = stack.Pop();
        if (node.boxDistanceSq >= best) {
            continue;
        }
        if (node.IsLeaf()) {
            for (int i = FirstSegment(node); i < EndSegment(node); ++i) {
                best = std::min(best, SegmentDistanceSq(points[i], points[i + 1], x, y));
            }
            continue;
        }
        const Node left = WithDistance(node.Left(), x, y);
        const Node right = WithDistance(node.Right(), x, y);
        const bool isLeftNearer = left.boxDistanceSq <= right.boxDistanceSq;
        stack.Push(isLeftNearer ? right : left); // the nearer one is popped first
        stack.Push(isLeftNearer ? left : right);
    }
    return best;
}

template <class Enters, class StopsAt>
void SegmentTree::Walk(Enters enters, StopsAt stopsAt) const {
    Stack stack;
    if (leaves_ > 0) {
        stack.Push(Root());
    }
    while (stack.size > 0) {
        const Node node = stack.Pop();
        if (!enters(nodes_[node.index])) {
            continue;
        }
        if (!node.IsLeaf()) {
            stack.Push(node.Right());
            stack.Push(node.Left());
            continue;
        }
        for (int i = FirstSegment(node); i < EndSegment(node); ++i) {
            if (stopsAt(i)) {
                return;
            }
        }
    }
}

template <class P>
int SegmentTree::FindWithin(std::span<const P> points, double x, double y, double tol) const {
    const double tolSq = tol * tol;
    int found = -1;
    Walk([&](const PlaneRegion& box) { return box.DistanceSq(x, y) <= tolSq; },
         [&](int i) {
             found = SegmentDistanceSq(points[i], points[i + 1], x, y) <= tolSq ? i : -1;
             return found >= 0;
         });
    return found;
}

template <class P, class Visit>
void SegmentTree::VisitMeeting(std::span<const P> points, const PlaneRegion& region, Visit visit) const {
    Walk([&](const PlaneRegion& box) { return box.Meets(region); },
         [&](int i) {
             if (SegmentRegion(points, i).Meets(region)) {
                 visit(i);
             }
             return false;
         });
}

/// "Is any segment within tol of this point?", asked for many points in a row that move along the poly-line.
/// Each question looks outward from the last hit; the tree is built when that first fails.
template <class P>
class SegmentProximity {
public:
    /// The points are borrowed and must stay as they are. Tolerance included.
    SegmentProximity(std::span<const P> points, double tol) : points_(points), tol_(tol) {}

    bool IsWithin(double x, double y) { return IsWithin(x, y, lastHit_); }
    /// Starts the search at segment `hint` instead of the last hit.
    bool IsWithin(double x, double y, int hint) {
        for (int step = 0; step < kReach; ++step) {
            if (Hits(hint + step, x, y) || Hits(hint - step, x, y)) {
                return true;
            }
        }
        if (!tree_) {
            tree_.emplace(points_);
        }
        const int found = tree_->FindWithin(points_, x, y, tol_);
        lastHit_ = found >= 0 ? found : lastHit_;
        return found >= 0;
    }
    int LastHit() const { return lastHit_; }

private:
    static constexpr int kReach = 16; // segments looked at on each side before the tree is asked

    bool Hits(int segment, double x, double y) {
        const bool isHit = segment >= 0 && segment < SegmentCount(points_) &&
                           SegmentDistanceSq(points_[segment], points_[segment + 1], x, y) <= tol_ * tol_;
        lastHit_ = isHit ? segment : lastHit_;
        return isHit;
    }

    std::span<const P> points_;
    double tol_;
    int lastHit_ = 0;
    std::optional<SegmentTree> tree_;
};

} // namespace Tessera::Geometry
