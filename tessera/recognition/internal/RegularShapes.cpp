#include "tessera/recognition/internal/RegularShapes.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "tessera/recognition/internal/AxisSnap.h"

namespace Tessera::Geometry {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kRightAngleSlack = 30.0 * kDegree; // 60 to 120 degrees
constexpr double kSkewSlack = 15.0 * kDegree;       // of a parallelogram: people mean more
constexpr double kAngleSlack = 10.0 * kDegree;
constexpr double kSideSlack = 0.1;
constexpr std::size_t kMostSides = 12;
constexpr double kLevel = 1e-9; // sizes: what rounding leaves of a side along an axis

using Corners = std::vector<Point>;

Point Side(const Corners& c, std::size_t i) {
    return c[(i + 1) % c.size()] - c[i % c.size()];
}

double TurnAt(const Corners& c, std::size_t i) {
    return SignedAngle(Side(c, i + c.size() - 1), Side(c, i));
}

bool AreTurnsNear(const Corners& c, double turn, double slack) {
    for (std::size_t i = 0; i < c.size(); ++i)
        if (std::fabs(TurnAt(c, i) - turn) > slack)
            return false;
    return true;
}

bool AreSidesEqual(const Corners& c) {
    double mean = 0.0;
    for (std::size_t i = 0; i < c.size(); ++i)
        mean += Side(c, i).Length() / static_cast<double>(c.size());
    for (std::size_t i = 0; i < c.size(); ++i)
        if (std::fabs(Side(c, i).Length() - mean) > kSideSlack * mean)
            return false;
    return true;
}

Point CentreOf(const Corners& c) {
    Point sum;
    for (const Point& p : c)
        sum += p;
    return sum / static_cast<double>(c.size());
}

double FarthestMove(const Corners& a, const Corners& b) {
    double farthest = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        farthest = std::max(farthest, a[i].Distance(b[i]));
    return farthest;
}

// Direction of the sides modulo a quarter turn: circular mean of four times their angles, by length.
double DirectionOfSides(const Corners& c) {
    std::complex<double> sum;
    for (std::size_t i = 0; i < c.size(); ++i) {
        const Point s = Side(c, i);
        sum += std::polar(s.Length(), 4.0 * std::atan2(s.y, s.x));
    }
    return std::arg(sum) / 4.0;
}

Corners Turned(const Corners& c, const Point& centre, double angle) {
    const double cs = std::cos(angle);
    const double sn = std::sin(angle);
    Corners out;
    for (const Point& p : c) {
        const Point d = p - centre;
        out.push_back(centre + Point(cs * d.x - sn * d.y, sn * d.x + cs * d.y));
    }
    return out;
}

// In the frame of its direction each side stands at the mean of its two corners.
Corners AsRectangle(const Corners& c) {
    const double direction = DirectionOfSides(c);
    const Point centre = CentreOf(c);
    Corners r = Turned(c, centre, -direction);
    for (std::size_t i = 0; i < 4; ++i) {
        Point& a = r[i];
        Point& b = r[(i + 1) % 4];
        const Point s = b - a;
        if (std::fabs(s.x) > std::fabs(s.y))
            a.y = b.y = 0.5 * (a.y + b.y);
        else
            a.x = b.x = 0.5 * (a.x + b.x);
    }
    return Turned(r, centre, direction);
}

// The regular polygon of least squared moves of the corners.
Corners AsRegular(const Corners& c, double turn) {
    const Point centre = CentreOf(c);
    std::complex<double> mean;
    for (std::size_t i = 0; i < c.size(); ++i) {
        const Point d = c[i] - centre;
        mean += std::complex<double>(d.x, d.y) * std::polar(1.0, -turn * static_cast<double>(i));
    }
    mean /= static_cast<double>(c.size());
    Corners out;
    for (std::size_t i = 0; i < c.size(); ++i) {
        const std::complex<double> z = mean * std::polar(1.0, turn * static_cast<double>(i));
        out.push_back(centre + Point(z.real(), z.imag()));
    }
    return out;
}

Corners FromDiagonals(const Point& centre, const Point& d0, const Point& d1) {
    return {centre - d0, centre - d1, centre + d0, centre + d1};
}

Corners AsParallelogram(const Corners& c) {
    return FromDiagonals(CentreOf(c), 0.5 * (c[2] - c[0]), 0.5 * (c[3] - c[1]));
}

// Diagonals at right angles, each turned as its length weighs.
Corners AsRhombus(const Corners& c) {
    const Point d0 = 0.5 * (c[2] - c[0]);
    const Point d1 = 0.5 * (c[3] - c[1]);
    const double sense = d0.Cross(d1) < 0.0 ? -1.0 : 1.0;
    const Point turned(sense * d1.y, -sense * d1.x); // d1 as it would lie along d0
    const Point sum = d0.Length() * d0 + turned.Length() * turned;
    const Point u = sum / sum.Length();
    const Point v(-sense * u.y, sense * u.x);
    return FromDiagonals(CentreOf(c), d0.Dot(u) * u, d1.Dot(v) * v);
}

bool AreOppositeSidesParallel(const Corners& c) {
    for (std::size_t i = 0; i < 2; ++i) {
        const Point a = Side(c, i);
        const Point b = -1.0 * Side(c, i + 2);
        if (std::fabs(SignedAngle(a, b)) > kAngleSlack)
            return false;
    }
    return true;
}

InkShape MakeRegularQuadrilateral(Corners& c, double sense) {
    const double quarter = sense * 0.5 * std::numbers::pi;
    const bool equal = AreSidesEqual(c);
    if (equal && AreTurnsNear(c, quarter, kAngleSlack)) {
        c = AsRegular(c, quarter);
        return InkShape::Square;
    }
    const bool parallel = AreOppositeSidesParallel(c);
    const bool isRectangle = AreTurnsNear(c, quarter, parallel ? kSkewSlack : kRightAngleSlack);
    const bool isRhombus = equal && parallel;
    const Corners rectangle = AsRectangle(c);
    const Corners rhombus = AsRhombus(c);
    if (isRhombus && (!isRectangle || FarthestMove(c, rhombus) < FarthestMove(c, rectangle))) {
        c = rhombus;
        return InkShape::Rhombus;
    }
    if (isRectangle) {
        c = rectangle;
        if (!AreSidesEqual(c))
            return InkShape::Rectangle;
        c = AsRegular(c, quarter);
        return InkShape::Square;
    }
    if (parallel) {
        c = AsParallelogram(c);
        return InkShape::Parallelogram;
    }
    return InkShape::Quadrilateral;
}

// How much a shape must be turned for its axes to lie along those of the plane, in [-pi/4, pi/4].
double TurnToAxes(InkShape shape, const Corners& corners) {
    const auto toAxis = [](const Point& d) { return -OffAxis(std::atan2(d.y, d.x)); };
    double best = toAxis(Side(corners, 0));
    const auto consider = [&](const Point& d) {
        if (std::fabs(toAxis(d)) < std::fabs(best))
            best = toAxis(d);
    };
    for (std::size_t i = 1; i < corners.size(); ++i)
        consider(Side(corners, i));
    if (shape == InkShape::Rhombus || shape == InkShape::Square) {
        consider(corners[2] - corners[0]);
        consider(corners[3] - corners[1]);
    }
    return best;
}

// Sides that lie along an axis get equal coordinates to the last digit.
void LevelSides(Corners& corners) {
    for (std::size_t i = 0; i < corners.size(); ++i) {
        Point& a = corners[i];
        Point& b = corners[(i + 1) % corners.size()];
        if (std::fabs(a.x - b.x) < kLevel)
            b.x = a.x;
        if (std::fabs(a.y - b.y) < kLevel)
            b.y = a.y;
    }
    for (std::size_t i = 0; i < corners.size(); ++i) { // the last side closes onto the first corner
        Point& a = corners[i];
        const Point& b = corners[(i + 1) % corners.size()];
        if (std::fabs(a.x - b.x) < kLevel)
            a.x = b.x;
        if (std::fabs(a.y - b.y) < kLevel)
            a.y = b.y;
    }
}

} // namespace

InkShape MakeRegular(std::vector<Point>& corners) {
    const std::size_t n = corners.size();
    double total = 0.0;
    for (std::size_t i = 0; i < n; ++i)
        total += TurnAt(corners, i);
    const double sense = total < 0.0 ? -1.0 : 1.0;
    const bool isSimple = std::fabs(std::fabs(total) - 2.0 * std::numbers::pi) < kDegree;
    if (isSimple && n == 4)
        return MakeRegularQuadrilateral(corners, sense);
    const double turn = sense * 2.0 * std::numbers::pi / static_cast<double>(n);
    if (isSimple && n <= kMostSides && AreSidesEqual(corners) && AreTurnsNear(corners, turn, kAngleSlack)) {
        corners = AsRegular(corners, turn);
        return InkShape::RegularPolygon;
    }
    return n == 3 ? InkShape::Triangle : n == 4 ? InkShape::Quadrilateral : InkShape::Polygon;
}

void AlignToAxes(InkShape shape, double withinRad, std::vector<Point>& corners) {
    const double turn = TurnToAxes(shape, corners);
    if (std::fabs(turn) > withinRad)
        return;
    corners = Turned(corners, CentreOf(corners), turn);
    LevelSides(corners);
}

} // namespace Tessera::Geometry
