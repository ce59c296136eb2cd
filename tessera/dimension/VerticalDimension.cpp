#include "tessera/dimension/VerticalDimension.h"

#include "tessera/dimension/internal/SharedDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Line;
using Geometry::Point;

VerticalDimension::VerticalDimension() : ProjectedDimension(Axis::Y) {}

VerticalDimension::VerticalDimension(Line* line, double fontHeight)
    : VerticalDimension(line, kHeightOffsetPerFontHeight * fontHeight, fontHeight) {}

VerticalDimension::VerticalDimension(Line* line, double textHeightOffset, double fontHeight)
    : ProjectedDimension(Axis::Y, line, nullptr, nullptr, textHeightOffset, fontHeight) {
    Bind();
}

VerticalDimension::VerticalDimension(Line* line, Arc* arc, double textHeightOffset, double fontHeight)
    : ProjectedDimension(Axis::Y, line, arc, nullptr, textHeightOffset, fontHeight) {
    Bind();
}

VerticalDimension::VerticalDimension(Arc* first, Arc* second, double textHeightOffset, double fontHeight)
    : ProjectedDimension(Axis::Y, nullptr, first, second, textHeightOffset, fontHeight) {
    Bind();
}

VerticalDimension::~VerticalDimension() {
    DetachFromCurves();
}

VerticalDimension* VerticalDimension::MakeDimension(Line* line, double fontHeight) {
    return FindOrMakeAlone<VerticalDimension>(Vertical, line, fontHeight);
}

VerticalDimension* VerticalDimension::MakeDimension(Line* line, Arc* arc, double textHeightOffset,
                                                    double fontHeight) {
    return FindOrMake<VerticalDimension>(Vertical, line, arc, textHeightOffset, fontHeight);
}

VerticalDimension* VerticalDimension::MakeDimension(Arc* first, Arc* second, double textHeightOffset,
                                                    double fontHeight) {
    return FindOrMake<VerticalDimension>(Vertical, first, second, textHeightOffset, fontHeight);
}

VerticalDimension* VerticalDimension::Copy() const {
    return new VerticalDimension(*this);
}

Line* VerticalDimension::GetVerticalLineFromLine() const {
    return ComputeTempDimensionLine();
}

void VerticalDimension::GetXorderPoints(const Line* line, Point& a, Point& b, int& order) const {
    OrderEnds(line, a, b, order);
}

} // namespace Tessera::Dimension
