#include "tests/support/BSplineSample.h"

using namespace records;

namespace {

void ExpectClamped(const BCURVE_DATA& d) {
    EXPECT_EQ(d.periodic, 0);
    for (int i = 0; i < d.order; ++i)
        EXPECT_TRUE(d.knots[i] == 0.0 && d.knots[d.numPoles + i] == 1.0);
    EXPECT_TRUE(std::is_sorted(d.knots, d.knots + d.numPoles + d.order));
}

} // namespace

TEST(CurveExtraction, OpenAndPeriodicBCurves) {
    std::mt19937 rng(32);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int trial = 0; trial < 400; ++trial) {
        SCOPED_TRACE(trial);
        const int order = 2 + trial % 6, kind = trial / 6 % 4; // open in two of four cases
        const RecordPtr c = kind < 3 ? RandomOpen(rng, order, order + trial % 11, trial % 2 == 0)
                                     : RandomPeriodic(rng, order, 1 + trial % 9, trial % 2 == 0);
        if (kind == 2) { // clamped knots on a closed curve: there the seam has a knot of its own
            BCURVE_DATA& d = DefinitionOf(c);
            d.periodic = c->closed = 1;
            std::copy_n(d.poles[0], 3, d.poles[d.numPoles - 1]);
        }
        double from = 0.9 * unit(rng), to = from + 0.01 + (0.99 - from) * unit(rng);
        if (kind >= 2) { // across the seam and turns away
            from += 0.05 + (trial % 5 - 2);
            to = from + 0.05 + 0.9 * unit(rng);
        }
        const RecordPtr piece = Part(c, from, to);
        ASSERT_TRUE(piece);
        ExpectClamped(DefinitionOf(piece));
        EXPECT_EQ(piece->closed, 0);
        EXPECT_LT(LargestGap(c, from, to, piece, 0, 1), 1e-11);
    }
}

// Uniform periodic curves pass the seam without a multiple knot there, and may go round more than once.
TEST(CurveExtraction, SeamOfPeriodicCurveIsAnOrdinaryKnot) {
    std::mt19937 rng(33);
    const RecordPtr c = RandomPeriodic(rng, 4, 6, true), piece = Part(c, 0.95, 1.05);
    const BCURVE_DATA& d = DefinitionOf(piece);
    EXPECT_EQ(std::adjacent_find(d.knots + 4, d.knots + d.numPoles), d.knots + d.numPoles);
    EXPECT_LT(LargestGap(c, 0.3, 3.7, Part(c, 0.3, 3.7), 0, 1), 1e-11);
}

TEST(CurveExtraction, RangeEndsSnapToKnots) {
    const RecordPtr c = Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}, {3, 2, 1}}); // one knot at 0.5
    struct Row {
        double from, to;
        int poles;
    };
    for (const Row& row : {Row{0, 0.5 + 5e-13, 3}, {0.5 - 5e-13, 1, 3}, {0, 0.5 + 1e-9, 4}, {0, 1, 4}})
        EXPECT_EQ(DefinitionOf(Part(c, row.from, row.to)).numPoles, row.poles) << row.from << " " << row.to;
}

TEST(CurveExtraction, OpenRangesAreClampedAndEmptyOnesRefused) {
    std::mt19937 rng(34);
    const RecordPtr c = RandomOpen(rng, 4, 8, true), arc = Arc(0, 0, 1);
    EXPECT_LT(LargestGap(c, 0, 0.5, Part(c, -3, 0.5), 0, 1), 1e-11);
    EXPECT_LT(LargestGap(c, 0.5, 1, Part(c, 0.5, 9), 0, 1), 1e-11);
    EXPECT_FALSE(Part(c, 1, 2) || Part(c, -1, 0));
    for (const RecordPtr* any : {&c, &arc})
        for (const double to : {0.5, 0.4, std::nan("")})
            EXPECT_FALSE(Part(*any, 0.5, to)) << to;
}

TEST(CurveExtraction, EqualWeightsOfAPieceMakeItPolynomial) {
    const RecordPtr c = Bcurve(2, {{0, 0, 1}, {1, 2, 1}, {2, 0, 3}}), piece = Part(c, 0, 0.5);
    EXPECT_TRUE(DefinitionOf(piece).polynomial == 1 && DefinitionOf(Part(c, 0.4, 0.6)).polynomial == 0);
}

TEST(CurveToBCurve, ConicsAreExactInAscendingLimits) {
    for (const double sweep : {0.1, 1.0, kPi / 2, 2.0, kPi, 4.0, 2 * kPi - 0.01, 2 * kPi, -2.0}) {
        SCOPED_TRACE(sweep);
        const RecordPtr c = Ellipse(1, 2, 3, 0.5, 0.7, 0.4, 0.4 + sweep), b = AsBcurve(c);
        ASSERT_TRUE(b);
        EXPECT_TRUE(DefinitionOf(b).numPoles <= 9 && DefinitionOf(b).polynomial == 0);
        for (int i = 0; i <= 200; ++i) {
            const Xy p = At(b, i / 200.0);
            const double x = p.x - 1, y = p.y - 2, cosine = std::cos(0.7), sine = std::sin(0.7);
            const double u = (x * cosine + y * sine) / 3, v = (y * cosine - x * sine) / 0.5;
            EXPECT_NEAR(u * u + v * v, 1, 1e-14);
        }
        for (const double t : {0.0, 0.5, 1.0})
            EXPECT_LT(Distance(At(b, t), At(c, ParameterAt(c, t))), 1e-14);
    }
}

TEST(CurveToBCurve, OtherForms) {
    std::mt19937 rng(35);
    const RecordPtr line = AsBcurve(Line(1, 2, 3, 5)), c = RandomPeriodic(rng, 4, 5, true);
    EXPECT_TRUE(DefinitionOf(line).degree == 1 && At(line, 0.5).y == 3.5);
    EXPECT_EQ(LargestGap(c, 0, 1, AsBcurve(c), 0, 1), 0.0);
    const double p[3] = {1, 2, 3};
    EXPECT_EQ(em0960(RecordPtr(ev02p0(p)).get()), nullptr);
}
