#include "tessera/recognition/internal/SplineRecognition.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

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

// The clamped quadratic of uniform knots, span by span from the poles alone: what the host rebuilds.
std::vector<Point2> DensePoints(const Spline& spline) {
    int n = 0, order = 0, periodic = 0;
    std::vector<double> knots;
    std::vector<Point*> owned;
    spline.AskSplineData(n, order, periodic, knots, owned);
    EXPECT_EQ(order, 3);
    EXPECT_EQ(periodic, 0);
    std::vector<Point2> poles;
    for (const Point* p : owned)
        poles.push_back({p->x, p->y});
    Point::DeletePoints(owned);
    const int spans = n - 2;
    const auto at = [](const Point2& a, const Point2& b, double t) {
        return Point2{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
    };
    std::vector<Point2> dense;
    for (int s = 0; s < spans; ++s) {
        const auto i = static_cast<std::size_t>(s);
        const Point2 from = s == 0 ? poles[i] : at(poles[i], poles[i + 1], 0.5);
        const Point2 to = s == spans - 1 ? poles[i + 2] : at(poles[i + 1], poles[i + 2], 0.5);
        for (int k = 0; k <= 400; ++k) {
            const double t = k / 400.0;
            dense.push_back(at(at(from, poles[i + 1], t), at(poles[i + 1], to, t), t));
        }
    }
    return dense;
}

double LargestDistance(const std::vector<Point2>& pts, const std::vector<Point2>& line) {
    double largest = 0.0;
    for (const Point2& p : pts) {
        double best = HUGE_VAL;
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            const double dx = line[i + 1].x - line[i].x, dy = line[i + 1].y - line[i].y;
            const double px = p.x - line[i].x, py = p.y - line[i].y, lengthSq = dx * dx + dy * dy;
            const double t = lengthSq > 0.0 ? std::clamp((px * dx + py * dy) / lengthSq, 0.0, 1.0) : 0.0;
            best = std::min(best, std::hypot(px - t * dx, py - t * dy));
        }
        largest = std::max(largest, best);
    }
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
Point2 Drop(double t) {
    return {0.5 * std::sin(0.5 * kTau * t), 0.3 * std::sin(kTau * t)};
}
Point2 Square(double t) {
    const double s = std::min(4.0 * t, 3.999999999), f = s - std::floor(s);
    const Point2 corner[] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
    const auto i = static_cast<std::size_t>(s);
    return {corner[i].x + f * (corner[i + 1].x - corner[i].x),
            corner[i].y + f * (corner[i + 1].y - corner[i].y)};
}

TEST(SplineRecognition, ShapesComeBackWithinToleranceAndWithFewPoles) {
    struct Row {
        const char* name;
        Point2 (*curve)(double);
        double noise;
        bool closed;
        int mostPoles;
    };
    const Row rows[] = {
        {"S curve", SCurve, 0.0, false, 7},
        {"S curve by hand", SCurve, 0.004, false, 9},
        {"figure eight", Eight, 0.0, true, 16},
        {"spiral", Spiral, 0.0, false, 36},
        {"blob by hand", Blob, 0.004, true, 22},
        {"teardrop", Drop, 0.0, true, 16},
        {"square", Square, 0.0, true, 40},
        {"straight",
         [](double t) {
             return Point2{t, 0.5 * t};
         },
         0.0, false, 3},
    };
    for (const Row& row : rows)
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

TEST(SplineRecognition, SeamIsSmooth) {
    const std::vector<Point2> pts = Sample(300, Blob, 0.003);
    const Recognised r = Recognise(pts, 0.015, 0.03);
    ASSERT_TRUE(r.spline);
    const std::vector<Point2> dense = DensePoints(*r.spline);
    const std::size_t last = dense.size() - 1;
    EXPECT_NEAR(dense[0].x, dense[last].x, 1e-15);
    EXPECT_NEAR(dense[0].y, dense[last].y, 1e-15);
    const double ax = dense[1].x - dense[0].x, ay = dense[1].y - dense[0].y;
    const double bx = dense[last].x - dense[last - 1].x, by = dense[last].y - dense[last - 1].y;
    EXPECT_GT((ax * bx + ay * by) / (std::hypot(ax, ay) * std::hypot(bx, by)), std::cos(0.02));
}

// An arc of a circle from angle 0, whose ends leave a gap.
std::vector<Point2> OpenCircle(double gap) {
    const double missing = 2.0 * std::asin(0.5 * gap);
    return Sample(400, [&](double t) {
        const double angle = (kTau - missing) * t;
        return Point2{std::cos(angle), std::sin(angle)};
    });
}

TEST(SplineRecognition, ClosesWhereThePenWasHeading) {
    struct Row {
        const char* name;
        std::vector<Point2> pts;
        bool closed;
    };
    std::vector<Point2> overshot = Sample(400, [](double t) {
        return Point2{std::cos(1.02 * kTau * t), std::sin(1.02 * kTau * t)};
    });
    std::vector<Point2> vee = Sample(200, [](double t) {
        return Point2{0.05 + t, 0.5 * (t < 0.5 ? t : 1 - t)};
    });
    std::vector<Point2> hairpin =
        vee; // there along one side and back along the other: ends near, not in line
    for (auto it = vee.rbegin(); it != vee.rend(); ++it)
        hairpin.push_back({it->x, it->y + 0.07});
    const Row rows[] = {
        {"ends within the spline tolerance", OpenCircle(0.0099), true},
        {"gap just inside", OpenCircle(0.0999), true},
        {"gap just outside", OpenCircle(0.1001), false},
        {"overshot: the gap lies behind", overshot, false},
        {"hairpin", hairpin, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Recognised r = Recognise(row.pts, 0.01, 0.1);
        ASSERT_TRUE(r.spline);
        EXPECT_EQ(r.spline->IsClosed(), row.closed);
        EXPECT_LE(LargestDistance(row.pts, DensePoints(*r.spline)), 0.01 + 1e-6);
    }
}

TEST(SplineRecognition, FollowsMotionAndReversal) {
    const std::vector<Point2> pts = Sample(250, Spiral, 0.002);
    const Recognised base = Recognise(pts, 0.015, 0.03);
    ASSERT_TRUE(base.spline);
    for (const double angle : {0.0, 0.7, 2.9}) {
        std::vector<Point2> moved;
        for (const Point2& p : pts)
            moved.push_back({100.0 + 1e3 * (std::cos(angle) * p.x - std::sin(angle) * p.y),
                             -7.0 + 1e3 * (std::sin(angle) * p.x + std::cos(angle) * p.y)});
        const Recognised r = Recognise(moved, 15.0, 30.0);
        ASSERT_TRUE(r.spline);
        EXPECT_LE(std::abs(r.spline->GetNumPoles() - base.spline->GetNumPoles()), 1);
    }
    const Recognised back = Recognise({pts.rbegin(), pts.rend()}, 0.015, 0.03);
    ASSERT_TRUE(back.spline);
    EXPECT_LE(std::abs(back.spline->GetNumPoles() - base.spline->GetNumPoles()), 3);
}

TEST(SplineRecognition, FewOrBadPoints) {
    EXPECT_FALSE(Recognise({}, 0.01, 0.02).spline);
    EXPECT_FALSE(Recognise({{0, 0}, {1, 1}, {2, 0}}, 0.01, 0.02).spline);
    const Recognised four = Recognise({{0, 0}, {1, 1}, {2, 0}, {3, 1}}, 0.01, 0.02, 1);
    ASSERT_TRUE(four.spline);
    EXPECT_LE(four.maxDev, 0.01);
    EXPECT_FALSE(Recognise({{0, 0}, {1, 1}, {std::nan(""), 0}, {3, 1}}, 0.01, 0.02).spline);
    EXPECT_TRUE(Recognise(std::vector<Point2>(10, {1, 1}), 0.01, 0.02).spline);
    // No room for a deviation to be stored: nothing is written.
    const std::vector<Point2> pts = Sample(50, SCurve);
    const std::unique_ptr<Spline> spline(Tessera::Geometry::RecognizeSpline(pts, 3, 0.01, 0.02, nullptr));
    EXPECT_TRUE(spline);
}

TEST(SplineRecognition, SparsePolylinesAreNotLost) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> place(0.0, 1.0);
    for (int trial = 0; trial < 100; ++trial) {
        std::vector<Point2> pts;
        for (int i = 0; i < 4 + trial % 12; ++i)
            pts.push_back({place(rng), place(rng)});
        const Recognised r = Recognise(pts, 0.02, 0.02, 1);
        ASSERT_TRUE(r.spline) << trial;
        EXPECT_LE(LargestDistance(pts, DensePoints(*r.spline)), 0.02 + 1e-5) << trial;
    }
}

} // namespace
