// A sheet with every kind of dimension in eight directions and on both sides of what it measures. Each
// drawing is held against the rules of draughting; the sheet itself is written as dimension_sheet.svg, to be
// looked at (docs/dimensions.svg is one of them).
#include <cstdio>
#include <fstream>
#include <memory>

#include "tessera/dimension/HorizontalDimension.h"
#include "tessera/dimension/LinearDimension.h"
#include "tessera/dimension/VerticalDimension.h"
#include "tessera/dimension/internal/TempDecoration.h"
#include "tests/support/DimensionProbes.h"
#include "tests/support/SampleCurves.h"

using namespace Tessera::Dimension;
using namespace Tessera::Testing;
using Tessera::Geometry::Arc;
using Tessera::Geometry::Ellipse;
using Tessera::Geometry::Line;
using Tessera::Geometry::Vector;

namespace {

constexpr double kFont = 5.0;
constexpr double kRad = std::numbers::pi / 180.0;
constexpr double kSector = 70.0; // degrees

/// Curves around a point, turned by an angle, and two dimensions of them: one on either side.
struct Exhibit {
    Point middle;
    double angleDeg;
    std::vector<CurvePtr> curves;
    std::vector<std::unique_ptr<DimensionBase>> dims;
    double value = 0.0;

    Point At(double distance, double turnDeg = 0.0) const {
        return middle + Polar(distance, angleDeg + turnDeg);
    }
    template <class Kind>
    Kind& Add(CurvePtr curve) {
        curves.push_back(std::move(curve));
        return static_cast<Kind&>(*curves.back());
    }
    Line& AddLine(const Point& start, const Point& end) {
        return Add<Line>(std::make_unique<Line>(start, end));
    }
    /// A line square to the direction of the exhibit.
    Line& AddWall(double distance, double length) {
        const Point shift = Polar(length / 2.0, angleDeg + 90.0);
        return AddLine(At(distance) - shift, At(distance) + shift);
    }
};

template <class Kind, int length>
void Straight(Exhibit& e) {
    Line& line = e.AddLine(e.At(-length / 2.0), e.At(length / 2.0));
    const Kind probe(&line, kFont);
    const double dx = std::fabs(length * std::cos(e.angleDeg * kRad));
    const double dy = std::fabs(length * std::sin(e.angleDeg * kRad));
    e.value = probe.GetType() == Length ? length : probe.GetType() == Horizontal ? dx : dy;
    const double beyond = probe.GetType() == Length ? 0.0 : probe.GetType() == Horizontal ? dy : dx;
    if (e.value < 1.0)
        return; // square to the axis
    e.dims.push_back(std::make_unique<Kind>(&line, 7.0 + beyond, kFont));
    e.dims.push_back(std::make_unique<Kind>(&line, -7.0, kFont));
}

template <class First, class Second>
void Between(Exhibit& e, const First& first, const Second& second) {
    e.value = 40.0;
    for (const double offset : {7.0, -7.0})
        e.dims.push_back(std::make_unique<LinearDimension>(&first, &second, offset, kFont));
}

void ParallelLines(Exhibit& e) {
    const Line& first = e.AddWall(-20.0, 40.0);
    const Line& second = e.AddWall(20.0, 15.0);
    const Point pick = e.At(-20.0);
    e.value = 40.0;
    for (const double offset : {7.0, -7.0})
        e.dims.push_back(std::make_unique<LinearDimension>(&first, &second, &pick, offset, kFont));
}
Arc& AddDisc(Exhibit& e) {
    return e.Add<Arc>(std::make_unique<Arc>(e.At(20.0), 8.0));
}
void LineAndArc(Exhibit& e) {
    const Line& wall = e.AddWall(-20.0, 24.0);
    Between(e, wall, AddDisc(e));
}
void Arcs(Exhibit& e) {
    const double a = e.angleDeg * kRad;
    const Arc& bow = e.Add<Arc>(MakeArc(e.At(-20.0), 10.0, a - 1.0, a + 1.0));
    Between(e, bow, AddDisc(e));
}
void LineAndEllipse(Exhibit& e) {
    const Line& wall = e.AddWall(-20.0, 24.0);
    Between(e, wall, e.Add<Ellipse>(MakeEllipse(e.At(20.0), 13.0, 6.0, 0.4, 0.0, 2.0 * std::numbers::pi)));
}

template <int reach>
void Angle(Exhibit& e) {
    const Line& first = e.AddLine(e.At(-14.0), e.At(38.0));
    const Line& second = e.AddLine(e.At(-14.0, kSector), e.At(38.0, kSector));
    e.value = kSector;
    for (const double r : {reach, -reach})
        e.dims.push_back(
            std::make_unique<AngularDimension>(&first, &second, e.At(r), e.At(r, kSector), 0.0, kFont));
}

template <int sweepDeg>
void Radius(Exhibit& e) {
    const double a = e.angleDeg * kRad;
    Arc& arc = e.Add<Arc>(MakeArc(e.middle, 24.0, a - sweepDeg / 2.0 * kRad, a + sweepDeg / 2.0 * kRad));
    e.value = sweepDeg > 180 ? 48.0 : 24.0;
    for (const double side : {1.0, -1.0}) {
        auto dim = std::make_unique<RadialDimension>(&arc, kFont);
        dim->SetTextOffset(side * (dim->GetTextWidthOffset() + 1.5 * kFont));
        dim->UpdateDimension();
        e.dims.push_back(std::move(dim));
    }
}

const struct {
    const char* name;
    void (*fill)(Exhibit&);
    bool isOutside; // the arrowheads
} kRows[] = {{"length", Straight<LengthDimension, 60>, false},
             {"short length", Straight<LengthDimension, 12>, true},
             {"horizontal", Straight<HorizontalDimension, 50>, false},
             {"short horizontal", Straight<HorizontalDimension, 14>, true},
             {"vertical", Straight<VerticalDimension, 50>, false},
             {"short vertical", Straight<VerticalDimension, 14>, true},
             {"linear, lines", ParallelLines, false},
             {"linear, line and arc", LineAndArc, false},
             {"linear, arcs", Arcs, false},
             {"linear, line and ellipse", LineAndEllipse, false},
             {"angular", Angle<26>, false},
             {"narrow angular", Angle<11>, true},
             {"radius", Radius<120>, false},
             {"diameter", Radius<280>, false}};

Exhibit MakeExhibit(int row, int eighth, const Point& middle) {
    Exhibit e{middle, 45.0 * eighth, {}, {}};
    kRows[row].fill(e);
    return e;
}

// --- Rules of draughting

/// Square to v, to the right or, for upright ones, upwards.
Vector SideOf(const Vector& v) {
    const Vector n(-v.y, v.x);
    return n.x < -1e-9 || (n.x < 1e-9 && n.y < 0.0) ? -1.0 * n : n;
}

void ExpectReadable(const DimensionBase& dim, const TempDecoration& drawn) {
    const Vector reading(drawn.textBox[0], drawn.textBox[1]);
    const Vector up(drawn.textBox[1], drawn.textBox[2]);
    EXPECT_TRUE(reading.x > 1e-9 || (reading.x > -1e-9 && reading.y > 0.0)) << "upside down";
    EXPECT_NEAR(reading.Cross(up), reading.Length() * kFont, 1e-9) << "mirrored, or of another height";
    for (const auto* curve : drawn.curves) {
        double range[2];
        curve->AskRange(range);
        for (int i = 0; i <= 200; ++i)
            EXPECT_FALSE(dim.AnnotationSelected(
                curve->GetPointAtParameter(range[0] + (range[1] - range[0]) * i / 200.0, true), -1e-6))
                << "a line through the text";
    }
}

/// The arrowhead points along `direction`, symmetric about it.
void ExpectArrowhead(const Point* head, const Vector& direction) {
    const Vector half = 0.1875 * kFont * Vector(-direction.y, direction.x);
    const Point base = head[0].AffineCombine(-0.75 * kFont, direction);
    const double turn = Vector(head[0], head[1]).Cross(direction) > 0.0 ? -1.0 : 1.0;
    ExpectNear(head[1], base.AffineCombine(turn, half), 1e-9, "base");
    ExpectNear(head[2], base.AffineCombine(-turn, half), 1e-9, "base");
}

/// An extension line, or a measured curve itself, meets the dimension line in the tip, square to it.
bool IsTipHeld(const Exhibit& e, const TempDecoration& drawn, const Point& tip, const Vector& along) {
    const auto holds = [&](const Curve& curve) {
        const Vector v(curve.GetStart(), curve.GetEnd());
        return curve.GetType() == Tessera::Geometry::CurveType_Line && std::fabs(v.Dot(along)) < 1e-9 &&
               curve.DistanceBounded(tip) < 1e-9;
    };
    return std::any_of(drawn.curves.begin(), drawn.curves.end(), [&](const Curve* c) { return holds(*c); }) ||
           std::any_of(e.curves.begin(), e.curves.end(), [&](const CurvePtr& c) { return holds(*c); });
}

/// One end of a dimension line or arc: `inward` is its direction at the tip, `pieceEnd` where it must end,
/// seen from the tip.
void ExpectEnd(const Exhibit& e, const TempDecoration& drawn, int end, const Vector& inward,
               const Point& pieceEnd, bool isOutside) {
    const Point& tip = drawn.arrowPoints[3 * end];
    ExpectArrowhead(&drawn.arrowPoints[3 * end], isOutside ? inward : -1.0 * inward);
    EXPECT_TRUE(IsTipHeld(e, drawn, tip, inward));
    EXPECT_TRUE(std::any_of(
        drawn.curves.begin(), drawn.curves.end(),
        [&](const Curve* c) {
            return (c->GetStart().Distance(tip) < 1e-9 && c->GetEnd().Distance(pieceEnd) < 1e-9) ||
                   (c->GetEnd().Distance(tip) < 1e-9 && c->GetStart().Distance(pieceEnd) < 1e-9);
        }))
        << "the dimension line from end " << end;
}

void ExpectStraight(const Exhibit& e, const TempDecoration& drawn, double side, bool isOutside) {
    const Point& first = drawn.arrowPoints[0];
    const Point& second = drawn.arrowPoints[3];
    const Point text = (drawn.textBox[0] + drawn.textBox[2]) / 2.0;
    const double gap = drawn.textBox[0].Distance(drawn.textBox[1]) / 2.0 + kFont / 2.0;
    EXPECT_NEAR(first.Distance(second), e.value, 1e-9);
    ExpectNear(text, (first + second) / 2.0, 1e-9, "centred in the break");
    EXPECT_GT(side * Vector(e.middle, text).Dot(SideOf(Vector(first, second))), 0.0)
        << "side of the geometry";
    for (const int end : {0, 1}) {
        Vector inward(end == 0 ? first : second, end == 0 ? second : first);
        inward.Normalize();
        const Point& tip = drawn.arrowPoints[3 * end];
        ExpectEnd(e, drawn, end, inward,
                  isOutside ? tip.AffineCombine(-1.5 * kFont, inward) : text.AffineCombine(-gap, inward),
                  isOutside);
    }
}

void ExpectAngular(const Exhibit& e, const TempDecoration& drawn, double side, bool isOutside) {
    const double radius = drawn.arrowPoints[0].Distance(e.middle);
    const double start = e.angleDeg + (side < 0.0 ? 180.0 : 0.0);
    const double gap = (drawn.textBox[0].Distance(drawn.textBox[1]) + kFont) / 2.0 / radius / kRad;
    ExpectNear((drawn.textBox[0] + drawn.textBox[2]) / 2.0, e.middle + Polar(radius, start + kSector / 2.0));
    for (const int end : {0, 1}) {
        const double at = start + end * kSector;
        const double inward = end == 0 ? 1.0 : -1.0;
        ExpectNear(drawn.arrowPoints[3 * end], e.middle + Polar(radius, at), 1e-9, "tip");
        const double pieceEnd =
            isOutside ? at - inward * 1.5 * kFont / radius / kRad : start + kSector / 2.0 - inward * gap;
        ExpectEnd(e, drawn, end, Vector(Point(), Polar(1.0, at + 90.0 * inward)),
                  e.middle + Polar(radius, pieceEnd), isOutside);
    }
}

void ExpectRadial(const Exhibit& e, const TempDecoration& drawn, double side) {
    const Vector outward(Point(), Polar(1.0, e.angleDeg));
    const Point foot = e.At(24.0);
    ExpectNear(drawn.arrowPoints[0], foot, 1e-9, "tip");
    ExpectArrowhead(drawn.arrowPoints.data(), -side * outward);
    ASSERT_EQ(drawn.curves.size(), 1U);
    const Point leaderEnd = drawn.curves[0]->GetStart();
    ExpectNear(drawn.curves[0]->GetEnd(), foot, 1e-9, "leader");
    EXPECT_NEAR(Vector(foot, leaderEnd).Dot(side * outward), foot.Distance(leaderEnd), 1e-9);
    double least = 1e9;
    for (const Point& corner : drawn.textBox) {
        EXPECT_GT(Vector(foot, corner).Dot(side * outward), 0.0) << "text on the other side of the arc";
        least = std::min(least, std::fabs(Vector(foot, corner).Cross(outward)));
    }
    EXPECT_NEAR(least, kFont / 4.0, 1e-9) << "clear of the leader";
}

// --- Picture

class SheetWriter {
public:
    SheetWriter() : out_("dimension_sheet.svg") {
        const double width = 8 * kCell;
        const double height = std::size(kRows) * kCell;
        Print(
            "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %g %g'>\n<style>path{fill:none;stroke:#222;"
            "stroke-width:.8}.d path{stroke:#1b4f9c;stroke-width:.4}.d .h,text{fill:#1b4f9c;stroke:none}"
            "text{font:%gpx sans-serif;text-anchor:middle}</style>\n<rect width='%g' height='%g' "
            "fill='#fff'/>\n"
            "<g transform='matrix(1 0 0 -1 0 %g)'>\n",
            width, height, 0.9 * kFont, width, height, height);
    }
    ~SheetWriter() { Print("</g>\n</svg>\n"); }

