// Where the parts of a drawn dimension lie.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "tessera/dimension/DimensionBase.h"
#include "tessera/geometry/Curve.h"

namespace Tessera::Tool {

struct Segment {
    Geometry::Point a, b;

    /// Makes the box from low to high hold the segment.
    void Widen(Geometry::Point& low, Geometry::Point& high) const;
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

} // namespace Tessera::Tool
