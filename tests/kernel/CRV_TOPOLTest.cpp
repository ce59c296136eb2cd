#include "tessera/kernel/CRV_TOPOL.h"

#include "tessera/kernel/SM.h"
#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

namespace {

using namespace records;

struct Hits {
    int status = -1;
    std::vector<CRV_TOPOL_hit_t> list;
};

Hits Intersect(const RecordPtr& a, const RecordPtr& b, double tol = 1e-9,
               CRV_TOPOL_extent_t extent = CRV_TOPOL_BOUNDED) {
    int n = -1;
    CRV_TOPOL_hit_t* hits = nullptr;
    Hits out;
    out.status = CRV_TOPOL_intersect(a.get(), extent, b.get(), extent, tol, &n, &hits);
    if (out.status == 0 && hits)
        out.list.assign(hits, hits + n);
    SM_free(hits);
    return out;
}

std::vector<Xy> Sample(const RecordPtr& c, int n) {
    std::vector<Xy> points;
    for (int i = 0; i <= n; ++i)
        points.push_back(At(c, ParameterAt(c, static_cast<double>(i) / n)));
    return points;
}

double Cross(Xy a, Xy b, Xy c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Sharpens a crossing of the sampled curves by Newton steps; false when it was none.
bool Sharpen(const RecordPtr& a, const RecordPtr& b, double t, double u, double gap, Xy* crossing) {
    const auto la = LimitsOf(a), lb = LimitsOf(b);
    double p[6], q[6];
    for (int k = 0; k < 30; ++k) {
        evcrve(a.get(), 1, t, p);
        evcrve(b.get(), 1, u, q);
        const double det = p[3] * q[4] - p[4] * q[3], ex = q[0] - p[0], ey = q[1] - p[1];
        t = std::clamp(t + (ex * q[4] - ey * q[3]) / det, la[0], la[1]);
        u = std::clamp(u + (ex * p[4] - ey * p[3]) / det, lb[0], lb[1]);
    }
    *crossing = At(a, t);
    return Distance(*crossing, At(b, u)) < gap;
}

// Brute force: every pair of chords that cross properly, sharpened.
std::vector<Xy> SampledCrossings(const RecordPtr& a, const RecordPtr& b, double gap) {
    constexpr int kSamples = 700, kBlock = 25;
    const std::vector<Xy> s = Sample(a, kSamples), r = Sample(b, kSamples);
    std::vector<Xy> found;
    const auto reach = [](const std::vector<Xy>& p, int from) { // radius about the first point of a block
        double most = 0.0;
        for (int i = from; i <= from + kBlock; ++i)
            most = std::max(most, Distance(p[i], p[from]));
        return most;
    };
    const auto cross = [&](int i, int j) { // of chords i and j
        const double c1 = Cross(s[i], s[i + 1], r[j]), c2 = Cross(s[i], s[i + 1], r[j + 1]);
        const double c3 = Cross(r[j], r[j + 1], s[i]), c4 = Cross(r[j], r[j + 1], s[i + 1]);
        Xy crossing;
        if (c1 * c2 < 0.0 && c3 * c4 < 0.0 &&
            Sharpen(a, b, ParameterAt(a, (i + c3 / (c3 - c4)) / kSamples),
                    ParameterAt(b, (j + c1 / (c1 - c2)) / kSamples), gap, &crossing))
            found.push_back(crossing);
    };
    for (int bi = 0; bi < kSamples; bi += kBlock)
        for (int bj = 0; bj < kSamples; bj += kBlock)
            if (Distance(s[bi], r[bj]) <= reach(s, bi) + reach(r, bj))
                for (int k = 0; k < kBlock * kBlock; ++k)
                    cross(bi + k / kBlock, bj + k % kBlock);
    return found;
}

double NearestHit(const Hits& hits, Xy p) {
    double nearest = 1e300;
    for (const CRV_TOPOL_hit_t& h : hits.list)
        nearest = std::min(nearest, Distance(p, {h.point[0], h.point[1]}));
    return nearest;
}

void ExpectSound(const Hits& hits, const RecordPtr& a, const RecordPtr& b, double tol, double size) {
    const auto la = LimitsOf(a), lb = LimitsOf(b);
    for (std::size_t i = 0; i < hits.list.size(); ++i) {
        const CRV_TOPOL_hit_t& h = hits.list[i];
        const Xy p{h.point[0], h.point[1]};
        EXPECT_TRUE(Distance(At(a, h.t1), p) <= tol && Distance(At(b, h.t2), p) <= tol);
        EXPECT_TRUE(h.t1 >= la[0] && h.t1 <= la[1] && h.t2 >= lb[0] && h.t2 <= lb[1]);
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_GT(Distance(p, {hits.list[j].point[0], hits.list[j].point[1]}), 0.5e-9 * size);
        EXPECT_TRUE(i == 0 || hits.list[i - 1].t1 <= h.t1);
    }
}

// All that brute force finds is there, all that is there is real, and swapping the arguments changes nothing.
int ExpectAgreement(const RecordPtr& a, const RecordPtr& b, double tol, double size) {
    const Hits hits = Intersect(a, b, tol), swapped = Intersect(b, a, tol);
    EXPECT_EQ(hits.status, 0);
    ExpectSound(hits, a, b, tol, size);
    const std::vector<Xy> crossings = SampledCrossings(a, b, 0.1 * tol);
    for (const Xy& p : crossings)
        EXPECT_LE(NearestHit(hits, p), 10.0 * tol) << "missed (" << p.x << ", " << p.y << ")";
    EXPECT_EQ(swapped.list.size(), hits.list.size());
    for (const CRV_TOPOL_hit_t& h : hits.list)
        EXPECT_TRUE(std::any_of(swapped.list.begin(), swapped.list.end(), [&](const CRV_TOPOL_hit_t& g) {
            return std::hypot(g.t1 - h.t2, g.t2 - h.t1) <= 1e-12;
        }));
    return static_cast<int>(crossings.size());
}

TEST(Intersect, AgreesWithBruteForce) {
    constexpr int kKinds = records::Random::kKinds;
    records::Random random(17);
    int crossings = 0;
    for (const double size : {1.0, 1e-3, 1e6}) {
        for (int trial = 0; trial < kKinds * kKinds * 2; ++trial) { // every pair of forms
            SCOPED_TRACE(testing::Message() << "size " << size << " trial " << trial);
            const Xy at{size * random.In(-2, 2), size * random.In(-2, 2)};
            const RecordPtr a = random.Record(trial % kKinds, size, at),
                            b = random.Record(trial / kKinds % kKinds, size, at);
            crossings += ExpectAgreement(a, b, 1e-9 * size, size);
        }
    }
    EXPECT_GT(crossings, 2000);
}

// Periodic curves that meet over their seams, and curves that a few weights pull about, far from the origin.
TEST(Intersect, AgreesWithBruteForceOnHardBCurves) {
    records::Random random(18);
    std::mt19937 rng(19);
    int crossings = 0;
    for (int trial = 0; trial < 60; ++trial) {
        SCOPED_TRACE(trial);
        const RecordPtr a = RandomPeriodic(rng, 2 + trial % 4, 2 + trial % 5, trial % 2 == 0),
                        b = RandomPeriodic(rng, 3, 4, true);
        crossings += ExpectAgreement(a, b, 1e-8, 10.0);
        std::vector<std::array<double, 3>> poles;
        for (int i = 0; i < 3 + trial % 8; ++i)
            poles.push_back({1e6 + random.In(-1, 1), random.In(-1, 1), std::pow(10.0, random.In(-3, 3))});
        const RecordPtr other = random.Record(trial % records::Random::kKinds, 1.0, {1e6, 0.0});
        crossings += ExpectAgreement(Bcurve(2 + trial % 2, poles), other, 3e-8, 1.0);
    }
    EXPECT_GT(crossings, 200);
}

TEST(Intersect, KnownPairs) {
    const RecordPtr parabola = Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}}); // top (1, 1)
    const RecordPtr roof = Bcurve(2, {{0, 0, 1}, {1, 1, 1}, {2, 0, 1}});
    struct {
        const char* name;
        RecordPtr a, b;
        int count, tangents;
        CRV_TOPOL_extent_t extent = CRV_TOPOL_BOUNDED;
    } rows[] = {
        {"segments that only meet when extended", Line(0, 0, 1, 1), Line(3, 0, 2, 1), 0, 0},
        {"their carriers", Line(0, 0, 1, 1), Line(3, 0, 2, 1), 1, 0, CRV_TOPOL_CARRIER},
        {"end to end in one line", Line(0, 0, 1, 0), Line(1, 0, 3, 0), 1, 1},
        {"end to end round a corner", Line(0, 0, 1, 0), Line(1, 0, 1, 3), 1, 0},
        {"T joint", Line(0, 0, 2, 0), Line(1, 0, 1, 3), 1, 0},
        {"segments on one line that overlap", Line(0, 0, 2, 0), Line(1, 0, 3, 0), 0, 0},
        {"parallel", Line(0, 0, 2, 0), Line(0, 1, 3, 1), 0, 0},
        {"line under a circle", Line(-5, -2, 5, -2), Arc(0, 0, 2), 1, 1},
        {"line just clear of it", Line(-5, -2.0001, 5, -2.0001), Arc(0, 0, 2), 0, 0},
        {"chord inside a half circle", Line(-1, 0, 1, 0), Arc(0, 0, 2, 0, kPi), 0, 0},
        {"diameter of a half circle", Line(-2, 0, 2, 0), Arc(0, 0, 2, 0, kPi), 2, 0},
        {"line beside a turned ellipse", Line(-10, std::hypot(3, 1), 10, std::hypot(3, 1)),
         Ellipse(0, 0, std::sqrt(18.0), std::sqrt(2.0), kPi / 4), 1, 1},
        {"circles touching outside", Arc(0, 0, 2), Arc(3, 4, 3), 1, 1},
        {"circles touching inside", Arc(0, 0, 7), Arc(3, 4, 2), 1, 1},
        {"concentric", Arc(0, 0, 2), Arc(0, 0, 3), 0, 0},
        {"the same circle", Arc(0, 0, 2), Arc(0, 0, 2), 0, 0},
        {"arcs of one circle that share an end", Arc(0, 0, 2, 0, 1), Arc(0, 0, 2, 1, 3), 1, 1},
        {"arcs of one circle that share both ends", Arc(0, 0, 2, 0, 1), Arc(0, 0, 2, 1, 2 * kPi), 2, 2},
        {"ellipse in its circle", Arc(0, 0, 3), Ellipse(0, 0, 3, 1, 0.7), 2, 2},
        {"ellipse round its circle", Arc(0, 0, 1), Ellipse(0, 0, 3, 1, 0.7), 2, 2},
        {"the same ellipse", Ellipse(0, 0, 3, 1, 0.7), Ellipse(0, 0, 3, 1, 0.7), 0, 0},
        {"ellipses touching outside", Ellipse(0, 0, 3, 1, 0), Ellipse(5, 0, 2, 1, 0), 1, 1},
        {"osculating at the apex and crossing", Ellipse(0, 0, 2, 1, 0), Arc(1.5, 0, 0.5), 1, 1},
        {"line over a parabola", Line(-1, 1, 3, 1), Copy(parabola), 1, 1},
        {"chord of its ends", Line(0, 0, 2, 0), Copy(parabola), 2, 0},
        {"circle on a parabola", Arc(1, 3, 2), Copy(parabola), 1, 1},
        {"parabolas top to top", Bcurve(3, {{0, 2, 1}, {1, 0, 1}, {2, 2, 1}}), Copy(parabola), 1, 1},
        {"parabolas top to top, turned cubic",
         Bcurve(4, {{0, 2, 1}, {2.0 / 3, 2.0 / 3, 1}, {4.0 / 3, 2.0 / 3, 1}, {2, 2, 1}}), Copy(parabola), 1,
         1},
        {"the same parabola", Copy(parabola), Copy(parabola), 0, 0},
        {"corner on a line", Line(-1, 1, 3, 1), Copy(roof), 1, 0},
        {"corner on a parabola", Bcurve(2, {{0, 2, 1}, {1, 1, 1}, {2, 2, 1}}), Copy(parabola), 1, 0},
        {"end on coincident poles, crossing close by", Bcurve(2, {{0, 0, 1}, {0, 0, 1}, {0.9, 0.45, 1}}),
         Bcurve(2, {{0.09, -1, 1}, {0.09, 0.1, 1}, {0, 0, 1}}), 2, 0},
        {"corner to corner", Bcurve(2, {{0, 2, 1}, {1, 1, 1}, {2, 3, 1}}), Copy(roof), 1, 0},
    };
    for (auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const double scale : {1.0, 1e-3, 1e5}) { // and moved away from the origin
            double m[3][3] = {{0.8, -0.6, 0}, {0.6, 0.8, 0}, {0, 0, 1}}, v[3] = {0.3, -0.2, 0};
            const RecordPtr a(evcrvx(row.a.get(), m, v)), b(evcrvx(row.b.get(), m, v));
            evcrvxScale(a.get(), scale);
            evcrvxScale(b.get(), scale);
            for (const bool swapped : {false, true}) {
                const Hits hits = swapped ? Intersect(b, a, 1e-9 * scale, row.extent)
                                          : Intersect(a, b, 1e-9 * scale, row.extent);
                EXPECT_EQ(hits.status, 0);
                EXPECT_EQ(static_cast<int>(hits.list.size()), row.count) << "scale " << scale;
                const auto isTangent = [](const CRV_TOPOL_hit_t& h) { return h.tangent == 1; };
                EXPECT_EQ(std::count_if(hits.list.begin(), hits.list.end(), isTangent), row.tangents)
                    << "scale " << scale;
            }
        }
    }
}

