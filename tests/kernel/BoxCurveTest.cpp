#include "tessera/kernel/BoxCurve.h"

#include "tests/support/BSplineSample.h"

using namespace records;

namespace {

struct Box {
    int dimension = -1;
    double centre[3], half[3][3];
};

Box BoxOf(const RecordPtr& c, double from, double to) {
    Box box;
    const double limits[2] = {from, to};
    EXPECT_EQ(BoxCurve(c.get(), limits, &box.dimension, box.centre, box.half), 0);
    return box;
}

/// How far p lies outside the box, 0 inside.
double Outside(const Box& box, const std::vector<double>& p) {
    double rest[3], worst = 0.0;
    for (int i = 0; i < 3; ++i)
        rest[i] = p[i] - box.centre[i];
    for (int a = 0; a < box.dimension; ++a) {
        const double* h = box.half[a];
        const double length = std::hypot(h[0], h[1], h[2]);
        const double along = (rest[0] * h[0] + rest[1] * h[1] + rest[2] * h[2]) / length;
        worst = std::max(worst, std::fabs(along) - length);
        for (int i = 0; i < 3; ++i)
            rest[i] -= along * h[i] / length;
    }
    return std::max(worst, std::hypot(rest[0], rest[1], rest[2]));
}

/// Even parameters and the knots, where a curve may have a kink.
std::vector<double> DenseParameters(const RecordPtr& c, const double limits[2], int n) {
    std::vector<double> t;
    for (int i = 0; i <= n; ++i)
        t.push_back(limits[0] + (limits[1] - limits[0]) * i / n);
    if (c->form == kFormBCurve) {
        const BCURVE_DATA& d = DefinitionOf(c);
        const double low = d.knots[d.degree], high = d.knots[d.numPoles];
        for (int i = d.degree; i <= d.numPoles; ++i)
            t.push_back(std::clamp((d.knots[i] - low) / (high - low), limits[0], limits[1]));
    }
    return t;
}

} // namespace

// Independent bound: the extremes of a dense sampling, whose gap to the truth shrinks with its square.
TEST(BoxCurve, HoldsEveryFormTightly) {
    Random random(52);
    for (int trial = 0; trial < 12 * Random::kKinds; ++trial) {
        SCOPED_TRACE(trial);
        const RecordPtr c = random.Record(trial % Random::kKinds, 1, {3, 4});
        double low[2], high[2], sampledLow[2] = {1e9, 1e9}, sampledHigh[2] = {-1e9, -1e9};
        const bool isWhole = trial / Random::kKinds % 2 == 0;
        const double limits[2] = {ParameterAt(c, isWhole ? 0.0 : 0.2), ParameterAt(c, isWhole ? 1.0 : 0.9)};
        ASSERT_EQ(BoxCurveXY(c.get(), limits, low, high), 0);
        const Box box = BoxOf(c, limits[0], limits[1]);
        for (const double t : DenseParameters(c, limits, 10000)) {
            const std::vector<double> p = Evaluate(c, t);
            EXPECT_LT(Outside(box, p), 1e-9);
            for (int k = 0; k < 2; ++k) {
                sampledLow[k] = std::min(sampledLow[k], p[k]);
                sampledHigh[k] = std::max(sampledHigh[k], p[k]);
            }
        }
        for (int k = 0; k < 2; ++k) {
            EXPECT_TRUE(sampledLow[k] > low[k] - 1e-12 && sampledLow[k] < low[k] + 4e-6);
            EXPECT_TRUE(sampledHigh[k] < high[k] + 1e-12 && sampledHigh[k] > high[k] - 4e-6);
        }
    }
    // Weights of both signs, yet a positive denominator: the poles' hull would not do.
    const RecordPtr c = Bcurve(4, {{0, 0, 1}, {1, 5, -0.2}, {2, -3, 1}, {3, 1, 1}});
    for (const double from : {0.0, 0.1})
        for (int i = 0; i <= 300; ++i)
            EXPECT_LT(Outside(BoxOf(c, from, 1 - 4 * from), Evaluate(c, from + (1 - 5 * from) * i / 300)),
                      1e-8);
}

TEST(BoxCurve, Dimensions) {
    const double p[3] = {1, 2, 3};
    std::mt19937 rng(53);
    const struct {
        const char* name;
        RecordPtr c;
        double from, to;
        int dimension;
    } rows[] = {
        {"point", RecordPtr(ev02p0(p)), 0, 0, 0},
        {"line", Line(0, 0, 3, 4), 0, 1, 1},
        {"line of no length", Line(1, 1, 1, 1), 0, 1, 0},
        {"line below the tolerance", Line(1, 1, 1 + 1e-10, 1), 0, 1, 0},
        {"arc", Arc(0, 0, 1), 0, 6, 2},
        {"arc below the tolerance", Arc(0, 0, 1e-11), 0, 6, 0},
        {"flat ellipse", Ellipse(0, 0, 2, 0, 0), 0, 6, 1},
        {"parabola", Bcurve(3, {{0, 0, 1}, {1, 1, 1}, {2, 0, 1}}), 0, 1, 2},
        {"straight B-curve", Bcurve(3, {{0, 0, 1}, {1, 1, 1}, {2, 2, 1}}), 0, 1, 1},
        {"place on a B-curve", Bcurve(3, {{0, 0, 1}, {1, 1, 1}, {2, 0, 1}}), 0.5, 0.5, 0},
        {"B-curve in space", RandomOpen(rng, 4, 7, true), 0, 1, 3},
    };
    for (const auto& row : rows)
        EXPECT_EQ(BoxOf(row.c, row.from, row.to).dimension, row.dimension) << row.name;
    KC_CURVE_struct_s odd{nullptr, 4, 0, 1, 0};
    Box box;
    for (KC_CURVE_struct_s* c : {&odd, static_cast<KC_CURVE_struct_s*>(nullptr)})
        EXPECT_EQ(BoxCurve(c, p, &box.dimension, box.centre, box.half), 1);
}

TEST(BoxCurve, ArcsUpToHalfATurnLieAlongTheirChord) {
    for (const double sweep : {1.0, 0.95 * kPi, kPi, 0.99 * 2 * kPi}) {
        const Box box = BoxOf(Arc(0, 0, 2, 0.2, 0.2 + sweep), 0.2, 0.2 + sweep);
        const double half = sweep / 2, area = std::hypot(box.half[0][0], box.half[0][1]) *
                                              std::hypot(box.half[1][0], box.half[1][1]);
        if (sweep <= kPi)
            EXPECT_NEAR(area, 2 * std::sin(half) * (1 - std::cos(half)), 1e-12); // chord and sagitta, halved
        else
            EXPECT_EQ(box.half[0][1], 0.0) << "along the axes of the plane";
    }
}
