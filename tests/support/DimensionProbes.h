// Looking at dimensions from outside: decoration points, the text box, drags.
#pragma once

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/HorizontalDimension.h"
#include "tessera/dimension/LinearDimension.h"
#include "tessera/dimension/MoveDimDeco.h"
#include "tessera/dimension/RadialDimension.h"
#include "tessera/dimension/VerticalDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/XYBox.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/ExpectNear.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

using namespace Dimension;
using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;
using Geometry::Vector;
using Geometry::XYBox;
using CurveList = std::vector<Curve*>;
using Points = std::vector<Point>;

inline Point Polar(double radius, double angleDeg) {
    const double a = angleDeg * std::numbers::pi / 180.0;
    return {radius * std::cos(a), radius * std::sin(a)};
}

inline constexpr double kDeg = 180.0 / std::numbers::pi;

/// Where tests of angles and radii are centred: off the axes, below one of them.
inline const Point kCentre(7, -3);

inline Point FromCentre(double radius, double angleDeg) {
    return kCentre + Polar(radius, angleDeg);
}

/// An angle of the lines that start at the centre, from the first one at `at` on, dimensioned at distance
/// `reach`. The second line runs towards the centre.
struct Corner {
    Corner(double at, double angle, double reach = 20.0, double from = 0.0, double to = 50.0)
        : first(FromCentre(from, at), FromCentre(to, at)),
          second(FromCentre(to, at + angle), FromCentre(from, at + angle)),
          dim(&first, &second, FromCentre(reach, at), FromCentre(reach, at + angle), 9.0, 4.0) {}

    Line first, second;
    AngularDimension dim;
};

/// A level line of 100 from the origin, dimensioned above it.
struct Level {
    explicit Level(double heightOffset = 10.0) : dim(&line, heightOffset, 4.0) {}

    Line line{Point(0, 0), Point(100, 0)};
    LengthDimension dim;
};

/// Points of one side; a radial dimension has them on side 1.
inline std::vector<Point> DecorationOf(const DimensionBase& dim, int side) {
    const DimDeco* deco = nullptr;
    if (const auto* length = dynamic_cast<const LengthDimension*>(&dim))
        deco = length->GetLengthDimDeco(side);
    else if (const auto* angular = dynamic_cast<const AngularDimension*>(&dim))
        deco = angular->GetAngularDimDeco(side);
    else if (const auto* radial = dynamic_cast<const RadialDimension*>(&dim))
        deco = side == 1 ? radial->GetRadialDimDeco() : nullptr;
    return deco != nullptr ? deco->GetPoints() : std::vector<Point>();
}

inline void ExpectSamePoints(const Points& actual, const Points& expected, double tol = 1e-9,
                             const std::string& what = "") {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        ExpectNear(actual[i], expected[i], tol, what + " point " + std::to_string(i));
}

/// Everything that an update computes, side by side.
inline void ExpectSamePlacement(const DimensionBase& a, const DimensionBase& b, double tol) {
    EXPECT_NEAR(a.GetAnnotation(), b.GetAnnotation(), tol);
    EXPECT_NEAR(a.GetTextHeightOffset(), b.GetTextHeightOffset(), tol);
    EXPECT_NEAR(a.GetTextWidthOffset(), b.GetTextWidthOffset(), tol);
    EXPECT_NEAR(a.GetTextAngle(), b.GetTextAngle(), 1e-6);
    ExpectNear(a.GetOrigin(), b.GetOrigin(), tol, "origin");
    for (const int side : {1, 2})
        ExpectSamePoints(DecorationOf(a, side), DecorationOf(b, side), tol, "side " + std::to_string(side));
}

inline CurveList ParentsOf(const DimensionBase& dim) {
    CurveList parents;
    dim.GetParentCurves(parents);
    return parents;
}

/// The curves that an edit of the side changes.
inline CurveList UpdateCurvesOf(const DimensionBase& dim, int side) {
    CurveList curves;
    dim.GetUpdateCurves(side, curves);
    return curves;
}

/// As a user types a value for a side.
inline void TypeValue(DimensionBase& dim, int side, double value) {
    dim.SetUpdateSide(side);
    dim.SetAnnotation(value);
    dim.UpdateDimension();
}

inline Point TextMiddle(const DimensionBase& dim) {
    std::vector<Point> box;
    dim.GetOrientedTextBox(box);
    return (box[0] + box[2]) / 2.0;
}

/// A drag of the text through the given pointer positions, with or without snapping.
inline void Drag(DimensionBase& dim, const std::vector<Point>& path, double snapDistance = 0.0,
                 double alignedWithin = 1e-5) {
    MoveDimDeco driver;
    driver.SetDimension(&dim);
    driver.SetParameters(alignedWithin, snapDistance);
    ASSERT_TRUE(driver.BeginMove(path.front()));
    for (std::size_t i = 1; i < path.size(); ++i)
        EXPECT_TRUE(driver.Move(path[i], 0.0, 0.0, false));
    EXPECT_TRUE(driver.EndMove());
}

} // namespace Tessera::Testing
