#include "tessera/kernel/CurveInversion.h"

#include <gtest/gtest.h>

#include <limits>

#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/Records.h"

namespace {

using records::At;
using records::Distance;
using records::Xy;

constexpr double kPi = std::numbers::pi;

// Least distance between two parameters: dense sampling, then golden sections around the best samples.
double SampledDistance(KC_CURVE_struct_s* c, Xy p, double lo, double hi) {
    constexpr int kSamples = 4000;
    std::vector<double> distance;
    for (int i = 0; i <= kSamples; ++i)
        distance.push_back(Distance(At(c, lo + (hi - lo) * i / kSamples), p));
    double best = *std::min_element(distance.begin(), distance.end());
    for (int i = 0; i <= kSamples; ++i) {
        const bool valley =
            (i == 0 || distance[i] <= distance[i - 1]) && (i == kSamples || distance[i] <= distance[i + 1]);
        if (!valley)
            continue;
        double a = lo + (hi - lo) * std::max(0, i - 1) / kSamples,
               b = lo + (hi - lo) * std::min(kSamples, i + 1) / kSamples;
        for (int k = 0; k < 80; ++k) {
            const double u = a + 0.382 * (b - a), v = b - 0.382 * (b - a);
            (Distance(At(c, u), p) < Distance(At(c, v), p) ? b : a) =
                Distance(At(c, u), p) < Distance(At(c, v), p) ? v : u;
        }
        best = std::min(best, Distance(At(c, 0.5 * (a + b)), p));
    }
    return best;
}

struct Found {
    int state = 0;
    double t = 0.0;
    Xy foot, tangent;
    double distance = 0.0;
};

Found Invert(KC_CURVE_struct_s* c, Xy p) {
    const double q[3] = {p.x, p.y, 0.0};
    Found found;
    double foot[3] = {}, tangent[3] = {};
    found.state = em015c(c, q, 0, &found.t, foot, tangent);
    found.foot = {foot[0], foot[1]};
    found.tangent = {tangent[0], tangent[1]};
    found.distance = Distance(found.foot, p);
    return found;
}

Found InvertBounded(KC_CURVE_struct_s* c, Xy p) {
    const double q[3] = {p.x, p.y, 0.0};
    Found found;
    double foot[3] = {};
    found.state = em015cBounded(c, q, &found.t, foot, &found.distance);
    found.foot = {foot[0], foot[1]};
    return found;
}

// No sampled point is nearer, and the answer is a point of the curve; every form, three sizes.
TEST(CurveInversion, NoSampledPointIsNearer) {
    records::Random random(91);
    for (const double size : {1e-3, 1.0, 1e6}) {
        for (int trial = 0; trial < 330; ++trial) {
            const int kind = trial % records::Random::kKinds;
            SCOPED_TRACE(testing::Message() << "size " << size << " trial " << trial << " kind " << kind);
            const Xy at{size * random.In(-3, 3), size * random.In(-3, 3)};
            const RecordPtr c = random.Record(kind, size, at);
            Xy p{at.x + size * random.In(-2, 2), at.y + size * random.In(-2, 2)};
            double limits[2];
            evcrvp(c.get(), limits);
            if (trial % 5 == 0) // on the curve
                p = At(c.get(), limits[0] + (limits[1] - limits[0]) * random.In(0, 1));
            const Found bounded = InvertBounded(c.get(), p);
            ASSERT_NE(bounded.state, kInversionFailed);
            EXPECT_NEAR(bounded.distance, SampledDistance(c.get(), p, limits[0], limits[1]), 2e-9 * size);
            EXPECT_NEAR(Distance(At(c.get(), bounded.t), bounded.foot), 0.0, 1e-14 * size);
            EXPECT_GE(bounded.t, limits[0]);
            EXPECT_LE(bounded.t, limits[1]);
            const Found carrier = Invert(c.get(), p);
            const bool wholeTurn = kind >= 1 && kind <= 4;
            if (wholeTurn) {
                EXPECT_NEAR(carrier.distance, SampledDistance(c.get(), p, 0.0, 2.0 * kPi), 2e-9 * size);
            } else if (kind > 4) {
                EXPECT_EQ(carrier.t, bounded.t);
            }
            EXPECT_LE(carrier.distance, bounded.distance * (1.0 + 1e-14));
        }
    }
}

TEST(CurveInversion, NamedPlaces) {
    const RecordPtr cusp = records::Bcurve(4, {{0, 0, 1}, {2, 2, 1}, {0, 2, 1}, {2, 0, 1}}); // tip at t = 1/2
    const RecordPtr loop = records::Bcurve(4, {{0, 0, 1}, {4, 3, 1}, {-2, 3, 1}, {2, 0, 1}});
    const RecordPtr kink =
        records::Bcurve(3, {{0, 0, 1}, {1, 0, 1}, {2, 2, 1}, {3, 0, 1}, {4, 0, 1}}, {0, 0, 0, 1, 1, 2, 2, 2});
    const RecordPtr heap = records::Bcurve(4, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
    const RecordPtr thin = records::Ellipse(0, 0, 1000, 1, 0);
    const RecordPtr part = records::Ellipse(0, 0, 4, 2, 0, 0.2, kPi - 0.5);
    const RecordPtr arc = records::Arc(1, 1, 2, 5.0, 7.0);
    const double inner = std::acos(500.0 * 1000 / (1e6 - 1)),
                 innerDistance = std::sqrt(1 - 250000.0 / (1e6 - 1));
    const double toPart = Distance({-9, -9}, {-4 * std::cos(0.5), 2 * std::sin(0.5)});
    const double toArc = Distance({1, 5}, At(arc.get(), 7.0));
    const RecordPtr line = records::Line(1, 1, 4, 5), dot = records::Line(1, 1, 1, 1);
    struct Row {
        const char* name;
        KC_CURVE_struct_s* c;
        Xy p;
        bool bounded;
        int state;
        double t, distance;
    };
    const Row rows[] = {
        {"tip of a cusp from above", cusp.get(), {1, 3}, false, kInversionInside, 0.5, 1.5},
        {"axis of a loop", loop.get(), {1, 5}, false, kInversionInside, 0.5, 5.0 - 2.25},
        {"kink from above", kink.get(), {2, 9}, false, kInversionInside, 0.5, 7.0},
        {"all poles in one place", heap.get(), {1, 3}, false, kInversionAtEnd, 0.0, 2.0},
        {"centre of a thin ellipse", thin.get(), {0, 0}, false, kInversionAmbiguous, kPi / 2, 1.0},
        {"inside the evolute", thin.get(), {500, 0}, false, kInversionAmbiguous, inner, innerDistance},
        {"beyond the long axis", thin.get(), {1500, 0}, false, kInversionAtEnd, 0.0, 500.0},
        {"minor apex cut off below", part.get(), {0, -1}, false, kInversionInside, -kPi / 2, 1.0},
        {"ends of a part compared", part.get(), {-9, -9}, true, kInversionAtEnd, kPi - 0.5, toPart},
        {"lifted over the seam", arc.get(), {4, 1}, false, kInversionInside, 2 * kPi, 1.0},
        {"outside the limits", arc.get(), {-4, 1}, false, kInversionInside, kPi, 3.0},
        {"outside them, bounded", arc.get(), {1, 5}, true, kInversionAtEnd, 7.0, toArc},
        {"beyond a line's end", line.get(), {11, 6}, false, kInversionInside, 2.0, 5.0},
        {"beyond a line's end, bounded", line.get(), {11, 6}, true, kInversionAtEnd, 1.0, std::hypot(7, 1)},
        {"line of no length", dot.get(), {4, 5}, false, kInversionAtEnd, 0.0, 5.0},
        {"centre of an arc", arc.get(), {1, 1}, true, kInversionAmbiguous, 5.0, 2.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Found found = row.bounded ? InvertBounded(row.c, row.p) : Invert(row.c, row.p);
        EXPECT_EQ(found.state, row.state);
        EXPECT_NEAR(found.t, row.t, 1e-7);
        EXPECT_NEAR(found.distance, row.distance, 1e-12 * (1.0 + row.distance));
    }
}

TEST(CurveInversion, TangentsAreDerivatives) {
    const RecordPtr line = records::Line(1, 1, 4, 5);
    const Xy tangent = Invert(line.get(), {11, 6}).tangent;
    EXPECT_TRUE(tangent.x == 3.0 && tangent.y == 4.0);
}

// Two minima that straddle the bisector: the answer changes sides exactly there, never sticks in the near
// one.
TEST(CurveInversion, NeverStaysInALocalTrap) {
    std::vector<std::array<double, 3>> comb;
    comb.reserve(60);
    for (int i = 0; i < 60; ++i)
        comb.push_back({0.5 * i, i % 2 == 0 ? 0.0 : 20.0, 1.0});
    const RecordPtr c = records::Bcurve(4, comb);
    records::Random random(5);
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        const Xy p{random.In(-2, 32), random.In(-5, 25)};
        EXPECT_NEAR(Invert(c.get(), p).distance, SampledDistance(c.get(), p, 0, 1), 1e-8);
    }
}

TEST(CurveInversion, LongPolylineIsScannedWithoutMemory) {
    std::vector<std::array<double, 3>> vertices;
    vertices.reserve(1'000'000);
    for (int i = 0; i < 1'000'000; ++i)
        vertices.push_back({0.001 * i, std::sin(0.01 * i), 1.0});
    const RecordPtr c = records::Bcurve(2, vertices);
    SM_fail_nth(0);
    const Found found = InvertBounded(c.get(), {500.0, 10.0});
    EXPECT_EQ(SM_ask_allocation_count(), 0);
    double best = 1e300;
    for (const auto& v : vertices)
        best = std::min(best, std::hypot(v[0] - 500.0, v[1] - 10.0));
    EXPECT_NEAR(found.distance, best, 1e-5);
    EXPECT_LE(found.distance, best);
}

TEST(CurveInversion, FailuresWriteNothing) {
    double t = 42.0;
    const double p[3] = {0, 0, 0}, nan[3] = {std::numeric_limits<double>::quiet_NaN(), 0, 0};
    const RecordPtr point(ev02p0(p)), line = records::Line(0, 0, 1, 0);
    EXPECT_EQ(em015c(nullptr, p, 0, &t, nullptr, nullptr), kInversionFailed);
    EXPECT_EQ(em015c(point.get(), p, 0, &t, nullptr, nullptr), kInversionFailed);
    EXPECT_EQ(em015c(line.get(), nan, 0, &t, nullptr, nullptr), kInversionFailed);
    const RecordPtr spline = records::Random(3).Spline(4, 1.0, {0, 0});
    SM_fail_nth(1);
    EXPECT_EQ(em015cBounded(spline.get(), p, &t, nullptr, nullptr), kInversionFailed);
    SM_fail_nth(0);
    EXPECT_EQ(t, 42.0);
}

} // namespace
