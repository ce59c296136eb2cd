#include "tessera/kernel/CRV_TOPOL.h"
#include "tests/support/Records.h"

namespace {

using namespace records;

struct Overlap {
    int status = -1;
    CRV_TOPOL_state_t state = CRV_TOPOL_SEPARATE;
    double a[2] = {-9, -9}, b[2] = {-9, -9};
};

Overlap Find(const RecordPtr& a, const RecordPtr& b, double paramTol = 1e-6) {
    Overlap o;
    o.status = CRV_TOPOL_overlap(a.get(), b.get(), 1e-8, 1e-6, paramTol, &o.state, o.a, o.b);
    return o;
}

CRV_TOPOL_state_t Mirrored(CRV_TOPOL_state_t s) {
    return s == CRV_TOPOL_CONTAINS ? CRV_TOPOL_CONTAINED
                                   : (s == CRV_TOPOL_CONTAINED ? CRV_TOPOL_CONTAINS : s);
}

TEST(Overlap, KnownPairs) {
    struct {
        const char* name;
        RecordPtr a, b;
        CRV_TOPOL_state_t state;
        double a0 = -9, a1 = -9, b0 = -9, b1 = -9;
    } rows[] = {
        {"segments that overlap", Line(0, 0, 4, 0), Line(1, 0, 5, 0), CRV_TOPOL_PARTIAL, 0.25, 1, 0, 0.75},
        {"the other way round", Line(0, 0, 4, 0), Line(5, 0, 1, 0), CRV_TOPOL_PARTIAL, 0.25, 1, 1, 0.25},
        {"inside", Line(0, 0, 4, 0), Line(1, 0, 3, 0), CRV_TOPOL_CONTAINS, 0.25, 0.75, 0, 1},
        {"the same", Line(0, 0, 4, 0), Line(4, 0, 0, 0), CRV_TOPOL_IDENTICAL, 0, 1, 1, 0},
        {"end to end", Line(0, 0, 4, 0), Line(4, 0, 5, 0), CRV_TOPOL_SEPARATE},
        {"side by side", Line(0, 0, 4, 0), Line(0, 1e-6, 4, 1e-6), CRV_TOPOL_SEPARATE},
        {"zigzag within the distance, steeper than the angle", Line(0, 0, 4, 0),
         Bcurve(2, {{0, 0, 1}, {1e-3, 9e-9, 1}, {2e-3, 0, 1}}), CRV_TOPOL_SEPARATE},
        {"crossing", Line(0, 0, 4, 4), Line(0, 4, 4, 0), CRV_TOPOL_SEPARATE},
        {"arcs", Arc(1, 2, 3, 0, 2), Arc(1, 2, 3, 1, 5), CRV_TOPOL_PARTIAL, 1, 2, 1, 2},
        {"arcs a turn apart", Arc(1, 2, 3, 0, 2), Arc(1, 2, 3, 1 + 2 * kPi, 5 + 2 * kPi), CRV_TOPOL_PARTIAL,
         1, 2, 1 + 2 * kPi, 2 + 2 * kPi},
        {"arc on its circle", Arc(1, 2, 3, 5, 7), Arc(1, 2, 3), CRV_TOPOL_CONTAINED, 5, 7, 5, 7},
        {"circle over its arc", Arc(1, 2, 3), Arc(1, 2, 3, 5, 7), CRV_TOPOL_CONTAINS, 5, 7, 5, 7},
        {"two common stretches, the longer", Arc(0, 0, 1, 0, 5), Arc(0, 0, 1, 4, 7), CRV_TOPOL_PARTIAL, 4, 5,
         4, 5},
        {"circles with other seams", Arc(1, 2, 3), Arc(1, 2, 3, 1, 1 + 2 * kPi), CRV_TOPOL_IDENTICAL, 0,
         2 * kPi, 2 * kPi, 4 * kPi},
        {"circles of other radius", Arc(1, 2, 3), Arc(1, 2, 3.00001), CRV_TOPOL_SEPARATE},
        {"circles that touch", Arc(0, 0, 1), Arc(2, 0, 1), CRV_TOPOL_SEPARATE},
        {"ellipse turned by half a turn", Ellipse(1, 1, 3, 1, 0.5, 0, 2),
         Ellipse(1, 1, 3, 1, 0.5 + kPi, 0, 2 * kPi), CRV_TOPOL_CONTAINED, 0, 2, kPi, kPi + 2},
        {"ellipse that is a circle", Ellipse(1, 1, 3, 3, 0.5, 0, 2), Arc(1, 1, 3), CRV_TOPOL_CONTAINED, 0, 2,
         0.5, 2.5},
        {"ellipse beside a circle", Ellipse(1, 1, 3, 2.9, 0.5, 0, 2), Arc(1, 1, 3), CRV_TOPOL_SEPARATE},
    };
    for (auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Overlap o = Find(row.a, row.b);
        EXPECT_TRUE(o.status == 0 && o.state == row.state);
        EXPECT_NEAR(std::hypot(o.a[0] - row.a0, o.a[1] - row.a1), 0.0, 1e-8);
        EXPECT_NEAR(std::hypot(o.b[0] - row.b0, o.b[1] - row.b1), 0.0, 1e-8);
        EXPECT_EQ(Find(row.b, row.a).state, Mirrored(row.state));
    }
}

// Pieces cut from one random curve overlap exactly where their ranges do, also against the exact B-curve of
// it, and far from the origin.
TEST(Overlap, PiecesOfOneCurve) {
    records::Random random(404);
    for (int trial = 0; trial < 120; ++trial) {
        const int kind = trial % records::Random::kKinds;
        SCOPED_TRACE(testing::Message() << "trial " << trial << " kind " << kind);
        const double away = trial < 60 || kind > 8 ? 0.0 : 1e6; // there high orders round by the tolerance
        const RecordPtr c = random.Record(kind, 1.0, {away, away}), spline = AsBcurve(c);
        const auto at = [&](double f) { return ParameterAt(c, f); };
        const RecordPtr head = Part(c, at(0.0), at(0.6)), tail = Part(c, at(0.37), at(1.0));
        const Overlap o = Find(head, tail);
        EXPECT_EQ(o.state, CRV_TOPOL_PARTIAL);
        EXPECT_LE(Distance(At(head, o.a[0]), At(c, at(0.37))), 2e-8);
        EXPECT_LE(Distance(At(head, o.a[1]), At(c, at(0.6))), 2e-8);
        for (int i = 0; i < 2; ++i)
            EXPECT_LE(Distance(At(head, o.a[i]), At(tail, o.b[i])), 2e-8);
        EXPECT_EQ(Find(c, spline).state, CRV_TOPOL_IDENTICAL);
        EXPECT_EQ(Find(head, spline).state, CRV_TOPOL_CONTAINED);
        EXPECT_EQ(Find(spline, tail).state, CRV_TOPOL_CONTAINS);
        EXPECT_EQ(Find(c, random.Record(kind, 1.0, {0.3, 0.2})).state, CRV_TOPOL_SEPARATE);
    }
}

TEST(Overlap, LimitsOfTheTolerances) {
    const RecordPtr a = records::Line(0, 0, 4, 0), brief = records::Line(3.9, 0, 5, 0);
    EXPECT_EQ(Find(a, records::Line(0, 0.9e-8, 4, 0.9e-8)).state, CRV_TOPOL_IDENTICAL);
    EXPECT_EQ(Find(a, records::Line(0, 1.1e-8, 4, 1.1e-8)).state, CRV_TOPOL_SEPARATE);
    EXPECT_EQ(Find(a, brief, 0.024).state, CRV_TOPOL_PARTIAL);
    EXPECT_EQ(Find(a, brief, 0.026).state, CRV_TOPOL_SEPARATE);
    CRV_TOPOL_state_t state = CRV_TOPOL_PARTIAL;
    EXPECT_EQ(CRV_TOPOL_overlap(a.get(), nullptr, 1e-8, 1e-6, 0, &state, nullptr, nullptr), 1);
    EXPECT_EQ(CRV_TOPOL_overlap(a.get(), a.get(), 0.0, 1e-6, 0, &state, nullptr, nullptr), 1);
    EXPECT_EQ(state, CRV_TOPOL_PARTIAL);
}

} // namespace