    static Point Cell(int row, int column) {
        return {(column + 0.5) * kCell, (static_cast<double>(std::size(kRows)) - row - 0.5) * kCell};
    }
    void Add(const Exhibit& e) {
        Print("<path d='");
        for (const CurvePtr& curve : e.curves)
            Add(*curve);
        Print("'/>\n");
        for (const auto& dim : e.dims)
            Add(*dim);
    }

private:
    static constexpr double kCell = 96.0;

    template <class... Values>
    void Print(const char* format, Values... values) {
        char text[600];
        std::snprintf(text, sizeof text, format, values...);
        out_ << text;
    }
    void Add(const Curve& curve) {
        const Point start = curve.GetStart();
        const Point middle = curve.GetMidPoint();
        const Point end = curve.GetEnd();
        double r[2] = {0.0, 0.0};
        double turn = 0.0;
        if (const auto* arc = dynamic_cast<const Arc*>(&curve)) {
            r[0] = r[1] = arc->GetRadius();
        } else if (const auto* ellipse = dynamic_cast<const Ellipse*>(&curve)) {
            double rest[4];
            ellipse->AskEllipseData(rest, r, &turn, &rest[2], &rest[3]);
        }
        Print("M%.1f %.1f", start.x, start.y);
        if (r[0] > 0.0)
            Print("A%.1f %.1f %.1f 0 1 %.1f %.1f %.1f %.1f %.1f 0 1 %.1f %.1f", r[0], r[1], turn / kRad,
                  middle.x, middle.y, r[0], r[1], turn / kRad, end.x, end.y);
        else
            Print("L%.1f %.1f", end.x, end.y);
    }
    void Add(const DimensionBase& dim) {
        const TempDecoration drawn(dim);
        Print("<g class='d'><path d='");
        for (const Curve* curve : drawn.curves)
            Add(*curve);
        Print("'/><path class='h' d='");
        for (std::size_t i = 0; i < drawn.arrowPoints.size(); ++i)
            Print("%s%.1f %.1f", i % 3 == 0 ? "M" : " ", drawn.arrowPoints[i].x, drawn.arrowPoints[i].y);
        const Point text = (drawn.textBox[0] + drawn.textBox[2]) / 2.0;
        const auto* radial = dynamic_cast<const RadialDimension*>(&dim);
        Print("'/><text transform='translate(%.1f %.1f) scale(1 -1) rotate(%.1f)' "
              "y='1.6'>%s%.*f%s</text></g>\n",
              text.x, text.y, -dim.GetTextAngle(),
              radial == nullptr    ? ""
              : radial->DisplayR() ? "R"
                                   : "\xC3\x98",
              dim.GetNumDigitsAfterDecimalPoint(dim.GetNumDigitsRequired()), dim.GetDisplayedValue(),
              dim.GetType() == Angular ? "\xC2\xB0" : "");
    }

