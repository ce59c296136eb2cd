#include "tessera/kernel/BCEV.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

namespace {

EVC_bcurve_s* Bcurve(const RecordPtr& c) {
    return static_cast<EVC_bcurve_s*>(c->data);
}

} // namespace

TEST(BCEV, SpanHoldsItsParameter) {
    std::mt19937 rng(41);
    for (int order = 1; order <= 6; ++order) {
        const RecordPtr c = RandomOpen(rng, order, 12, false).Record();
        const BCURVE_DATA* d = Bcurve(c)->definition;
        for (int i = -10; i <= 110; ++i) {
            const double u = 2 + 0.03 * i;
            const int s = BCEV_find_span(d, u);
            ASSERT_GE(s, d->degree);
            ASSERT_LT(s, d->numPoles);
            EXPECT_LT(d->knots[s], d->knots[s + 1]);
            if (u >= 2 && u < 5) {
                EXPECT_LE(d->knots[s], u);
                EXPECT_LT(u, d->knots[s + 1]);
            }
        }
        EXPECT_GE(BCEV_find_span(d, std::nan("")), d->degree);
    }
}

TEST(BCEV, BezierSpansAreTheCurve) {
    std::mt19937 rng(42);
    for (int order = 2; order <= 7; ++order)
        for (bool periodic : {false, true}) {
            BSplineSample s =
                periodic ? RandomPeriodic(rng, order, 5, true) : RandomOpen(rng, order, order + 5, true);
            const RecordPtr c = s.Record();
            const BCURVE_DATA* d = Bcurve(c)->definition;
            for (int span = d->degree; span < d->numPoles; ++span) {
                const double from = d->knots[span], to = d->knots[span + 1];
                if (!(from < to))
                    continue;
                const BCURVE_SEGMENT* segment = BCEV_ask_bez_segment(Bcurve(c), span);
                EXPECT_NE(Bcurve(c)->spanCache[span], 0.0);
                EXPECT_EQ(segment->from, from);
                double x[2] = {}, w[2] = {}; // the Bernstein sum at a third, written out
                for (int i = 0; i < order; ++i) {
                    const double basis = std::tgamma(order) / std::tgamma(i + 1) / std::tgamma(order - i) *
                                         std::pow(1 / 3.0, i) * std::pow(2 / 3.0, order - 1 - i);
                    x[0] += basis * segment->bezier[4 * i];
                    w[0] += basis * segment->bezier[4 * i + 3];
                }
                const double u = from + (to - from) / 3, low = d->knots[d->degree],
                             high = d->knots[d->numPoles];
                EXPECT_NEAR(x[0] / w[0], static_cast<double>(DeBoor(s, (u - low) / (high - low))[0]), 1e-12);
            }
        }
}

TEST(BCEV, ResetMakesChangedPolesVisible) {
    const RecordPtr c = records::Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}});
    EXPECT_EQ(Evaluate(c.get(), 0)[0], 0.0);
    Bcurve(c)->definition->poles[0][0] = -7;
    BCEV_reset_all_bez_pointers(Bcurve(c));
    EXPECT_EQ(Evaluate(c.get(), 0)[0], -7.0);
}

TEST(BCEV, InsertedKnotsLeaveTheCurve) {
    std::mt19937 rng(43);
    for (int order = 2; order <= 7; ++order)
        for (int times = 0; times < order; ++times)
            for (double u : {2.0, 2.7, 5.0}) {
                const RecordPtr c = RandomOpen(rng, order, order + 4, true).Record();
                const BCURVE_DATA* d = Bcurve(c)->definition;
                const RecordPtr refined(ev09p1(BCEV_insert_knot(d, u, times)));
                ASSERT_TRUE(refined);
                const BCURVE_DATA* r = Bcurve(refined)->definition;
                EXPECT_EQ(r->numPoles, d->numPoles + times);
                const auto held = [&](const BCURVE_DATA* b) {
                    return std::count(b->knots, b->knots + b->numPoles + order, u);
                };
                EXPECT_EQ(held(r), held(d) + times);
                EXPECT_LT(LargestGap(c.get(), 0, 1, refined.get(), 0, 1), 1e-12);
            }
    const RecordPtr c = RandomOpen(rng, 4, 8, false).Record();
    EXPECT_EQ(BCEV_insert_knot(Bcurve(c)->definition, 1.9, 1), nullptr);
    EXPECT_EQ(BCEV_insert_knot(Bcurve(c)->definition, 3, 4), nullptr);
}

TEST(BCEV, GrevilleSamplesAscendFromZeroToOne) {
    std::mt19937 rng(44);
    for (int order = 1; order <= 6; ++order)
        for (int n : {2, 3, 7, 50}) {
            BSplineSample samples[] = {RandomOpen(rng, order, order + 6, false),
                                       RandomPeriodic(rng, order, 6, false)};
            for (BSplineSample& s : samples) {
                std::fill(s.knots.begin() + order + 1, s.knots.begin() + order + 4, s.knots[order + 1]);
                std::vector<double> t(n);
                BCEV_sample_Greville_parameters(s.NumPoles(), order, s.knots.data(), n, t.data());
                EXPECT_EQ(t.front(), 0.0);
                EXPECT_EQ(t.back(), 1.0);
                for (int i = 1; i < n; ++i)
                    EXPECT_LT(t[i - 1], t[i]);
            }
        }
}
