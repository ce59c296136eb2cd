// EllipseEvidence - the ellipse of least distances through a path, and what the ink does beside it.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// What might explain the distance of a point from the ellipse: another size; harmonics of the point's
/// parameter (a shift along either axis, another oblongness, another rotation; the third are a hand's own);
/// and a drift that grows evenly along the stroke.
enum EllipseTerm : std::size_t {
    kSizeTerm,
    kCosTerm,
    kSinTerm,
    kCos2Term,
    kSin2Term,
    kDriftTerm,
    kCos3Term,
    kSin3Term,
    kEllipseTerms
};
using EllipseTerms = std::array<double, kEllipseTerms>;

struct EllipseEvidence {
    Point centre;
    double a = 0.0; ///< not below b
    double b = 0.0;
    double angle = 0.0;              ///< of the axis a
    std::vector<double> distance;    ///< of each point, signed, to first order
    std::vector<EllipseTerms> terms; ///< of each point
    double winding = 0.0;            ///< turns about the centre, counter-clockwise positive
    double back = 0.0;               ///< turns that the pen ran the other way, unsigned
};

/// Nothing for ink that no ellipse describes.
std::optional<EllipseEvidence> FindEllipse(const InkPath& path);

/// The same of a given ellipse, whether it is the best or not.
EllipseEvidence EvidenceBeside(const InkPath& path, const Point& centre, double a, double b, double angle);

/// Corners of the ink where the ellipse bends evenly, but for those so near the ends that they are the pen
/// touching down or leaving.
double PriceOfCorners(const PricedPath& ink, const EllipseEvidence& ellipse);

} // namespace Tessera::Geometry
