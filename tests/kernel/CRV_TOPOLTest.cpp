#include "tessera/kernel/CRV_TOPOL.h"

#include <gtest/gtest.h>

#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/AllocationFaults.h"
#include "tests/support/Records.h"

namespace {

using records::At;
using records::Distance;
using records::Xy;

constexpr double kPi = std::numbers::pi;

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

struct Sampled {
    std::vector<double> t;
    std::vector<Xy> p;
};

Sampled Sample(KC_CURVE_struct_s* c, int n) {
    Sampled s;
    double limits[2];
    evcrvp(c, limits);
    for (int i = 0; i <= n; ++i) {
        s.t.push_back(limits[0] + (limits[1] - limits[0]) * i / n);
        s.p.push_back(At(c, s.t.back()));
    }
    return s;
}

double Cross(Xy a, Xy b, Xy c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Sharpens a crossing of the sampled curves by Newton steps; false when it was none.
bool Sharpen(KC_CURVE_struct_s* a, KC_CURVE_struct_s* b, double& t, double& u, double size) {
    double la[2], lb[2], p[6], q[6];
    evcrvp(a, la);
    evcrvp(b, lb);
    for (int k = 0; k < 30; ++k) {
        evcrve(a, 1, t, p);
        evcrve(b, 1, u, q);
        const double det = p[3] * q[4] - p[4] * q[3], ex = q[0] - p[0], ey = q[1] - p[1];
        t = std::clamp(t + (ex * q[4] - ey * q[3]) / det, la[0], la[1]);
        u = std::clamp(u + (ex * p[4] - ey * p[3]) / det, lb[0], lb[1]);
    }
    return Distance(At(a, t), At(b, u)) < 1e-10 * size;
}

// Brute force: every pair of chords that cross properly, sharpened.
std::vector<Xy> SampledCrossings(KC_CURVE_struct_s* a, KC_CURVE_struct_s* b, double size) {
    constexpr int kSamples = 700, kBlock = 25;
    const Sampled s = Sample(a, kSamples), r = Sample(b, kSamples);
    std::vector<Xy> found;
    const auto reach = [](const Sampled& c, int from) { // radius about the first point of a block
        double most = 0.0;
        for (int i = from; i <= from + kBlock; ++i)
            most = std::max(most, Distance(c.p[i], c.p[from]));
        return most;
    };
    for (int bi = 0; bi < kSamples; bi += kBlock) {
        for (int bj = 0; bj < kSamples; bj += kBlock) {
            if (Distance(s.p[bi], r.p[bj]) > reach(s, bi) + reach(r, bj))
                continue;
            for (int i = bi; i < bi + kBlock; ++i) {
                for (int j = bj; j < bj + kBlock; ++j) {
                    const double c1 = Cross(s.p[i], s.p[i + 1], r.p[j]),
                                 c2 = Cross(s.p[i], s.p[i + 1], r.p[j + 1]);
                    const double c3 = Cross(r.p[j], r.p[j + 1], s.p[i]),
                                 c4 = Cross(r.p[j], r.p[j + 1], s.p[i + 1]);
                    if (c1 * c2 >= 0.0 || c3 * c4 >= 0.0)
                        continue;
                    double t = s.t[i] + (s.t[i + 1] - s.t[i]) * c3 / (c3 - c4),
                           u = r.t[j] + (r.t[j + 1] - r.t[j]) * c1 / (c1 - c2);
                    if (Sharpen(a, b, t, u, size))
                        found.push_back(At(a, t));
                }
            }
        }
    }
    return found;
}

void ExpectSound(const Hits& hits, const RecordPtr& a, const RecordPtr& b, double tol, double size) {
    double la[2], lb[2];
    evcrvp(a.get(), la);
    evcrvp(b.get(), lb);
    for (std::size_t i = 0; i < hits.list.size(); ++i) {
        const CRV_TOPOL_hit_t& h = hits.list[i];
        const Xy p{h.point[0], h.point[1]};
        EXPECT_LE(Distance(At(a.get(), h.t1), p), tol);
        EXPECT_LE(Distance(At(b.get(), h.t2), p), tol);
        EXPECT_TRUE(h.t1 >= la[0] && h.t1 <= la[1] && h.t2 >= lb[0] && h.t2 <= lb[1]);
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_GT(Distance(p, {hits.list[j].point[0], hits.list[j].point[1]}), 0.5e-9 * size);
        EXPECT_TRUE(i == 0 || hits.list[i - 1].t1 <= h.t1);
    }
}

// Every pair of forms at three sizes: all that brute force finds is there, all that is there is real, and
// swapping the arguments changes nothing.
TEST(Intersect, AgreesWithBruteForce) {
    records::Random random(17);
    int crossings = 0;
    for (const double size : {1.0, 1e-3, 1e6}) {
        for (int trial = 0; trial < records::Random::kKinds * records::Random::kKinds * 2; ++trial) {
            const int first = trial % records::Random::kKinds,
                      second = trial / records::Random::kKinds % records::Random::kKinds;
            SCOPED_TRACE(testing::Message()
                         << "size " << size << " trial " << trial << " kinds " << first << ", " << second);
            const Xy at{size * random.In(-2, 2), size * random.In(-2, 2)};
            const RecordPtr a = random.Record(first, size, at), b = random.Record(second, size, at);
            const double tol = 1e-9 * size;
            const Hits hits = Intersect(a, b, tol), swapped = Intersect(b, a, tol);
            ASSERT_EQ(hits.status, 0);
            ExpectSound(hits, a, b, tol, size);
            for (const Xy& p : SampledCrossings(a.get(), b.get(), size)) {
                ++crossings;
                double nearest = 1e300;
                for (const CRV_TOPOL_hit_t& h : hits.list)
                    nearest = std::min(nearest, Distance(p, {h.point[0], h.point[1]}));
                EXPECT_LE(nearest, 1e-8 * size) << "missed (" << p.x << ", " << p.y << ")";
            }
            ASSERT_EQ(swapped.list.size(), hits.list.size());
            for (const CRV_TOPOL_hit_t& h : hits.list) {
                double nearest = 1e300;
                for (const CRV_TOPOL_hit_t& g : swapped.list)
                    nearest = std::min(nearest, std::hypot(g.t1 - h.t2, g.t2 - h.t1));
                EXPECT_LE(nearest, 1e-12);
            }
        }
    }
    EXPECT_GT(crossings, 2000);
}

TEST(Intersect, KnownPairs) {
    using namespace records;
    const RecordPtr parabola = Bcurve(3, {{0, 0, 1}, {1, 2, 1}, {2, 0, 1}}); // top (1, 1)
    const RecordPtr roof = Bcurve(2, {{0, 0, 1}, {1, 1, 1}, {2, 0, 1}});
    struct Row {
        const char* name;
        RecordPtr a, b;
        int count, tangents;
        CRV_TOPOL_extent_t extent = CRV_TOPOL_BOUNDED;
    };
    Row rows[] = {
        {"segments that only meet when extended", Line(0, 0, 1, 1), Line(3, 0, 2, 1), 0, 0},
        {"their carriers", Line(0, 0, 1, 1), Line(3, 0, 2, 1), 1, 0, CRV_TOPOL_CARRIER},
        {"end to end in one line", Line(0, 0, 1, 0), Line(1, 0, 3, 0), 1, 1},
        {"end to end round a corner", Line(0, 0, 1, 0), Line(1, 0, 1, 3), 1, 0},
        {"T joint", Line(0, 0, 2, 0), Line(1, 0, 1, 3), 1, 0},
        {"segments on one line that overlap", Line(0, 0, 2, 0), Line(1, 0, 3, 0), 0, 0},
        {"parallel", Line(0, 0, 2, 0), Line(0, 1, 3, 1), 0, 0},
        {"line through a circle", Line(-5, 0, 5, 0), Arc(0, 0, 2), 2, 0},
        {"line under a circle", Line(-5, -2, 5, -2), Arc(0, 0, 2), 1, 1},
        {"line just clear of it", Line(-5, -2.0001, 5, -2.0001), Arc(0, 0, 2), 0, 0},
        {"chord inside a half circle", Line(-1, 0, 1, 0), Arc(0, 0, 2, 0, kPi), 0, 0},
        {"diameter of a half circle", Line(-2, 0, 2, 0), Arc(0, 0, 2, 0, kPi), 2, 0},
        {"line beside a turned ellipse", Line(-10, std::hypot(3, 1), 10, std::hypot(3, 1)),
         Ellipse(0, 0, std::sqrt(18.0), std::sqrt(2.0), kPi / 4), 1, 1},
        {"circles touching outside", Arc(0, 0, 2), Arc(3, 4, 3), 1, 1},
        {"circles touching inside", Arc(0, 0, 7), Arc(3, 4, 2), 1, 1},
        {"small in big", Arc(3, 4, 2), Arc(0, 0, 7), 1, 1},
        {"concentric", Arc(0, 0, 2), Arc(0, 0, 3), 0, 0},
        {"the same circle", Arc(0, 0, 2), Arc(0, 0, 2), 0, 0},
        {"arcs of one circle that share an end", Arc(0, 0, 2, 0, 1), Arc(0, 0, 2, 1, 3), 1, 1},
        {"arcs of one circle that share both ends", Arc(0, 0, 2, 0, 1), Arc(0, 0, 2, 1, 2 * kPi), 2, 2},
        {"crossed ellipses", Ellipse(0, 0, 3, 1, 0), Ellipse(0, 0, 3, 1, kPi / 2), 4, 0},
        {"ellipse in its circle", Arc(0, 0, 3), Ellipse(0, 0, 3, 1, 0.7), 2, 2},
        {"ellipse round its circle", Arc(0, 0, 1), Ellipse(0, 0, 3, 1, 0.7), 2, 2},
        {"the same ellipse", Ellipse(0, 0, 3, 1, 0.7), Ellipse(0, 0, 3, 1, 0.7), 0, 0},
        {"ellipses touching outside", Ellipse(0, 0, 3, 1, 0), Ellipse(5, 0, 2, 1, 0), 1, 1},
        {"osculating at the apex and crossing", Ellipse(0, 0, 2, 1, 0), Arc(1.5, 0, 0.5), 1, 1},
        {"line over a parabola", Line(-1, 1, 3, 1), RecordPtr(evcrvCopy(parabola.get())), 1, 1},
        {"line through it", Line(-1, 0.5, 3, 0.5), RecordPtr(evcrvCopy(parabola.get())), 2, 0},
        {"chord of its ends", Line(0, 0, 2, 0), RecordPtr(evcrvCopy(parabola.get())), 2, 0},
        {"circle on a parabola", Arc(1, 3, 2), RecordPtr(evcrvCopy(parabola.get())), 1, 1},
        {"parabolas top to top", Bcurve(3, {{0, 2, 1}, {1, 0, 1}, {2, 2, 1}}),
         RecordPtr(evcrvCopy(parabola.get())), 1, 1},
        {"parabolas top to top, turned cubic",
         Bcurve(4, {{0, 2, 1}, {2.0 / 3, 2.0 / 3, 1}, {4.0 / 3, 2.0 / 3, 1}, {2, 2, 1}}),
         RecordPtr(evcrvCopy(parabola.get())), 1, 1},
        {"the same parabola", RecordPtr(evcrvCopy(parabola.get())), RecordPtr(evcrvCopy(parabola.get())), 0,
         0},
        {"corner on a line", Line(-1, 1, 3, 1), RecordPtr(evcrvCopy(roof.get())), 1, 0},
        {"corner on a parabola", Bcurve(2, {{0, 2, 1}, {1, 1, 1}, {2, 2, 1}}),
         RecordPtr(evcrvCopy(parabola.get())), 1, 0},
        {"corner to corner", Bcurve(2, {{0, 2, 1}, {1, 1, 1}, {2, 3, 1}}), RecordPtr(evcrvCopy(roof.get())),
         1, 0},
    };
    for (Row& row : rows) {
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
                int tangents = 0;
                for (const CRV_TOPOL_hit_t& h : hits.list)
                    tangents += h.tangent;
                EXPECT_EQ(tangents, row.tangents) << "scale " << scale;
            }
        }
    }
}

