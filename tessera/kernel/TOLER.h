// TOLER - process-wide defaults for kernel routines that take no tolerance argument.
#pragma once

#include "tessera/core/Export.h"

/// Model units; 0.01 at start.
TESSERA_API double TOLER_ask_distance_tol();
/// Accepts values >= 0; returns whether the value was taken.
TESSERA_API bool TOLER_set_distance_tol(double tol);
/// Degrees; 0.5 at start.
TESSERA_API double TOLER_ask_angular_tol();
/// Accepts values strictly between 0 and 180; returns whether the value was taken.
TESSERA_API bool TOLER_set_angular_tol(double tolDeg);
