#include "apps/cli/recognize/DimensionBoard.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Tool {

namespace {

using Geometry::Point;

constexpr double kTextOnGeometry = 10.0;
constexpr double kTextOnText = 10.0;
constexpr double kTextOnDecoration = 5.0;
constexpr double kCrossing = 0.5;
constexpr double kAir = 1.2;         ///< height that text keeps free, in font heights
constexpr double kHopeless = 60.0;   ///< nobody can read it: counting on would tell nothing
constexpr double kCellMargin = 1e-9; ///< of a cell: what lies on a border belongs to both sides

double Turn(const Point& a, const Point& b, const Point& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// They pass through each other; touching does not count.
bool Cross(const Segment& s, const Segment& t) {
    return Turn(s.a, s.b, t.a) * Turn(s.a, s.b, t.b) < 0.0 && Turn(t.a, t.b, s.a) * Turn(t.a, t.b, s.b) < 0.0;
}

} // namespace

// --- Cells

/// Calls back with the key of each cell that the segment passes, until told to stop.
template <class Visitor>
void DimensionBoard::VisitCells(const Segment& segment, Visitor visit) const {
    const Segment s = segment.a.x <= segment.b.x ? segment : Segment{segment.b, segment.a};
    const double width = s.b.x - s.a.x;
    const auto yAt = [&](double x) {
        return s.a.y + std::clamp((x - s.a.x) / width, 0.0, 1.0) * (s.b.y - s.a.y);
    };
    const auto below = [&](double v) { return static_cast<Cell>(std::floor(v / cellSize_ - kCellMargin)); };
    const auto above = [&](double v) { return static_cast<Cell>(std::floor(v / cellSize_ + kCellMargin)); };
    const Cell last = above(s.b.x);
    for (Cell column = below(s.a.x); column <= last; ++column) {
        const double y0 = width > 0.0 ? yAt(static_cast<double>(column) * cellSize_) : s.a.y;
        const double y1 = width > 0.0 ? yAt(static_cast<double>(column + 1) * cellSize_) : s.b.y;
        const Cell top = above(std::max(y0, y1));
        for (Cell row = below(std::min(y0, y1)); row <= top; ++row) {
            if (!visit(column * (Cell{1} << 32) + row)) {
                return;
            }
        }
    }
}

template <class Visitor>
void DimensionBoard::VisitNear(const Segment* first, const Segment* last, Visitor visit) const {
    ++visit_;
    bool goesOn = true;
    for (; first != last && goesOn; ++first) {
        VisitCells(*first, [&](Cell cell) {
            const auto found = cells_.find(cell);
            if (found == cells_.end()) {
                return true;
            }
            for (auto item = found->second.begin(); item != found->second.end() && goesOn; ++item) {
                if (seenBy_[*item] != visit_) {
                    seenBy_[*item] = visit_;
                    goesOn = visit(items_[*item]);
                }
            }
            return goesOn;
        });
    }
}

void DimensionBoard::AddAlong(const Segment& segment, int item) {
    VisitCells(segment, [&](Cell cell) {
        std::vector<int>& items = cells_[cell];
        if (items.empty() || items.back() != item) {
            items.push_back(item);
        }
        return true;
    });
}

void DimensionBoard::AddItem(const Item& item) {
    const int index = static_cast<int>(items_.size());
    items_.push_back(item);
    seenBy_.push_back(0);
    if (item.kind != Kind::Text) {
        AddAlong(item.segment, index);
        return;
    }
    for (const Segment& side : item.text.Outline()) {
        AddAlong(side, index);
    }
}

void DimensionBoard::Add(const DimensionLayout& layout) {
    for (const Segment& segment : layout.segments) {
        AddItem({segment, {}, Kind::Decoration});
    }
    AddItem({{}, layout.text, Kind::Text});
}

// --- Cost

void DimensionBoard::AddText(const TextBox& text, Tally& tally) const {
    TextBox airy = text;
    airy.halfWidth += (kAir - 1.0) * 2.0 * text.halfHeight;
    airy.halfHeight *= kAir;
    const auto outline = airy.Outline();
    VisitNear(outline.data(), outline.data() + outline.size(), [&](const Item& item) {
        if (item.kind == Kind::Text) {
            tally.cost += item.text.Meets(airy) ? kTextOnText : 0.0;
        } else if (airy.Meets(item.segment)) {
            tally.cost += item.kind == Kind::Geometry ? kTextOnGeometry : kTextOnDecoration;
        }
        return !tally.IsFull();
    });
}

void DimensionBoard::AddSegment(const Segment& segment, Tally& tally) const {
    VisitNear(&segment, &segment + 1, [&](const Item& item) {
        if (item.kind == Kind::Text) {
            tally.cost += item.text.Meets(segment) ? kTextOnDecoration : 0.0;
        } else {
            tally.cost += Cross(segment, item.segment) ? kCrossing : 0.0;
        }
        return !tally.IsFull();
    });
}

double DimensionBoard::Cost(const DimensionLayout& layout, double most) const {
    Tally tally{0.0, std::min(most, kHopeless)};
    for (const Segment& segment : layout.segments) { // its own extension lines and arrows
        tally.cost += layout.text.Meets(segment) ? kTextOnDecoration : 0.0;
    }
    AddText(layout.text, tally);
    for (auto segment = layout.segments.begin(); segment != layout.segments.end() && !tally.IsFull();
         ++segment) {
        AddSegment(*segment, tally);
    }
    return tally.cost;
}

} // namespace Tessera::Tool
