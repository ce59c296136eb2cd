// DimensionBase - abstract root of the dimensions: annotations that measure one or two curves.
//
// Ownership  a dimension refers to its parent curves and never owns them; each parent lists the dimension.
//            Destroy dimensions before their curves.
// Failure    bool results, null pointers or unchanged values; nothing here throws a message.
#pragma once

#include <vector>

#include "tessera/core/DisplayableObject.h"
#include "tessera/core/Export.h"
#include "tessera/dimension/DimensionType.h"

namespace Tessera::Geometry {
class Curve;
}

namespace Tessera::Dimension {

class TESSERA_API DimensionBase : public Core::DisplayableObject {
public:
    DimensionBase() = default;
    /// New identifier, no group, not listed by any curve.
    DimensionBase(const DimensionBase& other) = default;

    int AskClass() const override { return Core::ClassID_Dimension; }
    DimensionBase* Copy() const override = 0;
    /// Reports only finalized dimensions: one under construction or shown as a preview stays unknown to the
    /// host.
    void LogForChange() override;
    /// False here; the kinds of dimensions fill the box from their decoration.
    bool AskXYBox(Geometry::XYBox& box) const override;

    /// Commits the dimension to the model, or takes it back. Each parent curve is told first
    /// (Curve::LogDimensionFinalize).
    virtual void SetIsFinalized(bool finalized) = 0;
    /// Recomputes value and decoration from the parent curves.
    virtual void UpdateDimension() = 0;
    virtual DimensionType_e GetType() const = 0;
    /// Appends the curves that the dimension is attached to.
    virtual void GetParentCurves(std::vector<Geometry::Curve*>& curves) const = 0;
    /// The dimension still fits its curves.
    virtual bool IsValid() const = 0;

    /// False while the dimension is being created or previewed, true once it is part of the model.
    bool GetIsFinalized() const { return isFinalized_; }

protected:
    bool isFinalized_ = false;
};

} // namespace Tessera::Dimension
