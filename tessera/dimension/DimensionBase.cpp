#include "tessera/dimension/DimensionBase.h"

namespace Tessera::Dimension {

void DimensionBase::LogForChange() {
    if (isFinalized_)
        TaggedObject::LogForChange();
}

bool DimensionBase::AskXYBox(Geometry::XYBox& /*box*/) const {
    return false;
}

} // namespace Tessera::Dimension
