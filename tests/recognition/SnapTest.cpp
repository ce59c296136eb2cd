#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/SnapPoint.h"
#include "tessera/recognition/SnapSearch.h"
#include "tests/support/Test.h"
#include "tests/support/ThrownMessage.h"

namespace {

using namespace Tessera::Geometry;
using Tessera::Testing::ThrownMessage;

TEST(SnapPoints, KnowTheKeyPointsOfACurve) {
    Line line(Point(0, 0), Point(10, 4));
    Arc arc(Point(5, 5), 2.0);
    double centre[2] = {1, 2}, radii[2] = {4, 3};
    Ellipse ellipse(centre, radii, 0.0, 0.0, 1.0);
    EXPECT_TRUE(SnapPoint(&line, SnapPointType_Start) == Point(0, 0));
    EXPECT_TRUE(SnapPoint(&line, SnapPointType_End) == Point(10, 4));
    EXPECT_TRUE(SnapPoint(&line, SnapPointType_Mid) == Point(5, 2));
    EXPECT_TRUE(SnapPoint(&arc, SnapPointType_Center) == Point(5, 5));
    EXPECT_TRUE(SnapPoint(&ellipse, SnapPointType_Center) == Point(1, 2));
    const auto message = [](Curve* curve, int type) {
        return ThrownMessage([&] { SnapPoint(curve, static_cast<SnapPointType_e>(type)); });
    };
    EXPECT_EQ(message(nullptr, 1), "Input curve is NULL");
    EXPECT_EQ(message(&line, 4), "Input curve has no center");
    EXPECT_EQ(message(&line, 5), "Input snap type is not supported");
    EXPECT_EQ(message(&line, 0), "Input snap type is not supported");
    Point at(3, 3);
    for (int type = -1; type <= 9; ++type) {
        const SnapPoint placed(&line, static_cast<SnapPointType_e>(type), at);
        EXPECT_EQ(placed.AskSnapType(), type >= 1 && type <= 5 ? type : 0);
        EXPECT_TRUE(placed == at);
    }
}

TEST(SnapSearch, NearestFirstAndEndsBeforeMidPointsBeforeCentres) {
    Line far(Point(0, 8), Point(100, 8));
    Arc circle(Point(0, 0), 50.0);
    Line through(Point(-20, 0), Point(20, 0)); // its mid point is the circle's centre
    Line from(Point(0, 0), Point(0, -60));
    Curve* curves[] = {&far, nullptr, &circle, &through, &from};
    SketchRecognizerPreferences preferences;
    std::vector<SnapCandidate> found = FindSnapPoints(Point(0, 1), curves, preferences, SnapUse::Create);
    ASSERT_EQ(found.size(), 4u);
    EXPECT_EQ(found[0].point.AskParent(), &from);
    EXPECT_EQ(found[1].point.AskSnapType(), SnapPointType_Mid);
    EXPECT_EQ(found[2].point.AskSnapType(), SnapPointType_Center);
    EXPECT_NEAR(found[3].distance, 7, 1e-12);

    const auto count = [&](SnapUse use) {
        return FindSnapPoints(Point(0, 1), curves, preferences, use).size();
    };
    EXPECT_EQ(count(SnapUse::Edit), 3u) << "6.25 when editing";
    preferences.SetSnapCandidateCount(2);
    EXPECT_EQ(count(SnapUse::Create), 2u);
    preferences.SetSnapCandidateCount(5);
    preferences.SetZoomFactor(2);
    EXPECT_EQ(count(SnapUse::Create), 3u) << "10 becomes 5";
    preferences.SetSnapping(false);
    EXPECT_EQ(count(SnapUse::Create), 0u);
}

TEST(SnapSearch, TheSnapDistanceItselfIsWithin) {
    Line line(Point(10, 0), Point(90, 0));
    Curve* curves[] = {&line};
    const SketchRecognizerPreferences preferences;
    EXPECT_EQ(FindSnapPoints(Point(0, 0), curves, preferences, SnapUse::Create).size(), 1u);
    EXPECT_TRUE(FindSnapPoints(Point(-1e-9, 0), curves, preferences, SnapUse::Create).empty());
}

TEST(SnapSearch, DirectionsTurnTheFreeEndOnly) {
    const SketchRecognizerPreferences preferences;
    const Vector neighbours[] = {Vector(-3, -3)};
    const auto at = [](double degrees) {
        const double a = degrees * 3.141592653589793 / 180;
        return Point(3 + 20 * std::cos(a), 4 + 20 * std::sin(a));
    };
    const std::pair<double, double> drawnAndSnapped[] = {
        {4, 0}, {-4.9, 0}, {94, 90}, {184, 180}, {42, 45}, {221, 225}, {20, -1}, {50.1, -1}}; // -1: none
    for (const auto& [drawn, expected] : drawnAndSnapped) {
        SCOPED_TRACE(drawn);
        const auto snapped =
            FindSnapDirection(Point(3, 4), at(drawn), neighbours, preferences, SnapUse::Create);
        ASSERT_EQ(snapped.has_value(), expected >= 0);
        if (snapped) {
            EXPECT_LT(snapped->freeEnd.Distance(at(expected)), 1e-9);
            EXPECT_NEAR(snapped->angleDeg, std::fabs(drawn - expected), 1e-9);
        }
    }
    EXPECT_FALSE(FindSnapDirection(Point(1, 1), Point(1, 1), {}, preferences, SnapUse::Edit));
}

} // namespace
