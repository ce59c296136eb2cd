#include "tessera/dimension/HorizontalDimension.h"

#include "tessera/dimension/internal/SharedDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Line;
using Geometry::Point;

HorizontalDimension::HorizontalDimension() : ProjectedDimension(Axis::X) {}

HorizontalDimension::HorizontalDimension(Line* line, double fontHeight)
    : HorizontalDimension(line, kHeightOffsetPerFontHeight * fontHeight, fontHeight) {}

HorizontalDimension::HorizontalDimension(Line* line, double textHeightOffset, double fontHeight)
    : ProjectedDimension(Axis::X, line, nullptr, nullptr, textHeightOffset, fontHeight) {
    Bind();
}

HorizontalDimension::HorizontalDimension(Line* line, Arc* arc, double textHeightOffset, double fontHeight)
    : ProjectedDimension(Axis::X, line, arc, nullptr, textHeightOffset, fontHeight) {
    Bind();
}

HorizontalDimension::HorizontalDimension(Arc* first, Arc* second, double textHeightOffset, double fontHeight)
    : ProjectedDimension(Axis::X, nullptr, first, second, textHeightOffset, fontHeight) {
    Bind();
}

HorizontalDimension::~HorizontalDimension() {
    DetachFromCurves();
}

HorizontalDimension* HorizontalDimension::MakeDimension(Line* line, double fontHeight) {
    return FindOrMakeAlone<HorizontalDimension>(Horizontal, line, fontHeight);
}

HorizontalDimension* HorizontalDimension::MakeDimension(Line* line, Arc* arc, double textHeightOffset,
                                                        double fontHeight) {
    return FindOrMake<HorizontalDimension>(Horizontal, line, arc, textHeightOffset, fontHeight);
}

HorizontalDimension* HorizontalDimension::MakeDimension(Arc* first, Arc* second, double textHeightOffset,
                                                        double fontHeight) {
    return FindOrMake<HorizontalDimension>(Horizontal, first, second, textHeightOffset, fontHeight);
}

HorizontalDimension* HorizontalDimension::Copy() const {
    return new HorizontalDimension(*this);
}

Line* HorizontalDimension::GetHorizontalLineFromLine() const {
    return ComputeTempDimensionLine();
}

void HorizontalDimension::GetYorderPoints(const Line* line, Point& a, Point& b, int& order) const {
    OrderEnds(line, a, b, order);
}

} // namespace Tessera::Dimension