// Tangencies made on purpose: a circle set on a random point of a random curve, on the outside of its bend;
// the same against that circle as a B-curve.
TEST(Intersect, EveryTouchOnceAndMarked) {
    records::Random random(23);
    int touches = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const int kind = trial % records::Random::kKinds;
        SCOPED_TRACE(testing::Message() << "trial " << trial << " kind " << kind);
        const RecordPtr c = random.Record(kind, 1.0, {0, 0});
        double d[9];
        evcrve(c.get(), 2, ParameterAt(c, random.In(0.05, 0.95)), d);
        const double speed = std::hypot(d[3], d[4]),
                     bend = (d[3] * d[7] - d[4] * d[6]) / (speed * speed * speed);
        if (speed < 1e-2 || std::fabs(bend) > 1e3 || (kind > 0 && std::fabs(bend) < 0.05))
            continue;
        const double r = random.In(0.05, 0.5), side = bend > 0.0 ? -r : r;
        const RecordPtr circle = records::Arc(d[0] - side * d[4] / speed, d[1] + side * d[3] / speed, r),
                        spline = AsBcurve(circle);
        for (const RecordPtr* other : {&circle, &spline}) {
            const Hits hits = Intersect(c, *other);
            ASSERT_EQ(hits.status, 0);
            EXPECT_LE(NearestHit(hits, {d[0], d[1]}), 1e-6);
            int here = 0;
            for (const CRV_TOPOL_hit_t& h : hits.list)
                if (Distance({h.point[0], h.point[1]}, {d[0], d[1]}) < 3e-5)
                    here += h.tangent == 1 ? 1 : 100;
            EXPECT_EQ(here, 1);
            touches += here;
            ExpectSound(hits, c, *other, 1e-9, 1.0);
        }
    }
    EXPECT_GT(touches, 500);
}

