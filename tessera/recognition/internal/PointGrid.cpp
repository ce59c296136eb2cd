#include "tessera/recognition/internal/PointGrid.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

PointGrid::PointGrid(std::span<const Point> points, double cellSize)
    : points_(points.begin(), points.end()), cellSize_(cellSize) {
    entries_.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        entries_.push_back({CellOf(points[i]), static_cast<int>(i)});
    std::sort(entries_.begin(), entries_.end());
}

PointGrid::Cell PointGrid::CellOf(const Point& p) const {
    // Far beyond any drawing a double no longer names a cell; such points share the outermost ones.
    constexpr double kFarthest = 4e18;
    const auto toCell = [&](double v) {
        return static_cast<std::int64_t>(std::clamp(std::floor(v / cellSize_), -kFarthest, kFarthest));
    };
    return {toCell(p.x), toCell(p.y)};
}

void PointGrid::Near(const Point& p, double radius, std::vector<int>& found) const {
    found.clear();
    const Cell low = CellOf({p.x - radius, p.y - radius});
    const Cell high = CellOf({p.x + radius, p.y + radius});
    for (std::int64_t x = low.x; x <= high.x; ++x) {
        // The cells of a column are neighbours in the sorted list.
        const Entry first{{x, low.y}, -1};
        for (auto it = std::lower_bound(entries_.begin(), entries_.end(), first);
             it != entries_.end() && it->cell.x == x && it->cell.y <= high.y; ++it)
            if (points_[it->point].Distance2(p) <= radius * radius)
                found.push_back(it->point);
    }
    std::sort(found.begin(), found.end(), [&](int a, int b) {
        const double da = points_[a].Distance2(p);
        const double db = points_[b].Distance2(p);
        return da != db ? da < db : a < b;
    });
}

} // namespace Tessera::Geometry
