#include "tessera/dimension/internal/LengthLayout.h"

#include <algorithm>

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

double LengthLayout::HalfGap() const {
    return widthOffset + (widthOffset > tolerance ? kHalfLetter : -kHalfLetter) * fontHeight;
}

bool LengthLayout::IsFlipped() const {
    return 2.0 * (HalfGap() + kArrowLength * fontHeight) > measured.Length() + tolerance;
}

double LengthLayout::ClampedParam() const {
    const double length = measured.Length();
    if (!(length > tolerance))
        return 0.5;
    const double margin = (HalfGap() + kArrowLength * fontHeight) / length;
    return margin <= 0.5 ? std::clamp(relativeParam, margin, 1.0 - margin)
                         : std::clamp(relativeParam, 0.0, 1.0);
}

double LengthLayout::Outward(int side) const {
    const double along = Vector(measured.start, measured.end).Dot(d) < 0.0 ? -1.0 : 1.0;
    return side == 1 ? -along : along;
}

std::vector<Point> LengthLayout::Decorate(int side) const {
    std::vector<Point> points(kEndPointCount);
    const Point& end = End(side);
    const Point tip = end.AffineCombine(LineOffset(), n);
    const Vector toTip = Segment{end, tip}.Direction(Vector());
    const bool isFlipped = IsFlipped();
    points[kTip] = points[kArrowTip] = points[kArrowClose] = tip;
    points[kLineEnd] = LineEnd(side, tip, isFlipped);
    points[kExtensionStart] = end.AffineCombine(kExtensionGap * fontHeight, toTip);
    points[kExtensionEnd] = end.AffineCombine(ExtensionOffset(), n);
    PlaceArrowBase(side, isFlipped, points);
    points[kInnerMark] = tip.AffineCombine(-kHalfLetter * fontHeight, toTip);
    return points;
}

Point LengthLayout::LineEnd(int side, const Point& tip, bool isFlipped) const {
    if (isFlipped)
        return tip.AffineCombine(Outward(side) * kOuterLine * fontHeight, d);
    const double lineOffset = Vector(End(side), tip).Dot(n);
    return Anchor().AffineCombine(Outward(side) * HalfGap(), d).AffineCombine(lineOffset, n);
}

void LengthLayout::PlaceArrowBase(int side, bool isFlipped, std::vector<Point>& points) const {
    const double away = isFlipped ? Outward(side) : -Outward(side);
    const Point base = points[kTip].AffineCombine(away * kArrowLength * fontHeight, d);
    points[kArrowLow] = base.AffineCombine(-kArrowHalfWidth * fontHeight, n);
    points[kArrowHigh] = base.AffineCombine(kArrowHalfWidth * fontHeight, n);
}

bool LengthLayout::IsDrawnFlipped(int side, const std::vector<Point>& points) const {
    const Point base = (points[kArrowLow] + points[kArrowHigh]) / 2.0;
    return Vector(points[kTip], base).Dot(d) * Outward(side) > 0.0;
}

} // namespace Tessera::Dimension
