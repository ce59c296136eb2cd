#include "apps/cli/recognize/Scribbles.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>

#include "apps/cli/recognize/CurveShapes.h"
#include "tessera/geometry/Curve.h"
#include "tessera/kernel/SM.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::Point;
using Geometry::Stroke;

/// Diagonal of the whole drawing when scribbles erase: a page of this size is what the lengths of the
/// scribble preferences are made for.
constexpr double kPageDiagonal = 1000.0;
/// A hand that scratches out an end of a curve does not aim at its last point: a rest below this part of the
/// curve goes with what was trimmed.
constexpr double kSmallestRest = 0.05;

struct Range {
    double from, to;
};

/// An array that the library allocated.
template <class T>
struct LibraryArray {
    T* data = nullptr;
    int count = 0;

    LibraryArray() = default;
    LibraryArray(const LibraryArray&) = delete;
    LibraryArray& operator=(const LibraryArray&) = delete;
    ~LibraryArray() { SM_free(data); }
    bool Contains(T value) const { return std::find(data, data + count, value) != data + count; }
};

struct ScribbleResult {
    LibraryArray<int> hit, erased, trimmed, cusps;
    LibraryArray<double> ranges;

    bool Ask(Stroke& scribble, Geometry::SketchRecognizerPreferences preferences,
             std::vector<Curve*>& curves) {
        int status = 0;
        return StrokeRecognizeScribble(&scribble, &preferences, static_cast<int>(curves.size()),
                                       curves.data(), &hit.count, &hit.data, &erased.count, &erased.data,
                                       &trimmed.count, &trimmed.data, &ranges.data, &cusps.count, &cusps.data,
                                       &status) == 1;
    }
    /// Ascending, as the library gives them.
    std::vector<Range> RangesOf(int id) const {
        std::vector<Range> found;
        for (int i = 0; i < trimmed.count; ++i) {
            if (trimmed.data[i] == id) {
                found.push_back({ranges.data[2 * i], ranges.data[2 * i + 1]});
            }
        }
        return found;
    }
};

WorkingFrame PageFrame(const Drawing& drawing, const RecognizeOptions& options) {
    if (options.inkScale || options.useRulesOnly) {
        return FixedFrame(options.inkScale.value_or(1.0));
    }
    const WorkingFrame working = AutomaticFrame(drawing);
    double minX = INFINITY;
    double minY = INFINITY;
    double maxX = -INFINITY;
    double maxY = -INFINITY;
    for (const InkStroke& stroke : drawing.strokes) {
        if (!stroke.problem.empty()) {
            continue;
        }
        for (const Sample& sample : stroke.samples) {
            minX = std::min(minX, sample.x);
            maxX = std::max(maxX, sample.x);
            minY = std::min(minY, sample.y);
            maxY = std::max(maxY, sample.y);
        }
    }
    return {working.origin, kPageDiagonal / std::hypot(maxX - minX, maxY - minY)};
}

std::vector<Point> PointsOf(const InkStroke& ink, const WorkingFrame& frame) {
    std::vector<Point> points;
    points.reserve(ink.samples.size());
    for (const Sample& sample : ink.samples) {
        const Position p = frame.ToWorking({sample.x, sample.y});
        points.emplace_back(p.x, p.y);
    }
    return points;
}

std::unique_ptr<Stroke> BareStroke(const std::vector<Point>& points) {
    auto stroke = std::make_unique<Stroke>();
    for (const Point& p : points) {
        stroke->AddPoint({p.x, p.y, 0.0});
    }
    return stroke;
}

/// The trimmed ranges, in order, grown over rests too small to stand. A range of a round curve may end beyond
/// the upper limit.
std::vector<Range> WithoutCrumbs(const double limits[2], bool isRound, const std::vector<Range>& trimmed) {
    const double whole = limits[1] - limits[0];
    const double crumb = kSmallestRest * whole;
    std::vector<Range> grown;
    for (const Range& range : trimmed) {
        if (!grown.empty() && range.from - grown.back().to < crumb) {
            grown.back().to = range.to;
        } else {
            grown.push_back(range);
        }
    }
    Range& first = grown.front();
    Range& last = grown.back();
    if (!isRound) {
        first.from = first.from - limits[0] < crumb ? limits[0] : first.from;
        last.to = limits[1] - last.to < crumb ? limits[1] : last.to;
    } else if (grown.size() > 1 && first.from + whole - last.to < crumb) {
        last.to = first.to + whole;
        grown.erase(grown.begin());
    }
    return grown;
}

