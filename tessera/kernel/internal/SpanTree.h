// Binary tree of boxes over the knot spans of a B-curve, in the plane.
#pragma once

#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/internal/NearestPoint.h"
#include "tessera/kernel/internal/SmArray.h"

struct SpanBox {
    double lo[2], hi[2];
};

/// True when the boxes, one of them grown by tol, share a point.
bool BoxesMeet(const SpanBox& a, const SpanBox& b, double tol);

/// Complete binary tree in an array: node k > 0 holds the nodes 2 k and 2 k + 1, node 1 is the root. Boxes
/// are those of the poles, so building it makes no Bezier forms. Borrows the curve.
class SpanTree {
public:
    /// False when a weight is not positive or memory runs out. O(poles).
    bool Build(EVC_bcurve_s* b);

    const SpanBox& At(int node) const { return box_[static_cast<std::size_t>(node)]; }
    bool IsLeaf(int node) const { return node >= count_; }
    /// Knot span of a leaf.
    int SpanOf(int leaf) const { return span_[static_cast<std::size_t>(leaf - count_)]; }

    /// Nearest point of the curve, offered to `nearest`; false when memory runs out. O(log poles) for a point
    /// near it.
    bool FindNearest(const double p[3], NearestPoint& nearest) const;

private:
    bool Descend(int node, const double p[3], NearestPoint& nearest) const;
    SpanBox& Node(int node) { return box_[static_cast<std::size_t>(node)]; }

    EVC_bcurve_s* b_ = nullptr;
    int count_ = 0;
    SmArray<SpanBox> box_;
    SmArray<int> span_;
};