// Coincident curves come back soon and with the places they cross themselves, and a shared seam, at most.
TEST(Intersect, CoincidentStretchesAreNotAFlood) {
    records::Random random(61);
    for (int trial = 0; trial < 40; ++trial) {
        SCOPED_TRACE(trial);
        const RecordPtr c = random.Record(trial % records::Random::kKinds, 1.0, {0, 0});
        const RecordPtr a = Part(c, ParameterAt(c, 0.0), ParameterAt(c, 0.6)),
                        b = Part(c, ParameterAt(c, 0.3), ParameterAt(c, 1.0));
        for (const Hits& hits : {Intersect(a, b), Intersect(c, AsBcurve(c))}) {
            EXPECT_TRUE(hits.status == 0 && hits.list.size() <= 30u);
            for (const CRV_TOPOL_hit_t& h : hits.list)
                EXPECT_TRUE(h.tangent == 0 || c->closed);
        }
    }
}

TEST(Intersect, BadInputIsRefused) {
    const double origin[3] = {};
    const RecordPtr point(ev02p0(origin)), line = records::Line(0, 0, 1, 1);
    EXPECT_EQ(Intersect(point, line).status, 1);
    EXPECT_EQ(Intersect(line, RecordPtr()).status, 1);
    EXPECT_EQ(Intersect(line, records::Line(0, 0, NAN, 1)).status, 1);
    EXPECT_EQ(Intersect(line, records::Line(0, 1, 1, 0), 0.0).status, 1);
    EXPECT_EQ(Intersect(line, records::Line(0.5, 0.5, 0.5, 0.5)).list.size(), 1u); // a point on the line
}

