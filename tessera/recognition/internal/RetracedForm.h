// RetracedForm - the new form of a curve, part of which was drawn again.
#pragma once

#include <memory>

#include "tessera/recognition/internal/OverSketch.h"

namespace Tessera::Geometry {

/// The curve fitted to what remains of the old one and to the ink, which runs into the remainder smoothly.
///
/// A line, arc, circle or ellipse stays one unless the ink leaves the new one by more than `tolerance` while
/// a part of the old one remains: then it becomes a B-spline, if it may change its kind. A closed curve stays
/// closed, an open one runs the way it did. Null when nothing fits.
std::unique_ptr<Curve> MakeRetracedForm(const Curve& old, const CurveTrack& track, const Retrace& retrace,
                                        double tolerance, bool mayChangeKind);

} // namespace Tessera::Geometry
