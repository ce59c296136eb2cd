#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tessera/kernel/BCEV.h"
#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

using std::numbers::pi;

namespace {

RecordPtr Extract(KC_CURVE_struct_s* c, double from, double to) {
    const double limits[2] = {from, to};
    return RecordPtr(em0941(c, limits));
}

const BCURVE_DATA* Definition(const RecordPtr& c) {
    return static_cast<EVC_bcurve_s*>(c->data)->definition;
}

void ExpectClamped(const BCURVE_DATA* d) {
    EXPECT_EQ(d->periodic, 0);
    for (int i = 0; i < d->order; ++i) {
        EXPECT_EQ(d->knots[i], 0.0);
        EXPECT_EQ(d->knots[d->numPoles + i], 1.0);
    }
    for (int i = 1; i < d->numPoles + d->order; ++i)
        EXPECT_LE(d->knots[i - 1], d->knots[i]);
}

} // namespace

TEST(CurveExtraction, OpenAndPeriodicBCurves) {
    std::mt19937 rng(32);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int trial = 0; trial < 400; ++trial) {
        SCOPED_TRACE(trial);
        const int order = 2 + trial % 6, kind = trial / 6 % 4; // open in two of four cases
        BSplineSample s = kind < 3 ? RandomOpen(rng, order, order + trial % 11, trial % 2 == 0)
                                   : RandomPeriodic(rng, order, 1 + trial % 9, trial % 2 == 0);
        if (kind == 2) { // clamped knots on a closed curve: there the seam has a knot of its own
            s.periodic = 1;
            std::copy_n(s.poles.begin(), 3, s.poles.end() - 4);
        }
        const RecordPtr c = s.Record();
        double from = 0.9 * unit(rng), to = from + 0.01 + (0.99 - from) * unit(rng);
        if (kind >= 2) { // across the seam and turns away
            from += 0.05 + (trial % 5 - 2);
            to = from + 0.05 + 0.9 * unit(rng);
        }
        const RecordPtr piece = Extract(c.get(), from, to);
        ASSERT_TRUE(piece);
        ExpectClamped(Definition(piece));
        EXPECT_EQ(piece->closed, 0);
        EXPECT_LT(LargestGap(c.get(), from, to, piece.get(), 0, 1), 1e-11);
    }
}

// Uniform periodic curves pass the seam without a multiple knot there, and may go round more than once.
TEST(CurveExtraction, SeamOfPeriodicCurveIsAnOrdinaryKnot) {
    std::mt19937 rng(33);
    const RecordPtr c = RandomPeriodic(rng, 4, 6, true).Record();
    const RecordPtr piece = Extract(c.get(), 0.95, 1.05);
    const BCURVE_DATA* d = Definition(piece);
    for (int i = 5; i < d->numPoles; ++i)
        EXPECT_LT(d->knots[i - 1], d->knots[i]);
    const RecordPtr rounds = Extract(c.get(), 0.3, 3.7);
    EXPECT_LT(LargestGap(c.get(), 0.3, 3.7, rounds.get(), 0, 1), 1e-11);
}

TEST(CurveExtraction, RangeEndsSnapToKnots) {
    const RecordPtr c = records::Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}, {3, 2, 1}}); // one knot at 0.5
    EXPECT_EQ(Definition(Extract(c.get(), 0.0, 0.5 + 5e-13))->numPoles, 3);
    EXPECT_EQ(Definition(Extract(c.get(), 0.5 - 5e-13, 1.0))->numPoles, 3);
    EXPECT_EQ(Definition(Extract(c.get(), 0.0, 0.5 + 1e-9))->numPoles, 4);
    EXPECT_EQ(Definition(Extract(c.get(), 0.0, 1.0))->numPoles, 4);
}

