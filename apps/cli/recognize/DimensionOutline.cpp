#include "apps/cli/recognize/DimensionOutline.h"

#include <algorithm>

namespace Tessera::Tool {

using Geometry::Point;

DimensionOutline::DimensionOutline(const std::vector<std::vector<Segment>>& pieces) {
    Point first;
    Point last;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        Point from = pieces[i].front().a;
        Point to = pieces[i].back().b;
        const auto gapToNext = [&](const Point& p) {
            return std::min(p.Distance(pieces[i + 1].front().a), p.Distance(pieces[i + 1].back().b));
        };
        const bool isReversed = i > 0 ? last.Distance(to) < last.Distance(from)
                                      : pieces.size() > 1 && gapToNext(from) < gapToNext(to);
        if (isReversed) {
            std::swap(from, to);
        }
        if (i == 0) {
            first = from;
        } else {
            sides_.push_back({last, from});
        }
        sides_.insert(sides_.end(), pieces[i].begin(), pieces[i].end());
        last = to;
    }
    sides_.push_back({last, first});
}

bool DimensionOutline::Contains(const Point& p) const {
    bool isInside = false; // after an even number of crossings to the right of p
    for (const Segment& side : sides_) {
        if ((side.a.y > p.y) != (side.b.y > p.y) &&
            p.x < side.a.x + (p.y - side.a.y) / (side.b.y - side.a.y) * (side.b.x - side.a.x)) {
            isInside = !isInside;
        }
    }
    return isInside;
}

} // namespace Tessera::Tool
