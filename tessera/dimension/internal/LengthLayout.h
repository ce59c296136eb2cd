// LengthLayout - where the decoration of a length-like dimension goes, computed from plain values.
//
// Measured line M runs from `measured.start` (side 1) to `measured.end` (side 2). d is the unit reading
// direction, n the unit normal towards which offsets count. All lengths in model units.
#pragma once

#include <vector>

#include "tessera/dimension/internal/DecorationSizes.h"
#include "tessera/dimension/internal/Segment.h"

namespace Tessera::Dimension {

struct LengthLayout {
    Segment measured;
    Geometry::Vector d;
    Geometry::Vector n;
    double fontHeight = 0.0;
    double heightOffset = 0.0;
    double widthOffset = 0.0; // half the width of the text
    double relativeParam = 0.5;
    double tolerance = 0.0;

    bool IsAbove() const { return heightOffset > tolerance; }
    /// From the middle of the text to where the dimension line breaks off.
    double HalfGap() const;
    /// Of the dimension line and of the extension lines' far ends from M, along n.
    double LineOffset() const { return heightOffset + (IsAbove() ? 0.5 : -0.5) * fontHeight; }
    double ExtensionOffset() const { return heightOffset + (IsAbove() ? 1.0 : -1.0) * fontHeight; }
    /// Text and arrowheads do not fit between the extension lines.
    bool IsFlipped() const;
    /// The relative parameter that keeps text and arrowheads between the extension lines, or within M where
    /// they do not fit; 0.5 without a length.
    double ClampedParam() const;
    Geometry::Point Anchor() const { return measured.At(relativeParam); }
    const Geometry::Point& End(int side) const { return side == 1 ? measured.start : measured.end; }
    /// +1 when going outward at that side means going along d.
    double Outward(int side) const;

    std::vector<Geometry::Point> Decorate(int side) const;
    /// The dimension line's free end for an arrowhead at `tip`.
    Geometry::Point LineEnd(int side, const Geometry::Point& tip, bool isFlipped) const;
    /// Sets the two base corners of the arrowhead whose tip is among the points.
    void PlaceArrowBase(int side, bool isFlipped, std::vector<Geometry::Point>& points) const;
    /// The points show the arrowhead outside the extension line.
    bool IsDrawnFlipped(int side, const std::vector<Geometry::Point>& points) const;
};

} // namespace Tessera::Dimension
