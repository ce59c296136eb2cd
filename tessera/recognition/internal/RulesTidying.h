// RulesTidying - the rules' own pieces made tidy, where no other reading of the ink may take their place.
#pragma once

#include <span>

#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/internal/PricedPath.h"
#include "tessera/recognition/internal/RulesReading.h"

namespace Tessera::Geometry {

/// Fills the whole reading. The pieces keep their breaks, kinds and places, but for what the preferences ask:
///
/// curveTidy       crumbs are swept, neighbours that are one line, arc or ellipse merged, the ends closed,
///                 corners and tangent joints made exact; without it nothing is joined.
/// changeCurveType an arc that a line describes as briefly becomes one.
/// snapping        as everywhere; regular polygons as well, where corners are exact.
///
/// Elliptic arcs and free forms stay what they are: moved as a whole onto the corners with their neighbours.
void ReadTidiedRules(const InkStroke& ink, const PricedPath& priced, RulesReading& rules,
                     const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                     InkReading& reading);

} // namespace Tessera::Geometry
