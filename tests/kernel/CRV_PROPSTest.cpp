#include "tessera/kernel/CRV_PROPS.h"

#include "tests/support/BSplineSample.h"

namespace {

using namespace records;

double Length(const RecordPtr& c, double from, double to) {
    const double limits[2] = {from, to};
    double length = -1.0;
    EXPECT_EQ(CRV_PROPS_arc_length(c.get(), limits, &length), 0);
    return length;
}

// Tanh-sinh quadrature of the speed in long double between two parameters without a break inside: another
// rule, other nodes, and the tips of the interval cost it nothing.
long double SpeedIntegral(const RecordPtr& c, long double from, long double to) {
    const long double half = (to - from) / 2, middle = (to + from) / 2, h = 1.0L / 64;
    long double sum = 0.0L;
    for (int k = -256; k <= 256; ++k) {
        const long double s = std::sinh(h * k) * std::numbers::pi_v<long double> / 2, x = std::tanh(s);
        const long double weight = std::cosh(h * k) / (std::cosh(s) * std::cosh(s));
        double out[6];
        evcrve(c.get(), 1, static_cast<double>(middle + half * x), out);
        sum += weight * std::hypot(static_cast<long double>(out[3]), static_cast<long double>(out[4]));
    }
    return sum * h * half * std::numbers::pi_v<long double> / 2;
}

TEST(ArcLength, AgreesWithAnotherQuadrature) {
    Random random(1234);
    for (int trial = 0; trial < 66; ++trial) {
        const int kind = trial % Random::kKinds;
        const double size = trial % 3 == 0 ? 1e-3 : (trial % 3 == 1 ? 1.0 : 1e6);
        SCOPED_TRACE(testing::Message() << "trial " << trial << " kind " << kind);
        const RecordPtr c = random.Record(kind, size, {size, -size});
        const double cut = ParameterAt(c, random.In(0, 0.5)), from = ParameterAt(c, 0.0),
                     to = ParameterAt(c, random.In(0.5, 1));
        // Breaks: the knots of a B-curve; short arcs of thin ellipses.
        std::vector<double> breaks = {from};
        for (int i = 1; kind < 5 && from + i * kPi / 64 < to; ++i)
            breaks.push_back(from + i * kPi / 64);
        if (kind >= 5) {
            const BCURVE_DATA& d = DefinitionOf(c);
            const double lo = d.knots[d.degree], hi = d.knots[d.numPoles];
            for (int i = d.degree + 1; i < d.numPoles; ++i) {
                const double t = (d.knots[i] - lo) / (hi - lo);
                if (t > breaks.back() && t < to)
                    breaks.push_back(t);
            }
        }
        breaks.push_back(to);
        long double expected = 0.0L;
        for (std::size_t i = 1; i < breaks.size(); ++i)
            for (int k = 0; k < 8; ++k)
                expected += SpeedIntegral(c, breaks[i - 1] + (breaks[i] - breaks[i - 1]) * k / 8,
                                          breaks[i - 1] + (breaks[i] - breaks[i - 1]) * (k + 1) / 8);
        const double whole = Length(c, from, to);
        EXPECT_NEAR(whole, static_cast<double>(expected), 2e-12 * whole);
        EXPECT_NEAR(Length(c, from, cut) + Length(c, cut, to), whole, 1e-13 * whole);
    }
}

TEST(ArcLength, KnownLengths) {
    const RecordPtr cusp = Bcurve(4, {{0, 0, 1}, {2, 2, 1}, {0, 2, 1}, {2, 0, 1}});
    const RecordPtr parabola = Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}});
    const double parabolaLength = std::sqrt(5.0) + std::asinh(2.0) / 2;
    const struct {
        const char* name;
        RecordPtr c;
        double from, to, length;
    } rows[] = {
        {"segment", Line(1, 1, 4, 5), 0, 1, 5},
        {"beyond its ends", Line(1, 1, 4, 5), -1, 2, 15},
        {"empty range", Line(1, 1, 4, 5), 0.5, 0.5, 0},
        {"over the seam of a circle", Arc(0, 0, 2), 5, 7, 4},
        {"two turns", Arc(0, 0, 2), 1, 1 + 4 * kPi, 8 * kPi},
        {"ellipse 2 : 1 (E(3/4) by Legendre)", Ellipse(0, 0, 2, 1, 0.4), 0, 2 * kPi, 9.688448220547676},
        {"needle", Ellipse(0, 0, 1, 1e-9, 0.4), 0, 2 * kPi, 4.0},
        {"parabola", Copy(parabola), 0, 1, parabolaLength},
        {"clamped to the curve", Copy(parabola), -5, 5, parabolaLength},
        {"exact circle as B-curve", AsBcurve(Arc(5, 5, 2)), 0, 1, 4 * kPi},
        {"poly-line with unequal weights", Bcurve(2, {{0, 0, 1}, {3, 4, 5}, {3, 10, 0.2}}), 0, 1, 11},
        // Half of it is smooth up to the tip; mirror images.
        {"cusp", Copy(cusp), 0, 1, 2.0 * static_cast<double>(SpeedIntegral(cusp, 0, 0.5L))},
    };
    for (const auto& row : rows)
        EXPECT_NEAR(Length(row.c, row.from, row.to), row.length, 1e-12 * row.length) << row.name;
}

