#include "tessera/kernel/BCEV.h"

#include "tests/support/BSplineSample.h"

using records::DefinitionOf;

TEST(BCEV, SpanHoldsItsParameter) {
    std::mt19937 rng(41);
    for (int order = 1; order <= 6; ++order) {
        const RecordPtr c = RandomOpen(rng, order, 12, false);
        const BCURVE_DATA* d = &DefinitionOf(c);
        for (int i = -10; i <= 110; ++i) {
            const double u = 2 + 0.03 * i;
            const int s = BCEV_find_span(d, u);
            ASSERT_TRUE(s >= d->degree && s < d->numPoles);
            EXPECT_LT(d->knots[s], d->knots[s + 1]);
            EXPECT_TRUE(u < 2 || u >= 5 || (d->knots[s] <= u && u < d->knots[s + 1])) << u;
        }
        EXPECT_GE(BCEV_find_span(d, std::nan("")), d->degree);
    }
    const RecordPtr c = records::Bcurve(2, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {2, 0, 1}}, {0, 0, 1, 2, 2, 2});
    EXPECT_EQ(BCEV_find_span(&DefinitionOf(c), 2.0), 2) << "the last span that is not empty";
}

TEST(BCEV, BezierSpansAreTheCurve) {
    std::mt19937 rng(42);
    for (int order = 2; order <= 7; ++order)
        for (const bool periodic : {false, true}) {
            const RecordPtr c =
                periodic ? RandomPeriodic(rng, order, 5, true) : RandomOpen(rng, order, order + 5, true);
            auto* bcurve = static_cast<EVC_bcurve_s*>(c->data);
            const BCURVE_DATA& d = DefinitionOf(c);
            const double low = d.knots[d.degree], high = d.knots[d.numPoles];
            for (int span = d.degree; span < d.numPoles; ++span) {
                const double from = d.knots[span], u = from + (d.knots[span + 1] - from) / 3;
                if (!(from < u))
                    continue;
                const BCURVE_SEGMENT* segment = BCEV_ask_bez_segment(bcurve, span);
                EXPECT_TRUE(bcurve->spanCache[span] != 0.0 && segment->from == from);
                double x = 0.0, w = 0.0; // the Bernstein sum at a third, written out
                for (int i = 0; i < order; ++i) {
                    const double basis = std::tgamma(order) / std::tgamma(i + 1) / std::tgamma(order - i) *
                                         std::pow(1 / 3.0, i) * std::pow(2 / 3.0, order - 1 - i);
                    x += basis * segment->bezier[4 * i];
                    w += basis * segment->bezier[4 * i + 3];
                }
                EXPECT_NEAR(x / w, static_cast<double>(DeBoor(d, (u - low) / (high - low))[0]), 1e-12);
            }
        }
}

TEST(BCEV, ResetMakesChangedPolesVisible) {
    const RecordPtr c = records::Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}});
    EXPECT_EQ(Evaluate(c, 0)[0], 0.0);
    DefinitionOf(c).poles[0][0] = -7;
    BCEV_reset_all_bez_pointers(static_cast<EVC_bcurve_s*>(c->data));
    EXPECT_EQ(Evaluate(c, 0)[0], -7.0);
}

TEST(BCEV, InsertedKnotsLeaveTheCurve) {
    std::mt19937 rng(43);
    for (int order = 2; order <= 7; ++order)
        for (int times = 0; times < order; ++times)
            for (const double u : {2.0, 2.7, 5.0}) {
                const RecordPtr c = RandomOpen(rng, order, order + 4, true);
                const RecordPtr refined(ev09p1(BCEV_insert_knot(&DefinitionOf(c), u, times)));
                ASSERT_TRUE(refined);
                const auto held = [&](const BCURVE_DATA& b) {
                    return std::count(b.knots, b.knots + b.numPoles + order, u);
                };
                EXPECT_EQ(DefinitionOf(refined).numPoles, DefinitionOf(c).numPoles + times);
                EXPECT_EQ(held(DefinitionOf(refined)), held(DefinitionOf(c)) + times);
                EXPECT_LT(LargestGap(c, 0, 1, refined, 0, 1), 1e-12);
            }
    const RecordPtr c = RandomOpen(rng, 4, 8, false);
    EXPECT_EQ(BCEV_insert_knot(&DefinitionOf(c), 1.9, 1), nullptr);
    EXPECT_EQ(BCEV_insert_knot(&DefinitionOf(c), 3, 4), nullptr);
}

TEST(BCEV, GrevilleSamplesAscendFromZeroToOne) {
    std::mt19937 rng(44);
    for (int order = 1; order <= 6; ++order)
        for (const int n : {2, 3, 7, 50})
            for (const bool periodic : {false, true}) {
                const RecordPtr c = periodic ? RandomPeriodic(rng, order, 6, false)
                                             : RandomOpen(rng, order, order + 6, false);
                const BCURVE_DATA& d = DefinitionOf(c);
                std::fill_n(d.knots + order + 1, 3, d.knots[order + 1]);
                std::vector<double> t(n);
                BCEV_sample_Greville_parameters(d.numPoles, order, d.knots, n, t.data());
                EXPECT_TRUE(t.front() == 0.0 && t.back() == 1.0);
                for (int i = 1; i < n; ++i)
                    EXPECT_LT(t[i - 1], t[i]);
            }
}