/// What trimming leaves of a curve's range; of a round curve the stretches between the trimmed ones.
std::vector<Range> RestOf(const double limits[2], bool isRound, const std::vector<Range>& trimmed) {
    std::vector<Range> rest;
    for (std::size_t i = 0; i + 1 < trimmed.size(); ++i) {
        rest.push_back({trimmed[i].to, trimmed[i + 1].from});
    }
    if (isRound) {
        rest.push_back({trimmed.back().to, trimmed.front().from + limits[1] - limits[0]});
        return rest;
    }
    if (trimmed.front().from > limits[0]) {
        rest.insert(rest.begin(), {limits[0], trimmed.front().from});
    }
    if (trimmed.back().to < limits[1]) {
        rest.push_back({trimmed.back().to, limits[1]});
    }
    return rest;
}

CurveShape PieceOf(const Curve& curve, const CurveShape& shape, Range range, const WorkingFrame& frame) {
    const auto at = [&](double t) {
        const Point p = curve.GetPointAtParameter(t, true);
        return frame.ToInk({p.x, p.y});
    };
    if (const auto* circle = std::get_if<CircleShape>(&shape)) {
        return ArcShape{circle->center, circle->radius, range.from, range.to, at(range.from), at(range.to)};
    }
    if (const auto* ellipse = std::get_if<EllipseShape>(&shape)) {
        return EllipticArcShape{*ellipse, range.from, range.to, at(range.from), at(range.to)};
    }
    double limits[2] = {range.from, range.to};
    const std::unique_ptr<Curve> piece(curve.Extract(limits));
    return piece ? ShapeOf(*piece, frame) : shape;
}

/// The sample of a curve's ink that lies nearest to the place.
int NearestSample(const InkStroke& ink, const RecognizedCurve& curve, Position place) {
    int nearest = curve.from;
    double least = INFINITY;
    for (int i = curve.from; i <= curve.to; ++i) {
        const double distance = std::hypot(ink.samples[i].x - place.x, ink.samples[i].y - place.y);
        if (distance < least) {
            least = distance;
            nearest = i;
        }
    }
    return nearest;
}

/// The curve's pieces within the ranges, in its place.
std::vector<RecognizedCurve> PiecesOf(const Curve& curve, const RecognizedCurve& whole, const InkStroke& ink,
                                      const std::vector<Range>& ranges, const WorkingFrame& frame) {
    std::vector<RecognizedCurve> pieces;
    for (const Range& range : ranges) {
        RecognizedCurve piece = whole;
        piece.shape = PieceOf(curve, whole.shape, range, frame);
        const Point ends[2] = {curve.GetPointAtParameter(range.from, true),
                               curve.GetPointAtParameter(range.to, true)};
        const int samples[2] = {NearestSample(ink, whole, frame.ToInk({ends[0].x, ends[0].y})),
                                NearestSample(ink, whole, frame.ToInk({ends[1].x, ends[1].y}))};
        piece.from = std::min(samples[0], samples[1]);
        piece.to = std::max(samples[0], samples[1]);
        pieces.push_back(std::move(piece));
    }
    return pieces;
}

/// All that one scribble does to the strokes before it.
class Eraser {
public:
    Eraser(RecognizedDrawing& drawing, const RecognizeOptions& options)
        : drawing_(drawing), options_(options), frame_(PageFrame(drawing.ink, options)) {}

