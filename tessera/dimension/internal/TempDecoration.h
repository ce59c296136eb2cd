// TempDecoration - the drawn form of a dimension for as long as a test needs it.
#pragma once

#include <vector>

#include "tessera/dimension/DimensionBase.h"
#include "tessera/geometry/Curve.h"

namespace Tessera::Dimension {

struct TempDecoration {
    // Delegating: should anything throw here, the destructor still runs.
    explicit TempDecoration(const DimensionBase& dim) : TempDecoration() {
        dim.GetTempDimDecoObjects(curves, arrowPoints, false);
        dim.GetOrientedTextBox(textBox);
    }
    ~TempDecoration() {
        for (Geometry::Curve* curve : curves)
            delete curve;
    }
    TempDecoration(const TempDecoration&) = delete;
    TempDecoration& operator=(const TempDecoration&) = delete;

    std::vector<Geometry::Curve*> curves; // owned
    std::vector<Geometry::Point> arrowPoints;
    std::vector<Geometry::Point> textBox;

private:
    TempDecoration() = default;
};

} // namespace Tessera::Dimension
