// The places in a picture that a constraint speaks of.
#pragma once

#include <memory>
#include <vector>

#include "apps/cli/prepare/InkPreparation.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/geometry/Curve.h"

namespace Tessera::Tool {

/// What a glyph stands beside, and the direction in which it is best put.
struct GlyphAnchor {
    Geometry::Point place;
    Geometry::Vector away; ///< unit
    bool isOn = false;     ///< on the place itself when that is free
};

class ConstraintAnchors {
public:
    /// @param frame  in which anchors are wanted; the drawing is borrowed.
    ConstraintAnchors(const RecognizedDrawing& drawing, const WorkingFrame& frame);

    /// One place for what happens at a point, a corner or a centre; else the middle of each curve, of three
    /// elements those of the first two.
    std::vector<GlyphAnchor> Of(const RecognizedConstraint& constraint) const;

    /// The drawing's curves in the frame, by stroke.
    const std::vector<std::vector<std::unique_ptr<Geometry::Curve>>>& Curves() const { return curves_; }

private:
    const Geometry::Curve& CurveAt(const CurvePlace& place) const;
    GlyphAnchor At(const DrawingElement& element) const;
    bool FindCorner(const RecognizedConstraint& constraint, GlyphAnchor& corner) const;

    const RecognizedDrawing& drawing_;
    WorkingFrame frame_;
    std::vector<std::vector<std::unique_ptr<Geometry::Curve>>> curves_;
};

} // namespace Tessera::Tool
