#include "tessera/kernel/BoxCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

using std::numbers::pi;

namespace {

struct Box {
    int dimension = -1;
    double centre[3], half[3][3];
};

Box BoxOf(KC_CURVE_struct_s* c, double from, double to) {
    Box box;
    const double limits[2] = {from, to};
    EXPECT_EQ(BoxCurve(c, limits, &box.dimension, box.centre, box.half), 0);
    return box;
}

/// How far p lies outside the box, 0 inside.
double Outside(const Box& box, const std::vector<double>& p) {
    double rest[3], worst = 0.0;
    for (int i = 0; i < 3; ++i)
        rest[i] = p[i] - box.centre[i];
    for (int a = 0; a < box.dimension; ++a) {
        const double* h = box.half[a];
        const double length = std::hypot(h[0], h[1], h[2]);
        const double along = (rest[0] * h[0] + rest[1] * h[1] + rest[2] * h[2]) / length;
        worst = std::max(worst, std::fabs(along) - length);
        for (int i = 0; i < 3; ++i)
            rest[i] -= along * h[i] / length;
    }
    return std::max(worst, std::hypot(rest[0], rest[1], rest[2]));
}

void ExpectContains(KC_CURVE_struct_s* c, double from, double to) {
    const Box box = BoxOf(c, from, to);
    for (int i = 0; i <= 300; ++i)
        EXPECT_LT(Outside(box, Evaluate(c, from + (to - from) * i / 300)), 1e-8);
}

} // namespace

TEST(BoxCurve, ContainsEveryForm) {
    records::Random random(51);
    for (int kind = 0; kind < records::Random::kKinds; ++kind)
        for (int trial = 0; trial < 20; ++trial) {
            SCOPED_TRACE(kind);
            const RecordPtr c = random.Record(kind, 10, {3, 4});
            double limits[2];
            evcrvp(c.get(), limits);
            ExpectContains(c.get(), limits[0], limits[1]);
            ExpectContains(c.get(), 0.7 * limits[0] + 0.3 * limits[1], 0.2 * limits[0] + 0.8 * limits[1]);
        }
}

/// Even parameters and the knots, where a curve may have a kink.
std::vector<double> DenseParameters(KC_CURVE_struct_s* c, const double limits[2], int n) {
    std::vector<double> t;
    for (int i = 0; i <= n; ++i)
        t.push_back(limits[0] + (limits[1] - limits[0]) * i / n);
    if (c->form == kFormBCurve) {
        const BCURVE_DATA* d = static_cast<EVC_bcurve_s*>(c->data)->definition;
        const double low = d->knots[d->degree], high = d->knots[d->numPoles];
        for (int i = d->degree; i <= d->numPoles; ++i)
            t.push_back(std::clamp((d->knots[i] - low) / (high - low), limits[0], limits[1]));
    }
    return t;
}

// Independent bound: the extremes of a dense sampling, whose gap to the truth shrinks with its square.
TEST(BoxCurve, ExtentsAreTight) {
    records::Random random(52);
    for (int kind = 0; kind < records::Random::kKinds; ++kind)
        for (int trial = 0; trial < 6; ++trial) {
            SCOPED_TRACE(kind);
            const RecordPtr c = random.Record(kind, 1, {3, 4});
            double range[2], low[2], high[2];
            evcrvp(c.get(), range);
            const double limits[2] = {0.8 * range[0] + 0.2 * range[1], 0.1 * range[0] + 0.9 * range[1]};
            ASSERT_EQ(BoxCurveXY(c.get(), limits, low, high), 0);
            double sampledLow[2] = {1e9, 1e9}, sampledHigh[2] = {-1e9, -1e9};
            for (double t : DenseParameters(c.get(), limits, 20000)) {
                const std::vector<double> p = Evaluate(c.get(), t);
                for (int k = 0; k < 2; ++k) {
                    sampledLow[k] = std::min(sampledLow[k], p[k]);
                    sampledHigh[k] = std::max(sampledHigh[k], p[k]);
                }
            }
            for (int k = 0; k < 2; ++k) {
                EXPECT_GT(sampledLow[k], low[k] - 1e-12);
                EXPECT_LT(sampledHigh[k], high[k] + 1e-12);
                EXPECT_NEAR(low[k], sampledLow[k], 1e-6);
                EXPECT_NEAR(high[k], sampledHigh[k], 1e-6);
            }
        }
}

TEST(BoxCurve, Dimensions) {
    const double p[3] = {1, 2, 3};
    EXPECT_EQ(BoxOf(RecordPtr(ev02p0(p)).get(), 0, 0).dimension, 0);
    EXPECT_EQ(BoxOf(records::Line(0, 0, 3, 4).get(), 0, 1).dimension, 1);
    EXPECT_EQ(BoxOf(records::Line(1, 1, 1, 1).get(), 0, 1).dimension, 0);
    EXPECT_EQ(BoxOf(records::Line(1, 1, 1 + 1e-10, 1).get(), 0, 1).dimension, 0);
    EXPECT_EQ(BoxOf(records::Arc(0, 0, 1).get(), 0, 6).dimension, 2);
    EXPECT_EQ(BoxOf(records::Arc(0, 0, 1e-11).get(), 0, 6).dimension, 0);
    EXPECT_EQ(BoxOf(records::Ellipse(0, 0, 2, 0, 0).get(), 0, 6).dimension, 1);
    EXPECT_EQ(BoxOf(records::Bcurve(3, {{0, 0, 1}, {1, 1, 1}, {2, 0, 1}}).get(), 0, 1).dimension, 2);
    EXPECT_EQ(BoxOf(records::Bcurve(3, {{0, 0, 1}, {1, 1, 1}, {2, 2, 1}}).get(), 0, 1).dimension, 1);
    EXPECT_EQ(BoxOf(records::Bcurve(3, {{0, 0, 1}, {1, 1, 1}, {2, 0, 1}}).get(), 0.5, 0.5).dimension, 0);
    std::mt19937 rng(53);
    EXPECT_EQ(BoxOf(RandomOpen(rng, 4, 7, true).Record().get(), 0, 1).dimension, 3);
    KC_CURVE_struct_s odd{nullptr, 4, 0, 1, 0};
    Box box;
    EXPECT_EQ(BoxCurve(&odd, p, &box.dimension, box.centre, box.half), 1);
    EXPECT_EQ(BoxCurve(nullptr, p, &box.dimension, box.centre, box.half), 1);
}

TEST(BoxCurve, ShortArcsLieAlongTheirChord) {
    const Box box = BoxOf(records::Arc(0, 0, 2, 0.2, 0.2 + pi).get(), 0.2, 0.2 + pi);
    const double lengths[2] = {std::hypot(box.half[0][0], box.half[0][1]),
                               std::hypot(box.half[1][0], box.half[1][1])};
    EXPECT_NEAR(lengths[0] * lengths[1], 2 * 1, 1e-12); // diameter times sagitta, halved twice
    const Box round = BoxOf(records::Arc(0, 0, 2, 0, 2 * pi).get(), 0, 2 * pi);
    EXPECT_NEAR(round.half[0][0], 2, 1e-12);
    EXPECT_NEAR(round.half[1][1], 2, 1e-12);
}

// Weights of both signs, yet a positive denominator: the poles' hull would not do.
TEST(BoxCurve, NegativeWeights) {
    const RecordPtr c = records::Bcurve(4, {{0, 0, 1}, {1, 5, -0.2}, {2, -3, 1}, {3, 1, 1}});
    ExpectContains(c.get(), 0, 1);
    ExpectContains(c.get(), 0.1, 0.6);
}
