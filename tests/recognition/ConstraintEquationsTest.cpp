#include "tessera/recognition/internal/ConstraintEquations.h"
#include "tessera/recognition/internal/RowSpace.h"
#include "tests/support/ConstraintOracle.h"

namespace {

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

constexpr auto kStart = SnapPointType_Start;
constexpr auto kEnd = SnapPointType_End;
constexpr auto kCentre = SnapPointType_Center;

SketchElement Whole(int curve) {
    return {curve, SnapPointType_None};
}

CurveList AllShapes() {
    CurveList list;
    list.push_back(MakeLine({0, 1}, {5, 3}));
    list.push_back(MakeLine({2, -1}, {-1, 4}));
    list.push_back(MakeLine({-3, -2}, {4, 4}));
    list.push_back(MakeCircle({1, 2}, 3.0));
    list.push_back(MakeArc({-1, 0}, 2.0, 0.4, 2.9));
    list.push_back(MakeEllipse({3, 1}, 4.0, 2.0, 0.5, 0.0, 2.0 * std::numbers::pi));
    list.push_back(MakeEllipse({0, -2}, 3.0, 1.5, 1.1, 0.3, 3.0));
    list.push_back(MakeSpline(4, {{0, 0}, {1, 2}, {3, 2}, {4, -1}, {6, 0}}));
    list.push_back(MakeSpline(3, {{0, 1}, {1, 2}, {3, 3}}));
    return list;
}

// Rows against central differences of the residuals, over the parameters themselves.
TEST(ConstraintEquations, RowsAreGradients) {
    const CurveList curves = AllShapes();
    const std::vector<const Curve*> list = Borrow(curves);
    const InferredConstraint all[] = {
        MakeConstraint(ConstraintKind_Coincident, {{0, kEnd}, {4, kStart}}),
        MakeConstraint(ConstraintKind_Coincident, {{6, kEnd}, {7, kStart}}),
        MakeConstraint(ConstraintKind_Coincident, {{7, kStart}, {7, kEnd}}),
        MakeConstraint(ConstraintKind_Horizontal, {Whole(0)}),
        MakeConstraint(ConstraintKind_Vertical, {Whole(1)}),
        MakeConstraint(ConstraintKind_Parallel, {Whole(0), Whole(1)}),
        MakeConstraint(ConstraintKind_Perpendicular, {Whole(0), Whole(1)}),
        MakeConstraint(ConstraintKind_Collinear, {Whole(0), Whole(1)}),
        MakeConstraint(ConstraintKind_Tangent, {{0, kEnd}, {4, kStart}}),
        MakeConstraint(ConstraintKind_Tangent, {{6, kStart}, {7, kEnd}}),
        MakeConstraint(ConstraintKind_Tangent, {{8, kStart}, {8, kEnd}}),
        MakeConstraint(ConstraintKind_Tangent, {{0, kEnd}, Whole(3)}),
        MakeConstraint(ConstraintKind_Tangent, {Whole(0), Whole(3)}, 1),
        MakeConstraint(ConstraintKind_Tangent, {Whole(3), Whole(4)}, -1),
        MakeConstraint(ConstraintKind_Concentric, {{3, kCentre}, {5, kCentre}}),
        MakeConstraint(ConstraintKind_EqualLength, {Whole(0), Whole(1)}),
        MakeConstraint(ConstraintKind_EqualRadius, {Whole(3), Whole(4)}),
        MakeConstraint(ConstraintKind_PointOnCurve, {{0, kStart}, Whole(1)}),
        MakeConstraint(ConstraintKind_PointOnCurve, {{0, kStart}, Whole(4)}),
        MakeConstraint(ConstraintKind_PointOnCurve, {{0, kStart}, Whole(6)}),
        MakeConstraint(ConstraintKind_MidPoint, {{4, kEnd}, {2, SnapPointType_Mid}}),
        MakeConstraint(ConstraintKind_Symmetric, {{0, kStart}, {1, kEnd}, Whole(2)}),
        MakeConstraint(ConstraintKind_Symmetric, {{0, kStart}, {0, kEnd}, Whole(2)}),
    };
    for (const InferredConstraint& c : all) {
        SCOPED_TRACE(c.kind);
        SketchParameters sketch(list);
        EquationRow rows[kMostEquations];
        EvaluateRows(c, sketch, rows);
        for (int k = 0; k < EquationCount(c); ++k) {
            std::vector<double> expected(static_cast<std::size_t>(sketch.ParameterCount()));
            for (int curve = 0; curve < sketch.CurveCount(); ++curve) {
                double* p = sketch.Of(curve);
                double* gradient = expected.data() + sketch.At(curve).first;
                for (int i = 0; i < sketch.At(curve).count; ++i) {
                    const double h = 1e-6;
                    const double at = p[i];
                    double above[2], below[2];
                    p[i] = at + h;
                    EvaluateResiduals(c, sketch, above);
                    p[i] = at - h;
                    EvaluateResiduals(c, sketch, below);
                    p[i] = at;
                    gradient[i] = (above[k] - below[k]) / (2 * h);
                }
                sketch.WhitenGradient(curve, gradient);
            }
            for (int i = 0; i < rows[k].count; ++i) {
                EXPECT_NEAR(rows[k].value[i], expected[rows[k].index[i]], 2e-7) << i;
                expected[rows[k].index[i]] = 0.0;
            }
            for (double rest : expected)
                EXPECT_EQ(rest, 0.0);
        }
    }
}

// A step of length h in whitened coordinates moves the material points of the curve by about h.
TEST(SketchParameters, WhitenedStepsAreMotions) {
    const CurveList curves = AllShapes();
    const std::vector<const Curve*> list = Borrow(curves);
    std::mt19937 rng(20240811);
    std::normal_distribution<double> normal;
    for (int curve = 0; curve < static_cast<int>(list.size()); ++curve) {
        SketchParameters sketch(list);
        const int n = sketch.At(curve).count;
        double step[kMaxDualSize];
        double back[kMaxDualSize];
        double length = 0.0;
        for (int k = 0; k < n; ++k) {
            step[k] = 1e-5 * normal(rng);
            length = std::hypot(length, step[k]);
            back[k] = step[k];
        }
        sketch.UnwhitenStep(curve, back);
        for (int k = 0; k < n; ++k)
            sketch.Of(curve)[k] += back[k];
        sketch.WhitenStep(curve, back);
        for (int k = 0; k < n; ++k)
            EXPECT_NEAR(back[k], step[k], 1e-12);
        EXPECT_LE(sketch.Motion(curve), 1.6 * length + 1e-9) << curve;
        EXPECT_GE(sketch.Motion(curve), 0.2 * length) << curve;
    }
}

// Unchanged parameters give back the curve, mirrored and turned ones too; changed ones the curve through the
// points that the parameters name.
TEST(SketchParameters, WritesCurvesBack) {
    double mirror[3][3] = {{0.6, 0.8, 3}, {0.8, -0.6, 1}, {0, 0, 1}};
    for (bool mirrored : {false, true}) {
        for (const Sample& sample : SampleCurves()) {
            SCOPED_TRACE(sample.name);
            if (mirrored)
                sample.curve->Transform(mirror);
            const Curve* list[] = {sample.curve.get()};
            SketchParameters sketch(list);
            const auto compare = [&](double tolerance) {
                const auto written = sketch.Write(0);
                std::vector<Point> expected, got;
                sample.curve->CreatePolylinePoints(7, expected);
                written->CreatePolylinePoints(7, got);
                for (int i = 0; i < 7; ++i)
                    EXPECT_LE(expected[i].Distance(got[i]), tolerance);
                if (sketch.At(0).HasEnds()) {
                    EXPECT_LT(written->GetStart().Distance(sketch.At(0, kStart)), 1e-12);
                    EXPECT_LT(written->GetEnd().Distance(sketch.At(0, kEnd)), 1e-12);
                }
                EXPECT_EQ(written->IsClosed(), sample.curve->IsClosed());
            };
            compare(1e-12);
            for (int k = 0; k < sketch.At(0).count; ++k)
                sketch.Of(0)[k] += 0.01 * (k % 3 - 1);
            compare(0.15);
        }
    }
}

TEST(SketchParameters, DegenerateCurvesMoveInfinitely) {
    const CurveList curves = AllShapes();
    const Curve* list[] = {curves[0].get(), curves[4].get()};
    SketchParameters sketch(list);
    for (int k = 0; k < 2; ++k) // both ends of the line at its middle
        sketch.Of(0)[k] = sketch.Of(0)[2 + k] = 0.5 * (sketch.Of(0)[k] + sketch.Of(0)[2 + k]);
    EXPECT_TRUE(std::isinf(sketch.Motion(0)));
    EXPECT_EQ(sketch.Motion(1), 0.0);
    std::swap(sketch.Of(1)[3], sketch.Of(1)[4]); // the arc turned round
    EXPECT_TRUE(std::isinf(sketch.Motion(1)));
}

/// A row of unit length as its entries.
std::vector<SparseEntry> Entries(std::vector<double>& dense) {
    const double length = std::sqrt(std::inner_product(dense.begin(), dense.end(), dense.begin(), 0.0));
    std::vector<SparseEntry> entries;
    for (int i = 0; i < static_cast<int>(dense.size()); ++i) {
        dense[i] /= length;
        if (dense[i] != 0.0)
            entries.push_back({i, dense[i]});
    }
    return entries;
}

// Random sparse rows over two halves of the columns, every fourth one a combination of earlier ones. A row
// that is taken back, and a component that is emptied and filled again, leave no trace.
TEST(RowSpace, FindsDependentRowsAndShortestSteps) {
    constexpr int kColumns = 60;
    std::mt19937 rng(20240812);
    std::normal_distribution<double> normal;
    std::uniform_int_distribution<int> column(0, kColumns / 2 - 1);
    RowSpace space;
    space.Reset(2);
    space.Extend(1);
    space.Fill(0, std::vector<SparseEntry>{{0, 0.6}, {1, 0.8}}, 1e-6);
    space.Reset(kColumns); // leaves no trace either
    std::vector<std::vector<double>> kept;
    std::vector<std::vector<SparseEntry>> rows;
    for (int k = 0; k < 40; ++k) {
        const int half = k % 2 * kColumns / 2;
        const bool isDependent = k > 8 && k % 4 == 3;
        std::vector<double> dense(kColumns);
        if (isDependent)
            for (const std::vector<double>& row : kept) {
                const double factor = normal(rng);
                for (int i = 0; i < kColumns; ++i)
                    dense[i] += factor * row[i];
            }
        for (int i = 0; i < 4 && !isDependent; ++i)
            dense[half + column(rng)] = normal(rng);
        const std::vector<SparseEntry> entries = Entries(dense);
        const int place = space.RowCount();
        space.Extend(1);
        const double sine = space.Fill(place, entries, 1e-6);
        EXPECT_EQ(sine > 1e-6, !isDependent) << k << " " << sine;
        EXPECT_EQ(space.IsFilled(place), !isDependent);
        if (isDependent) {
            space.Truncate(place);
            continue;
        }
        kept.push_back(dense);
        rows.push_back(entries);
        if (k % 9 == 1) { // a row across both halves, taken back
            std::vector<double> across(kColumns);
            across[1] = across[kColumns / 2 + 7] = 1.0;
            space.Extend(1);
            space.Fill(place + 1, Entries(across), 1e-6);
            space.Truncate(place + 1);
        }
    }
    std::vector<int> places;
    space.CollectConnected(std::vector<int>{rows[0][0].at}, places);
    for (int place : places)
        EXPECT_LT(rows[place][0].at, kColumns / 2) << "the other half is another component";
    space.EmptyComponents(places);
    for (int place : places)
        EXPECT_GT(space.Fill(place, rows[place], 1e-6), 1e-6);

    std::vector<double> residuals(kept.size());
    std::vector<int> all(kept.size());
    std::iota(all.begin(), all.end(), 0);
    for (double& r : residuals)
        r = normal(rng);
    std::vector<double> step(kColumns, 0.0);
    std::vector<int> touched;
    space.ShortestStep(all, residuals, 0.0, step, touched);
    for (std::size_t k = 0; k < kept.size(); ++k)
        EXPECT_NEAR(std::inner_product(step.begin(), step.end(), kept[k].begin(), residuals[k]), 0.0, 1e-9);
    std::vector<SparseEntry> combination;
    space.Combine(touched, step, 0.0, combination);
    std::vector<double> rest = step;
    for (const SparseEntry& part : combination)
        for (const SparseEntry& e : rows[part.at])
            rest[e.at] -= part.value * e.value;
    space.RemoveSpan(all, step); // the shortest step has no part outside the span
    for (int i = 0; i < kColumns; ++i) {
        EXPECT_NEAR(step[i], 0.0, 1e-9);
        EXPECT_NEAR(rest[i], 0.0, 1e-9);
    }
}

} // namespace
