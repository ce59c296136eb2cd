// FullShape - the full circle or ellipse through all points of a piece, drawn once or several times over.
#pragma once

#include <memory>

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/internal/StrokePiece.h"

namespace Tessera::Geometry {

/// A circle within the piece's arc tolerance or an ellipse within its ellipse tolerance, in the piece's
/// frame; null when neither fits. The circle is preferred, unless the ellipse halves its deviation and is
/// clearly oblong. *maxDev receives the largest deviation of the shape that is returned.
std::unique_ptr<Curve> FitFullShape(const StrokePiece& piece, double* maxDev);

/// Angle in radians through which the points of the piece run about the centre of a shape of FitFullShape,
/// counter-clockwise positive: 2 pi for each round.
double WindingAbout(const Curve& shape, const StrokePiece& piece);

} // namespace Tessera::Geometry