// Tangencies made on purpose: a circle set on a random point of a random curve, on the outside of its bend.
TEST(Intersect, EveryTouchOnceAndMarked) {
    records::Random random(23);
    int touches = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const int kind = trial % records::Random::kKinds;
        SCOPED_TRACE(testing::Message() << "trial " << trial << " kind " << kind);
        const RecordPtr c = random.Record(kind, 1.0, {0, 0});
        double limits[2], d[9];
        evcrvp(c.get(), limits);
        const double t = limits[0] + (limits[1] - limits[0]) * random.In(0.05, 0.95);
        evcrve(c.get(), 2, t, d);
        const double speed = std::hypot(d[3], d[4]),
                     bend = (d[3] * d[7] - d[4] * d[6]) / (speed * speed * speed);
        if (speed < 1e-2 || std::fabs(bend) > 1e3 || (kind > 0 && std::fabs(bend) < 0.05))
            continue;
        const double r = random.In(0.05, 0.5), side = bend > 0.0 ? -r : r;
        const RecordPtr circle = records::Arc(d[0] - side * d[4] / speed, d[1] + side * d[3] / speed, r);
        // The same tangency against a circle, and against that circle as a B-curve.
        const RecordPtr spline(ev09p1(em0960(circle.get())));
        for (const RecordPtr* other : {&circle, &spline}) {
            const Hits hits = Intersect(c, *other);
            ASSERT_EQ(hits.status, 0);
            int here = 0;
            for (const CRV_TOPOL_hit_t& h : hits.list) {
                if (Distance({h.point[0], h.point[1]}, {d[0], d[1]}) < 3e-5) {
                    ++here;
                    EXPECT_EQ(h.tangent, 1);
                    EXPECT_NEAR(Distance({h.point[0], h.point[1]}, {d[0], d[1]}), 0.0, 1e-6);
                }
            }
            EXPECT_EQ(here, 1);
            touches += here;
            ExpectSound(hits, c, *other, 1e-9, 1.0);
        }
    }
    EXPECT_GT(touches, 500);
}

