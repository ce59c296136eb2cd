// AngularLayout - where the decoration of an angular dimension goes, computed from plain values.
//
// The dimension arc runs counter-clockwise over `range`, side 1 at its start, side 2 at its end. All lengths
// in model units, all angles in radians.
#pragma once

#include <vector>

#include "tessera/dimension/internal/AngleRange.h"
#include "tessera/dimension/internal/DecorationSizes.h"
#include "tessera/dimension/internal/Segment.h"

namespace Tessera::Dimension {

struct AngularLayout {
    Geometry::Point centre;
    double radius = 0.0;
    AngleRange range{};
    double param = 0.0; // of the middle of the text, within half a turn of the middle of the arc
    double fontHeight = 0.0;
    double widthOffset = 0.0; // half the width of the text
    double tolerance = 0.0;

    Geometry::Point At(double angle) const;
    double End(int side) const { return side == 1 ? range.start : range.end; }
    /// +1 when going into the arc from that side is counter-clockwise.
    double Inward(int side) const { return side == 1 ? 1.0 : -1.0; }
    /// Text and arrowheads do not fit between the lines.
    bool IsFlipped() const;
    /// 0 on the arc, else the side beyond whose end the angle lies; half-way round it is side 2.
    int OutsideSide(double angle) const { return range.Contains(angle) ? 0 : NearerSide(angle); }
    /// The same for an angle that is known to lie off the arc.
    int NearerSide(double angle) const;

    /// Where the arc that is drawn from that side's tip ends.
    double LineEnd(int side) const;
    /// What is drawn of the arc on that side; no sweep when the text covers it all.
    AngleRange DrawnArc(int side) const;
    double DistanceToArc(const Geometry::Point& p, const AngleRange& drawn) const;
    /// Points that span the same extent as the arc.
    void AppendExtent(const AngleRange& drawn, std::vector<Geometry::Point>& points) const;

    /// All points of one end of the dimension, which measures the line between the two ends given.
    std::vector<Geometry::Point> Decorate(int side, const Segment& line) const;

private:
    /// From the middle of the text to where the arc breaks off.
    double HalfGap() const { return (widthOffset + kHalfLetter * fontHeight) / radius; }
};

} // namespace Tessera::Dimension
