// A sheet with every kind of dimension in eight directions and on both sides of what it measures. Each
// drawing is held against the rules of draughting; the sheet itself is written as dimension_sheet.svg, to be
// looked at (docs/dimensions.svg is one of them).
#include "examples/DimensionSheet.h"

#include "tessera/dimension/internal/TempDecoration.h"
#include "tests/support/DimensionProbes.h"

using namespace Tessera::Examples;
using namespace Tessera::Testing;

namespace {

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

/// Arrowheads are slender and symmetric, and the dimension line ends in the tip of each, along it.
void ExpectArrowheads(const TempDecoration& drawn) {
    for (std::size_t i = 0; i < drawn.arrowPoints.size(); i += 3) {
        const Point* head = &drawn.arrowPoints[i];
        Vector along(head[0], (head[1] + head[2]) / 2.0);
        const Vector base(head[1], head[2]);
        EXPECT_NEAR(along.Length(), 0.75 * kFont, 1e-9);
        EXPECT_NEAR(base.Length(), 0.375 * kFont, 1e-9);
        EXPECT_NEAR(along.Dot(base), 0.0, 1e-9);
        along.Normalize();
        EXPECT_TRUE(std::any_of(drawn.curves.begin(), drawn.curves.end(),
                                [&](const Curve* curve) {
                                    double range[2];
                                    curve->AskRange(range);
                                    const bool isStart = curve->GetStart().Distance(head[0]) < 1e-9;
                                    Point at;
                                    Vector slope;
                                    curve->EvaluateAtParameter(range[isStart ? 0 : 1], at, slope);
                                    return at.Distance(head[0]) < 1e-9 &&
                                           (isStart ? 1 : -1) * slope.Dot(along) > 0.999 * slope.Length();
                                }))
            << "arrowhead " << i / 3;
    }
}

} // namespace

TEST(DimensionSheet, EveryDrawingFollowsTheRules) {
    for (int row = 0; row < static_cast<int>(std::size(kRows)); ++row) {
        for (int eighth = 0; eighth < 8; ++eighth) {
            const Exhibit e = MakeExhibit(row, eighth, Point(7, -3));
            Vector toText[2];
            for (std::size_t i = 0; i < e.dims.size(); ++i) {
                SCOPED_TRACE(std::string(kRows[row].name) + " at " + std::to_string(45 * eighth) +
                             (i == 0 ? "" : ", other side"));
                const DimensionBase& dim = *e.dims[i];
                const TempDecoration drawn(dim);
                EXPECT_NEAR(dim.GetDisplayedValue(), e.value, 1e-9);
                ExpectReadable(dim, drawn);
                ExpectArrowheads(drawn);
                ASSERT_EQ(drawn.arrowPoints.size(), dim.GetType() == Radial ? 3U : 6U);
                toText[i] = Vector(e.middle, TextMiddle(dim));
                if (dim.GetType() == Radial)
                    continue;
                const Point* heads = drawn.arrowPoints.data();
                const Vector across(heads[0], heads[3]);
                EXPECT_EQ(Vector(heads[0], heads[1]).Dot(across) < 0.0, kRows[row].isOutside);
                if (dim.GetType() != Angular) {
                    EXPECT_NEAR(across.Length(), e.value, 1e-9);
                }
                EXPECT_TRUE(i == 0 || toText[0].Dot(toText[1]) < 0.0) << "on either side";
            }
        }
    }
}
