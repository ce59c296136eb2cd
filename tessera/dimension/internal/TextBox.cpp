#include "tessera/dimension/internal/TextBox.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/dimension/internal/AngleRange.h"

namespace Tessera::Dimension {

using Geometry::Point;
using Geometry::Vector;

namespace {

constexpr double kSameDirectionSq = 1e-20; // squared distance of equal unit vectors
constexpr double kComponentTol = 1e-10;    // component of a unit vector that counts as zero

} // namespace

double ReadingAngle(const Vector& unit) {
    if (unit.DistanceSq(Vector(1.0, 0.0)) <= kSameDirectionSq)
        return 0.0;
    if (unit.x == 0.0 && unit.y == 0.0)
        return 90.0;
    // The angle whose cosine is x, taken from both components: near the axis the cosine alone cannot tell
    // small tilts apart.
    const double angleDeg = std::atan2(std::fabs(unit.y), unit.x) * kDegPerRad;
    return unit.y < -kComponentTol ? 360.0 - angleDeg : angleDeg;
}

Vector ReadingDirection(double textAngleDeg) {
    const double a = textAngleDeg * std::numbers::pi / 180.0;
    return {std::cos(a), std::sin(a)};
}

Vector UpDirection(double textAngleDeg) {
    const Vector reading = ReadingDirection(textAngleDeg);
    return {-reading.y, reading.x};
}

void AppendTextBox(const Point& anchor, double halfWidth, double height, double textAngleDeg,
                   std::vector<Point>& corners) {
    const Vector reading = ReadingDirection(textAngleDeg);
    const Vector up(-reading.y, reading.x);
    const Point left = anchor.AffineCombine(-halfWidth, reading);
    const Point right = anchor.AffineCombine(halfWidth, reading);
    corners.insert(corners.end(),
                   {left, right, right.AffineCombine(height, up), left.AffineCombine(height, up)});
}

bool IsInsideConvex(const Point& p, const std::vector<Point>& corners) {
    bool isLeft = false;
    bool isRight = false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point& a = corners[i];
        const double turn = Vector(a, corners[(i + 1) % corners.size()]).Cross(Vector(a, p));
        isLeft = isLeft || turn > 0.0;
        isRight = isRight || turn < 0.0;
    }
    return corners.size() >= 3 && !(isLeft && isRight);
}

double DistanceToSegment(const Point& p, const Point& a, const Point& b) {
    const Vector ab(a, b);
    const double lengthSq = ab.LengthSq();
    const double u = lengthSq > 0.0 ? std::clamp(ab.Dot(Vector(a, p)) / lengthSq, 0.0, 1.0) : 0.0;
    return p.Distance(a.AffineCombine(u, ab));
}

void NearestPart::OfferText(const std::vector<Point>& corners) {
    if (IsInsideConvex(p_, corners))
        Offer(0.0, 0);
    for (std::size_t i = 0; i < corners.size(); ++i)
        OfferSegment(corners[i], corners[(i + 1) % corners.size()], 0);
}

} // namespace Tessera::Dimension
