#include "tessera/kernel/BCRVFIT.h"

#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/BSplineSample.h"
#include "tests/support/SegmentDistance.h"

namespace {

using Vex::Math::Point3;

constexpr double kTau = 2.0 * std::numbers::pi;

struct Fitted {
    RecordPtr record;
    int status = -1;
    double err[3] = {-1.0, -1.0, -1.0};
    BCURVE_DATA& Data() const { return records::DefinitionOf(record); }
};

struct Request {
    int order = 3;
    bool closed = false;
    BCRVFIT_knots_t knots = BCRVFIT_KNOTS_UNIFORM;
    double tol = 0.01;
    std::vector<Point3> check = {};
};

Fitted Fit(const std::vector<Point3>& pts, const Request& r) {
    Fitted f;
    f.record.reset(BCRVFIT_least_squares_fit(
        static_cast<int>(pts.size()), pts.data(), static_cast<int>(r.check.size()),
        r.check.empty() ? nullptr : r.check.data(), r.order, r.closed, r.knots, r.tol, &f.status, f.err));
    EXPECT_EQ(f.status, f.record ? 0 : 1);
    return f;
}

Point3 PointAt(const BCURVE_DATA& d, double u) {
    const auto p = DeBoor(d, u);
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

// Distances of points from a fine poly-line of the curve, every pair tried.
struct Deviation {
    double largest = 0.0, sumSq = 0.0;
};
Deviation DenseDeviation(const BCURVE_DATA& d, const std::vector<Point3>& pts, int segments = 3000) {
    std::vector<Point3> line;
    for (int i = 0; i <= segments; ++i)
        line.push_back(PointAt(d, static_cast<double>(i) / segments));
    Deviation dev;
    for (const Point3& p : pts) {
        const double distance = Tessera::Testing::PolylineDistance(line, p);
        dev.largest = std::max(dev.largest, distance);
        dev.sumSq += distance * distance;
    }
    return dev;
}

std::vector<Point3> Sample(int n, const std::function<Point3(double)>& curve) {
    std::vector<Point3> pts(n);
    for (int i = 0; i < n; ++i)
        pts[i] = curve(static_cast<double>(i) / (n - 1));
    return pts;
}

Point3 Wave(double t) {
    return {t, 0.3 * std::sin(kTau * t), 0.0};
}
Point3 Eight(double t) {
    return {0.5 * std::sin(kTau * t), 0.5 * std::sin(2 * kTau * t), 0.0};
}
Point3 Round(double t) {
    const double r = 0.5 + 0.01 * std::sin(7 * kTau * t) + 0.005 * std::sin(23 * kTau * t);
    return {r * std::cos(kTau * t), r * std::sin(kTau * t), 0.0};
}
Point3 Spiral(double t) {
    return {(0.1 + 0.4 * t) * std::cos(3 * kTau * t), (0.1 + 0.4 * t) * std::sin(3 * kTau * t), 0.0};
}
Point3 Corner(double t) {
    return {std::min(t, 0.5), std::max(t - 0.5, 0.0), 0};
}
Point3 ZigZag(double t) {
    return {t, 0.2 * std::fabs(std::remainder(7.0 * t, 2.0)), 0.0};
}

struct Shape {
    const char* name;
    Point3 (*curve)(double);
    bool closed;
    int mostPoles; // order 3, uniform knots, tolerance 0.01: what a careful hand would need
};
constexpr Shape kShapes[] = {
    {"wave", Wave, false, 8},      {"figure eight", Eight, true, 20}, {"round", Round, true, 14},
    {"spiral", Spiral, false, 40}, {"corner", Corner, false, 16},     {"zigzag", ZigZag, false, 30},
};

void ExpectSoundRecord(const Fitted& f, const std::vector<Point3>& pts, const Request& r) {
    ASSERT_TRUE(f.record);
    const BCURVE_DATA& d = f.Data();
    EXPECT_TRUE(f.record->form == kFormBCurve && d.order == r.order && d.periodic == 0 && d.polynomial == 1);
    for (int i = 0; i < d.order; ++i)
        EXPECT_TRUE(d.knots[i] == 0.0 && d.knots[d.numPoles + i] == 1.0);
    for (int i = d.degree; i < d.numPoles; ++i)
        EXPECT_LT(d.knots[i], d.knots[i + 1]);
    for (int i = d.degree; r.knots == BCRVFIT_KNOTS_UNIFORM && i <= d.numPoles; ++i)
        EXPECT_NEAR(d.knots[i], static_cast<double>(i - d.degree) / (d.numPoles - d.degree), 1e-15);
    const Point3& last = r.closed ? pts.front() : pts.back();
    EXPECT_TRUE(d.poles[0][0] == pts[0].x && d.poles[0][1] == pts[0].y);
    EXPECT_TRUE(d.poles[d.numPoles - 1][0] == last.x && d.poles[d.numPoles - 1][1] == last.y);
    if (r.closed && r.order > 2) { // the seam is smooth
        const double *a = d.poles[1], *s = d.poles[0], *b = d.poles[d.numPoles - 2];
        const double ax = a[0] - s[0], ay = a[1] - s[1], bx = s[0] - b[0], by = s[1] - b[1];
        EXPECT_NEAR(ax * by - ay * bx, 0.0, 1e-11 * std::hypot(ax, ay) * std::hypot(bx, by));
        EXPECT_GT(ax * bx + ay * by, 0.0);
    }
}

TEST(BCRVFIT, EveryOrderAndShapeKeepsToleranceAndReportsTheTrueDeviation) {
    for (const Shape& shape : kShapes)
        for (int order = 2; order <= 7; ++order)
            for (const auto knots : {BCRVFIT_KNOTS_UNIFORM, BCRVFIT_KNOTS_ADAPTIVE}) {
                SCOPED_TRACE(testing::Message() << shape.name << " order " << order << " knots " << knots);
                const double scale = order % 3 == 0 ? 1.0 : (order % 3 == 1 ? 1e-9 : 1e9);
                std::vector<Point3> pts = Sample(150, shape.curve);
                for (Point3& p : pts)
                    p = {scale * (p.x + 10.0), scale * (p.y - 3.0), 0.0};
                const Request request{order, shape.closed, knots, 0.01 * scale, {}};
                const Fitted f = Fit(pts, request);
                ExpectSoundRecord(f, pts, request);
                if (!f.record)
                    continue;
                EXPECT_LE(f.err[0], request.tol);
                const Deviation dense = DenseDeviation(f.Data(), pts);
                EXPECT_NEAR(f.err[0], dense.largest, 2e-5 * scale);
                EXPECT_GE(f.err[1] * f.err[1] * 150, dense.sumSq * 0.99 - 1e-9 * scale * scale);
                EXPECT_LE(f.err[2], f.err[1]);
                EXPECT_TRUE(order != 3 || f.Data().numPoles <= shape.mostPoles);
            }
}

TEST(BCRVFIT, KnownSplinesNeedNoMorePolesThanTheyHave) {
    std::mt19937 rng(20240611);
    std::uniform_real_distribution<double> jump(-0.2, 0.2);
    for (int trial = 0; trial < 30; ++trial) {
        const int poles = 4 + trial % 9;
        const RecordPtr known = records::Bcurve(3, std::vector<std::array<double, 3>>(poles, {0, 0, 1}));
        BCURVE_DATA& d = records::DefinitionOf(known);
        for (int i = 0; i < poles; ++i) {
            // Over its Greville abscissa: the pen's speed is then about even, as chord length supposes.
            d.poles[i][0] = 0.5 * (d.knots[i + 1] + d.knots[i + 2]) * poles;
            d.poles[i][1] = jump(rng);
        }
        const std::vector<Point3> pts = Sample(40 * poles, [&](double t) { return PointAt(d, t); });
        const Fitted f = Fit(pts, {3, false, BCRVFIT_KNOTS_UNIFORM, 0.01, {}});
        ASSERT_TRUE(f.record) << trial;
        EXPECT_LE(f.Data().numPoles, poles) << trial;
    }
}

TEST(BCRVFIT, NoPerturbedPoleIsNoticeablyBetter) {
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0.0, 0.004);
    std::vector<Point3> pts = Sample(200, Wave);
    for (std::size_t i = 1; i + 1 < pts.size(); ++i) {
        pts[i].x += noise(rng);
        pts[i].y += noise(rng);
    }
    const Fitted f = Fit(pts, {4, false, BCRVFIT_KNOTS_UNIFORM, 0.02, {}});
    ASSERT_TRUE(f.record);
    const BCURVE_DATA& d = f.Data();
    EXPECT_LE(d.numPoles, 10);
    const double fitted = DenseDeviation(d, pts, 500).sumSq;
    for (int i = 1; i + 1 < d.numPoles; ++i)
        for (const double step : {0.02, 0.005, -0.005, -0.02})
            for (int c = 0; c < 2; ++c) {
                d.poles[i][c] += step;
                EXPECT_GT(DenseDeviation(d, pts, 500).sumSq, 0.9 * fitted) << i << " " << step;
                d.poles[i][c] -= step;
            }
}

TEST(BCRVFIT, MeasuresOnTheCheckPoints) {
    // The thinned points miss a bump of the samples altogether.
    const auto bump = [](double t) {
        return Point3{t, 0.1 * std::exp(-2000 * (t - 0.52) * (t - 0.52)), 0.0};
    };
    const std::vector<Point3> check = Sample(1001, bump);
    std::vector<Point3> pts;
    for (std::size_t i = 0; i < check.size(); i += 250)
        pts.push_back(check[i]);
    const Fitted f = Fit(pts, {3, false, BCRVFIT_KNOTS_UNIFORM, 0.005, check});
    ASSERT_TRUE(f.record);
    EXPECT_LE(f.err[0], 0.005);
    EXPECT_NEAR(f.err[0], DenseDeviation(f.Data(), check).largest, 1e-5);
}

TEST(BCRVFIT, ManyPointsOfWhichFewAreOff) {
    // A spike between the samples that a solution uses must still be found.
    std::vector<Point3> pts = Sample(200000, Wave);
    for (int i = 0; i < 40; ++i)
        pts[100000 + i].y += 0.05 * std::sin(std::numbers::pi * i / 39.0);
    const Fitted f = Fit(pts, {});
    if (f.record) {
        const std::vector<Point3> spike(pts.begin() + 99990, pts.begin() + 100050);
        EXPECT_LE(DenseDeviation(f.Data(), spike).largest, 0.01 + 1e-6);
    } else {
        pts.resize(100000);
        EXPECT_TRUE(Fit(pts, {}).record);
    }
}

TEST(BCRVFIT, DegenerateInput) {
    const std::vector<Point3> line = Sample(50, [](double t) { return Point3{3 * t, -t, 0}; });
    const Fitted straight = Fit(line, {3, false, BCRVFIT_KNOTS_UNIFORM, 1e-9, {}});
    EXPECT_TRUE(straight.record && straight.Data().numPoles == 3);
    std::vector<Point3> repeated;
    for (const Point3& p : Sample(40, Wave))
        repeated.insert(repeated.end(), 5, p);
    const Fitted many = Fit(repeated, {});
    EXPECT_TRUE(many.record && many.Data().numPoles <= 8);
    std::vector<Point3> jittered = repeated;
    for (std::size_t i = 0; i < jittered.size(); ++i)
        jittered[i].x += i % 2 == 0 ? 1e-14 : -1e-14;
    EXPECT_TRUE(Fit(jittered, {}).record);
    EXPECT_TRUE(Fit(std::vector<Point3>(9, {2, 5, 0}), {}).record);

    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        std::vector<Point3> broken = line;
        broken[20].y = bad;
        EXPECT_FALSE(Fit(broken, {}).record);
        EXPECT_FALSE(Fit(line, {3, false, BCRVFIT_KNOTS_UNIFORM, 0.01, broken}).record);
    }
    EXPECT_FALSE(Fit({{0, 0, 0}, {1, 0, 0}}, {}).record);
    std::mt19937 rng(99); // white noise over the square cannot be followed by 512 poles
    std::uniform_real_distribution<double> place(0.0, 1.0);
    const auto noise = Sample(3000, [&](double) { return Point3{place(rng), place(rng), 0.0}; });
    EXPECT_FALSE(Fit(noise, {3, false, BCRVFIT_KNOTS_UNIFORM, 0.001, {}}).record);
    EXPECT_FALSE(Fit(line, {1, false, BCRVFIT_KNOTS_UNIFORM, 0.01, {}}).record);
    for (const double tol : {0.0, -1.0, std::nan("")})
        EXPECT_FALSE(Fit(line, {3, false, BCRVFIT_KNOTS_UNIFORM, tol, {}}).record);
}

TEST(BCRVFIT, EveryAllocationMayFail) {
    const std::vector<Point3> pts = Sample(80, Wave);
    SM_fail_nth(0);
    ASSERT_TRUE(Fit(pts, {}).record);
    const long count = SM_ask_allocation_count();
    EXPECT_LE(count, 20);
    for (long i = 1; i <= count; ++i) {
        SM_fail_nth(i);
        int status = -1;
        double err[3] = {-1.0, -1.0, -1.0};
        const RecordPtr record(BCRVFIT_least_squares_fit(80, pts.data(), 0, nullptr, 3, 0,
                                                         BCRVFIT_KNOTS_UNIFORM, 0.01, &status, err));
        if (!record)
            EXPECT_TRUE(status == 1 && err[0] == -1.0) << i;
        else // a search for the exact deviation that had no memory
            EXPECT_TRUE(status == 0 && err[0] <= 0.01) << i;
    }
    SM_fail_nth(0);
}

} // namespace
