// The frame in which a drawing is dimensioned: y up, as the library reads text, and all coordinates above 0,
// as a pick on an arc needs them.
#pragma once

#include <memory>

#include "apps/cli/recognize/DimensionLayout.h"
#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

class DimensionFrame {
public:
    explicit DimensionFrame(const RecognizedDrawing& drawing);

    /// Longer side of the drawing; 0 for an empty one.
    double Size() const { return size_; }
    const Geometry::Point& Middle() const { return middle_; }
    /// Letters that suit both the drawing and the curves in it.
    double FontHeight() const { return fontHeight_; }

    Geometry::Point FromInk(Position p) const { return {p.x - left_, top_ - p.y}; }
    Position ToInk(const Geometry::Point& p) const { return {p.x + left_, top_ - p.y}; }
    /// A line or arc; nothing for other shapes, which have no dimensions.
    std::unique_ptr<Geometry::Curve> CurveFromInk(const CurveShape& shape) const;
    /// Of a shape of any kind.
    std::vector<Segment> ChordsFromInk(const CurveShape& shape) const;
    /// The dimension as it is drawn; what it measures is left open.
    DrawnDimension Draw(const Dimension::DimensionBase& dimension, const DimensionLayout& layout) const;

private:
    CurveShape ShapeInInk(const Geometry::Curve& curve) const;

    double size_ = 0.0;
    double left_ = 0.0;
    double top_ = 0.0;
    double fontHeight_ = 0.0;
    Geometry::Point middle_;
};

} // namespace Tessera::Tool
