// What a drawing holds, and how badly a dimension would cover it.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "apps/cli/recognize/DimensionLayout.h"

namespace Tessera::Tool {

/// Geometry and the dimensions placed so far, in square cells: what a layout meets is found among its own
/// neighbours, however large the drawing.
class DimensionBoard {
public:
    /// @param cellSize  model units, above 0; about as large as the text of a dimension.
    explicit DimensionBoard(double cellSize) : cellSize_(cellSize) {}

    void AddGeometry(const Segment& segment) { AddItem({segment, {}, Kind::Geometry}); }
    void Add(const DimensionLayout& layout);

    /// Counts meetings: text on geometry or other text weighs most, text on decoration less, decoration that
    /// crosses lines least. 0 when the layout stands free. Stops counting at `most`, and where nobody could
    /// read it any more.
    double Cost(const DimensionLayout& layout, double most) const;

private:
    enum class Kind : std::uint8_t { Geometry, Decoration, Text };

    /// A text is found along its sides and diagonals.
    struct Item {
        Segment segment;
        TextBox text;
        Kind kind;
    };
    struct Tally {
        double cost, most;
        bool IsFull() const { return cost >= most; }
    };
    using Cell = std::int64_t;

    void AddItem(const Item& item);
    void AddAlong(const Segment& segment, int item);
    void AddText(const TextBox& text, Tally& tally) const;
    void AddSegment(const Segment& segment, Tally& tally) const;
    template <class Visitor>
    void VisitCells(const Segment& segment, Visitor visit) const;
    /// Calls back with each item that shares a cell with one of the segments, once, until told to stop.
    template <class Visitor>
    void VisitNear(const Segment* first, const Segment* last, Visitor visit) const;

    double cellSize_;
    std::vector<Item> items_;
    std::unordered_map<Cell, std::vector<int>> cells_;
    mutable std::vector<std::uint32_t> seenBy_; ///< for each item, the last visit that met it
    mutable std::uint32_t visit_ = 0;
};

} // namespace Tessera::Tool
