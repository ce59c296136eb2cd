// A sheet with every kind of dimension in eight directions and on both sides of what it measures. Each
// drawing is held against the rules of draughting; the sheet itself is written as dimension_sheet.svg, to be
// looked at (docs/dimensions.svg is one of them).
#include "examples/DimensionSheet.h"

#include "tessera/dimension/internal/TempDecoration.h"
#include "tests/support/DimensionProbes.h"

using namespace Tessera::Examples;
using namespace Tessera::Testing;

namespace {

// --- Rules of draughting

/// Square to v, to the right or, for upright ones, upwards.
Vector SideOf(const Vector& v) {
    const Vector n(-v.y, v.x);
    return n.x < -1e-9 || (n.x < 1e-9 && n.y < 0.0) ? -1.0 * n : n;
}

void ExpectReadable(const DimensionBase& dim, const TempDecoration& drawn) {
    const Vector reading(drawn.textBox[0], drawn.textBox[1]);
    const Vector up(drawn.textBox[1], drawn.textBox[2]);
    EXPECT_TRUE(reading.x > 1e-9 || (reading.x > -1e-9 && reading.y > 0.0)) << "upside down";
    EXPECT_NEAR(reading.Cross(up), reading.Length() * kFont, 1e-9) << "mirrored, or of another height";
    for (const auto* curve : drawn.curves) {
        double range[2];
        curve->AskRange(range);
        for (int i = 0; i <= 200; ++i)
            EXPECT_FALSE(dim.AnnotationSelected(
                curve->GetPointAtParameter(range[0] + (range[1] - range[0]) * i / 200.0, true), -1e-6))
                << "a line through the text";
    }
}

/// The arrowhead points along `direction`, symmetric about it.
void ExpectArrowhead(const Point* head, const Vector& direction) {
    const Vector half = 0.1875 * kFont * Vector(-direction.y, direction.x);
    const Point base = head[0].AffineCombine(-0.75 * kFont, direction);
    const double turn = Vector(head[0], head[1]).Cross(direction) > 0.0 ? -1.0 : 1.0;
    ExpectNear(head[1], base.AffineCombine(turn, half), 1e-9, "base");
    ExpectNear(head[2], base.AffineCombine(-turn, half), 1e-9, "base");
}

/// An extension line, or a measured curve itself, meets the dimension line in the tip, square to it.
bool IsTipHeld(const Exhibit& e, const TempDecoration& drawn, const Point& tip, const Vector& along) {
    const auto holds = [&](const Curve& curve) {
        const Vector v(curve.GetStart(), curve.GetEnd());
        return curve.GetType() == Tessera::Geometry::CurveType_Line && std::fabs(v.Dot(along)) < 1e-9 &&
               curve.DistanceBounded(tip) < 1e-9;
    };
    return std::any_of(drawn.curves.begin(), drawn.curves.end(), [&](const Curve* c) { return holds(*c); }) ||
           std::any_of(e.curves.begin(), e.curves.end(), [&](const auto& c) { return holds(*c); });
}

/// One end of a dimension line or arc: `inward` is its direction at the tip, `pieceEnd` where it must end,
/// seen from the tip.
void ExpectEnd(const Exhibit& e, const TempDecoration& drawn, int end, const Vector& inward,
               const Point& pieceEnd, bool isOutside) {
    const Point& tip = drawn.arrowPoints[3 * end];
    ExpectArrowhead(&drawn.arrowPoints[3 * end], isOutside ? inward : -1.0 * inward);
    EXPECT_TRUE(IsTipHeld(e, drawn, tip, inward));
    EXPECT_TRUE(std::any_of(
        drawn.curves.begin(), drawn.curves.end(),
        [&](const Curve* c) {
            return (c->GetStart().Distance(tip) < 1e-9 && c->GetEnd().Distance(pieceEnd) < 1e-9) ||
                   (c->GetEnd().Distance(tip) < 1e-9 && c->GetStart().Distance(pieceEnd) < 1e-9);
        }))
        << "the dimension line from end " << end;
}

void ExpectStraight(const Exhibit& e, const TempDecoration& drawn, double side, bool isOutside) {
    const Point& first = drawn.arrowPoints[0];
    const Point& second = drawn.arrowPoints[3];
    const Point text = (drawn.textBox[0] + drawn.textBox[2]) / 2.0;
    const double gap = drawn.textBox[0].Distance(drawn.textBox[1]) / 2.0 + kFont / 2.0;
    EXPECT_NEAR(first.Distance(second), e.value, 1e-9);
    ExpectNear(text, (first + second) / 2.0, 1e-9, "centred in the break");
    EXPECT_GT(side * Vector(e.middle, text).Dot(SideOf(Vector(first, second))), 0.0)
        << "side of the geometry";
    for (const int end : {0, 1}) {
        Vector inward(end == 0 ? first : second, end == 0 ? second : first);
        inward.Normalize();
        const Point& tip = drawn.arrowPoints[3 * end];
        ExpectEnd(e, drawn, end, inward,
                  isOutside ? tip.AffineCombine(-1.5 * kFont, inward) : text.AffineCombine(-gap, inward),
                  isOutside);
    }
}

void ExpectAngular(const Exhibit& e, const TempDecoration& drawn, double side, bool isOutside) {
    const double radius = drawn.arrowPoints[0].Distance(e.middle);
    const double start = e.angleDeg + (side < 0.0 ? 180.0 : 0.0);
    const double gap = (drawn.textBox[0].Distance(drawn.textBox[1]) + kFont) / 2.0 / radius / kRad;
    ExpectNear((drawn.textBox[0] + drawn.textBox[2]) / 2.0, e.middle + Polar(radius, start + kSector / 2.0));
    for (const int end : {0, 1}) {
        const double at = start + end * kSector;
        const double inward = end == 0 ? 1.0 : -1.0;
        ExpectNear(drawn.arrowPoints[3 * end], e.middle + Polar(radius, at), 1e-9, "tip");
        const double pieceEnd =
            isOutside ? at - inward * 1.5 * kFont / radius / kRad : start + kSector / 2.0 - inward * gap;
        ExpectEnd(e, drawn, end, Vector(Point(), Polar(1.0, at + 90.0 * inward)),
                  e.middle + Polar(radius, pieceEnd), isOutside);
    }
}

void ExpectRadial(const Exhibit& e, const TempDecoration& drawn, double side) {
    const Vector outward(Point(), Polar(1.0, e.angleDeg));
    const Point foot = e.At(24.0);
    ExpectNear(drawn.arrowPoints[0], foot, 1e-9, "tip");
    ExpectArrowhead(drawn.arrowPoints.data(), -side * outward);
    ASSERT_EQ(drawn.curves.size(), 1U);
    const Point leaderEnd = drawn.curves[0]->GetStart();
    ExpectNear(drawn.curves[0]->GetEnd(), foot, 1e-9, "leader");
    EXPECT_NEAR(Vector(foot, leaderEnd).Dot(side * outward), foot.Distance(leaderEnd), 1e-9);
    double least = 1e9;
    for (const Point& corner : drawn.textBox) {
        EXPECT_GT(Vector(foot, corner).Dot(side * outward), 0.0) << "text on the other side of the arc";
        least = std::min(least, std::fabs(Vector(foot, corner).Cross(outward)));
    }
    EXPECT_NEAR(least, kFont / 4.0, 1e-9) << "clear of the leader";
}

} // namespace

TEST(DimensionSheet, EveryDrawingFollowsTheRules) {
    for (int row = 0; row < static_cast<int>(std::size(kRows)); ++row) {
        for (int eighth = 0; eighth < 8; ++eighth) {
            const Exhibit e = MakeExhibit(row, eighth, Point(7, -3));
            for (std::size_t i = 0; i < e.dims.size(); ++i) {
                const double side = i == 0 ? 1.0 : -1.0;
                SCOPED_TRACE(std::string(kRows[row].name) + " at " + std::to_string(45 * eighth) +
                             (side > 0.0 ? "" : ", other side"));
                const DimensionBase& dim = *e.dims[i];
                const TempDecoration drawn(dim);
                EXPECT_NEAR(dim.GetDisplayedValue(), e.value, 1e-9);
                ExpectReadable(dim, drawn);
                ASSERT_EQ(drawn.arrowPoints.size(), dim.GetType() == Radial ? 3U : 6U);
                if (dim.GetType() == Radial)
                    ExpectRadial(e, drawn, side);
                else if (dim.GetType() == Angular)
                    ExpectAngular(e, drawn, side, kRows[row].isOutside);
                else
                    ExpectStraight(e, drawn, side, kRows[row].isOutside);
            }
        }
    }
}
