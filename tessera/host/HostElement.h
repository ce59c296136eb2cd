// Elements and constraints of a host's 2D document, as they cross the border. Plain data with a fixed layout;
// model units.
#pragma once

#include <cstdint>

#include "tessera/host/HostGeometry.h"

/// The host's document: the library passes the pointer on and never looks behind it. Of the reference host
/// see HostDocument.h.
struct HostDocument;

/// 0 marks none.
using HostElementId = std::int64_t;
using HostConstraintId = std::int64_t;

enum HostElementKind : std::int32_t {
    kHostElementNone = 0,
    kHostElementLine = 1,         ///< points: start, end
    kHostElementArc = 2,          ///< points: start, end, one between them
    kHostElementCircle = 8,       ///< points: centre; radius
    kHostElementEllipse = 16,     ///< points: centre, end of the first axis, end of the second
    kHostElementEllipticArc = 64, ///< as the ellipse, then start, end; runs from the first axis to the second
    kHostElementBSpline = 128     ///< degree, periodic, poles, knots, weights
};

/// Geometry of one element. Arrays are borrowed: of the library for the call, of the host until its next
/// SetTarget or Clear.
struct HostElement2d {
    HostElementId id;
    std::int32_t kind;     ///< HostElementKind; tells which of the following count
    std::int32_t degree;   ///< at least 1
    std::int32_t periodic; ///< 1: closed and periodic; the poles then hold the wrapped ones as well
    std::int32_t poleCount;
    double radius;
    tagGPosition2d points[5];
    const tagGPosition2d* poles; ///< poleCount
    const double* knots;   ///< poleCount + degree + 1, not descending; the curve lies over knots[degree]
                           ///< to knots[poleCount]
    const double* weights; ///< poleCount; null when all are 1
};

/// Kinds of constraints, with their members in order.
enum HostConstraintKind : std::int32_t {
    kHostConstraintCoincident = 0,    ///< two points
    kHostConstraintHorizontal = 1,    ///< a line
    kHostConstraintVertical = 2,      ///< a line
    kHostConstraintParallel = 3,      ///< two lines
    kHostConstraintPerpendicular = 4, ///< two lines
    kHostConstraintCollinear = 5,     ///< two lines
    kHostConstraintTangent = 6,       ///< two elements, or ends of them where they are joined
    kHostConstraintConcentric = 7,    ///< two centres
    kHostConstraintEqualLength = 8,   ///< two lines
    kHostConstraintEqualRadius = 9,   ///< two arcs or circles
    kHostConstraintPointOnCurve = 10, ///< a point, then the element (its infinite line, its full circle)
    kHostConstraintMidPoint = 11,     ///< a point, then the middle of a line
    kHostConstraintSymmetric = 12     ///< two points, then the axis line
};

enum HostPointKind : std::int32_t {
    kHostPointNone = 0, ///< the element itself
    kHostPointStart = 1,
    kHostPointEnd = 2,
    kHostPointMid = 3,
    kHostPointCentre = 4
};

/// An element, or a point of it.
struct HostConstraintMember {
    HostElementId element;
    std::int32_t point; ///< HostPointKind
    std::int32_t reserved;
};

struct HostConstraint2d {
    HostConstraintId id;
    std::int32_t kind;        ///< HostConstraintKind
    std::int32_t memberCount; ///< 1 to 3
    HostConstraintMember members[3];
    /// Tangent without named ends. Line and circle: +1 when the centre lies left of the line, -1 right. Two
    /// circles: +1 when each is outside the other, -1 when the second lies inside the first. Else 0.
    std::int32_t side;
    std::int32_t reserved;
    double confidence; ///< 1 exact as drawn, towards 0 the farther the ink was from it
};
static_assert(sizeof(HostConstraintMember) == 16 && sizeof(HostConstraint2d) == 80);
