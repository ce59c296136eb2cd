// DragData - what a drag of a dimension's text has seen so far. A plain value; all points in model units.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/geometry/Point.h"

namespace Tessera::Dimension {

class TESSERA_API DragData {
public:
    const Geometry::Point& GetBeginPoint() const { return beginPoint_; } ///< of the pointer
    void SetBeginPoint(const Geometry::Point& p) { beginPoint_ = p; }
    const Geometry::Point& GetPreviousPoint() const { return previousPoint_; } ///< of the pointer
    void SetPreviousPoint(const Geometry::Point& p) { previousPoint_ = p; }
    const Geometry::Point& GetCurrentPoint() const { return currentPoint_; } ///< of the pointer
    void SetCurrentPoint(const Geometry::Point& p) { currentPoint_ = p; }
    /// The dimension's GetReferencePoint() at the start.
    const Geometry::Point& GetBeginReferencePoint() const { return beginReferencePoint_; }
    void SetBeginReferencePoint(const Geometry::Point& p) { beginReferencePoint_ = p; }
    /// The end of the leader at the start; radial dimensions only.
    const Geometry::Point& GetBeginDecorationPoint() const { return beginDecorationPoint_; }
    void SetBeginDecorationPoint(const Geometry::Point& p) { beginDecorationPoint_ = p; }

    /// Gap below which text counts as aligned already, model units.
    double GetFirstParameter() const { return firstParameter_; }
    /// Gap up to which approaching text snaps into alignment, model units; 0 switches snapping off.
    double GetSecondParameter() const { return secondParameter_; }
    void SetParameters(double first, double second) {
        firstParameter_ = first;
        secondParameter_ = second;
    }

private:
    Geometry::Point beginPoint_;
    Geometry::Point previousPoint_;
    Geometry::Point currentPoint_;
    Geometry::Point beginReferencePoint_;
    Geometry::Point beginDecorationPoint_;
    double firstParameter_ = 1e-5;
    double secondParameter_ = 1.0;
};

} // namespace Tessera::Dimension
