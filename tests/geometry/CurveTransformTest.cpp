// Moves, turns, mirrors and scales of every kind: the curve must follow its points, and what a curve tells
// about itself must rebuild the curve that it evaluates to.
#include <cstring>

#include "tests/support/ChangeLog.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/ThrownMessage.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

namespace {

struct Matrix {
    const char* name;
    double m[3][3];
    bool mirrors = false;
};

Matrix Turn(const char* name, double angle, double dx, double dy, double w) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {name, {{c, -s, dx}, {s, c, dy}, {0, 0, w}}};
}

const Matrix kMatrices[] = {
    {"identity", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    Turn("turn by 0.7", 0.7, 7, -3, 1),
    Turn("turn by -2.9 and move, shrunk", -2.9, 1, 5, 2.0),
    Turn("half turn, grown", kPi, 0, 1, 0.25),
    {"scale about a point", {{1, 0, -1.8}, {0, 1, 0.6}, {0, 0, 0.4}}},
    {"scale inside the block", {{0, -3, 1}, {3, 0, 2}, {0, 0, 1}}},
    {"mirror in the x axis", {{1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, true},
    {"mirror in a slope", {{-0.6, 0.8, 2}, {0.8, 0.6, -1}, {0, 0, 1}}, true},
};

template <class Shape>
void Apply(Shape& shape, const Matrix& matrix) {
    double m[3][3];
    std::memcpy(m, matrix.m, sizeof m);
    shape.Transform(m);
}

/// A new curve from nothing but what the accessors tell; a copy of a spline.
CurvePtr Rebuilt(const Curve& curve) {
    if (curve.GetType() == CurveType_Line)
        return MakeLine(curve.GetStart(), curve.GetEnd());
    if (const auto* arc = dynamic_cast<const Arc*>(&curve))
        return MakeArc(arc->GetCenter(), arc->GetRadius(), arc->GetStartAngle(), arc->GetEndAngle());
    const auto* ellipse = dynamic_cast<const Ellipse*>(&curve);
    if (ellipse == nullptr)
        return CurvePtr(curve.CopyCurveOnly());
    double centre[2], radii[2], rotation = 0, start = 0, end = 0;
    ellipse->AskEllipseData(centre, radii, &rotation, &start, &end);
    return MakeEllipse(Point(centre), radii[0], radii[1], rotation, start, end);
}

} // namespace

TEST(CurveTransform, CurveFollowsItsPoints) {
    for (const Matrix& matrix : kMatrices)
        for (const Sample& sample : SampleCurves()) {
            SCOPED_TRACE(std::string(matrix.name) + ", " + sample.name);
            Curve& curve = *sample.curve;
            const std::vector<Point> before = DensePoints(curve, 24);
            const double length = curve.Length();
            const bool closed = curve.IsPeriodic();
            Apply(curve, matrix);

            const CurvePtr rebuilt = Rebuilt(curve);
            std::vector<Point> after = DensePoints(curve, 24);
            const std::vector<Point> retold = DensePoints(*rebuilt, 24);
            for (std::size_t i = 0; i < after.size(); ++i)
                EXPECT_NEAR(after[i].Distance(retold[i]), 0.0, 1e-12);
            // Arcs and ellipses keep running counter-clockwise: a mirror exchanges their ends. Circles may
            // start elsewhere.
            if (matrix.mirrors && (curve.GetType() == CurveType_Arc || curve.GetType() == CurveType_Ellipse))
                std::reverse(after.begin(), after.end());
            for (std::size_t i = 0; i < after.size(); ++i) {
                Point expected = before[i];
                Apply(expected, matrix);
                EXPECT_NEAR(curve.DistanceBounded(expected), 0.0, 1e-9);
                EXPECT_TRUE(closed || after[i].Distance(expected) < 1e-11);
            }
            const double scale = std::hypot(matrix.m[0][0], matrix.m[1][0]) / matrix.m[2][2];
            EXPECT_NEAR(curve.Length(), scale * length, 1e-9 * length);
            EXPECT_EQ(curve.IsPeriodic(), closed);
            XYBox box;
            ASSERT_TRUE(curve.AskXYBox(box));
            const XYBox sampled(DensePoints(curve, 6000));
            EXPECT_NEAR(box.min.Distance(sampled.min) + box.max.Distance(sampled.max), 0.0, 1e-4);
            if (const auto* line = dynamic_cast<const Line*>(&curve)) {
                EXPECT_NEAR(line->GetCachedBasePoint().Distance(line->Bisect()), 0.0, 1e-15);
            }
        }
}

TEST(CurveTransform, InfiniteScaleIsRefused) {
    double flat[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 0}};
    Line line(Point(0, 0), Point(1, 2));
    ChangeLog log;
    EXPECT_EQ(ThrownMessage([&] { line.Transform(flat); }), "Curve::Transform - scale must be finite");
    EXPECT_EQ(log.Take(line), 0);
    EXPECT_EQ(line.GetEnd().y, 2.0);
}
