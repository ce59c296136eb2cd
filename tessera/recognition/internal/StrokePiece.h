// StrokePiece - a piece of a stroke in the frame in which it fills the unit square with its longer side 1.
// Fits run there, so that their constants mean the same for every drawing; what they find is mapped back.
#pragma once

#include <span>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/kernel/VexMath.h"
#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

struct StrokePiece {
    int first = 0; ///< samples of the stroke, both inclusive
    int last = 0;
    Vex::Math::Point2 origin{};       ///< lower left corner of the piece's box, model units
    double scale = 1.0;               ///< longer side of the box, model units
    std::span<Vex::Math::Point2> pts; ///< positions in the frame, borrowed
    double tol[4] = {};               ///< line, arc, ellipse and spline tolerance, in the frame
    double closeTol = 0.0;            ///< largest gap of a closed piece, in the frame

    /// Sets the frame and lets pts point to the samples' positions in it, kept in `buffer`. False when there
    /// are fewer than two samples or all lie in one place; throws when a coordinate is not finite.
    bool Normalize(std::span<const StrokePoint> samples, std::vector<Vex::Math::Point2>& buffer);

    /// Moves a curve from the frame to where the piece was drawn.
    void MapBack(Curve& curve) const;
};

} // namespace Tessera::Geometry
