#include "tessera/kernel/CurveRecord.h"

#include <functional>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "tessera/kernel/BCDF.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/BoxCurve.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

using std::numbers::pi;

TEST(CurveRecord, ClosedWithinATinyAngle) {
    struct Row {
        double end;
        int closed;
    };
    for (const Row& row : {Row{2 * pi, 1}, Row{2 * pi - 9e-11, 1}, Row{2 * pi + 9e-11, 1},
                           Row{2 * pi - 1e-9, 0}, Row{-2 * pi, 0}, Row{4 * pi, 0}}) {
        SCOPED_TRACE(row.end);
        EXPECT_EQ(records::Arc(0, 0, 1, 0, row.end)->closed, row.closed);
        EXPECT_EQ(records::Ellipse(0, 0, 2, 1, 0.3, 0, row.end)->closed, row.closed);
    }
}

TEST(CurveRecord, LimitsAscend) {
    double limits[2];
    evcrvp(records::Arc(0, 0, 1, 3, 1).get(), limits);
    EXPECT_EQ(limits[0], 1.0);
    EXPECT_EQ(limits[1], 3.0);
    evcrvp(records::Arc(0, 0, 1, 1, 3).get(), limits);
    EXPECT_EQ(limits[0], 1.0);
    EXPECT_EQ(limits[1], 3.0);
}

TEST(CurveRecord, RowsPerSpanFollowTheOrder) {
    const int rows[] = {4, 5, 7, 10, 14, 18};
    std::mt19937 rng(1);
    for (int order = 1; order <= 6; ++order) {
        SCOPED_TRACE(order);
        const RecordPtr c = RandomOpen(rng, order, 8, false).Record();
        const auto* bcurve = static_cast<EVC_bcurve_s*>(c->data);
        EXPECT_EQ(bcurve->k, rows[order - 1]);
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(bcurve->spanCache[i], 0.0);
    }
}

TEST(CurveRecord, PolynomialOnlyWithExactUnitWeights) {
    struct Row {
        double weight;
        int polynomial;
    };
    for (const Row& row :
         {Row{1.0, 1}, Row{1.0000001, 0}, Row{std::numeric_limits<double>::quiet_NaN(), 0}}) {
        BSplineSample s{3, 0, {0, 0, 0, 1, 1, 1}, {0, 0, 0, 1, 1, 1, 0, row.weight, 2, 0, 0, 1}};
        const RecordPtr c = s.Record();
        EXPECT_EQ(static_cast<EVC_bcurve_s*>(c->data)->definition->polynomial, row.polynomial);
    }
}

TEST(CurveRecord, ImpossibleSizesGiveNoRecord) {
    double knots[8] = {}, poles[4][4] = {};
    for (const auto& row :
         {std::array{2, 3, 0}, std::array{0, 0, 0}, std::array{-1, 2, 0}, std::array{3, 0, 0}}) {
        std::array<int, 3> sizes = row;
        EXPECT_EQ(ev091p(sizes.data(), knots, poles), nullptr);
        EXPECT_EQ(ev09p0(sizes.data(), knots, poles), nullptr);
    }
    EXPECT_EQ(ev09p1(nullptr), nullptr);
}

TEST(CurveRecord, FreeingRespectsReservedForms) {
    evcrvf(nullptr);
    ev0950(nullptr);
    ev0952(nullptr);
    double payload = 7.0;
    KC_CURVE_struct_s untouched{&payload, 4, 0, 0, 0};
    evcrvf(&untouched); // a free of this address would abort
    untouched.form = 7;
    evcrvf(&untouched);
    for (int form : {8, 10}) {
        auto* c = static_cast<KC_CURVE_struct_s*>(SM_alloc(sizeof(KC_CURVE_struct_s)));
        *c = {&payload, form, 0, 0, 0};
        evcrvf(c);
    }
    EXPECT_EQ(payload, 7.0);
}

