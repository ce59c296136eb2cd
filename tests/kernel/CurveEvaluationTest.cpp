#include <numbers>

#include <gtest/gtest.h>

#include "tessera/kernel/BCEV.h"
#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

namespace {

void ExpectPosition(BSplineSample& s, KC_CURVE_struct_s* c, double t, double oracleT) {
    const std::vector<double> p = Evaluate(c, t);
    const std::vector<long double> q = DeBoor(s, oracleT);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(p[i], static_cast<double>(q[i]), 1e-12 * std::max(1.0, std::fabs(p[i]))) << "t " << t;
}

} // namespace

TEST(CurveEvaluation, OpenCurvesFollowDeBoor) {
    std::mt19937 rng(11);
    for (int order : {1, 2, 3, 4, 5, 6, 7, 22}) // the last beyond what the stack has room for
        for (int trial = 0; trial < 20; ++trial) {
            SCOPED_TRACE(order * 100 + trial);
            BSplineSample s = RandomOpen(rng, order, order + trial % 9, trial % 2 == 0);
            const RecordPtr c = s.Record();
            for (int i = 0; i <= 64; ++i)
                ExpectPosition(s, c.get(), i / 64.0, i / 64.0);
        }
}

TEST(CurveEvaluation, PeriodicCurvesAcceptAnyParameter) {
    std::mt19937 rng(13);
    for (int order = 2; order <= 7; ++order) {
        SCOPED_TRACE(order);
        BSplineSample s = RandomPeriodic(rng, order, 3 + order, order % 2 == 0);
        const RecordPtr c = s.Record();
        for (int i = 0; i < 32; ++i)
            for (double turn : {-2.0, 0.0, 1.0, 5.0})
                ExpectPosition(s, c.get(), i / 32.0 + turn, i / 32.0);
        ExpectPosition(s, c.get(), 1.0, 0.0);
    }
}

// The first derivative against a five-point difference of the long double oracle, each further one against
// differences of the one before it; all inside one span.
TEST(CurveEvaluation, DerivativesMatchDifferences) {
    std::mt19937 rng(14);
    for (int order = 2; order <= 7; ++order)
        for (bool rational : {false, true}) {
            SCOPED_TRACE(order);
            BSplineSample s = RandomOpen(rng, order, order + 3, rational);
            const RecordPtr c = s.Record();
            const double from = (s.knots[order - 1] - 2) / 3, to = (s.knots[order] - 2) / 3;
            const double t = 0.4 * from + 0.6 * to, h = 1e-3 * (to - from);
            const int last = order + 2; // beyond the degree, where only rational curves go on
            const std::vector<double> d = Evaluate(c.get(), t, last);
            for (int k = 0; k < 3; ++k) {
                long double sum = 0;
                for (int j : {-2, -1, 1, 2})
                    sum += (j * j == 1 ? 8.0L : -1.0L) * (j > 0 ? 1 : -1) *
                           DeBoor(s, t + static_cast<long double>(j) * h)[k];
                EXPECT_NEAR(d[3 + k], static_cast<double>(sum / (12.0L * h)),
                            1e-8 * (1 + std::fabs(d[3 + k])));
            }
            const std::vector<double> before = Evaluate(c.get(), t - h, last),
                                      after = Evaluate(c.get(), t + h, last);
            for (int k = 6; k < 3 * (last + 1); ++k)
                EXPECT_NEAR(d[k], (after[k - 3] - before[k - 3]) / (2 * h), 1e-3 * (1 + std::fabs(d[k])))
                    << k;
        }
}

// At a kink the side above the knot counts, at the end of the curve the one below.
TEST(CurveEvaluation, DerivativesAtKnotsAreRightHanded) {
    const RecordPtr c = records::Bcurve(2, {{0, 0, 1}, {1, 0, 1}, {1, 3, 1}});
    EXPECT_EQ(Evaluate(c.get(), 0.5, 1)[3], 0.0);
    EXPECT_EQ(Evaluate(c.get(), 0.5, 1)[4], 6.0);
    EXPECT_EQ(Evaluate(c.get(), 1.0, 1)[4], 6.0);
    EXPECT_EQ(Evaluate(c.get(), 0.25, 1)[3], 2.0);
}

TEST(CurveEvaluation, OpenCurvesExtrapolateTheEndSpans) {
    const RecordPtr c = records::Bcurve(3, {{0, 0, 1}, {0.5, 0, 1}, {1, 1, 1}}); // (t, t^2)
    for (double t : {-0.5, 1.5, 3.0}) {
        const std::vector<double> p = Evaluate(c.get(), t, 1);
        EXPECT_NEAR(p[0], t, 1e-13);
        EXPECT_NEAR(p[1], t * t, 1e-13);
        EXPECT_NEAR(p[4], 2 * t, 1e-13);
    }
}

TEST(CurveEvaluation, ConicsTurnWithEachDerivative) {
    const RecordPtr c = records::Ellipse(1, 2, 3, 2, 0.7, 0, 6);
    const double h = 1e-6;
    const std::vector<double> d = Evaluate(c.get(), 1.1, 5);
    const std::vector<double> before = Evaluate(c.get(), 1.1 - h, 4), after = Evaluate(c.get(), 1.1 + h, 4);
    for (int k = 3; k < 18; ++k)
        EXPECT_NEAR(d[k], (after[k - 3] - before[k - 3]) / (2 * h), 1e-8) << k;
    const double x = d[0] - 1, y = d[1] - 2, along = x * std::cos(0.7) + y * std::sin(0.7);
    EXPECT_NEAR(along, 3 * std::cos(1.1), 1e-14);
}

TEST(CurveEvaluation, DegenerateCurvesStayFinite) {
    BSplineSample s{3, 0, {1, 1, 1, 1, 1, 1}, {1, 2, 0, 1, 1, 2, 0, 1, 1, 2, 0, 1}}; // no parameter interval
    const RecordPtr c = s.Record();
    for (double t : {0.0, 0.5, 1.0}) {
        const std::vector<double> p = Evaluate(c.get(), t, 2);
        EXPECT_EQ(p[0], 1.0);
        EXPECT_EQ(p[3], 0.0);
    }
}

TEST(CurveEvaluation, NegativeDerivativeCountsGiveThePositionAlone) {
    records::Random rng(15);
    for (int kind = 0; kind < records::Random::kKinds; ++kind) {
        SCOPED_TRACE(kind);
        const RecordPtr c = rng.Record(kind, 10.0, {});
        double expected[3], out[6] = {-9, -9, -9, -9, -9, -9};
        evcrve(c.get(), 0, 0.4, expected);
        evcrve(c.get(), -1, 0.4, out);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(out[i], i < 3 ? expected[i] : -9.0);
    }
}
