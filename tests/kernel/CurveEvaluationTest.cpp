#include "tests/support/BSplineSample.h"

namespace {

void ExpectPosition(const RecordPtr& c, double t, double oracleT) {
    const std::vector<double> p = Evaluate(c, t);
    const std::vector<long double> q = DeBoor(records::DefinitionOf(c), oracleT);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(p[i], static_cast<double>(q[i]), 1e-12 * std::max(1.0, std::fabs(p[i]))) << "t " << t;
}

} // namespace

TEST(CurveEvaluation, PositionsFollowDeBoor) {
    std::mt19937 rng(11);
    for (const int order : {1, 2, 3, 4, 5, 6, 7, 22}) // the last beyond what the stack has room for
        for (int trial = 0; trial < 20; ++trial) {
            SCOPED_TRACE(order * 100 + trial);
            const RecordPtr c = RandomOpen(rng, order, order + trial % 9, trial % 2 == 0);
            for (int i = 0; i <= 64; ++i)
                ExpectPosition(c, i / 64.0, i / 64.0);
        }
    for (int order = 2; order <= 7; ++order) {
        SCOPED_TRACE(order);
        const RecordPtr c = RandomPeriodic(rng, order, 3 + order, order % 2 == 0);
        for (int i = 0; i < 32; ++i)
            for (const double turn : {-2.0, 0.0, 1.0, 5.0}) // periodic curves accept any parameter
                ExpectPosition(c, i / 32.0 + turn, i / 32.0);
    }
}

// The first derivative against a five-point difference of the long double oracle, each further one against
// differences of the one before it; all inside one span.
TEST(CurveEvaluation, DerivativesMatchDifferences) {
    std::mt19937 rng(14);
    for (int order = 2; order <= 7; ++order)
        for (const bool rational : {false, true}) {
            SCOPED_TRACE(order);
            const RecordPtr c = RandomOpen(rng, order, order + 3, rational);
            const BCURVE_DATA& s = records::DefinitionOf(c);
            const double from = (s.knots[order - 1] - 2) / 3, to = (s.knots[order] - 2) / 3;
            const double t = 0.4 * from + 0.6 * to, h = 1e-3 * (to - from);
            const int last = order + 2; // beyond the degree, where only rational curves go on
            const std::vector<double> d = Evaluate(c, t, last), before = Evaluate(c, t - h, last),
                                      after = Evaluate(c, t + h, last);
            for (int k = 0; k < 3; ++k) {
                const auto at = [&](long double j) { return DeBoor(s, t + j * h)[k]; };
                const long double slope = (8 * (at(1) - at(-1)) - (at(2) - at(-2))) / (12.0L * h);
                EXPECT_NEAR(d[3 + k], static_cast<double>(slope), 1e-8 * (1 + std::fabs(d[3 + k])));
            }
            for (int k = 6; k < 3 * (last + 1); ++k)
                EXPECT_NEAR(d[k], (after[k - 3] - before[k - 3]) / (2 * h), 1e-3 * (1 + std::fabs(d[k])))
                    << k;
        }
    const RecordPtr conic = records::Ellipse(1, 2, 3, 2, 0.7, 0, 6); // turns with each derivative
    const std::vector<double> d = Evaluate(conic, 1.1, 5), before = Evaluate(conic, 1.1 - 1e-6, 4),
                              after = Evaluate(conic, 1.1 + 1e-6, 4);
    for (int k = 3; k < 18; ++k)
        EXPECT_NEAR(d[k], (after[k - 3] - before[k - 3]) / 2e-6, 1e-8) << k;
    EXPECT_NEAR((d[0] - 1) * std::cos(0.7) + (d[1] - 2) * std::sin(0.7), 3 * std::cos(1.1), 1e-14);
}

// At a kink the side above the knot counts, at the end of the curve the one below.
TEST(CurveEvaluation, DerivativesAtKnotsAreRightHanded) {
    const RecordPtr c = records::Bcurve(2, {{0, 0, 1}, {1, 0, 1}, {1, 3, 1}});
    EXPECT_TRUE(Evaluate(c, 0.5, 1)[3] == 0.0 && Evaluate(c, 0.5, 1)[4] == 6.0);
    EXPECT_TRUE(Evaluate(c, 1.0, 1)[4] == 6.0 && Evaluate(c, 0.25, 1)[3] == 2.0);
}

TEST(CurveEvaluation, OpenCurvesExtrapolateTheEndSpans) {
    const RecordPtr c = records::Bcurve(3, {{0, 0, 1}, {0.5, 0, 1}, {1, 1, 1}}); // (t, t^2)
    for (const double t : {-0.5, 1.5, 3.0}) {
        const std::vector<double> p = Evaluate(c, t, 1);
        EXPECT_NEAR(std::hypot(p[0] - t, p[1] - t * t, p[4] - 2 * t), 0.0, 1e-13);
    }
}

TEST(CurveEvaluation, DegenerateCurvesStayFinite) { // no parameter interval
    const RecordPtr c = records::Bcurve(3, {{1, 2, 1}, {1, 2, 1}, {1, 2, 1}}, {1, 1, 1, 1, 1, 1});
    for (const double t : {0.0, 0.5, 1.0})
        EXPECT_TRUE(Evaluate(c, t, 2)[0] == 1.0 && Evaluate(c, t, 2)[3] == 0.0);
}

TEST(CurveEvaluation, NegativeDerivativeCountsGiveThePositionAlone) {
    records::Random rng(15);
    for (int kind = 0; kind < records::Random::kKinds; ++kind) {
        const RecordPtr c = rng.Record(kind, 10.0, {});
        const std::vector<double> expected = Evaluate(c, 0.4);
        std::vector<double> out(6, -9.0);
        evcrve(c.get(), -1, 0.4, out.data());
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(out[i], i < 3 ? expected[i] : -9.0) << kind;
    }
}
