#include "tessera/recognition/SnapPoint.h"

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"

namespace Tessera::Geometry {

namespace {

Point CenterOf(const Curve& curve) {
    switch (curve.GetType()) {
    case CurveType_Arc:
        return static_cast<const Arc&>(curve).GetCenter();
    case CurveType_Ellipse:
        return static_cast<const Ellipse&>(curve).AskCenter();
    default:
        Core::ThrowMessage("Input curve has no center");
    }
}

Point KeyPoint(const Curve* curve, SnapPointType_e type) {
    if (curve == nullptr) {
        Core::ThrowMessage("Input curve is NULL");
    }
    switch (type) {
    case SnapPointType_Start:
        return curve->GetStart();
    case SnapPointType_End:
        return curve->GetEnd();
    case SnapPointType_Mid:
        return curve->GetMidPoint();
    case SnapPointType_Center:
        return CenterOf(*curve);
    default:
        Core::ThrowMessage("Input snap type is not supported");
    }
}

} // namespace

SnapPoint::SnapPoint(Curve* curve, SnapPointType_e type)
    : Point(KeyPoint(curve, type)), parent_(curve), snapType_(type) {}

SnapPoint::SnapPoint(Core::DisplayableObject* parent, SnapPointType_e type, Point& position)
    : Point(position), parent_(parent),
      snapType_(type >= SnapPointType_Start && type <= SnapPointType_Host ? type : SnapPointType_None) {}

} // namespace Tessera::Geometry
