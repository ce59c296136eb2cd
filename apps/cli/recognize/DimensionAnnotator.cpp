// Dimensions are built over copies of the curves in a frame of their own. Each is tried at several places;
// the board tells how well it stands there.

#include "apps/cli/recognize/DimensionAnnotator.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/LinearDimension.h"
#include "tessera/dimension/RadialDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

namespace Tessera::Tool {

namespace {

using Dimension::DimensionBase;
using Geometry::Arc;
using Geometry::Line;
using Geometry::Point;

constexpr double kLeastFont = 0.5;                         ///< how far letters shrink for a short line
constexpr double kLevels[] = {0.75, 2.5, 4.25, 6.0, 7.75}; ///< text height offsets, font heights
constexpr double kArcLength = 4.2;   ///< of an angular dimension: room for text and arrowheads, font heights
constexpr double kCornerGap = 0.1;   ///< between two lines of a corner, part of the shorter one
constexpr double kLeastSine = 0.087; ///< lines of a corner turn by five degrees at least
constexpr double kParallelSine = 0.035; ///< two degrees: parallel
constexpr double kLevelSine = 0.1;      ///< along an axis, as far as a hand can tell: one extent only
constexpr double kLeastBeside = 0.1;    ///< of a line that has a parallel one beside it
constexpr double kSameLength = 0.01;    ///< part of a length that makes no other one
constexpr double kCellPerFont = 2.0;    ///< more than text is high, so that no cell within it is overlooked

// What speaks against a place, on the board's measure.
constexpr double kInside = 3.0;
constexpr double kDistanceInside = 1.2;
constexpr double kPerLevel = 0.6;

double Length(const Line& line) {
    return line.GetStart().Distance(line.GetEnd());
}

Point Between(const Point& p, const Point& q, double t) {
    return {p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)};
}

/// Sine of the angle between two lines, signed.
double Sine(const Line& a, const Line& b) {
    const Point u = a.GetEnd() - a.GetStart();
    const Point v = b.GetEnd() - b.GetStart();
    return (u.x * v.y - u.y * v.x) / (Length(a) * Length(b));
}

double Across(const Line& line, const Point& p) {
    const Point u = line.GetEnd() - line.GetStart();
    const Point v = p - line.GetStart();
    return (u.x * v.y - u.y * v.x) / Length(line);
}

/// The side leads from the line square to its parallel at that distance (signed like Across): its length
/// tells the distance.
bool Spans(const Line& side, const Line& line, double distance) {
    const double tolerance = kSameLength * std::fabs(distance);
    const double a = Across(line, side.GetStart());
    const double b = Across(line, side.GetEnd());
    return std::min(std::fabs(a), std::fabs(b)) < tolerance && std::fabs(a + b - distance) < tolerance &&
           std::fabs(Length(side) - std::fabs(distance)) < tolerance;
}

/// Parameters of a line between which another one runs beside it.
struct SharedRange {
    double from = 0.0;
    double to = 0.0;

    SharedRange() = default;
    SharedRange(const Line& line, const Line& other) {
        const Point u = line.GetEnd() - line.GetStart();
        const double squared = u.x * u.x + u.y * u.y;
        const auto along = [&](const Point& p) {
            return ((p.x - line.GetStart().x) * u.x + (p.y - line.GetStart().y) * u.y) / squared;
        };
        const double a = along(other.GetStart());
        const double b = along(other.GetEnd());
        from = std::max(0.0, std::min(a, b));
        to = std::min(1.0, std::max(a, b));
    }
};

Line ParallelThroughMiddle(const Line& direction, const Line& line) {
    const Point u = (direction.GetEnd() - direction.GetStart()) / Length(direction);
    const Point m = line.GetMidPoint();
    const double half = 0.5 * Length(line);
    return {Point(m.x - half * u.x, m.y - half * u.y), Point(m.x + half * u.x, m.y + half * u.y)};
}

} // namespace

Line* DimensionAnnotator::Measured::AsLine() const {
    return dynamic_cast<Line*>(curve.get());
}

Arc* DimensionAnnotator::Measured::AsArc() const {
    return dynamic_cast<Arc*>(curve.get());
}

DimensionAnnotator::DimensionAnnotator(RecognizedDrawing& drawing)
    : drawing_(drawing), frame_(drawing), board_(kCellPerFont * frame_.FontHeight()),
      trials_(frame_, board_) {
    if (!(frame_.FontHeight() > 0.0)) {
        return; // nothing that has an extent
    }
    for (std::size_t s = 0; s < drawing.strokes.size(); ++s) {
        AddStroke(drawing.strokes[s], static_cast<int>(s));
    }
}

