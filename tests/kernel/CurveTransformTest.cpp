#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/support/BSplineSample.h"
#include "tests/support/Records.h"

using std::numbers::pi;

namespace {

struct Map {
    double m[3][3];
    double v[3];

    std::vector<double> operator()(const std::vector<double>& p) const {
        std::vector<double> q(3);
        for (int i = 0; i < 3; ++i)
            q[i] = m[i][0] * p[0] + m[i][1] * p[1] + m[i][2] * p[2] + v[i];
        return q;
    }
};

Map Similarity(double angle, double scale, bool mirror) {
    const double c = scale * std::cos(angle), s = scale * std::sin(angle), k = mirror ? -1 : 1;
    return {{{c, -k * s, 0}, {s, k * c, 0}, {0, 0, 1}}, {3, -2, 0}};
}

double LargestMapGap(KC_CURVE_struct_s* c, KC_CURVE_struct_s* image, const Map& map) {
    double a[2], b[2], gap = 0;
    evcrvp(c, a);
    evcrvp(image, b);
    for (int i = 0; i <= 50; ++i) {
        const auto p = map(Evaluate(c, a[0] + (a[1] - a[0]) * i / 50));
        const auto q = Evaluate(image, b[0] + (b[1] - b[0]) * i / 50);
        gap = std::max(gap, std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]));
    }
    return gap;
}

std::vector<RecordPtr> AllForms() {
    std::mt19937 rng(21);
    std::vector<RecordPtr> all;
    all.push_back(records::Line(1, 2, -3, 5));
    all.push_back(records::Arc(1, 2, 3, -2, 1));
    all.push_back(records::Arc(1, 2, 3, 5, 1));
    all.push_back(records::Arc(0, 1, 2));
    all.push_back(records::Ellipse(1, 2, 5, 1, 2.3, 0.5, 4));
    all.push_back(records::Ellipse(1, 2, 1, 5, 2.3));
    all.push_back(RandomOpen(rng, 4, 8, true).Record());
    return all;
}

} // namespace

TEST(CurveTransform, PointsKeepTheirParameters) {
    for (const RecordPtr& c : AllForms())
        for (bool mirror : {false, true})
            for (double scale : {1.0, 0.01}) {
                SCOPED_TRACE(c->form);
                Map map = Similarity(2.1, scale, mirror);
                const RecordPtr image(evcrvx(c.get(), map.m, map.v));
                EXPECT_LT(LargestMapGap(c.get(), image.get(), map), 1e-13);
                EXPECT_EQ(image->start, c->start);
                EXPECT_EQ(image->span, c->span);
                EXPECT_EQ(image->closed, c->closed);
            }
}

TEST(CurveTransform, ShearedEllipseGetsPrincipalAxes) {
    for (double shear : {0.3, -4.0}) {
        const RecordPtr c = records::Ellipse(1, 2, 1, 5, 0.4, 0.2, 3);
        Map map{{{1, shear, 0}, {0.2, 1, 0}, {0, 0, 1}}, {1, 1, 0}};
        const RecordPtr image(evcrvx(c.get(), map.m, map.v));
        const auto* conic = static_cast<EVC_conic_s*>(image->data);
        const double* x = conic->majorAxis;
        const double* y = conic->minorAxis;
        EXPECT_NEAR(x[0] * y[0] + x[1] * y[1], 0, 1e-12);
        EXPECT_NEAR(std::hypot(x[0], x[1]), conic->radius1, 1e-12);
        EXPECT_NEAR(conic->endAngle - conic->startAngle, 2.8, 1e-14);
        EXPECT_LT(LargestMapGap(c.get(), image.get(), map), 1e-12);
    }
}

// Standard axes again, the same points run through in one sense or the other, counter-clockwise axes.
TEST(CurveTransform, NormalizedAxesKeepTheCurve) {
    for (const RecordPtr& c : AllForms())
        for (bool mirror : {false, true})
            for (int turn = -4; turn <= 4; ++turn) {
                SCOPED_TRACE(c->form);
                Map map = Similarity(0.75 * turn, 2, mirror);
                const RecordPtr literal(evcrvx(c.get(), map.m, map.v));
                const RecordPtr standard(evcrvCopy(literal.get()));
                ASSERT_EQ(evcrvNormalizeAxes(standard.get()), 0);
                EXPECT_EQ(standard->closed, c->closed);
                EXPECT_EQ(standard->span, c->span);
                double from[2], to[2];
                evcrvp(literal.get(), from);
                evcrvp(standard.get(), to);
                const bool turnsRound = mirror && (c->form == kFormArc || c->form == kFormConic);
                EXPECT_LT(LargestGap(literal.get(), from[0], from[1], standard.get(), to[turnsRound ? 1 : 0],
                                     to[turnsRound ? 0 : 1]),
                          1e-12);
                if (c->form == kFormArc) {
                    const auto* arc = static_cast<EVC_arc_s*>(standard->data);
                    EXPECT_EQ(arc->xAxis[0], arc->radius);
                    EXPECT_EQ(arc->yAxis[1], arc->radius);
                    EXPECT_EQ(arc->xAxis[1], 0.0);
                    EXPECT_EQ(arc->startAngle, standard->start);
                }
                if (c->form == kFormConic) {
                    const auto* conic = static_cast<EVC_conic_s*>(standard->data);
                    EXPECT_GT(conic->majorAxis[0] * conic->minorAxis[1] -
                                  conic->majorAxis[1] * conic->minorAxis[0],
                              0);
                    EXPECT_TRUE(!mirror || (standard->start >= 0 && standard->start < 2 * pi));
                }
            }
}

TEST(CurveTransform, ScaleInPlaceForgetsCaches) {
    for (const RecordPtr& c : AllForms())
        for (double s : {3.0, -0.5}) {
            const RecordPtr scaled(evcrvCopy(c.get()));
            Evaluate(scaled.get(), 0.4); // fills a span
            ASSERT_EQ(evcrvxScale(scaled.get(), s), 0);
            EXPECT_LT(LargestMapGap(c.get(), scaled.get(), {{{s, 0, 0}, {0, s, 0}, {0, 0, s}}, {0, 0, 0}}),
                      1e-13);
            if (c->form == kFormArc) {
                const double radius = static_cast<EVC_arc_s*>(c->data)->radius;
                EXPECT_EQ(static_cast<EVC_arc_s*>(scaled->data)->radius, std::fabs(s) * radius);
            }
            if (c->form == kFormConic) {
                const auto* conic = static_cast<EVC_conic_s*>(scaled->data);
                EXPECT_NEAR(std::hypot(conic->majorAxis[0], conic->majorAxis[1]), conic->radius1, 1e-14);
                EXPECT_NEAR(std::hypot(conic->minorAxis[0], conic->minorAxis[1]), conic->radius2, 1e-14);
            }
            EXPECT_EQ(evcrvxScale(scaled.get(), std::nan("")), 1);
        }
}
