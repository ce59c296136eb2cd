#include "tessera/dimension/internal/AngularLayout.h"

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

namespace {

/// From the part of the line nearest to the tip until beyond it; nothing where the line passes the tip.
void PlaceExtension(const Segment& line, double fontHeight, double tolerance, std::vector<Point>& points) {
    const Point& tip = points[kTip];
    const Point nearest = line.At(std::clamp(line.ParamOf(tip), 0.0, 1.0));
    points[kExtensionStart] = points[kExtensionEnd] = tip;
    if (nearest.Distance(tip) <= tolerance)
        return;
    const Vector outward = Segment{nearest, tip}.Direction(Vector());
    points[kExtensionStart] = nearest.AffineCombine(kExtensionGap * fontHeight, outward);
    points[kExtensionEnd] = tip.AffineCombine(kHalfLetter * fontHeight, outward);
}

} // namespace

Point AngularLayout::At(double angle) const {
    return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
}

bool AngularLayout::IsFlipped() const {
    return radius * range.Sweep() < 2.0 * (widthOffset + (kHalfLetter + kArrowLength) * fontHeight);
}

int AngularLayout::NearerSide(double angle) const {
    return radius * range.BeyondEnd(angle) - tolerance > radius * range.BeforeStart(angle) ? 1 : 2;
}

double AngularLayout::LineEnd(int side) const {
    const double inward = Inward(side);
    if (OutsideSide(param) == side) {
        // Drawn on to the near edge of the text, which may reach over the tip.
        const double textEdge = param + inward * HalfGap();
        return inward * (textEdge - End(side)) < 0.0 ? textEdge : End(side);
    }
    return IsFlipped() ? End(side) - inward * kOuterLine * fontHeight / radius : param - inward * HalfGap();
}

AngleRange AngularLayout::DrawnArc(int side) const {
    const double tip = End(side);
    const double lineEnd = LineEnd(side);
    const bool isOutside = Inward(side) * (lineEnd - tip) < 0.0;
    // Text on the arc that reaches over the tip leaves nothing to draw.
    if (isOutside && !IsFlipped() && OutsideSide(param) != side)
        return {tip, tip};
    return {std::min(tip, lineEnd), std::max(tip, lineEnd)};
}

double AngularLayout::DistanceToArc(const Point& p, const AngleRange& drawn) const {
    const Vector fromCentre(centre, p);
    if (drawn.Contains(std::atan2(fromCentre.y, fromCentre.x)))
        return std::fabs(fromCentre.Length() - radius);
    return std::min(p.Distance(At(drawn.start)), p.Distance(At(drawn.end)));
}

void AngularLayout::AppendExtent(const AngleRange& drawn, std::vector<Point>& points) const {
    points.insert(points.end(), {At(drawn.start), At(drawn.end)});
    for (const double quadrant : {0.0, 0.25, 0.5, 0.75})
        if (drawn.Contains(quadrant * kTurn))
            points.push_back(At(quadrant * kTurn));
}

std::vector<Point> AngularLayout::Decorate(int side, const Segment& line) const {
    std::vector<Point> points(kEndPointCount);
    const double angle = End(side);
    const Vector outward(std::cos(angle), std::sin(angle));
    const Vector alongArc = Inward(side) * Vector(-outward.y, outward.x);
    const Point tip = At(angle);
    points[kTip] = points[kArrowTip] = points[kArrowClose] = tip;
    points[kLineEnd] = At(LineEnd(side));
    PlaceExtension(line, fontHeight, tolerance, points);
    const Point base = tip.AffineCombine((IsFlipped() ? -1.0 : 1.0) * kArrowLength * fontHeight, alongArc);
    points[kArrowLow] = base.AffineCombine(-kArrowHalfWidth * fontHeight, outward);
    points[kArrowHigh] = base.AffineCombine(kArrowHalfWidth * fontHeight, outward);
    points[kInnerMark] = tip.AffineCombine(-kHalfLetter * fontHeight, outward);
    return points;
}

} // namespace Tessera::Dimension
