// WholeStroke - the choice between one curve for a whole stroke and the curves of its pieces.
#pragma once

#include <vector>

#include "tessera/recognition/RecognizedGeometry.h"

namespace Tessera::Geometry {

/// Whether a stroke that one curve describes is that curve rather than its pieces: yes when fewer of the
/// pieces are lines than other curves, or when they are one line and one arc or ellipse of more than three
/// quarters of a turn (a hook on a round shape is a slip of the pen).
bool IsWholeStrokePreferred(const std::vector<RecognizedGeometry*>& pieces);

} // namespace Tessera::Geometry