// Coincident curves come back soon and with the places they cross themselves at most.
TEST(Intersect, CoincidentStretchesAreNotAFlood) {
    records::Random random(61);
    for (int trial = 0; trial < 40; ++trial) {
        const int kind = trial % records::Random::kKinds;
        SCOPED_TRACE(testing::Message() << "trial " << trial << " kind " << kind);
        const RecordPtr c = random.Record(kind, 1.0, {0, 0});
        double l[2];
        evcrvp(c.get(), l);
        const double head[2] = {l[0], l[0] + 0.6 * (l[1] - l[0])},
                     tail[2] = {l[0] + 0.3 * (l[1] - l[0]), l[1]};
        const RecordPtr a(em0941(c.get(), head)), b(em0941(c.get(), tail));
        for (const Hits& hits : {Intersect(a, b), Intersect(c, RecordPtr(ev09p1(em0960(c.get()))))}) {
            EXPECT_EQ(hits.status, 0);
            for (const CRV_TOPOL_hit_t& h :
                 hits.list) // places where the curve crosses itself, and a shared seam
                EXPECT_TRUE(h.tangent == 0 || c->closed);
            EXPECT_LE(hits.list.size(), 30u);
        }
    }
}

TEST(Intersect, EveryAllocationFailureIsReported) {
    const RecordPtr line = records::Line(-1, 0.1, 1, 0.05), ellipse = records::Ellipse(0, 0, 0.9, 0.3, 1.0);
    records::Random random(7);
    const RecordPtr splines[] = {random.Spline(4, 1.0, {0, 0}), random.Spline(4, 1.0, {0, 0}),
                                 random.Spline(4, 1.0, {0, 0})};
    const std::pair<const RecordPtr&, const RecordPtr&> pairs[] = {
        {line, ellipse}, {line, splines[0]}, {ellipse, splines[1]}, {splines[1], splines[2]}};
    for (const auto& [a, b] : pairs) {
        FailEachAllocation([&, &a = a, &b = b] {
            int n = 0;
            CRV_TOPOL_hit_t* hits = nullptr;
            const int status =
                CRV_TOPOL_intersect(a.get(), CRV_TOPOL_BOUNDED, b.get(), CRV_TOPOL_BOUNDED, 1e-9, &n, &hits);
            EXPECT_TRUE(status == 0 || hits == nullptr);
            SM_free(hits);
            return status == 0;
        });
    }
    FailEachAllocation([&] {
        CRV_TOPOL_state_t state = CRV_TOPOL_SEPARATE;
        return CRV_TOPOL_overlap(splines[1].get(), splines[1].get(), 1e-8, 1e-6, 1e-6, &state, nullptr,
                                 nullptr) == 0;
    });
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
    EXPECT_EQ(Intersect(poly, RecordPtr(evcrvCopy(poly.get()))).list.size(), 0u);
}

