#include "tessera/kernel/internal/SpanTree.h"

#include <algorithm>
#include <utility>

#include "tessera/kernel/internal/BcurveSpans.h"

namespace {

SpanBox PoleBox(const BCURVE_DATA* d, int span) {
    SpanBox b{{1e300, 1e300}, {-1e300, -1e300}};
    for (int i = span - d->degree; i <= span; ++i) {
        for (int k = 0; k < 2; ++k) {
            b.lo[k] = std::min(b.lo[k], d->poles[i][k]);
            b.hi[k] = std::max(b.hi[k], d->poles[i][k]);
        }
    }
    return b;
}

double DistanceSq(const SpanBox& b, const double p[3]) {
    double sum = 0.0;
    for (int k = 0; k < 2; ++k) {
        const double gap = std::max({b.lo[k] - p[k], p[k] - b.hi[k], 0.0});
        sum += gap * gap;
    }
    return sum;
}

} // namespace

bool BoxesMeet(const SpanBox& a, const SpanBox& b, double tol) {
    return a.lo[0] <= b.hi[0] + tol && b.lo[0] <= a.hi[0] + tol && a.lo[1] <= b.hi[1] + tol &&
           b.lo[1] <= a.hi[1] + tol;
}

bool SpanTree::Build(EVC_bcurve_s* b) {
    b_ = b;
    const BCURVE_DATA* d = b->definition;
    const auto room = static_cast<std::size_t>(d->numPoles);
    if (!HasPositiveWeights(d))
        return false;
    box_ = MakeSmArray<SpanBox>(2 * room, "SpanTree:0");
    span_ = MakeSmArray<int>(room, "SpanTree:1");
    if (!box_ || !span_)
        return false;
    count_ = 0;
    for (int s = d->degree; s < d->numPoles; ++s)
        if (IsSpan(d, s))
            span_[static_cast<std::size_t>(count_++)] = s;
    for (int i = count_; i < 2 * count_; ++i)
        Node(i) = PoleBox(d, SpanOf(i));
    for (int i = count_ - 1; i >= 1; --i) {
        const SpanBox &left = At(2 * i), &right = At(2 * i + 1);
        for (int k = 0; k < 2; ++k) {
            Node(i).lo[k] = std::min(left.lo[k], right.lo[k]);
            Node(i).hi[k] = std::max(left.hi[k], right.hi[k]);
        }
    }
    return true;
}

bool SpanTree::FindNearest(const double p[3], NearestPoint& nearest) const {
    return Descend(1, p, nearest);
}

bool SpanTree::Descend(int node, const double p[3], NearestPoint& nearest) const {
    if (DistanceSq(At(node), p) > nearest.ReachSq())
        return true;
    if (IsLeaf(node))
        return OfferNearestOnSpan(b_, SpanOf(node), p, nearest);
    int first = 2 * node, second = 2 * node + 1;
    if (DistanceSq(At(second), p) < DistanceSq(At(first), p))
        std::swap(first, second);
    return Descend(first, p, nearest) && Descend(second, p, nearest);
}
