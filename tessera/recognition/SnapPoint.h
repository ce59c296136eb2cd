// SnapPoint - a key point of an existing curve to which a newly drawn end point may be pulled.
#pragma once

#include <cstdint>

#include "tessera/core/Export.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Core {
class DisplayableObject;
}

namespace Tessera::Geometry {

class Curve;

enum SnapPointType_e : std::int32_t {
    SnapPointType_None = 0,
    SnapPointType_Start = 1,
    SnapPointType_End = 2,
    SnapPointType_Mid = 3,
    SnapPointType_Center = 4,
    SnapPointType_Host = 5 ///< a kind of the host's own, placed by position
};

/// Refers to its parent, never owns it.
class TESSERA_API SnapPoint : public Point {
public:
    /// Start, end, mid point or centre of a curve. Throws "Input curve is NULL", "Input curve has no center"
    /// or "Input snap type is not supported".
    SnapPoint(Curve* curve, SnapPointType_e type);
    /// A type other than 1 to 5 becomes 0.
    SnapPoint(Core::DisplayableObject* parent, SnapPointType_e type, Point& position);

    Core::DisplayableObject* AskParent() const { return parent_; }
    SnapPointType_e AskSnapType() const { return snapType_; }

private:
    Core::DisplayableObject* parent_;
    SnapPointType_e snapType_;
};

} // namespace Tessera::Geometry
