// TriangleBox - a triangle in the plane z = 0 used as a containment region.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/geometry/Point.h"
#include "tessera/kernel/VexMath.h"

namespace Tessera::Geometry {

class TESSERA_API TriangleBox {
public:
    TriangleBox(const Point& a, const Point& b, const Point& c);

    /// Inside, on an edge or at a vertex; fixed tolerances of 1e-10, `tol` is not used.
    bool IsPointInTriangleBox(const Vex::Math::Point3& p, double tol) const;

private:
    Point vertices_[3];
};

} // namespace Tessera::Geometry
