// EQ - the process-wide length scale that decides when two lengths are equal.
#pragma once

#include "tessera/core/Export.h"

/// Code 1 sets the scale to 25.4 (the start value), code 2 to 1.0; any other code changes nothing.
TESSERA_API void EQ_set_MEC(int code);
/// Scale x 1e-10, model units (2.54e-9 at start).
TESSERA_API double EQ_ask_length_tolerance();
/// Scale x 1e-20 x scale, square model units.
TESSERA_API double EQ_ask_length_squared_tolerance();
