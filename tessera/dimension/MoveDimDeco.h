// MoveDimDeco - drives the drag of a dimension's text: BeginMove at the press, Move at every pointer
// position, EndMove at the release.
#pragma once

#include <memory>

#include "tessera/core/Export.h"
#include "tessera/dimension/DragData.h"

namespace Tessera::Dimension {

class DimensionBase;

/// No virtual destructor: drivers are freed by their static type.
class TESSERA_API MoveDimDeco {
public:
    MoveDimDeco();
    /// The same dimension, a copy of the drag data.
    MoveDimDeco(const MoveDimDeco& other);
    MoveDimDeco& operator=(const MoveDimDeco& other);
    ~MoveDimDeco();

    // Slot order is part of the binary interface. False without a dimension or drag data.
    /// Starts at pointer position p and notes where the dimension stands.
    virtual bool BeginMove(const Geometry::Point& p);
    /// Moves the dimension by the step from the last pointer position to p, whatever it answers. The numbers
    /// and the flag are reserved.
    virtual bool Move(const Geometry::Point& p, double reserved1, double reserved2, bool flag);
    virtual bool EndMove(); ///< always true

    /// Not owned.
    DimensionBase* GetDimension() const { return dimension_; }
    void SetDimension(DimensionBase* dimension) { dimension_ = dimension; }
    /// Borrowed until it is replaced.
    DragData* GetDragData() const { return dragData_.get(); }
    /// Takes ownership; the record set before is deleted unless it is the same.
    void SetDragData(DragData* data);
    /// The two parameters of the drag data (see DragData::SetParameters).
    void SetParameters(double first, double second);

private:
    DimensionBase* dimension_ = nullptr;
    std::unique_ptr<DragData> dragData_;
};

} // namespace Tessera::Dimension
