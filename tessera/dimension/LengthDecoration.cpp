#include <cmath>

#include "tessera/dimension/LengthDimension.h"
#include "tessera/dimension/internal/LengthLayout.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/EQ.h"

// Building the decoration records and bringing single points of them back into place.

namespace Tessera::Dimension {

using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;

bool LengthDimension::AskLayout(LengthLayout& layout) const {
    if (!AskMeasured(layout.measured))
        return false;
    layout.d = GetOrientation();
    layout.d.Normalize();
    layout.n = ComputeOffsetVector(layout.d);
    layout.fontHeight = GetFontHeight();
    layout.heightOffset = GetTextHeightOffset();
    layout.widthOffset = GetTextWidthOffset();
    layout.relativeParam = relativeParam_;
    layout.tolerance = EQ_ask_length_tolerance();
    return true;
}

std::vector<Point>* LengthDimension::PointsOf(int side) const {
    LengthDimDeco* deco = GetLengthDimDeco(side);
    // Records may come from outside; only complete ones are touched.
    return deco != nullptr && deco->GetPoints().size() >= kEndPointCount ? &deco->GetPoints() : nullptr;
}

// --- Text

double LengthDimension::AdjustRelativeParam() {
    LengthLayout layout;
    if (AskLayout(layout))
        relativeParam_ = layout.ClampedParam();
    return relativeParam_;
}

void LengthDimension::ComputeAnnotationOrigin(double* out) {
    AdjustRelativeParam();
    LengthLayout layout;
    if (out == nullptr || !AskLayout(layout))
        return;
    const Point anchor = layout.Anchor().AffineCombine(layout.heightOffset, layout.n);
    out[0] = anchor.x;
    out[1] = anchor.y;
}

void LengthDimension::GetAnnotationBoundingPoints(Point& a, Point& b) const {
    LengthLayout layout;
    if (!AskLayout(layout))
        return;
    const Point middle = layout.Anchor().AffineCombine(layout.LineOffset(), layout.n);
    a = middle.AffineCombine(-layout.widthOffset, layout.d);
    b = middle.AffineCombine(layout.widthOffset, layout.d);
}

double LengthDimension::ComputeDecoEndDistance(double u) const {
    Segment measured;
    return AskMeasured(measured) ? std::fmin(u, 1.0 - u) * measured.Length() : 0.0;
}

// --- Decoration

void LengthDimension::ComputeLengthDimensionDeco(int side) {
    if (side != 1 && side != 2)
        return;
    AdjustRelativeParam();
    LengthLayout layout;
    if (!AskLayout(layout))
        return;
    auto deco = std::make_unique<LengthDimDeco>();
    deco->GetPoints() = layout.Decorate(side);
    deco->SetExtensionIndices(kExtensionStart, kExtensionEnd);
    SetLengthDimDeco(side, deco.release());
    AdjustArrowheadFlip(side);
}

bool LengthDimension::FlipArrowhead() const {
    LengthLayout layout;
    return AskLayout(layout) && layout.IsFlipped();
}

void LengthDimension::AdjustArrowheadFlip(int side) {
    LengthLayout layout;
    std::vector<Point>* points = PointsOf(side);
    if (points == nullptr || !AskLayout(layout) || layout.IsDrawnFlipped(side, *points) == layout.IsFlipped())
        return;
    (*points)[kLineEnd] = layout.LineEnd(side, (*points)[kTip], layout.IsFlipped());
    layout.PlaceArrowBase(side, layout.IsFlipped(), *points);
}

void LengthDimension::AdjustPoint1s() {
    LengthLayout layout;
    if (!AskLayout(layout))
        return;
    for (const int side : {1, 2}) {
        std::vector<Point>* points = PointsOf(side);
        if (points == nullptr)
            continue;
        const Point& end = layout.End(side);
        const Point tip = (*points)[kTip];
        const Vector back(tip, end.AffineCombine(Vector(end, tip).Dot(layout.n), layout.n));
        (*points)[kTip] = tip.AffineCombine(1.0, back);
        for (int i = kExtensionEnd; i < kEndPointCount; ++i)
            (*points)[i] = (*points)[i].AffineCombine(1.0, back);
        AdjustArrowheadFlip(side);
    }
}

void LengthDimension::PlaceFoot(int side, const Point& foot) {
    if (std::vector<Point>* points = PointsOf(side))
        (*points)[kExtensionStart] = foot;
}

void LengthDimension::PullFoot(int side, const Point& foot) {
    std::vector<Point>* points = PointsOf(side);
    if (points == nullptr)
        return;
    const Point& tip = (*points)[kTip];
    const double gap = std::fmin(kExtensionGap * GetFontHeight(), foot.Distance(tip));
    (*points)[kExtensionStart] = foot.AffineCombine(gap, Segment{foot, tip}.Direction(Vector()));
}

void LengthDimension::AdjustPoint3(const Line* line, const Point& end) {
    if (line != nullptr)
        PullFoot(end.Distance2(line->GetStart()) <= end.Distance2(line->GetEnd()) ? 1 : 2, end);
}

void LengthDimension::AdjustPoint4(const Line* line, const Point& end) {
    // Both ends are told apart by the line that they belong to, in whatever order they come.
    AdjustPoint3(line, end);
}

} // namespace Tessera::Dimension