    void Apply(RecognizedStroke& scribble) {
        std::vector<std::vector<std::unique_ptr<Curve>>> curves(static_cast<std::size_t>(scribble.index));
        std::vector<Curve*> all;
        for (int i = 0; i < scribble.index; ++i) {
            for (const RecognizedCurve& curve : drawing_.strokes[i].curves) {
                all.push_back(curves[i].emplace_back(CurveOf(curve.shape, frame_)).get());
            }
        }
        const std::vector<Point> points = PointsOf(drawing_.ink.strokes[scribble.index], frame_);
        const std::unique_ptr<Stroke> stroke =
            options_.useRulesOnly ? BareStroke(points) : Geometry::WithoutTremor(points);
        ScribbleResult result;
        if (!result.Ask(*stroke, options_.preferences, all)) {
            return;
        }
        for (int i = 0; i < scribble.index; ++i) {
            if (EraseFrom(drawing_.strokes[i], curves[i], result, scribble.index)) {
                scribble.erases.push_back(i);
            }
        }
    }

private:
    bool EraseFrom(RecognizedStroke& stroke, const std::vector<std::unique_ptr<Curve>>& curves,
                   const ScribbleResult& result, int scribble) {
        const std::size_t before = stroke.erased.size();
        std::vector<RecognizedCurve> left;
        for (std::size_t k = 0; k < curves.size(); ++k) {
            const std::vector<Range> trimmed = result.RangesOf(curves[k]->GetId());
            if (result.erased.Contains(curves[k]->GetId())) {
                stroke.erased.push_back({stroke.curves[k], scribble});
            } else if (!trimmed.empty()) {
                Trim(*curves[k], stroke.curves[k], trimmed, scribble, stroke, left);
            } else {
                left.push_back(stroke.curves[k]);
            }
        }
        stroke.curves = std::move(left);
        return stroke.erased.size() > before;
    }

    void Trim(const Curve& curve, const RecognizedCurve& whole, const std::vector<Range>& ranges,
              int scribble, RecognizedStroke& stroke, std::vector<RecognizedCurve>& left) const {
        const InkStroke& ink = drawing_.ink.strokes[stroke.index];
        const bool isRound = std::holds_alternative<CircleShape>(whole.shape) ||
                             std::holds_alternative<EllipseShape>(whole.shape);
        double limits[2];
        curve.AskRange(limits);
        const std::vector<Range> trimmed = WithoutCrumbs(limits, isRound, ranges);
        for (RecognizedCurve& piece : PiecesOf(curve, whole, ink, trimmed, frame_)) {
            stroke.erased.push_back({std::move(piece), scribble});
        }
        for (RecognizedCurve& piece : PiecesOf(curve, whole, ink, RestOf(limits, isRound, trimmed), frame_)) {
            left.push_back(std::move(piece));
        }
    }

    RecognizedDrawing& drawing_;
    const RecognizeOptions& options_;
    WorkingFrame frame_;
};

} // namespace

bool AskScribble(const InkStroke& ink, const RecognizeOptions& options, RecognizedStroke& stroke) {
    if (!options.useScribbles || !options.preferences.GetDoScribble()) {
        return false;
    }
    const std::vector<Point> points = PointsOf(ink, FixedFrame(options.inkScale.value_or(1.0)));
    if (options.useRulesOnly) {
        Geometry::SketchRecognizerPreferences preferences = options.preferences;
        stroke.isScribble =
            Geometry::StrokeIsScribbleShape(BareStroke(points).get(), &preferences, &stroke.cusps);
    } else {
        stroke.isScribble = Geometry::IsScribbleInk(points, options.preferences, &stroke.cusps);
    }
    return stroke.isScribble;
}

void EraseScribbled(RecognizedDrawing& drawing, const RecognizeOptions& options) {
    const bool hasScribble = std::any_of(drawing.strokes.begin(), drawing.strokes.end(),
                                         [](const RecognizedStroke& stroke) { return stroke.isScribble; });
    if (!hasScribble) {
        return;
    }
    Eraser eraser(drawing, options);
    for (RecognizedStroke& stroke : drawing.strokes) {
        if (stroke.isScribble) {
            eraser.Apply(stroke);
        }
    }
}

} // namespace Tessera::Tool
