#include "tessera/kernel/CurveInversion.h"

#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/Records.h"

namespace {

using namespace records;

// Least distance between two parameters: dense sampling, then golden sections around the best samples.
double SampledDistance(const RecordPtr& c, Xy p, double lo, double hi) {
    constexpr int kSamples = 4000;
    const auto at = [&](int i) { return lo + (hi - lo) * std::clamp(i, 0, kSamples) / kSamples; };
    const auto distanceAt = [&](double t) { return Distance(At(c, t), p); };
    std::vector<double> distance;
    for (int i = 0; i <= kSamples; ++i)
        distance.push_back(distanceAt(at(i)));
    double best = *std::min_element(distance.begin(), distance.end());
    for (int i = 0; i <= kSamples; ++i) {
        if ((i > 0 && distance[i] > distance[i - 1]) || (i < kSamples && distance[i] > distance[i + 1]))
            continue; // no valley
        double a = at(i - 1), b = at(i + 1);
        for (int k = 0; k < 80; ++k) {
            const double u = a + 0.382 * (b - a), v = b - 0.382 * (b - a);
            const bool isLeft = distanceAt(u) < distanceAt(v);
            (isLeft ? b : a) = isLeft ? v : u;
        }
        best = std::min(best, distanceAt(0.5 * (a + b)));
    }
    return best;
}

struct Found {
    int state = 0;
    double t = 0.0, distance = 0.0, foot[3] = {}, tangent[3] = {};
};

Found Invert(const RecordPtr& c, Xy p, bool bounded) {
    const double q[3] = {p.x, p.y, 0.0};
    Found found;
    if (bounded) {
        found.state = em015cBounded(c.get(), q, &found.t, found.foot, &found.distance);
    } else {
        found.state = em015c(c.get(), q, 0, &found.t, found.foot, found.tangent);
        found.distance = Distance({found.foot[0], found.foot[1]}, p);
    }
    return found;
}

// No sampled point is nearer, and the answer is a point of the curve; every form, three sizes.
TEST(CurveInversion, NoSampledPointIsNearer) {
    Random random(91);
    for (const double size : {1e-3, 1.0, 1e6})
        for (int trial = 0; trial < 330; ++trial) {
            const int kind = trial % Random::kKinds;
            SCOPED_TRACE(testing::Message() << "size " << size << " trial " << trial << " kind " << kind);
            const Xy at{size * random.In(-3, 3), size * random.In(-3, 3)};
            const RecordPtr c = random.Record(kind, size, at);
            const auto limits = LimitsOf(c);
            Xy p{at.x + size * random.In(-2, 2), at.y + size * random.In(-2, 2)};
            if (trial % 5 == 0) // on the curve
                p = At(c, ParameterAt(c, random.In(0, 1)));
            const Found bounded = Invert(c, p, true), carrier = Invert(c, p, false);
            ASSERT_NE(bounded.state, kInversionFailed);
            EXPECT_NEAR(bounded.distance, SampledDistance(c, p, limits[0], limits[1]), 2e-9 * size);
            EXPECT_NEAR(Distance(At(c, bounded.t), {bounded.foot[0], bounded.foot[1]}), 0.0, 1e-14 * size);
            EXPECT_TRUE(bounded.t >= limits[0] && bounded.t <= limits[1]);
            if (kind > 4) {
                EXPECT_EQ(carrier.t, bounded.t);
            } else if (kind > 0) { // its carrier is the whole turn
                EXPECT_NEAR(carrier.distance, SampledDistance(c, p, 0.0, 2.0 * kPi), 2e-9 * size);
            }
            EXPECT_LE(carrier.distance, bounded.distance * (1.0 + 1e-14));
        }
}

TEST(CurveInversion, NamedPlaces) {
    const RecordPtr cusp = Bcurve(4, {{0, 0, 1}, {2, 2, 1}, {0, 2, 1}, {2, 0, 1}}); // tip at t = 1/2
    const RecordPtr loop = Bcurve(4, {{0, 0, 1}, {4, 3, 1}, {-2, 3, 1}, {2, 0, 1}});
    const RecordPtr kink =
        Bcurve(3, {{0, 0, 1}, {1, 0, 1}, {2, 2, 1}, {3, 0, 1}, {4, 0, 1}}, {0, 0, 0, 1, 1, 2, 2, 2});
    const RecordPtr heap = Bcurve(4, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
    const RecordPtr thin = Ellipse(0, 0, 1000, 1, 0), part = Ellipse(0, 0, 4, 2, 0, 0.2, kPi - 0.5);
    const RecordPtr arc = Arc(1, 1, 2, 5.0, 7.0);
    const double inner = std::acos(500.0 * 1000 / (1e6 - 1)),
                 innerDistance = std::sqrt(1 - 250000.0 / (1e6 - 1));
    const double toPart = Distance({-9, -9}, {-4 * std::cos(0.5), 2 * std::sin(0.5)});
    const double toArc = Distance({1, 5}, At(arc, 7.0));
    const RecordPtr line = Line(1, 1, 4, 5), dot = Line(1, 1, 1, 1);
    const struct {
        const char* name;
        const RecordPtr& c;
        Xy p;
        bool bounded;
        int state;
        double t, distance;
    } rows[] = {
        {"tip of a cusp from above", cusp, {1, 3}, false, kInversionInside, 0.5, 1.5},
        {"axis of a loop", loop, {1, 5}, false, kInversionInside, 0.5, 5.0 - 2.25},
        {"kink from above", kink, {2, 9}, false, kInversionInside, 0.5, 7.0},
        {"all poles in one place", heap, {1, 3}, false, kInversionAtEnd, 0.0, 2.0},
        {"centre of a thin ellipse", thin, {0, 0}, false, kInversionAmbiguous, kPi / 2, 1.0},
        {"inside the evolute", thin, {500, 0}, false, kInversionAmbiguous, inner, innerDistance},
        {"beyond the long axis", thin, {1500, 0}, false, kInversionAtEnd, 0.0, 500.0},
        {"minor apex cut off below", part, {0, -1}, false, kInversionInside, -kPi / 2, 1.0},
        {"ends of a part compared", part, {-9, -9}, true, kInversionAtEnd, kPi - 0.5, toPart},
        {"lifted over the seam", arc, {4, 1}, false, kInversionInside, 2 * kPi, 1.0},
        {"outside the limits", arc, {-4, 1}, false, kInversionInside, kPi, 3.0},
        {"outside them, bounded", arc, {1, 5}, true, kInversionAtEnd, 7.0, toArc},
        {"beyond a line's end", line, {11, 6}, false, kInversionInside, 2.0, 5.0},
        {"beyond a line's end, bounded", line, {11, 6}, true, kInversionAtEnd, 1.0, std::hypot(7, 1)},
        {"line of no length", dot, {4, 5}, false, kInversionAtEnd, 0.0, 5.0},
        {"centre of an arc", arc, {1, 1}, true, kInversionAmbiguous, 5.0, 2.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Found found = Invert(row.c, row.p, row.bounded);
        EXPECT_EQ(found.state, row.state);
        EXPECT_NEAR(found.t, row.t, 1e-7);
        EXPECT_NEAR(found.distance, row.distance, 1e-12 * (1.0 + row.distance));
    }
    const Found onLine = Invert(line, {11, 6}, false);
    EXPECT_TRUE(onLine.tangent[0] == 3.0 && onLine.tangent[1] == 4.0) << "the derivative, not its direction";
}

TEST(CurveInversion, LongPolylineIsScannedWithoutMemory) {
    std::vector<std::array<double, 3>> vertices;
    vertices.reserve(1'000'000);
    for (int i = 0; i < 1'000'000; ++i)
        vertices.push_back({0.001 * i, std::sin(0.01 * i), 1.0});
    const RecordPtr c = Bcurve(2, vertices);
    SM_fail_nth(0);
    const Found found = Invert(c, {500.0, 10.0}, true);
    EXPECT_EQ(SM_ask_allocation_count(), 0);
    double best = 1e300;
    for (const auto& v : vertices)
        best = std::min(best, std::hypot(v[0] - 500.0, v[1] - 10.0));
    EXPECT_TRUE(found.distance <= best && found.distance > best - 1e-5);
}

TEST(CurveInversion, FailuresWriteNothing) {
    double t = 42.0;
    const double p[3] = {0, 0, 0}, nan[3] = {NAN, 0, 0};
    const RecordPtr point(ev02p0(p)), line = Line(0, 0, 1, 0);
    EXPECT_EQ(em015c(nullptr, p, 0, &t, nullptr, nullptr), kInversionFailed);
    EXPECT_EQ(em015c(point.get(), p, 0, &t, nullptr, nullptr), kInversionFailed);
    EXPECT_EQ(em015c(line.get(), nan, 0, &t, nullptr, nullptr), kInversionFailed);
    const RecordPtr spline = Random(3).Spline(4, 1.0, {0, 0});
    SM_fail_nth(1);
    EXPECT_EQ(em015cBounded(spline.get(), p, &t, nullptr, nullptr), kInversionFailed);
    SM_fail_nth(0);
    EXPECT_EQ(t, 42.0);
}

} // namespace