// Long poly-lines against everything, found by counting sign changes of the samples.
TEST(Intersect, LongPolylines) {
    std::vector<std::array<double, 3>> wave;
    wave.reserve(200'001);
    int expected = 0;
    const auto height = [](double x) { return 5.0 * std::sin(10.0 * x) - (0.1 + 1e-4 * x); };
    for (int i = 0; i <= 200'000; ++i) {
        const double x = 0.001 * i;
        wave.push_back({x, 5.0 * std::sin(10.0 * x), 1.0});
        expected += i > 0 && height(x) * height(x - 0.001) < 0.0;
    }
    const RecordPtr poly = records::Bcurve(2, wave), line = records::Line(0, 0.1, 200, 0.12);
    const RecordPtr bent = records::Bcurve(2, {{0, 0.1, 1}, {100, 0.11, 1}, {200, 0.12, 1}});
    EXPECT_EQ(static_cast<int>(Intersect(line, poly).list.size()), expected);
    EXPECT_EQ(static_cast<int>(Intersect(poly, bent).list.size()), expected);
    EXPECT_EQ(Intersect(poly, Copy(poly)).list.size(), 0u);
}

// Curves at other heights, and a B-curve that climbs, meet where their views from above do: ends too, whose
// nearest point in space is another one.
TEST(Intersect, HeightsAreIgnored) {
    records::Random rng(77);
    for (int trial = 0; trial < 300; ++trial) {
        SCOPED_TRACE(trial);
        const RecordPtr a = rng.Record(trial % 11, 10.0, {}), b = rng.Record(trial / 11 % 11, 10.0, {});
        const Xy from = At(b, ParameterAt(b, 0.0));
        const RecordPtr stub = records::Line(from.x, from.y, from.x + 30.0, from.y + 1.0); // begins on b
        double climb[3][3] = {{1, 0, 0}, {0, 1, 0}, {b->form == kFormBCurve ? 0.8 : 0.0, 0, 1}},
               lift[3] = {0.0, 0.0, 7.0};
        const RecordPtr raised(evcrvx(b.get(), climb, lift));
        for (const RecordPtr* other : {&a, &stub}) {
            const Hits flat = Intersect(*other, b), high = Intersect(*other, raised);
            ASSERT_TRUE(high.status == 0 && high.list.size() == flat.list.size());
            for (std::size_t i = 0; i < flat.list.size(); ++i) {
                const CRV_TOPOL_hit_t &f = flat.list[i], &h = high.list[i];
                EXPECT_TRUE(h.t1 == f.t1 && h.t2 == f.t2 && h.point[2] == 0.0);
            }
        }
    }
}

} // namespace
