#include "tessera/geometry/Ellipse.h"

#include "tests/support/Records.h"
#include "tests/support/SampleCurves.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

struct Data {
    double centre[2], radii[2], rotation, start, end;
    bool closed;
};

Data DataOf(const Ellipse& ellipse) {
    Data d{};
    d.closed = ellipse.AskEllipseData(d.centre, d.radii, &d.rotation, &d.start, &d.end);
    return d;
}

Ellipse Make(double r1, double r2, double rotation, double start, double end) {
    double centre[2] = {1, -2}, radii[2] = {r1, r2};
    return Ellipse(centre, radii, rotation, start, end);
}

} // namespace

TEST(Ellipse, RotationIsReadBackToTheLastDigits) {
    const std::pair<double, double> rows[] = {
        {0, 0},          {1e-9, 1e-9},           {kPi / 2, kPi / 2},      {kPi - 1e-9, kPi - 1e-9},
        {kPi, kPi},      {1.5 * kPi, 1.5 * kPi}, {-0.25, 2 * kPi - 0.25}, {-1e-17, 0},
        {7, 7 - 2 * kPi}};
    for (const auto& [given, expected] : rows)
        for (const double r1 : {2.0, -2.0}) {
            const Data d = DataOf(Make(r1, 1, given, 0.5, 2));
            EXPECT_NEAR(d.rotation, expected, 2e-15) << given;
            EXPECT_TRUE(d.rotation >= 0.0 && d.rotation < 2 * kPi);
            EXPECT_TRUE(d.radii[0] == r1 && !d.closed);
        }
}

TEST(Ellipse, Accessors) {
    const Ellipse ellipse = Make(4, 2, 0.6, 0.2, 3.0);
    EXPECT_TRUE(ellipse.AskCenter() == Point(1, -2) && ellipse.GetType() == 6);
    EXPECT_EQ(ellipse.AskDirection(), Vector(std::cos(0.6), std::sin(0.6)));
    EXPECT_EQ(Make(1e-10, 2, 0.6, 0, 1).AskDirection(), Vector());
    double r1 = 0, r2 = 0;
    ellipse.AskRadii(r1, r2);
    EXPECT_TRUE(r1 == 4 && r2 == 2);
    const Point major = ellipse.GetPointAtParameter(0.0, true),
                minor = ellipse.GetPointAtParameter(kPi / 2, true);
    EXPECT_TRUE(ellipse.GetMajorRadiusPoint(1.0) == major && ellipse.GetMinorRadiusPoint(1.0) == minor);
    EXPECT_TRUE(ellipse.GetRotateHandleLocation() == major && ellipse.WithinBounds(Point(1e9, 1e9)));
}

TEST(Ellipse, ExtensionContinuesBackToTheStart) {
    const Ellipse whole = Make(3, 1, 2.0, 0, 2 * kPi);
    EXPECT_EQ(whole.CreateExtensionCurve(), nullptr);
    for (const double end : {1.2, 3.0, 6.0, 7.2}) {
        const Ellipse ellipse = Make(3, 1, 2.0, 1.0, end);
        const std::unique_ptr<Ellipse> rest(ellipse.CreateExtensionCurve());
        ASSERT_NE(rest, nullptr);
        EXPECT_NEAR(rest->GetStart().Distance(ellipse.GetEnd()), 0.0, 1e-8);
        EXPECT_NEAR(rest->GetEnd().Distance(ellipse.GetStart()), 0.0, 1e-8);
        EXPECT_NEAR(rest->Length() + ellipse.Length(), whole.Length(), 1e-7) << end;
    }
}

TEST(Ellipse, RadiiAndClosing) {
    Ellipse ellipse = Make(3, 1, 2.0, 0.5, 2);
    ellipse.SetRadii(5, 0.25);
    const Ellipse fresh = Make(5, 0.25, 2.0, 0.5, 2);
    EXPECT_TRUE(ellipse.IsSameCurve(&fresh));
    ellipse.SetRadii(0, 0.5); // the direction survives a vanished axis
    ellipse.SetRadii(2, 0.5);
    EXPECT_NEAR(DataOf(ellipse).rotation, 2.0, 1e-14);
    ellipse.SetClosed();
    EXPECT_TRUE(ellipse.IsClosed() && DataOf(ellipse).end - DataOf(ellipse).start == 2 * kPi);
}

TEST(Ellipse, MirroredRecordsComeIntoTheCounterClockwiseFrame) {
    RecordPtr record = records::Ellipse(1, -2, 3, 1, 0.4, 0.5, 2);
    double* minor = static_cast<EVC_conic_s*>(record->data)->minorAxis;
    minor[0] *= -1.0;
    minor[1] *= -1.0;
    const Ellipse mirrored(record.release()), expected = Make(3, 1, 0.4, 2 * kPi - 2, 2 * kPi - 0.5);
    EXPECT_TRUE(mirrored.IsSameCurve(&expected));
}

TEST(Ellipse, SampledPointsKeepTheTolerance) {
    for (const double tol : {0.3, 0.01, 1e-4}) {
        const Ellipse ellipse = Make(9, 2, 0.4, 0.3, 5.0);
        std::vector<Point> points;
        ellipse.CreatePolylinePoints(ellipse.AskNumberOfSampledPoints(tol), points);
        for (const Point& p : DensePoints(ellipse, 500))
            EXPECT_LE(PolylineDistance(points, p), tol * (1 + 1e-9));
    }
    EXPECT_EQ(Make(9, 2, 0.4, 0, 2 * kPi).AskNumberOfSampledPoints(5), 5);
    EXPECT_EQ(Make(9, 2, 0.4, 0, 1).AskNumberOfSampledPoints(5), 4);
}
