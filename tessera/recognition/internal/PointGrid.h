// PointGrid - points hashed into square cells, for "which points lie within a radius".
#pragma once

#include <compare>
#include <cstdint>
#include <span>
#include <vector>

#include "tessera/geometry/Point.h"

namespace Tessera::Geometry {

class PointGrid {
public:
    /// O(n log n). cellSize > 0, best about the usual radius of a query.
    PointGrid(std::span<const Point> points, double cellSize);

    /// Fills `found` with the indices of the points within the radius (inclusive), nearest first; of equally
    /// near ones in the order of the points.
    void Near(const Point& p, double radius, std::vector<int>& found) const;

private:
    struct Cell {
        std::int64_t x;
        std::int64_t y;
        auto operator<=>(const Cell&) const = default; // NOLINT(modernize-use-nullptr): not a pointer
    };
    struct Entry {
        Cell cell;
        int point;
        auto operator<=>(const Entry&) const = default; // NOLINT(modernize-use-nullptr): as above
    };
    Cell CellOf(const Point& p) const;

    std::vector<Point> points_;
    double cellSize_;
    std::vector<Entry> entries_; ///< sorted
};

} // namespace Tessera::Geometry
