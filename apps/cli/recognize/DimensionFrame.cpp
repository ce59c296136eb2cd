#include "apps/cli/recognize/DimensionFrame.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>

#include "apps/cli/recognize/CurveShapes.h"
#include "apps/cli/recognize/Dimensions.h"
#include "tessera/dimension/RadialDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

namespace Tessera::Tool {

namespace {

using Dimension::DimensionBase;
using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;

constexpr int kChords = 32;
constexpr double kFontShare = 0.025;  ///< font height, part of the drawing's longer side
constexpr double kFontPerCurve = 0.2; ///< at most this part of what a curve measures
constexpr double kLeastShare = 5e-4;
constexpr double kSteepDeg = 10.0; ///< text that reads downwards as steeply as this is turned over

std::vector<Segment> ChordsOf(const CurveShape& shape) {
    std::vector<Segment> chords;
    AppendChords(*CurveOf(shape, WorkingFrame()), kChords, chords);
    return chords;
}

double LengthOf(const std::vector<Segment>& chords) {
    double length = 0.0;
    for (const Segment& chord : chords) {
        length += chord.a.Distance(chord.b);
    }
    return length;
}

/// Half of all that is drawn lies in curves of at least this length.
double UsualLength(std::vector<double> lengths) {
    std::sort(lengths.begin(), lengths.end());
    double rest = 0.0;
    for (const double length : lengths) {
        rest += 0.5 * length;
    }
    for (const double length : lengths) {
        rest -= length;
        if (rest <= 0.0) {
            return length;
        }
    }
    return 0.0;
}

std::string Fixed(double value, int decimals) {
    char text[400];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text, end) : std::to_string(value);
}

std::string TextOf(const DimensionBase& dimension) {
    const int decimals = dimension.GetNumDigitsAfterDecimalPoint(dimension.GetNumDigitsRequired());
    std::string number = Fixed(dimension.GetDisplayedValue(), decimals);
    if (dimension.GetType() == Dimension::Angular) {
        return number + "\xC2\xB0";
    }
    if (dimension.GetType() == Dimension::Radial) {
        const bool isRadius = static_cast<const Dimension::RadialDimension&>(dimension).DisplayR();
        return (isRadius ? "R" : "\xC3\x98") + number;
    }
    return number;
}

/// Lines drawn by hand are never quite upright: text along them reads upwards, to whatever side they lean.
double ReadableAngle(double angle) {
    constexpr double kDown = -0.5 * std::numbers::pi;
    const double reading = std::remainder(angle, 2.0 * std::numbers::pi);
    const bool isSteep = std::fabs(reading - kDown) < kSteepDeg * std::numbers::pi / 180.0;
    return isSteep ? reading + std::numbers::pi : reading;
}

} // namespace

DimensionFrame::DimensionFrame(const RecognizedDrawing& drawing) {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    Point low(kInf, kInf);
    Point high(-kInf, -kInf);
    std::vector<double> lengths;
    for (const RecognizedStroke& stroke : drawing.strokes) {
        for (const RecognizedCurve& curve : stroke.curves) {
            const std::vector<Segment> chords = ChordsOf(curve.shape);
            lengths.push_back(LengthOf(chords));
            for (const Segment& chord : chords) {
                chord.Widen(low, high);
            }
        }
    }
    if (!(low.x <= high.x)) {
        return;
    }
    size_ = std::max(high.x - low.x, high.y - low.y);
    left_ = low.x - size_;
    top_ = high.y + size_;
    middle_ = FromInk({0.5 * (low.x + high.x), 0.5 * (low.y + high.y)});
    fontHeight_ = std::clamp(kFontPerCurve * UsualLength(lengths), kLeastShare * size_, kFontShare * size_);
}

std::unique_ptr<Curve> DimensionFrame::CurveFromInk(const CurveShape& shape) const {
    if (const auto* line = std::get_if<LineShape>(&shape)) {
        return std::make_unique<Line>(FromInk(line->start), FromInk(line->end));
    }
    if (const auto* circle = std::get_if<CircleShape>(&shape)) {
        return std::make_unique<Arc>(FromInk(circle->center), circle->radius);
    }
    if (const auto* arc = std::get_if<ArcShape>(&shape)) {
        const Point center = FromInk(arc->center);
        double at[3] = {center.x, center.y, 0.0};
        return std::make_unique<Arc>(at, arc->radius, -arc->endAngle, -arc->startAngle);
    }
    return nullptr;
}

std::vector<Segment> DimensionFrame::ChordsFromInk(const CurveShape& shape) const {
    std::vector<Segment> chords = ChordsOf(shape);
    for (Segment& chord : chords) {
        chord = {FromInk({chord.a.x, chord.a.y}), FromInk({chord.b.x, chord.b.y})};
    }
    return chords;
}

CurveShape DimensionFrame::ShapeInInk(const Curve& curve) const {
    if (const auto* arc = dynamic_cast<const Arc*>(&curve)) {
        return ArcShape{ToInk(arc->GetCenter()), arc->GetRadius(),     -arc->GetEndAngle(),
                        -arc->GetStartAngle(),   ToInk(arc->GetEnd()), ToInk(arc->GetStart())};
    }
    return LineShape{ToInk(curve.GetStart()), ToInk(curve.GetEnd())};
}

DrawnDimension DimensionFrame::Draw(const DimensionBase& dimension, const DimensionLayout& layout) const {
    DrawnDimension drawn;
    drawn.kind = NameOf(dimension.GetType());
    drawn.value = dimension.GetDisplayedValue();
    drawn.text = TextOf(dimension);
    drawn.fontHeight = dimension.GetFontHeight();
    drawn.position = ToInk(layout.text.center);
    drawn.textAngle = 0.0 - ReadableAngle(layout.text.angle); // not -0
    for (const auto& curve : layout.curves) {
        drawn.lines.push_back(ShapeInInk(*curve));
    }
    for (const auto& [tip, left, right] : layout.arrowheads) {
        drawn.arrowheads.push_back({ToInk(tip), ToInk(left), ToInk(right)});
    }
    return drawn;
}

} // namespace Tessera::Tool