// Curves at other heights, and a B-curve that climbs, meet where their views from above do: ends too, whose
// nearest point in space is another one.
TEST(CrvTopol, HeightsAreIgnored) {
    records::Random rng(77);
    for (int trial = 0; trial < 300; ++trial) {
        SCOPED_TRACE(trial);
        const RecordPtr a = rng.Record(trial % 11, 10.0, {}), b = rng.Record(trial / 11 % 11, 10.0, {});
        double limits[2], lift[3] = {0.0, 0.0, 7.0};
        evcrvp(b.get(), limits);
        const Xy from = At(b.get(), limits[0]);
        const RecordPtr stub = records::Line(from.x, from.y, from.x + 30.0, from.y + 1.0); // begins on b
        double climb[3][3] = {{1, 0, 0}, {0, 1, 0}, {b->form == kFormBCurve ? 0.8 : 0.0, 0, 1}};
        const RecordPtr raised(evcrvx(b.get(), climb, lift));
        for (const RecordPtr* other : {&a, &stub}) {
            const Hits flat = Intersect(*other, b), high = Intersect(*other, raised);
            ASSERT_EQ(high.status, 0);
            ASSERT_EQ(high.list.size(), flat.list.size());
            for (std::size_t i = 0; i < flat.list.size(); ++i) {
                EXPECT_EQ(high.list[i].t1, flat.list[i].t1);
                EXPECT_EQ(high.list[i].t2, flat.list[i].t2);
                EXPECT_EQ(high.list[i].point[2], 0.0);
            }
        }
    }
}

} // namespace
