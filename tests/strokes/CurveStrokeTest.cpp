#include "tessera/strokes/Stroke.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

namespace Tessera::Geometry {
namespace {

using Testing::ThrownMessage;
using StrokePtr = std::unique_ptr<Stroke>;

TEST(CurveStroke, ByParameterSamplesEvenParameters) {
    const Arc arc(Point(2, 0), Point(-2, 0), Point(0, 0));
    const StrokePtr stroke(arc.CreateStroke(0.5, 2.5, 5, false));
    ASSERT_EQ(stroke->AskNumberOfPoints(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(stroke->GetPoint(i), arc.GetPointFromAngle(0.5 + 0.5 * i));
}

// Oracle: walk the curve in tiny steps and note where each share of the whole length is reached.
TEST(CurveStroke, ByLengthSpacesSamplesEvenly) {
    double knots[] = {0, 0, 0, 0, 0.3, 1, 1, 1, 1};
    double poles[][4] = {{0, 0, 0, 1}, {1, 8, 0, 1}, {5, -6, 0, 1}, {9, 9, 0, 1}, {20, 0, 0, 1}};
    const Spline spline(5, 4, 0, knots, poles);
    const Line line(Point(1, 1), Point(4, 5));
    const auto ellipse = Testing::MakeEllipse(Point(3, 4), 9.0, 1.0, 0.4, 0.0, 2 * std::numbers::pi);
    const auto hairpin = Testing::MakeSpline(4, {{0, 0}, {4, 0}, {4, 0}, {0, 0}}); // speed 0 half-way
    const struct {
        const Curve* curve;
        double t0, t1;
    } rows[] = {{&line, 0.2, 1.0},
                {ellipse.get(), 0.3, 6.0},
                {&spline, 0.0, 1.0},
                {&spline, 0.9, 0.1},
                {hairpin.get(), 0.0, 1.0}};
    constexpr int kSamples = 12, kSteps = 200000;
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.curve->GetType() << " from " << row.t0);
        std::vector<Point> walk;
        std::vector<double> reached = {0.0};
        for (int i = 0; i <= kSteps; ++i) {
            walk.push_back(row.curve->GetPointAtParameter(row.t0 + (row.t1 - row.t0) * i / kSteps, false));
            if (i > 0)
                reached.push_back(reached.back() + walk[i].Distance(walk[i - 1]));
        }
        const StrokePtr stroke(row.curve->CreateStroke(row.t0, row.t1, kSamples, true));
        ASSERT_EQ(stroke->AskNumberOfPoints(), kSamples);
        for (int i = 0; i < kSamples; ++i) {
            const double share = reached.back() * i / (kSamples - 1);
            const auto at = std::lower_bound(reached.begin(), reached.end() - 1, share) - reached.begin();
            EXPECT_NEAR(stroke->GetPoint(i).Distance(walk[at]), 0.0, 1e-3 * reached.back() / 10) << i;
        }
    }
}

TEST(CurveStroke, Errors) {
    const Line line(Point(0, 0), Point(1, 0));
    EXPECT_EQ(ThrownMessage([&] { (void)line.CreateStroke(0, 1, 1, true); }),
              "Curve::CreateStroke - at least two points are needed");
    EXPECT_EQ(ThrownMessage([&] { (void)line.CreateStroke(0, 2, 5, false); }),
              "Curve::GetPointAtParameter - given parameter is out of range");
    const StrokePtr standing(line.CreateStroke(0.5, 0.5, 3, true)); // no length
    EXPECT_EQ(standing->GetPoint(1), Point(0.5, 0));
}

} // namespace
} // namespace Tessera::Geometry