TEST(CurveExtraction, OpenRangesAreClampedAndEmptyOnesRefused) {
    std::mt19937 rng(34);
    const RecordPtr c = RandomOpen(rng, 4, 8, true).Record();
    EXPECT_LT(LargestGap(c.get(), 0, 0.5, Extract(c.get(), -3, 0.5).get(), 0, 1), 1e-11);
    EXPECT_LT(LargestGap(c.get(), 0.5, 1, Extract(c.get(), 0.5, 9).get(), 0, 1), 1e-11);
    for (const auto& row : {std::array{0.5, 0.5}, std::array{0.6, 0.5}, std::array{1.0, 2.0},
                            std::array{-1.0, 0.0}, std::array{0.0, std::nan("")}})
        EXPECT_FALSE(Extract(c.get(), row[0], row[1])) << row[0] << " " << row[1];
}

TEST(CurveExtraction, LinesAndConics) {
    const RecordPtr line = records::Line(1, 2, 5, -3);
    EXPECT_LT(LargestGap(line.get(), 0.25, 0.75, Extract(line.get(), 0.25, 0.75).get(), 0, 1), 1e-15);
    const RecordPtr conics[] = {records::Arc(1, 2, 3), records::Ellipse(1, 2, 3, 1, 0.5),
                                records::Arc(1, 2, 3, 5, 1)};
    for (const RecordPtr& c : conics) {
        const RecordPtr piece = Extract(c.get(), 5, 7); // across the seam
        EXPECT_EQ(piece->start, 5.0);
        EXPECT_EQ(piece->span, 2.0);
        EXPECT_EQ(piece->closed, 0);
        EXPECT_LT(LargestGap(c.get(), 5, 7, piece.get(), 5, 7), 1e-15);
        EXPECT_EQ(Extract(c.get(), 1, 1 + 2 * pi)->closed, 1);
    }
}

TEST(CurveToBCurve, ConicsAreExactInAscendingLimits) {
    for (double sweep : {0.1, 1.0, pi / 2, 2.0, pi, 4.0, 2 * pi - 0.01, 2 * pi, -2.0}) {
        SCOPED_TRACE(sweep);
        const RecordPtr c = records::Ellipse(1, 2, 3, 0.5, 0.7, 0.4, 0.4 + sweep);
        const RecordPtr b(ev09p1(em0960(c.get())));
        ASSERT_TRUE(b);
        EXPECT_LE(Definition(b)->numPoles, 9);
        EXPECT_EQ(Definition(b)->polynomial, 0);
        for (int i = 0; i <= 200; ++i) {
            const std::vector<double> p = Evaluate(b.get(), i / 200.0);
            const double x = p[0] - 1, y = p[1] - 2, cosine = std::cos(0.7), sine = std::sin(0.7);
            const double u = (x * cosine + y * sine) / 3, v = (y * cosine - x * sine) / 0.5;
            EXPECT_NEAR(u * u + v * v, 1, 1e-14);
        }
        double limits[2];
        evcrvp(c.get(), limits);
        const auto gap = [&](double t, double angle) {
            const auto p = Evaluate(b.get(), t), q = Evaluate(c.get(), angle);
            return std::hypot(p[0] - q[0], p[1] - q[1]);
        };
        EXPECT_LT(gap(0, limits[0]), 1e-15);
        EXPECT_LT(gap(0.5, (limits[0] + limits[1]) / 2), 1e-14);
        EXPECT_LT(gap(1, limits[1]), 1e-14);
    }
}

TEST(CurveToBCurve, OtherForms) {
    const RecordPtr line(ev09p1(em0960(records::Line(1, 2, 3, 5).get())));
    EXPECT_EQ(Definition(line)->degree, 1);
    EXPECT_EQ(Evaluate(line.get(), 0.5)[1], 3.5);
    std::mt19937 rng(35);
    const RecordPtr c = RandomPeriodic(rng, 4, 5, true).Record();
    const RecordPtr copy(ev09p1(em0960(c.get())));
    EXPECT_EQ(LargestGap(c.get(), 0, 1, copy.get(), 0, 1), 0.0);
    const double p[3] = {1, 2, 3};
    EXPECT_EQ(em0960(RecordPtr(ev02p0(p)).get()), nullptr);
}