void DimensionAnnotator::AddStroke(const RecognizedStroke& stroke, int index) {
    std::vector<Measured> curves;
    std::vector<std::vector<Segment>> pieces;
    for (std::size_t i = 0; i < stroke.curves.size(); ++i) {
        std::vector<Segment> piece = frame_.ChordsFromInk(stroke.curves[i].shape);
        if (piece.empty()) {
            continue;
        }
        for (const Segment& chord : piece) {
            board_.AddGeometry(chord);
        }
        pieces.push_back(std::move(piece));
        std::unique_ptr<Geometry::Curve> curve = frame_.CurveFromInk(stroke.curves[i].shape);
        if (curve != nullptr && !curve->IsZeroLength()) {
            curves.push_back({std::move(curve), {index, static_cast<int>(i)}});
        }
    }
    strokes_.push_back({std::move(curves), DimensionOutline(pieces)});
}

void DimensionAnnotator::Add(Dimension::DimensionType_e kind) {
    hasLengths_ = hasLengths_ || kind == Dimension::Length;
    for (const Stroke& stroke : strokes_) {
        for (std::size_t i = 0; i < stroke.curves.size(); ++i) {
            if (kind == Dimension::Angular) {
                AddAngle(stroke, i);
            } else if (kind == Dimension::Linear) {
                AddDistance(stroke, i);
            } else if (kind == Dimension::Radial) {
                AddRadius(stroke, stroke.curves[i]);
            } else {
                AddExtent(kind, stroke, stroke.curves[i]);
            }
        }
    }
}

void DimensionAnnotator::Place(std::vector<std::array<int, 2>> curves) {
    if (std::optional<DrawnDimension> drawn = trials_.Take()) {
        drawn->curves = std::move(curves);
        drawing_.dimensions->push_back(std::move(*drawn));
    }
}

/// Short lines have smaller letters, so that text and arrowheads fit.
double DimensionAnnotator::FontFor(double extent) const {
    constexpr double kRoom = 5.0; // font heights
    const double font = frame_.FontHeight();
    return std::clamp(extent / kRoom, kLeastFont * font, font);
}

// --- Kinds

void DimensionAnnotator::AddExtent(Dimension::DimensionType_e kind, const Stroke& stroke,
                                   const Measured& measured) {
    Line* line = measured.AsLine();
    if (line == nullptr) {
        return;
    }
    const double dx = std::fabs(line->GetEnd().x - line->GetStart().x);
    const double dy = std::fabs(line->GetEnd().y - line->GetStart().y);
    const double length = Length(*line);
    const double extent = kind == Dimension::Length ? length : (kind == Dimension::Horizontal ? dx : dy);
    const bool isLevel = std::min(dx, dy) < kLevelSine * length;
    if (extent < kLevelSine * length || (kind != Dimension::Length && isLevel && hasLengths_)) {
        return; // nothing, or the length once more
    }
    // Horizontal and vertical offsets count from the lower or left end: on the other side they start beyond
    // the far end, so as not to cross what they measure.
    const double far = kind == Dimension::Length ? 0.0 : (kind == Dimension::Horizontal ? dy : dx);
    const double font = FontFor(extent);
    for (std::size_t level = 0; level < std::size(kLevels); ++level) {
        for (const double offset : {far + kLevels[level] * font, -kLevels[level] * font}) {
            trials_.Try({kPerLevel * static_cast<double>(level), kInside}, stroke.outline, [&] {
                return std::unique_ptr<DimensionBase>(
                    DimensionBase::CreateDimensionByType(kind, line, offset, font));
            });
        }
    }
    Place({measured.index});
}