// Far from the origin the speed is mostly rounding; refinement must not chase it.
TEST(ArcLength, ManySmallSpansFarAway) {
    std::vector<std::array<double, 3>> near, far;
    for (int i = 0; i < 3000; ++i) {
        near.push_back({0.001 * i, std::sin(0.01 * i), 1.0});
        far.push_back({1e6 + near.back()[0], 1e6 + near.back()[1], 1.0});
    }
    const double length = Length(Bcurve(4, near), 0, 1);
    EXPECT_NEAR(Length(Bcurve(4, far), 0, 1), length, 1e-7 * length);
}

TEST(ArcLength, PeriodicCurvesOverTheSeam) {
    std::mt19937 rng(9);
    const RecordPtr c = RandomPeriodic(rng, 4, 6, true);
    const double turn = Length(c, 0, 1), over = Length(c, 0.8, 1.3);
    EXPECT_NEAR(over, Length(c, 0.8, 1) + Length(c, 0, 0.3), 1e-13 * turn);
    EXPECT_NEAR(Length(c, 0.8, 3.3), over + 2 * turn, 1e-12 * turn);
    EXPECT_NEAR(Length(c, -0.2, 0.3), over, 1e-13 * turn);
}

TEST(Curvature, AgreesWithTheCircleThroughThreePoints) {
    Random random(88);
    for (int trial = 0; trial < 110; ++trial) {
        SCOPED_TRACE(trial);
        const RecordPtr c = random.Record(trial % Random::kKinds, 1.0, {0, 0});
        const double t = ParameterAt(c, random.In(0.1, 0.9)), h = 1e-5;
        double k = -9.0;
        ASSERT_EQ(CRV_PROPS_curvature(c.get(), t, &k), 0);
        const Xy a = At(c, t - h), b = At(c, t), d = At(c, t + h);
        const double sides = Distance(a, b) * Distance(b, d) * Distance(d, a);
        const double turned = 2.0 * ((b.x - a.x) * (d.y - a.y) - (b.y - a.y) * (d.x - a.x)) / sides;
        EXPECT_NEAR(k, turned, 1e-3 * (1.0 + std::fabs(k) * (1.0 + std::fabs(k))));
    }
    double k = 0.0;
    EXPECT_EQ(CRV_PROPS_curvature(Arc(9, 9, 4).get(), 1.0, &k), 0);
    EXPECT_NEAR(k, 0.25, 1e-15);
}

TEST(CurveProperties, FailuresWriteNothing) {
    double value = 42.0;
    const double limits[2] = {0, 1}, reversed[2] = {1, 0}, origin[3] = {};
    const RecordPtr point(ev02p0(origin)), dot = Line(1, 1, 1, 1), line = Line(0, 0, 1, 0);
    const RecordPtr cusp = Bcurve(4, {{0.1, 0.7, 1}, {2.1, 2.7, 1}, {0.1, 2.7, 1}, {2.1, 0.7, 1}});
    for (const RecordPtr* c : {&point, &dot, &cusp})
        EXPECT_EQ(CRV_PROPS_curvature(c->get(), 0.5, &value), 1);
    EXPECT_EQ(CRV_PROPS_arc_length(nullptr, limits, &value), 1);
    EXPECT_EQ(CRV_PROPS_arc_length(point.get(), limits, &value), 1);
    EXPECT_EQ(CRV_PROPS_arc_length(line.get(), reversed, &value), 1);
    EXPECT_EQ(value, 42.0);
}

} // namespace
