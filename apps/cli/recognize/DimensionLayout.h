// Where the parts of a drawn dimension lie, and how badly they cover what is drawn already.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "tessera/dimension/DimensionBase.h"
#include "tessera/geometry/Curve.h"

namespace Tessera::Tool {

struct Segment {
    Geometry::Point a, b;
};

/// A rectangle turned by an angle (radians, counter-clockwise).
struct TextBox {
    Geometry::Point center;
    double angle = 0.0;
    double halfWidth = 0.0;
    double halfHeight = 0.0;

    bool Meets(const Segment& segment) const;
    /// Sides and diagonals.
    std::array<Segment, 6> Outline() const;
    bool Meets(const TextBox& other) const;
};

/// A dimension as drawn. Coordinates are those of its curves, y up.
struct DimensionLayout {
    std::vector<std::unique_ptr<Geometry::Curve>> curves;
    std::vector<std::array<Geometry::Point, 3>> arrowheads;
    std::vector<Segment> segments; ///< of the curves
    TextBox text;
};

/// Nothing for a dimension without a decoration.
std::unique_ptr<DimensionLayout> LayOut(const Dimension::DimensionBase& dimension);

/// Chords of the curve: one for a line, `count` for others.
void AppendChords(const Geometry::Curve& curve, int count, std::vector<Segment>& segments);

/// What a drawing holds: geometry, and the dimensions placed so far.
class DimensionBoard {
public:
    void AddGeometry(const Segment& segment) { geometry_.push_back(segment); }
    void Add(const DimensionLayout& layout);

    /// Counts meetings: text on geometry or other text weighs most, text on decoration less, decoration that
    /// crosses lines least. 0 when the layout stands free.
    double Cost(const DimensionLayout& layout) const;

private:
    std::vector<Segment> geometry_;
    std::vector<Segment> decoration_;
    std::vector<TextBox> texts_;
};

} // namespace Tessera::Tool
