// The exported entries: points of the host in, host-ready geometry out.
//
// No exception leaves them. Call them from the host's modelling thread.
#pragma once

#include <vector>

#include "tessera/core/Export.h"
#include "tessera/host/HostGeometry.h"
#include "tessera/host/HostInk.h"

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

/// Reads one pen stroke and does in the document what it means: creates elements with their constraints,
/// gives an element that was drawn over its new form, or erases and trims what lies under a scribble.
///
/// New elements see those around the stroke: their ends are put onto key points, and constraints may join
/// them. What is in the document stays where it is, but for an element drawn over.
///
/// @param ink      device coordinates; fewer than two different positions mean nothing.
/// @param document handed to the services in force; with the built-in host one of HostDocument.h.
/// @param result   `size` set by the caller; the rest is overwritten, and freed with
///                 TesseraHost_ReleaseInkResult. All zero after a failure.
/// @return 0; 0x80004003 for a null pointer (a null point array with a count above 0 included) or a service
///         that the host lacks, 0x80070057 for a size below that of this version, a negative count, numbers
///         that are not finite, times that descend, or an option out of range, 0x8007000E when memory runs
///         out, 0x80004005 when a service gives no sensible answer, else the code of the service that failed.
///         Every failure is reported once through HRerrEx. The document is then as it was before the call.
extern "C" TESSERA_API std::int32_t ConvertInkingStrokeToGeometry(const HostInkStroke* ink,
                                                                  HostDocument* document,
                                                                  const HostInkOptions* options,
                                                                  HostInkResult* result);