    std::ofstream out_;
};

} // namespace

TEST(DimensionSheet, EveryDrawingFollowsTheRules) {
    SheetWriter writer;
    for (int row = 0; row < static_cast<int>(std::size(kRows)); ++row) {
        for (int eighth = 0; eighth < 8; ++eighth) {
            const Exhibit e = MakeExhibit(row, eighth, SheetWriter::Cell(row, eighth));
            writer.Add(e);
            for (std::size_t i = 0; i < e.dims.size(); ++i) {
                const double side = i == 0 ? 1.0 : -1.0;
                SCOPED_TRACE(std::string(kRows[row].name) + " at " + std::to_string(45 * eighth) +
                             (side > 0.0 ? "" : ", other side"));
                const DimensionBase& dim = *e.dims[i];
                const TempDecoration drawn(dim);
                EXPECT_NEAR(dim.GetDisplayedValue(), e.value, 1e-9);
                ExpectReadable(dim, drawn);
                ASSERT_EQ(drawn.arrowPoints.size(), dim.GetType() == Radial ? 3U : 6U);
                if (dim.GetType() == Radial)
                    ExpectRadial(e, drawn, side);
                else if (dim.GetType() == Angular)
                    ExpectAngular(e, drawn, side, kRows[row].isOutside);
                else
                    ExpectStraight(e, drawn, side, kRows[row].isOutside);
            }
        }
    }
}
