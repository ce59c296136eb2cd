// The exported entries: points of the host in, host-ready geometry out.
//
// No exception leaves them. Call them from the host's modelling thread.
#pragma once

#include <vector>

#include "tessera/core/Export.h"
#include "tessera/host/HostGeometry.h"

/// Recognises a poly-line and appends one handle for each recognised curve to `out`, which is not cleared.
///
/// Every coordinate and length is divided by 100000. Lines and arcs join the first and the last input point,
/// whatever the recognised curve's own ends; B-splines are trimmed to them. Elliptic arcs yield a handle with
/// type code 0.
///
/// @param points fewer than two points, or a point that is not finite, leave `out` unchanged.
/// @param out    the block of each appended handle belongs to the caller: 120 bytes from SM_alloc, released
///               with TesseraHost_ReleaseHandle when the reference host made it.
extern "C" TESSERA_API void
ConvertPolyLinePointsTorecognizedAnalyticTypes(const std::vector<InputPoint>& points,
                                               std::vector<HostGeometryHandle>& out);
