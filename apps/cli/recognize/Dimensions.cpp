// Dimensions are built over copies of the curves in a frame of their own: y up, as the library reads text,
// and all coordinates above 0, as a pick on an arc needs them. Each is tried at several places; the board
// tells how well it stands there.

#include "apps/cli/recognize/Dimensions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <sstream>
#include <stdexcept>

#include "apps/cli/recognize/CurveShapes.h"
#include "apps/cli/recognize/DimensionLayout.h"
#include "tessera/dimension/AngularDimension.h"
#include "tessera/dimension/HorizontalDimension.h"
#include "tessera/dimension/LengthDimension.h"
#include "tessera/dimension/LinearDimension.h"
#include "tessera/dimension/RadialDimension.h"
#include "tessera/dimension/VerticalDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"

namespace Tessera::Tool {

namespace {

using Dimension::DimensionBase;
using Geometry::Arc;
using Geometry::Curve;
using Geometry::Line;
using Geometry::Point;

struct KindName {
    const char* name;
    Dimension::DimensionType_e kind;
};

/// In the order of placement: what stands closest to the geometry first.
constexpr KindName kKinds[] = {{"angular", Dimension::Angular},       {"radial", Dimension::Radial},
                               {"length", Dimension::Length},         {"linear", Dimension::Linear},
                               {"horizontal", Dimension::Horizontal}, {"vertical", Dimension::Vertical}};

constexpr double kFontShare = 0.025;                       ///< font height, part of the drawing's longer side
constexpr double kLeastFont = 0.5;                         ///< how far it shrinks for a short line
constexpr double kLevels[] = {0.75, 2.5, 4.25, 6.0, 7.75}; ///< text height offsets, font heights
constexpr double kArcLength = 4.2;   ///< of an angular dimension: room for text and arrowheads, font heights
constexpr double kCornerGap = 0.1;   ///< between two lines of a corner, part of the shorter one
constexpr double kLeastSine = 0.087; ///< lines of a corner turn by five degrees at least
constexpr double kParallelSine = 0.035; ///< two degrees: parallel
constexpr double kLevelSine = 0.035;    ///< a line along an axis has one extent only
constexpr int kChords = 32;

// What speaks against a place, on the board's measure.
constexpr double kInside = 3.0;
constexpr double kPerLevel = 0.6;
constexpr double kTowardsMiddle = 0.4;

const char* NameOf(Dimension::DimensionType_e kind) {
    return std::find_if(std::begin(kKinds), std::end(kKinds),
                        [kind](const KindName& named) { return named.kind == kind; })
        ->name;
}

double Length(const Line& line) {
    return std::hypot(line.GetEnd().x - line.GetStart().x, line.GetEnd().y - line.GetStart().y);
}

double Distance(const Point& p, const Point& q) {
    return std::hypot(q.x - p.x, q.y - p.y);
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

/// A curve of the drawing in the frame of the dimensions.
struct Measured {
    std::unique_ptr<Curve> curve;
    std::array<int, 2> index; ///< stroke, curve

    Line* AsLine() const { return dynamic_cast<Line*>(curve.get()); }
    Arc* AsArc() const { return dynamic_cast<Arc*>(curve.get()); }
};

class Annotator {
public:
    explicit Annotator(RecognizedDrawing& drawing) : drawing_(drawing) {
        AskFrame();
        for (std::size_t s = 0; s < drawing.strokes.size(); ++s) {
            AddStroke(drawing.strokes[s], static_cast<int>(s));
        }
    }

    void Add(Dimension::DimensionType_e kind) {
        hasLengths_ = hasLengths_ || kind == Dimension::Length;
        for (stroke_ = 0; stroke_ < strokes_.size(); ++stroke_) {
            const std::vector<Measured>& curves = strokes_[stroke_];
            for (std::size_t i = 0; i < curves.size(); ++i) {
                if (kind == Dimension::Angular) {
                    AddAngle(curves, i);
                } else if (kind == Dimension::Linear) {
                    AddDistance(curves, i);
                } else if (kind == Dimension::Radial) {
                    AddRadius(curves[i]);
                } else if (Line* line = curves[i].AsLine()) {
                    AddExtent(kind, curves[i], *line);
                }
            }
        }
    }

private:
    // --- Frame

    void AskFrame() {
        double maxX = -std::numeric_limits<double>::infinity();
        double minX = -maxX;
        double minY = -maxX;
        double maxY = maxX;
        std::vector<Segment> chords;
        for (const RecognizedStroke& stroke : drawing_.strokes) {
            for (const RecognizedCurve& curve : stroke.curves) {
                AppendChords(*CurveOf(curve.shape, WorkingFrame()), kChords, chords);
            }
        }
        for (const Segment& chord : chords) {
            minX = std::min({minX, chord.a.x, chord.b.x});
            maxX = std::max({maxX, chord.a.x, chord.b.x});
            minY = std::min({minY, chord.a.y, chord.b.y});
            maxY = std::max({maxY, chord.a.y, chord.b.y});
        }
        if (chords.empty()) {
            return;
        }
        size_ = std::max(maxX - minX, maxY - minY);
        left_ = minX - size_;
        top_ = maxY + size_;
        font_ = kFontShare * size_;
        middle_ = FromInk({0.5 * (minX + maxX), 0.5 * (minY + maxY)});
    }
    Point FromInk(Position p) const { return {p.x - left_, top_ - p.y}; }
    Position ToInk(const Point& p) const { return {p.x + left_, top_ - p.y}; }

    std::unique_ptr<Curve> Mirrored(const CurveShape& shape) const {
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

    CurveShape ShapeInInk(const Curve& curve) const {
        if (const auto* arc = dynamic_cast<const Arc*>(&curve)) {
            return ArcShape{ToInk(arc->GetCenter()), arc->GetRadius(),     -arc->GetEndAngle(),
                            -arc->GetStartAngle(),   ToInk(arc->GetEnd()), ToInk(arc->GetStart())};
        }
        return LineShape{ToInk(curve.GetStart()), ToInk(curve.GetEnd())};
    }

    void AddStroke(const RecognizedStroke& stroke, int index) {
        std::vector<Measured>& curves = strokes_.emplace_back();
        std::vector<std::vector<Segment>> pieces;
        for (std::size_t i = 0; i < stroke.curves.size(); ++i) {
            std::vector<Segment>& piece = pieces.emplace_back();
            AppendChords(*CurveOf(stroke.curves[i].shape, WorkingFrame()), kChords, piece);
            for (Segment& chord : piece) {
                chord = {FromInk({chord.a.x, chord.a.y}), FromInk({chord.b.x, chord.b.y})};
                board_.AddGeometry(chord);
            }
            if (piece.empty()) {
                pieces.pop_back();
                continue;
            }
            std::unique_ptr<Curve> curve = Mirrored(stroke.curves[i].shape);
            if (curve != nullptr && !curve->IsZeroLength()) {
                curves.push_back({std::move(curve), {index, static_cast<int>(i)}});
            }
        }
        outlines_.push_back(Outline(pieces));
    }

    /// The pieces joined in their order and closed. Arcs may run against the stroke.
    static std::vector<Segment> Outline(const std::vector<std::vector<Segment>>& pieces) {
        std::vector<Segment> outline;
        Point first;
        Point last;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            Point from = pieces[i].front().a;
            Point to = pieces[i].back().b;
            const auto gap = [&](const Point& p) {
                return std::min(Distance(p, pieces[i + 1].front().a), Distance(p, pieces[i + 1].back().b));
            };
            const bool isReversed =
                i > 0 ? Distance(last, to) < Distance(last, from) : pieces.size() > 1 && gap(from) < gap(to);
            if (isReversed) {
                std::swap(from, to);
            }
            if (i == 0) {
                first = from;
            } else {
                outline.push_back({last, from});
            }
            outline.insert(outline.end(), pieces[i].begin(), pieces[i].end());
            last = to;
        }
        outline.push_back({last, first});
        return outline;
    }

    /// Crossings of the stroke's outline, closed by a chord, to the right of p.
    bool IsInsideStroke(const Point& p) const {
        bool isInside = false;
        for (const Segment& side : outlines_[stroke_]) {
            if ((side.a.y > p.y) != (side.b.y > p.y) &&
                p.x < side.a.x + (p.y - side.a.y) / (side.b.y - side.a.y) * (side.b.x - side.a.x)) {
                isInside = !isInside;
            }
        }
        return isInside;
    }

    // --- Trials

    /// Takes a dimension at one of its places; keeps the layout when it stands better than those before.
    void Try(std::unique_ptr<DimensionBase> dimension, double cost, double inside = kInside) {
        if (dimension == nullptr || !dimension->IsValid()) {
            return;
        }
        dimension->UpdateDimension();
        std::unique_ptr<DimensionLayout> layout = LayOut(*dimension);
        if (layout == nullptr) {
            return;
        }
        cost += IsInsideStroke(layout->text.center) ? inside : 0.0;
        cost -= kTowardsMiddle * Distance(layout->text.center, middle_) / size_;
        if (best_ != nullptr && cost >= bestCost_) {
            return; // the board can only add to it
        }
        cost += board_.Cost(*layout);
        if (best_ == nullptr || cost < bestCost_) {
            bestCost_ = cost;
            best_ = std::move(layout);
            drawn_.kind = NameOf(dimension->GetType());
            drawn_.value = dimension->GetDisplayedValue();
            drawn_.text = TextOf(*dimension);
            drawn_.fontHeight = dimension->GetFontHeight();
        }
    }

    /// Draws the best of the trials.
    void Place(std::vector<std::array<int, 2>> curves) {
        if (best_ != nullptr) {
            board_.Add(*best_);
            drawn_.curves = std::move(curves);
            drawn_.position = ToInk(best_->text.center);
            drawn_.textAngle = 0.0 - best_->text.angle; // not -0
            for (const auto& curve : best_->curves) {
                drawn_.lines.push_back(ShapeInInk(*curve));
            }
            for (const auto& [tip, left, right] : best_->arrowheads) {
                drawn_.arrowheads.push_back({ToInk(tip), ToInk(left), ToInk(right)});
            }
            drawing_.dimensions->push_back(std::move(drawn_));
        }
        best_.reset();
        drawn_ = DrawnDimension();
    }

    // --- Kinds

    void AddExtent(Dimension::DimensionType_e kind, const Measured& measured, Line& line) {
        const double dx = std::fabs(line.GetEnd().x - line.GetStart().x);
        const double dy = std::fabs(line.GetEnd().y - line.GetStart().y);
        const double extent =
            kind == Dimension::Length ? Length(line) : (kind == Dimension::Horizontal ? dx : dy);
        if (extent < kLevelSine * Length(line)) {
            return;
        }
        const bool isLevel = std::min(dx, dy) < kLevelSine * Length(line);
        if (kind != Dimension::Length && isLevel && hasLengths_) {
            return; // it would repeat the length
        }
        const double font = FontFor(extent);
        for (std::size_t level = 0; level < std::size(kLevels); ++level) {
            for (const double side : {1.0, -1.0}) {
                Try(std::unique_ptr<DimensionBase>(DimensionBase::CreateDimensionByType(
                        kind, &line, side * kLevels[level] * font, font)),
                    kPerLevel * static_cast<double>(level));
            }
        }
        Place({measured.index});
    }

    /// Short lines have smaller letters, so that text and arrowheads fit.
    double FontFor(double extent) const {
        constexpr double kRoom = 5.0; // font heights
        return std::clamp(extent / kRoom, kLeastFont * font_, font_);
    }

    /// The corner where the curve ends and the next one of the stroke, round to the first, starts.
    void AddAngle(const std::vector<Measured>& curves, std::size_t i) {
        const std::size_t next = (i + 1) % curves.size();
        const Line* first = curves[i].AsLine();
        const Line* second = curves[next].AsLine();
        if (curves.size() < 2 || (curves.size() == 2 && next == 0) || first == nullptr || second == nullptr) {
            return;
        }
        const double shorter = std::min(Length(*first), Length(*second));
        if (Distance(first->GetEnd(), second->GetStart()) > kCornerGap * shorter ||
            std::fabs(Sine(*first, *second)) < kLeastSine) {
            return;
        }
        const double font = FontFor(shorter);
        const double sine = std::fabs(Sine(*first, *second));
        const Point u = first->GetStart() - first->GetEnd();
        const Point v = second->GetEnd() - second->GetStart();
        const double angle = std::atan2(sine * Length(*first) * Length(*second), u.x * v.x + u.y * v.y);
        const double least = std::max(3.0, kArcLength / angle) * font;
        for (int k = 0; k < 4; ++k) {
            const double radius = std::min(least, 0.7 * shorter) * (1.0 + 0.4 * k);
            const Point onFirst = Between(first->GetEnd(), first->GetStart(), radius / Length(*first));
            const Point onSecond = Between(second->GetStart(), second->GetEnd(), radius / Length(*second));
            Try(std::unique_ptr<DimensionBase>(Dimension::AngularDimension::MakeDimension(
                    first, second, onFirst, onSecond, 0.5 * font, font)),
                kPerLevel * static_cast<double>(k), 0.0);
        }
        Place({curves[i].index, curves[next].index});
    }

    void AddRadius(const Measured& measured) {
        constexpr double kPlaces[] = {0.5, 0.375, 0.625, 0.25, 0.75, 0.125, 0.875};
        Arc* arc = measured.AsArc();
        if (arc == nullptr) {
            return;
        }
        const double start = arc->GetStartAngle();
        const double sweep = arc->GetEndAngle() - start;
        for (const double place : kPlaces) {
            const double angle = start + place * sweep;
            const Point c = arc->GetCenter();
            const Point pick(c.x + arc->GetRadius() * std::cos(angle),
                             c.y + arc->GetRadius() * std::sin(angle));
            for (const double side : {1.0, -1.0}) {
                std::unique_ptr<Dimension::RadialDimension> dimension(
                    Dimension::RadialDimension::MakeDimension(arc, pick, font_));
                dimension->SetTextOffset(side * (dimension->GetTextWidthOffset() + 1.5 * font_));
                // A slanted leader is told apart from other lines.
                const double slant = std::fabs(std::sin(2.0 * angle));
                Try(std::move(dimension), (side < 0.0 ? kPerLevel : 0.0) + kPerLevel * (1.0 - slant));
            }
        }
        Place({measured.index});
    }

    /// From the curve to the nearest line after it in the stroke that runs beside it. The other line is taken
    /// as a parallel through its middle.
    void AddDistance(const std::vector<Measured>& curves, std::size_t i) {
        const Line* first = curves[i].AsLine();
        const Measured* nearest = nullptr;
        double least = std::numeric_limits<double>::infinity();
        double range[2] = {0.0, 1.0};
        for (std::size_t j = i + 1; first != nullptr && j < curves.size(); ++j) {
            const Line* second = curves[j].AsLine();
            double shared[2];
            if (second == nullptr || std::fabs(Sine(*first, *second)) > kParallelSine ||
                !RunsBeside(*first, *second, shared)) {
                continue;
            }
            const double distance = std::fabs(Across(*first, second->GetMidPoint()));
            if (distance > font_ && distance < least) {
                least = distance;
                nearest = &curves[j];
                std::copy(shared, shared + 2, range);
            }
        }
        if (nearest == nullptr) {
            return;
        }
        const Line parallel = ParallelThroughMiddle(*first, *nearest->AsLine());
        const double font = FontFor(least);
        const auto tryAt = [&](double t, double offset, double cost) {
            const Point pick = Between(first->GetStart(), first->GetEnd(), t);
            Try(std::unique_ptr<DimensionBase>(
                    Dimension::LinearDimension::MakeDimension(first, &parallel, &pick, offset, font)),
                cost, 0.0);
        };
        for (const double place : {0.5, 0.35, 0.65, 0.2, 0.8}) {
            for (const double side : {1.0, -1.0}) {
                tryAt(range[0] + place * (range[1] - range[0]), side * kLevels[0] * font, kPerLevel);
            }
        }
        for (const double level : kLevels) {
            for (const double side : {1.0, -1.0}) {
                tryAt(range[0], side * level * font, kPerLevel * level);
                tryAt(range[1], side * level * font, kPerLevel * level);
            }
        }
        Place({curves[i].index, nearest->index});
    }

    static double Across(const Line& line, const Point& p) {
        const Point u = line.GetEnd() - line.GetStart();
        const Point v = p - line.GetStart();
        return (u.x * v.y - u.y * v.x) / Length(line);
    }

    /// The shared part of both, as parameters of the first; false for less than a tenth of the first.
    static bool RunsBeside(const Line& first, const Line& second, double range[2]) {
        const Point u = first.GetEnd() - first.GetStart();
        const double squared = u.x * u.x + u.y * u.y;
        const auto along = [&](const Point& p) {
            return ((p.x - first.GetStart().x) * u.x + (p.y - first.GetStart().y) * u.y) / squared;
        };
        const double a = along(second.GetStart());
        const double b = along(second.GetEnd());
        range[0] = std::max(0.0, std::min(a, b));
        range[1] = std::min(1.0, std::max(a, b));
        return range[1] - range[0] > 0.1;
    }

    static Line ParallelThroughMiddle(const Line& direction, const Line& line) {
        const Point u = (direction.GetEnd() - direction.GetStart()) / Length(direction);
        const Point m = line.GetMidPoint();
        const double half = 0.5 * Length(line);
        return {Point(m.x - half * u.x, m.y - half * u.y), Point(m.x + half * u.x, m.y + half * u.y)};
    }

    RecognizedDrawing& drawing_;
    double size_ = 1.0;
    double left_ = 0.0;
    double top_ = 0.0;
    double font_ = 1.0;
    Point middle_;
    std::vector<std::vector<Measured>> strokes_;
    std::vector<std::vector<Segment>> outlines_;
    std::size_t stroke_ = 0; ///< the one that is annotated
    bool hasLengths_ = false;
    DimensionBoard board_;
    std::unique_ptr<DimensionLayout> best_;
    double bestCost_ = 0.0;
    DrawnDimension drawn_;
};

} // namespace

DimensionKinds ParseDimensionKinds(const std::string& names) {
    DimensionKinds kinds;
    std::istringstream list(names + ","); // an empty name is refused too
    for (std::string name; std::getline(list, name, ',');) {
        bool isKnown = false;
        for (const KindName& named : kKinds) {
            if (name == named.name || name == "all") {
                kinds.push_back(named.kind);
                isKnown = true;
            }
        }
        if (!isKnown) {
            throw std::invalid_argument(
                "--dimension takes length, horizontal, vertical, linear, angular, radial "
                "or all, separated by commas, not \"" +
                name + "\"");
        }
    }
    return kinds;
}

void AddDimensions(RecognizedDrawing& drawing, const DimensionKinds& kinds) {
    drawing.dimensions.emplace();
    Annotator annotator(drawing);
    for (const KindName& named : kKinds) {
        if (std::find(kinds.begin(), kinds.end(), named.kind) != kinds.end()) {
            annotator.Add(named.kind);
        }
    }
}

} // namespace Tessera::Tool
