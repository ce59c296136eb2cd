#include "tests/support/BSplineSample.h"

using namespace records;

namespace {

struct Map {
    double m[3][3], v[3];

    RecordPtr operator()(const RecordPtr& c) { return RecordPtr(evcrvx(c.get(), m, v)); }
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

double LargestMapGap(const RecordPtr& c, const RecordPtr& image, const Map& map) {
    double gap = 0;
    for (int i = 0; i <= 50; ++i)
        gap = std::max(gap, Apart(map(Evaluate(c, ParameterAt(c, i / 50.0))),
                                  Evaluate(image, ParameterAt(image, i / 50.0))));
    return gap;
}

/// The axes are perpendicular and as long as the radii.
void ExpectPrincipalAxes(const RecordPtr& c) {
    const auto* conic = static_cast<EVC_conic_s*>(c->data);
    const double *x = conic->majorAxis, *y = conic->minorAxis;
    EXPECT_NEAR(x[0] * y[0] + x[1] * y[1], 0, 1e-12);
    EXPECT_NEAR(std::hypot(x[0], x[1]), conic->radius1, 1e-12);
    EXPECT_NEAR(std::hypot(y[0], y[1]), conic->radius2, 1e-12);
    EXPECT_NEAR(conic->endAngle - conic->startAngle, c->span, 1e-14);
}

std::vector<RecordPtr> AllForms() {
    std::mt19937 rng(21);
    RecordPtr all[] = {Line(1, 2, -3, 5),
                       Arc(1, 2, 3, -2, 1),
                       Arc(1, 2, 3, 5, 1),
                       Arc(0, 1, 2),
                       Ellipse(1, 2, 5, 1, 2.3, 0.5, 4),
                       Ellipse(1, 2, 1, 5, 2.3),
                       RandomOpen(rng, 4, 8, true)};
    return {std::make_move_iterator(std::begin(all)), std::make_move_iterator(std::end(all))};
}

} // namespace

// Whatever becomes of the axes of an ellipse: they are principal again.
TEST(CurveTransform, PointsKeepTheirParameters) {
    const auto expectImage = [](const RecordPtr& c, Map map) {
        SCOPED_TRACE(c->form);
        const RecordPtr image = map(c);
        EXPECT_LT(LargestMapGap(c, image, map), 1e-12);
        EXPECT_TRUE(image->span == c->span && image->closed == c->closed);
        if (c->form == kFormConic)
            ExpectPrincipalAxes(image);
    };
    for (const RecordPtr& c : AllForms())
        for (const bool mirror : {false, true})
            for (const double scale : {1.0, 0.01})
                expectImage(c, Similarity(2.1, scale, mirror));
    for (const double shear : {0.3, -4.0})
        expectImage(Ellipse(1, 2, 1, 5, 0.4, 0.2, 3), {{{1, shear, 0}, {0.2, 1, 0}, {0, 0, 1}}, {1, 1, 0}});
}

// Standard axes again, the same points run through in one sense or the other, counter-clockwise axes.
TEST(CurveTransform, NormalizedAxesKeepTheCurve) {
    for (const RecordPtr& c : AllForms())
        for (const bool mirror : {false, true})
            for (int turn = -4; turn <= 4; ++turn) {
                SCOPED_TRACE(c->form);
                const RecordPtr literal = Similarity(0.75 * turn, 2, mirror)(c), standard = Copy(literal);
                ASSERT_EQ(evcrvNormalizeAxes(standard.get()), 0);
                EXPECT_TRUE(standard->closed == c->closed && standard->span == c->span);
                const auto from = LimitsOf(literal), to = LimitsOf(standard);
                const bool turnsRound = mirror && (c->form == kFormArc || c->form == kFormConic);
                EXPECT_LT(LargestGap(literal, from[0], from[1], standard, to[turnsRound ? 1 : 0],
                                     to[turnsRound ? 0 : 1]),
                          1e-12);
                const bool isReduced = standard->start >= 0 && standard->start < 2 * kPi;
                if (c->form == kFormArc) {
                    const auto* arc = static_cast<EVC_arc_s*>(standard->data);
                    EXPECT_TRUE(arc->xAxis[0] == arc->radius && arc->xAxis[1] == 0.0);
                    EXPECT_TRUE(arc->yAxis[1] == arc->radius && arc->startAngle == standard->start);
                    EXPECT_TRUE(!c->closed || isReduced);
                }
                if (c->form == kFormConic) {
                    const auto* conic = static_cast<EVC_conic_s*>(standard->data);
                    const double *x = conic->majorAxis, *y = conic->minorAxis;
                    EXPECT_GT(x[0] * y[1] - x[1] * y[0], 0);
                    EXPECT_TRUE(!mirror || isReduced);
                }
            }
}

TEST(CurveTransform, ScaleInPlaceForgetsCaches) {
    for (const RecordPtr& c : AllForms())
        for (const double s : {3.0, -0.5}) {
            const RecordPtr scaled = Copy(c);
            Evaluate(scaled, 0.4); // fills a span
            ASSERT_EQ(evcrvxScale(scaled.get(), s), 0);
            EXPECT_LT(LargestMapGap(c, scaled, {{{s, 0, 0}, {0, s, 0}, {0, 0, s}}, {0, 0, 0}}), 1e-13);
            if (c->form == kFormArc) {
                const double radius = static_cast<EVC_arc_s*>(c->data)->radius;
                EXPECT_EQ(static_cast<EVC_arc_s*>(scaled->data)->radius, std::fabs(s) * radius);
            }
            if (c->form == kFormConic)
                ExpectPrincipalAxes(scaled);
            EXPECT_EQ(evcrvxScale(scaled.get(), std::nan("")), 1);
        }
}
