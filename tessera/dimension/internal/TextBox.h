// TextBox - the oriented rectangle that the text of a dimension fills, and distances to drawn parts.
//
// Directions  tau = (cos a, sin a) is the reading direction of text turned by a, up = (-sin a, cos a) the
//             direction from the feet of the letters to their heads. Angles in degrees.
#pragma once

#include <limits>
#include <vector>

#include "tessera/geometry/Point.h"
#include "tessera/geometry/Vector.h"

namespace Tessera::Dimension {

/// Angle of a unit vector, degrees in [0, 360); 90 for the zero vector.
double ReadingAngle(const Geometry::Vector& unit);
Geometry::Vector ReadingDirection(double textAngleDeg);
Geometry::Vector UpDirection(double textAngleDeg);

/// Appends the corners of text whose lower edge is centred on the anchor: lower left, lower right, upper
/// right, upper left in the reading direction.
void AppendTextBox(const Geometry::Point& anchor, double halfWidth, double height, double textAngleDeg,
                   std::vector<Geometry::Point>& corners);

/// Inside or on the border of a convex polygon, either way round.
bool IsInsideConvex(const Geometry::Point& p, const std::vector<Geometry::Point>& corners);

double DistanceToSegment(const Geometry::Point& p, const Geometry::Point& a, const Geometry::Point& b);

/// Finds which part of a dimension is nearest to a point: offer the parts in order of preference, of equally
/// near ones the first stays.
class NearestPart {
public:
    explicit NearestPart(const Geometry::Point& p) : p_(p) {}

    /// Index 0 stands for the text; its distance is 0 inside the box, else that to the edges.
    void OfferText(const std::vector<Geometry::Point>& corners);
    void OfferSegment(const Geometry::Point& a, const Geometry::Point& b, int part) {
        Offer(DistanceToSegment(p_, a, b), part);
    }
    void Offer(double distance, int part) {
        if (distance < distance_) {
            distance_ = distance;
            part_ = part;
        }
    }

    double GetDistance() const { return distance_; }
    int GetPart() const { return part_; } ///< -1 when nothing was offered

private:
    Geometry::Point p_;
    double distance_ = std::numeric_limits<double>::max();
    int part_ = -1;
};

} // namespace Tessera::Dimension