/// The corner where the curve ends and the next one of the stroke, round to the first, starts.
void DimensionAnnotator::AddAngle(const Stroke& stroke, std::size_t i) {
    const std::vector<Measured>& curves = stroke.curves;
    const std::size_t next = (i + 1) % curves.size();
    const Line* first = curves[i].AsLine();
    const Line* second = curves[next].AsLine();
    if (curves.size() < 2 || (curves.size() == 2 && next == 0) || first == nullptr || second == nullptr) {
        return;
    }
    const double shorter = std::min(Length(*first), Length(*second));
    const double sine = std::fabs(Sine(*first, *second));
    if (first->GetEnd().Distance(second->GetStart()) > kCornerGap * shorter || sine < kLeastSine) {
        return;
    }
    const double font = FontFor(shorter);
    const Point u = first->GetStart() - first->GetEnd();
    const Point v = second->GetEnd() - second->GetStart();
    const double angle = std::atan2(sine * Length(*first) * Length(*second), u.x * v.x + u.y * v.y);
    const double least = std::max(3.0, kArcLength / angle) * font;
    for (int k = 0; k < 4; ++k) {
        const double radius = std::min(least, 0.7 * shorter) * (1.0 + 0.4 * k);
        const Point onFirst = Between(first->GetEnd(), first->GetStart(), radius / Length(*first));
        const Point onSecond = Between(second->GetStart(), second->GetEnd(), radius / Length(*second));
        trials_.Try({kPerLevel * static_cast<double>(k)}, stroke.outline, [&] {
            return std::make_unique<Dimension::AngularDimension>(first, second, onFirst, onSecond, 0.5 * font,
                                                                 font);
        });
    }
    Place({curves[i].index, curves[next].index});
}

void DimensionAnnotator::AddRadius(const Stroke& stroke, const Measured& measured) {
    constexpr double kPlaces[] = {0.5, 0.375, 0.625, 0.25, 0.75, 0.125, 0.875};
    Arc* arc = measured.AsArc();
    if (arc == nullptr) {
        return;
    }
    const double font = frame_.FontHeight();
    const double start = arc->GetStartAngle();
    const double sweep = arc->GetEndAngle() - start;
    for (const double place : kPlaces) {
        const double angle = start + place * sweep;
        const Point pick = arc->GetPointFromAngle(angle);
        // A slanted leader is told apart from other lines.
        const double slant = std::fabs(std::sin(2.0 * angle));
        for (const double side : {1.0, -1.0}) {
            trials_.Try({(side < 0.0 ? kPerLevel : 0.0) + kPerLevel * (1.0 - slant), kInside}, stroke.outline,
                        [&] {
                            auto dimension = std::make_unique<Dimension::RadialDimension>(arc, pick, font);
                            dimension->SetTextOffset(side * (dimension->GetTextWidthOffset() + 1.5 * font));
                            return dimension;
                        });
        }
    }
    Place({measured.index});
}

/// From the curve to the nearest line after it in the stroke that runs beside it, unless a length between
/// them tells the same. The other line is taken as a parallel through its middle.
void DimensionAnnotator::AddDistance(const Stroke& stroke, std::size_t i) {
    const std::vector<Measured>& curves = stroke.curves;
    const Line* first = curves[i].AsLine();
    const Measured* nearest = nullptr;
    double least = std::numeric_limits<double>::infinity();
    SharedRange range;
    for (std::size_t j = i + 1; first != nullptr && j < curves.size(); ++j) {
        const Line* second = curves[j].AsLine();
        if (second == nullptr || std::fabs(Sine(*first, *second)) > kParallelSine) {
            continue;
        }
        const SharedRange shared(*first, *second);
        const double distance = std::fabs(Across(*first, second->GetMidPoint()));
        if (shared.to - shared.from > kLeastBeside && distance > frame_.FontHeight() && distance < least) {
            least = distance;
            nearest = &curves[j];
            range = shared;
        }
    }
    if (nearest == nullptr) {
        return;
    }
    const Line parallel = ParallelThroughMiddle(*first, *nearest->AsLine());
    if (hasLengths_ && std::any_of(curves.begin(), curves.end(), [&](const Measured& side) {
            return side.AsLine() != nullptr &&
                   Spans(*side.AsLine(), *first, Across(*first, parallel.GetMidPoint()));
        })) {
        return; // the length once more
    }
    const double font = FontFor(least);
    const auto tryAt = [&](double t, double offset, double cost) {
        const Point pick = Between(first->GetStart(), first->GetEnd(), t);
        trials_.Try({cost, kDistanceInside}, stroke.outline, [&] {
            return std::make_unique<Dimension::LinearDimension>(first, &parallel, &pick, offset, font);
        });
    };
    for (const double side : {1.0, -1.0}) {
        for (const double place : {0.5, 0.35, 0.65, 0.2, 0.8}) {
            tryAt(range.from + place * (range.to - range.from), side * kLevels[0] * font, kPerLevel);
        }
        for (const double level : kLevels) {
            tryAt(range.from, side * level * font, kPerLevel * level);
            tryAt(range.to, side * level * font, kPerLevel * level);
        }
    }
    Place({curves[i].index, nearest->index});
}

} // namespace Tessera::Tool
