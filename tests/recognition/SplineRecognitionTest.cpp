#include "tessera/recognition/internal/SplineRecognition.h"

#include "tests/support/FitSamples.h"
#include "tests/support/SampleCurves.h"

namespace {

using Tessera::Geometry::Point;
using Tessera::Geometry::Spline;
using Vex::Math::Point2;

constexpr double kTau = 2.0 * std::numbers::pi;

struct Recognised {
    std::unique_ptr<Spline> spline;
    double maxDev = -1.0;
};

Recognised Recognise(const std::vector<Point2>& pts, double splineTol, double closeTol, int interval = 5) {
    Recognised r;
    r.spline.reset(Tessera::Geometry::RecognizeSpline(pts, interval, splineTol, closeTol, &r.maxDev));
    return r;
}

std::vector<Point2> Sample(int n, const std::function<Point2(double)>& curve, double noise = 0.0) {
    std::mt19937 rng(31);
    std::uniform_real_distribution<double> jitter(-noise, noise);
    std::vector<Point2> pts;
    for (int i = 0; i < n; ++i) {
        const Point2 p = curve(static_cast<double>(i) / (n - 1));
        pts.push_back({p.x + jitter(rng), p.y + jitter(rng)});
    }
    return pts;
}

// Points of the clamped quadratic of uniform knots, from the poles alone: what the host rebuilds.
std::vector<Point2> DensePoints(const Spline& spline) {
    int n = 0, order = 0, periodic = 0;
    std::vector<double> knots;
    std::vector<Point*> owned;
    spline.AskSplineData(n, order, periodic, knots, owned);
    EXPECT_EQ(order, 3);
    EXPECT_EQ(periodic, 0);
    std::vector<Point> poles;
    for (const Point* p : owned)
        poles.push_back(*p);
    Point::DeletePoints(owned);
    std::vector<Point2> dense;
    for (const Point& p : Tessera::Testing::DensePoints(*Tessera::Testing::MakeSpline(3, poles), 400 * n))
        dense.push_back({p.x, p.y});
    return dense;
}

double LargestDistance(const std::vector<Point2>& pts, const std::vector<Point2>& line) {
    double largest = 0.0;
    for (const Point2& p : pts)
        largest = std::max(largest, Tessera::Testing::PolylineDistance(line, p));
    return largest;
}

Point2 SCurve(double t) {
    return {t, 0.3 * std::sin(kTau * t)};
}
Point2 Eight(double t) {
    return {0.5 * std::sin(kTau * t), 0.5 * std::sin(2 * kTau * t)};
}
Point2 Spiral(double t) {
    return {(0.15 + 0.35 * t) * std::cos(3 * kTau * t), (0.15 + 0.35 * t) * std::sin(3 * kTau * t)};
}
Point2 Blob(double t) {
    const double r = 0.45 + 0.06 * std::sin(3 * kTau * t);
    return {r * std::cos(kTau * t), r * std::sin(kTau * t)};
}
Point2 Square(double t) {
    const double s = std::min(4.0 * t, 3.999999999), f = s - std::floor(s);
    const Point2 on[] = {{f, 0}, {1, f}, {1 - f, 1}, {0, 1 - f}};
    return on[static_cast<int>(s)];
}
Point2 Straight(double t) {
    return {t, 0.5 * t};
}

TEST(SplineRecognition, ShapesComeBackWithinToleranceAndWithFewPoles) {
    const struct {
        const char* name;
        Point2 (*curve)(double);
        double noise;
        bool closed;
        int mostPoles;
    } rows[] = {
        {"S curve", SCurve, 0.0, false, 7},      {"S curve by hand", SCurve, 0.004, false, 9},
        {"figure eight", Eight, 0.0, true, 16},  {"spiral", Spiral, 0.0, false, 36},
        {"blob by hand", Blob, 0.004, true, 22}, {"square", Square, 0.0, true, 40},
        {"straight", Straight, 0.0, false, 3},
    };
    for (const auto& row : rows)
        for (const int n : {60, 400, 5000}) {
            SCOPED_TRACE(testing::Message() << row.name << " " << n);
            const std::vector<Point2> pts = Sample(n, row.curve, row.noise);
            const Recognised r = Recognise(pts, 0.015, 0.03);
            ASSERT_TRUE(r.spline);
            EXPECT_LE(r.maxDev, 0.015);
            EXPECT_LE(r.spline->GetNumPoles(), row.mostPoles);
            EXPECT_EQ(r.spline->IsClosed(), row.closed);
            std::vector<Point2> some;
            for (std::size_t i = 0; i < pts.size(); i += 1 + pts.size() / 500)
                some.push_back(pts[i]);
            const double dense = LargestDistance(some, DensePoints(*r.spline));
            EXPECT_LE(dense, r.maxDev + 5e-6);
            if (some.size() == pts.size()) {
                EXPECT_NEAR(dense, r.maxDev, 1e-5);
            }
        }
}

// A stretch of the unit circle from angle 0.
std::vector<Point2> CirclePoints(double sweep) {
    return EllipsePoints({0, 0}, 1, 1, 0, 0, sweep, 400);
}

std::vector<Point2> OpenCircle(double gap) {
    return CirclePoints(kTau - 2.0 * std::asin(0.5 * gap));
}

TEST(SplineRecognition, ClosesWhereThePenWasHeading) {
    // There along two sides and back beside them: the ends are near, but not in line.
    std::vector<Point2> hairpin = Sample(200, [](double t) {
        return Point2{0.05 + t, 0.5 * (t < 0.5 ? t : 1 - t)};
    });
    for (int i = 199; i >= 0; --i)
        hairpin.push_back({hairpin[i].x, hairpin[i].y + 0.07});
    const struct {
        const char* name;
        std::vector<Point2> pts;
        bool closed;
        double closeTol = 0.1;
    } rows[] = {
        {"ends within the spline tolerance", OpenCircle(0.0099), true},
        {"gap just inside", OpenCircle(0.0999), true},
        {"gap just outside", OpenCircle(0.1001), false},
        {"29 degrees from the last five steps to the first", CirclePoints(kTau * 335 / 360), true, 1.0},
        {"31 degrees", CirclePoints(kTau * 333 / 360), false, 1.0},
        {"overshot: the gap lies behind", CirclePoints(1.02 * kTau), false},
        {"hairpin", hairpin, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Recognised r = Recognise(row.pts, 0.01, row.closeTol);
        ASSERT_TRUE(r.spline);
        EXPECT_EQ(r.spline->IsClosed(), row.closed);
        EXPECT_LE(LargestDistance(row.pts, DensePoints(*r.spline)), 0.01 + 1e-6);
    }
}

TEST(SplineRecognition, FewOrBadPoints) {
    EXPECT_FALSE(Recognise({}, 0.01, 0.02).spline);
    EXPECT_FALSE(Recognise({{0, 0}, {1, 1}, {2, 0}}, 0.01, 0.02).spline);
    const Recognised four = Recognise({{0, 0}, {1, 1}, {2, 0}, {3, 1}}, 0.01, 0.02, 1);
    ASSERT_TRUE(four.spline);
    EXPECT_LE(four.maxDev, 0.01);
    EXPECT_FALSE(Recognise({{0, 0}, {1, 1}, {std::nan(""), 0}, {3, 1}}, 0.01, 0.02).spline);
    EXPECT_TRUE(Recognise(std::vector<Point2>(10, {1, 1}), 0.01, 0.02).spline);
    const std::unique_ptr<Spline> unmeasured(
        Tessera::Geometry::RecognizeSpline(Sample(50, SCurve), 3, 0.01, 0.02, nullptr));
    EXPECT_TRUE(unmeasured);
}

} // namespace
