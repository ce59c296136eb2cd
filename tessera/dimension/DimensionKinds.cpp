#include "tessera/dimension/internal/DimensionKinds.h"

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/HorizontalDimension.h"
#include "tessera/dimension/LinearDimension.h"
#include "tessera/dimension/RadialDimension.h"
#include "tessera/dimension/VerticalDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

// The one place that leads from a DimensionType_e to a class.

namespace Tessera::Dimension {

using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;

namespace {

const RadialDimension* AsRadial(const DimensionBase* dim) {
    return dim->GetType() == Radial ? dynamic_cast<const RadialDimension*>(dim) : nullptr;
}

} // namespace

DimensionBase* DimensionBase::CreateDimensionByType(DimensionType_e type) {
    switch (type) {
    case Length:
        return new LengthDimension();
    case Horizontal:
        return new HorizontalDimension();
    case Vertical:
        return new VerticalDimension();
    case Radial:
        return new RadialDimension();
    case Linear:
        return new LinearDimension();
    case Angular:
        return new AngularDimension();
    default:
        return nullptr;
    }
}

DimensionBase* DimensionBase::CreateDimensionByType(DimensionType_e type, Curve* curve,
                                                    double textHeightOffset, double fontHeight) {
    switch (type) {
    case Length:
        return new LengthDimension(static_cast<Line*>(curve), textHeightOffset, fontHeight);
    case Horizontal:
        return new HorizontalDimension(static_cast<Line*>(curve), textHeightOffset, fontHeight);
    case Vertical:
        return new VerticalDimension(static_cast<Line*>(curve), textHeightOffset, fontHeight);
    case Radial:
        return new RadialDimension(static_cast<Arc*>(curve), textHeightOffset, fontHeight);
    default:
        return nullptr;
    }
}

double DimensionBase::GetDisplayedValue() const {
    const RadialDimension* radial = AsRadial(this);
    return radial != nullptr && !radial->DisplayR() ? 2.0 * GetAnnotation() : GetAnnotation();
}

double DimensionBase::GetTextOffset() const {
    const RadialDimension* radial = AsRadial(this);
    return radial != nullptr ? radial->GetTextOffset() : GetTextHeightOffset();
}

const Geometry::Point* FindLeaderEnd(const DimensionBase& dim) {
    const RadialDimension* radial = AsRadial(&dim);
    const RadialDimDeco* deco = radial != nullptr ? radial->GetRadialDimDeco() : nullptr;
    return deco != nullptr && !deco->GetPoints().empty() ? deco->GetPoints().data() : nullptr;
}

} // namespace Tessera::Dimension
