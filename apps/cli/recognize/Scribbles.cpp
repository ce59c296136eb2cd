#include "apps/cli/recognize/Scribbles.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "tessera/kernel/SM.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::CurveEnd;
using Geometry::Point;
using Geometry::Stroke;

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

/// The sample of a curve's ink that lies nearest to the place (page units).
int NearestSample(const InkStroke& ink, const SketchCurve& curve, const Point& place,
                  const WorkingFrame& page) {
    const Position at = page.ToInk({place.x, place.y});
    const auto n = static_cast<int>(ink.samples.size());
    const int count = curve.to >= curve.from ? curve.to - curve.from : curve.to + n - curve.from;
    int nearest = curve.from;
    double least = INFINITY;
    for (int i = 0; i <= count; ++i) {
        const int index = (curve.from + i) % n;
        const double distance = std::hypot(ink.samples[index].x - at.x, ink.samples[index].y - at.y);
        if (distance < least) {
            least = distance;
            nearest = index;
        }
    }
    return nearest;
}

/// All that one scribble does to the strokes before it.
class Eraser {
public:
    Eraser(Sketch& sketch, RecognizedDrawing& drawing, RecognizedStroke& scribble)
        : sketch_(sketch), drawing_(drawing), scribble_(scribble) {}

    void Apply(const RecognizeOptions& options) {
        const std::vector<Point> points = PointsOf(drawing_.ink.strokes[scribble_.index], sketch_.page);
        const std::unique_ptr<Stroke> stroke =
            options.useRulesOnly ? BareStroke(points) : Geometry::WithoutTremor(points);
        std::vector<Curve*> curves = sketch_.Curves();
        if (!result_.Ask(*stroke, options.preferences, curves)) {
            return;
        }
        for (int i = 0; i < scribble_.index; ++i) {
            if (EraseFrom(i)) {
                scribble_.erases.push_back(i);
            }
        }
    }

private:
    bool EraseFrom(int index) {
        std::vector<SketchCurve> left;
        const std::size_t before = drawing_.strokes[index].erased.size();
        for (SketchCurve& curve : sketch_.strokes[index].curves) {
            const std::vector<Range> trimmed = result_.RangesOf(curve.curve->GetId());
            if (result_.erased.Contains(curve.curve->GetId())) {
                Tell(index, curve);
            } else if (!trimmed.empty()) {
                Trim(index, curve, trimmed, left);
            } else {
                left.push_back(std::move(curve));
            }
        }
        sketch_.strokes[index].curves = std::move(left);
        return drawing_.strokes[index].erased.size() > before;
    }

    void Tell(int index, const SketchCurve& curve) {
        drawing_.strokes[index].erased.push_back({DescribeCurve(curve, sketch_.page), scribble_.index});
    }

    /// An open curve's first and last pieces that are left keep what was said of its ends.
    void Trim(int index, const SketchCurve& whole, const std::vector<Range>& ranges,
              std::vector<SketchCurve>& left) {
        const bool isRound = whole.curve->IsClosed() && whole.curve->GetType() != Geometry::CurveType_Spline;
        double limits[2];
        whole.curve->AskRange(limits);
        const std::vector<Range> trimmed = WithoutCrumbs(limits, isRound, ranges);
        for (const Range& range : trimmed) {
            Tell(index, PieceOf(index, whole, range));
        }
        for (const Range& range : RestOf(limits, isRound, trimmed)) {
            const SketchCurve& piece = left.emplace_back(PieceOf(index, whole, range));
            if (range.from == limits[0]) {
                sketch_.RenameEnd({whole.curve.get(), CurveEnd::Start}, {piece.curve.get(), CurveEnd::Start});
            }
            if (range.to == limits[1]) {
                sketch_.RenameEnd({whole.curve.get(), CurveEnd::End}, {piece.curve.get(), CurveEnd::End});
            }
        }
    }

    /// The whole curve where there is no such piece.
    SketchCurve PieceOf(int index, const SketchCurve& whole, const Range& range) const {
        double limits[2] = {range.from, range.to};
        SketchCurve piece{std::unique_ptr<Curve>(whole.curve->Extract(limits)),
                          whole.from,
                          whole.to,
                          whole.deviation,
                          whole.retracedBy,
                          nullptr};
        if (!piece.curve) {
            piece.curve.reset(whole.curve->CopyCurveOnly());
        }
        const InkStroke& ink = drawing_.ink.strokes[index];
        const int first = NearestSample(ink, whole, piece.curve->GetStart(), sketch_.page);
        const int last = NearestSample(ink, whole, piece.curve->GetEnd(), sketch_.page);
        piece.from = std::min(first, last);
        piece.to = std::max(first, last);
        return piece;
    }

    Sketch& sketch_;
    RecognizedDrawing& drawing_;
    RecognizedStroke& scribble_;
    ScribbleResult result_;
};

} // namespace

bool AskScribble(const InkStroke& ink, const RecognizeOptions& options, const WorkingFrame& page,
                 RecognizedStroke& stroke) {
    if (!options.useScribbles || !options.preferences.GetDoScribble()) {
        return false;
    }
    const std::vector<Point> points = PointsOf(ink, page);
    if (options.useRulesOnly) {
        Geometry::SketchRecognizerPreferences preferences = options.preferences;
        stroke.isScribble =
            Geometry::StrokeIsScribbleShape(BareStroke(points).get(), &preferences, &stroke.cusps);
    } else {
        stroke.isScribble = Geometry::IsScribbleInk(points, options.preferences, &stroke.cusps);
    }
    return stroke.isScribble;
}

void EraseScribbled(const RecognizeOptions& options, Sketch& sketch, RecognizedDrawing& drawing,
                    RecognizedStroke& scribble) {
    Eraser(sketch, drawing, scribble).Apply(options);
}

} // namespace Tessera::Tool
