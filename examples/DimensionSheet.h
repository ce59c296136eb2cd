// Every kind of dimension over simple curves: what examples/dimension_sheet.cpp draws.
#pragma once

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "tessera/Tessera.h"

namespace Tessera::Examples {

using namespace Dimension;
using namespace Geometry;

constexpr double kFont = 5.0;
constexpr double kRad = std::numbers::pi / 180.0;
constexpr double kSector = 70.0; // degrees

/// Curves around a point, turned by an angle, and two dimensions of them: one on either side.
struct Exhibit {
    Point middle;
    double angleDeg;
    std::vector<std::unique_ptr<Curve>> curves;
    std::vector<std::unique_ptr<DimensionBase>> dims;

    Point At(double distance, double turnDeg = 0.0) const {
        return Point(middle.x + distance * std::cos((angleDeg + turnDeg) * kRad),
                     middle.y + distance * std::sin((angleDeg + turnDeg) * kRad));
    }
    template <class Kind>
    Kind& Add(std::unique_ptr<Curve> curve) {
        curves.push_back(std::move(curve));
        return static_cast<Kind&>(*curves.back());
    }
    Line& AddLine(const Point& start, const Point& end) {
        return Add<Line>(std::make_unique<Line>(start, end));
    }
    /// Turned like the exhibit.
    Arc& AddArc(const Point& centre, double radius, double sweepDeg) {
        double at[3] = {centre.x, centre.y, 0.0};
        return Add<Arc>(std::make_unique<Arc>(at, radius, (angleDeg - sweepDeg / 2.0) * kRad,
                                              (angleDeg + sweepDeg / 2.0) * kRad));
    }
    /// A line square to the direction of the exhibit.
    Line& AddWall(double distance, double length) {
        const Exhibit foot{At(distance), angleDeg, {}, {}};
        return AddLine(foot.At(length / 2.0, -90.0), foot.At(length / 2.0, 90.0));
    }
};

template <class Kind, int length>
inline void Straight(Exhibit& e) {
    Line& line = e.AddLine(e.At(-length / 2.0), e.At(length / 2.0));
    const Kind probe(&line, kFont);
    const double dx = std::fabs(length * std::cos(e.angleDeg * kRad));
    const double dy = std::fabs(length * std::sin(e.angleDeg * kRad));
    const double value = probe.GetType() == Length ? length : probe.GetType() == Horizontal ? dx : dy;
    const double beyond = probe.GetType() == Length ? 0.0 : probe.GetType() == Horizontal ? dy : dx;
    if (value < 1.0) {
        return; // square to the axis
    }
    e.dims.push_back(std::make_unique<Kind>(&line, 7.0 + beyond, kFont));
    e.dims.push_back(std::make_unique<Kind>(&line, -7.0, kFont));
}

template <class First, class Second>
inline void Between(Exhibit& e, const First& first, const Second& second) {
    for (const double offset : {7.0, -7.0}) {
        e.dims.push_back(std::make_unique<LinearDimension>(&first, &second, offset, kFont));
    }
}

inline void ParallelLines(Exhibit& e) {
    const Line& first = e.AddWall(-20.0, 40.0);
    const Line& second = e.AddWall(20.0, 15.0);
    const Point pick = e.At(-20.0);
    for (const double offset : {7.0, -7.0}) {
        e.dims.push_back(std::make_unique<LinearDimension>(&first, &second, &pick, offset, kFont));
    }
}
inline Arc& AddDisc(Exhibit& e) {
    return e.Add<Arc>(std::make_unique<Arc>(e.At(20.0), 8.0));
}
inline void LineAndArc(Exhibit& e) {
    const Line& wall = e.AddWall(-20.0, 24.0);
    Between(e, wall, AddDisc(e));
}
inline void Arcs(Exhibit& e) {
    const Arc& bow = e.AddArc(e.At(-20.0), 10.0, 115.0);
    Between(e, bow, AddDisc(e));
}
inline void LineAndEllipse(Exhibit& e) {
    const Line& wall = e.AddWall(-20.0, 24.0);
    double centre[2] = {e.At(20.0).x, e.At(20.0).y};
    double radii[2] = {13.0, 6.0};
    Between(e, wall, e.Add<Ellipse>(std::make_unique<Ellipse>(centre, radii, 0.4, 0.0, 360.0 * kRad)));
}

template <int reach>
inline void Angle(Exhibit& e) {
    const Line& first = e.AddLine(e.At(-14.0), e.At(38.0));
    const Line& second = e.AddLine(e.At(-14.0, kSector), e.At(38.0, kSector));
    for (const double r : {reach, -reach}) {
        e.dims.push_back(
            std::make_unique<AngularDimension>(&first, &second, e.At(r), e.At(r, kSector), 0.0, kFont));
    }
}

template <int sweepDeg>
inline void Radius(Exhibit& e) {
    Arc& arc = e.AddArc(e.middle, 24.0, sweepDeg);
    for (const double side : {1.0, -1.0}) {
        auto dim = std::make_unique<RadialDimension>(&arc, kFont);
        dim->SetTextOffset(side * (dim->GetTextWidthOffset() + 1.5 * kFont));
        dim->UpdateDimension();
        e.dims.push_back(std::move(dim));
    }
}

inline void (*const kRows[])(Exhibit&) = {Straight<LengthDimension, 60>,
                                          Straight<LengthDimension, 12>,
                                          Straight<HorizontalDimension, 50>,
                                          Straight<HorizontalDimension, 14>,
                                          Straight<VerticalDimension, 50>,
                                          Straight<VerticalDimension, 14>,
                                          ParallelLines,
                                          LineAndArc,
                                          Arcs,
                                          LineAndEllipse,
                                          Angle<26>,
                                          Angle<11>,
                                          Radius<120>,
                                          Radius<280>};

inline Exhibit MakeExhibit(int row, int eighth, const Point& middle) {
    Exhibit e{middle, 45.0 * eighth, {}, {}};
    kRows[row](e);
    return e;
}

} // namespace Tessera::Examples