TEST(CurveRecord, UnknownFormsAreIgnored) {
    KC_CURVE_struct_s odd{nullptr, 4, 0, 1, 0};
    double out[3] = {5, 6, 7}, zero[3] = {}, m[3][3] = {};
    const double limits[2] = {0, 1};
    evcrve(&odd, 0, 0.5, out);
    EXPECT_EQ(out[0], 5.0);
    EXPECT_EQ(evcrvx(&odd, m, zero), nullptr);
    EXPECT_EQ(evcrvCopy(&odd), nullptr);
    EXPECT_EQ(evcrvCopy(nullptr), nullptr);
    EXPECT_EQ(em0941(&odd, limits), nullptr);
    EXPECT_EQ(em0960(&odd), nullptr);
    EXPECT_EQ(evcrvxScale(&odd, 2), 1);
    EXPECT_EQ(evcrvxScale(nullptr, 2), 1);
}

TEST(CurveRecord, SurvivesEveryAllocationFailure) {
    std::mt19937 rng(5);
    BSplineSample open = RandomOpen(rng, 4, 9, true), round = RandomPeriodic(rng, 4, 5, true);
    BSplineSample seamed = open;
    seamed.periodic = 1;
    const RecordPtr a = open.Record(), b = round.Record(), s = seamed.Record(), arc = records::Arc(0, 0, 1);
    double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, zero[3] = {};
    int sizes[3] = {open.NumPoles(), 4, 0};
    const auto extract = [](KC_CURVE_struct_s* c, double from, double to) {
        const double limits[2] = {from, to};
        return RecordPtr(em0941(c, limits)) != nullptr;
    };
    const auto box = [](KC_CURVE_struct_s* c, double from, double to) {
        const double limits[2] = {from, to};
        double low[2], high[2], centre[3], halfSizes[3][3];
        int dimension;
        return BoxCurve(c, limits, &dimension, centre, halfSizes) == 0 &&
               BoxCurveXY(c, limits, low, high) == 0;
    };
    const std::function<bool()> operations[] = {
        [&] { return open.Record() != nullptr; },
        [&] { return records::Line(0, 0, 1, 1) != nullptr; },
        [&] { return records::Arc(0, 0, 1) != nullptr; },
        [&] { return records::Ellipse(0, 0, 2, 1, 0) != nullptr; },
        [&] {
            EVC_bcurve_s* e =
                ev09p0(sizes, open.knots.data(), reinterpret_cast<double(*)[4]>(open.poles.data()));
            ev0950(e);
            return e != nullptr;
        },
        [&] { return RecordPtr(evcrvCopy(a.get())) != nullptr; },
        [&] { return RecordPtr(evcrvx(a.get(), identity, zero)) != nullptr; },
        [&] { return RecordPtr(evcrvx(arc.get(), identity, zero)) != nullptr; },
        [&] { return BcurveDataPtr(em0960(arc.get())) != nullptr; },
        [&] { return extract(a.get(), 0.2, 0.7); },
        [&] { return extract(b.get(), 0.6, 1.3); },
        [&] { return extract(s.get(), 0.6, 1.3); },
        [&] { return extract(arc.get(), 5, 7); },
        [&] { return box(a.get(), 0, 1); },
        [&] { return box(a.get(), 0.1, 0.4); },
    };
    int index = 0;
    for (const auto& operation : operations) {
        SCOPED_TRACE(index++);
        EXPECT_GT(FailEachAllocation(operation), 0);
        ASSERT_TRUE(operation());
        const long count = SM_ask_allocation_count();
        EXPECT_GT(count, 0);
        for (long n = 1; n <= count; ++n) {
            SM_fail_nth(n);
            EXPECT_FALSE(operation()) << n;
        }
        SM_fail_nth(0);
    }
}

// A definition that could not be wrapped stays the caller's.
TEST(CurveRecord, FailedWrapLeavesTheDefinition) {
    std::mt19937 rng(6);
    BSplineSample s = RandomOpen(rng, 3, 6, false);
    int sizes[3] = {6, 3, 0};
    const BcurveDataPtr d(ev091p(sizes, s.knots.data(), reinterpret_cast<double(*)[4]>(s.poles.data())));
    for (long n = 1; n <= 5; ++n) {
        SM_fail_nth(n);
        EXPECT_EQ(ev09p1(d.get()), nullptr) << n;
    }
    SM_fail_nth(0);
    EXPECT_EQ(d->numPoles, 6);
}
