#include "tessera/kernel/CurveRecord.h"

#include "tessera/kernel/BoxCurve.h"
#include "tessera/kernel/CRV_TOPOL.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/BSplineSample.h"

TEST(CurveRecord, ClosedWithinATinyAngle) {
    const std::pair<double, int> rows[] = {{2 * records::kPi, 1},         {2 * records::kPi - 9e-11, 1},
                                           {2 * records::kPi + 9e-11, 1}, {2 * records::kPi - 1e-9, 0},
                                           {-2 * records::kPi, 0},        {4 * records::kPi, 0}};
    for (const auto& [end, closed] : rows) {
        EXPECT_EQ(records::Arc(0, 0, 1, 0, end)->closed, closed) << end;
        EXPECT_EQ(records::Ellipse(0, 0, 2, 1, 0.3, 0, end)->closed, closed) << end;
    }
    for (const RecordPtr& c : {records::Arc(0, 0, 1, 3, 1), records::Arc(0, 0, 1, 1, 3)})
        EXPECT_EQ(records::LimitsOf(c), (std::array{1.0, 3.0})) << "ascending";
}

TEST(CurveRecord, RowsPerSpanAndPolynomialFlag) {
    const int rows[] = {4, 5, 7, 10, 14, 18};
    std::mt19937 rng(1);
    for (int order = 1; order <= 6; ++order) {
        const RecordPtr c = RandomOpen(rng, order, 8, false);
        const auto* bcurve = static_cast<EVC_bcurve_s*>(c->data);
        EXPECT_EQ(bcurve->k, rows[order - 1]) << order;
        EXPECT_EQ(std::count(bcurve->spanCache, bcurve->spanCache + 8, 0.0), 8);
    }
    const std::pair<double, int> weights[] = {{1.0, 1}, {1.0000001, 0}, {NAN, 0}};
    for (const auto& [weight, polynomial] : weights) // exact unit weights only
        EXPECT_EQ(
            records::DefinitionOf(records::Bcurve(3, {{0, 0, 1}, {1, 1, weight}, {2, 0, 1}})).polynomial,
            polynomial);
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

// Copies, moves and plain pieces of every kind fail in the tests of the curve classes.
TEST(CurveRecord, SurvivesEveryAllocationFailure) {
    using namespace records;
    std::mt19937 rng(5);
    const RecordPtr a = RandomOpen(rng, 4, 9, true), b = RandomPeriodic(rng, 4, 5, true), seamed = Copy(a);
    const RecordPtr arc = Arc(0, 0, 1), line = Line(-1, 0.1, 1, 0.05), ellipse = Ellipse(0, 0, 0.9, 0.3, 1.0);
    records::Random random(7);
    const RecordPtr splines[] = {random.Spline(4, 1.0, {0, 0}), random.Spline(4, 1.0, {0, 0}),
                                 random.Spline(4, 1.0, {0, 0})};
    DefinitionOf(seamed).periodic = 1;
    BCURVE_DATA& d = DefinitionOf(a);
    int sizes[3] = {9, 4, 0};
    const auto box = [](const RecordPtr& c, double from, double to) {
        const double limits[2] = {from, to};
        double low[2], high[2], centre[3], halfSizes[3][3];
        int dimension;
        return BoxCurve(c.get(), limits, &dimension, centre, halfSizes) == 0 &&
               BoxCurveXY(c.get(), limits, low, high) == 0;
    };
    const auto meet = [](const RecordPtr& p, const RecordPtr& q) {
        int n = 0;
        CRV_TOPOL_hit_t* hits = nullptr;
        const int status =
            CRV_TOPOL_intersect(p.get(), CRV_TOPOL_BOUNDED, q.get(), CRV_TOPOL_BOUNDED, 1e-9, &n, &hits);
        EXPECT_TRUE(status == 0 || hits == nullptr);
        SM_free(hits);
        return status == 0;
    };
    const std::function<bool()> operations[] = {
        [&] {
            return Bcurve(4, 0, {0, 0, 0, 0, 1, 1, 1, 1}, std::vector<double>(16, 1.0)) != nullptr;
        },
        [&] { return Line(0, 0, 1, 1) != nullptr; },
        [&] { return Arc(0, 0, 1) != nullptr; },
        [&] { return Ellipse(0, 0, 2, 1, 0) != nullptr; },
        [&] {
            EVC_bcurve_s* e = ev09p0(sizes, d.knots, d.poles);
            ev0950(e);
            return e != nullptr;
        },
        [&] { return Part(b, 0.6, 1.3) != nullptr; },
        [&] { return Part(seamed, 0.6, 1.3) != nullptr; },
        [&] { return box(a, 0, 1); },
        [&] { return box(a, 0.1, 0.4); },
        [&] { return meet(line, ellipse); },
        [&] { return meet(line, splines[0]); },
        [&] { return meet(ellipse, splines[1]); },
        [&] { return meet(splines[1], splines[2]); },
        [&] {
            CRV_TOPOL_state_t state = CRV_TOPOL_SEPARATE;
            return CRV_TOPOL_overlap(splines[1].get(), splines[1].get(), 1e-8, 1e-6, 1e-6, &state, nullptr,
                                     nullptr) == 0;
        },
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(&operation - operations);
        EXPECT_GT(FailEachAllocation(operation), 0);
    }
}

// A definition that could not be wrapped stays the caller's.
TEST(CurveRecord, FailedWrapLeavesTheDefinition) {
    const RecordPtr c = records::Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}, {3, 1, 1}});
    const BcurveDataPtr d(em0960(c.get()));
    for (long n = 1; n <= 5; ++n) {
        SM_fail_nth(n);
        EXPECT_EQ(ev09p1(d.get()), nullptr) << n;
    }
    SM_fail_nth(0);
    EXPECT_EQ(d->numPoles, 4);
}
