// InkCurves - exact shapes in a path's frame become curves in model units.
#pragma once

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/ChainGeometry.h"
#include "tessera/recognition/internal/RoundShape.h"
#include "tessera/recognition/internal/SmoothForms.h"

namespace Tessera::Geometry {

/// Appends the curves of a chain with their joints. Deviations are left to be measured.
void AppendChain(const InkPath& path, const ExactChain& chain, InkReading& reading);

/// The reading of one full circle or ellipse: its shape too.
void AppendRound(const InkPath& path, const RoundShape& shape, InkReading& reading);

/// An elliptic arc that stands for the ink between two points of the path.
InterpretedCurve MakeEllipticArc(const InkPath& path, const EllipticArc& arc, int first, int last);

/// Appends an elliptic arc, its ends moved to `from` and `to` (in the pen's order) as a whole. Where this
/// would throw it far off, as with ends that lie close together, it stays where it is, and false.
bool AppendEllipticArc(const InkPath& path, const EllipticArc& arc, const Point& from, const Point& to,
                       InkReading& reading);

/// A closed curve of one piece is joined to itself: its start is where the last joint lies.
void AppendSeam(const Curve& closed, InkReading& reading);

/// Appends one free form, which goes over into the reading.
void AppendFreeShape(const InkPath& path, FreeShape& shape, InkReading& reading);

} // namespace Tessera::Geometry
