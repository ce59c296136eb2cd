// Records that cross the border to the host. Plain data with a fixed layout.
#pragma once

#include <cstddef>
#include <cstdint>

/// Host position; 1e30 in both coordinates marks one that is not set.
struct tagGPosition2d {
    double x, y;
};

/// Host vector.
struct tagGVector2d {
    double x, y;
};

/// One vertex of an input poly-line, in the caller's units.
struct InputPoint {
    double x, y;
};

/// Coordinate of a position that is not set.
inline constexpr double kUnsetCoordinate = 1e30;

/// Size of the block behind a handle, bytes.
inline constexpr std::size_t kHostBlockSize = 120;

/// Host geometry type codes; 0 marks a handle that nothing has filled.
enum HostGeometryCode : std::uint8_t {
    kHostUnfilled = 0,
    kHostLine = 103,
    kHostCircleOrEllipse = 115,
    kHostArc = 116,
    kHostBSpline = 127
};

/// A host curve: a block of kHostBlockSize bytes from SM_alloc and what the block describes.
struct HostGeometryHandle {
    void* data = nullptr;
    std::uint8_t typeCode = kHostUnfilled;
    std::uint8_t reserved[7] = {};
};
static_assert(sizeof(HostGeometryHandle) == 16 || sizeof(void*) < 8); // 12 in a browser

/// Block of a circle or ellipse, written by the library itself.
struct HostEllipseBlock {
    double centreX, centreY;
    double axisX, axisY;
    double ratio;
    std::uint8_t flag; ///< always 0
};
static_assert(sizeof(HostEllipseBlock) <= kHostBlockSize);
