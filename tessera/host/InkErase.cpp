#include <algorithm>
#include <memory>
#include <new>
#include <unordered_map>
#include <unordered_set>

#include "tessera/host/internal/InkConversion.h"
#include "tessera/host/internal/Services.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmArray.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/recognition/internal/InkSpeeds.h"
#include "tessera/strokes/Stroke.h"

// A trimmed element keeps its identifier for the first piece that is left of it. The other pieces are new;
// what constraints say of its end goes over to the last of them.
namespace Tessera::Host {

using Geometry::Curve;
using Geometry::InkSample;
using Geometry::Stroke;

namespace {

struct Range {
    double from, to;
};

/// What the scribble test says of the neighbours.
struct ScribbleHits {
    bool isScribble = false;
    std::unordered_set<int> erased;                      ///< identifiers of curves
    std::unordered_map<int, std::vector<Range>> trimmed; ///< what is cut out of them
};

/// The samples with their speeds.
Stroke TimedStroke(const Geometry::InkStroke& ink) {
    const std::vector<double> speeds = Geometry::SpeedsOf(ink, 1.0);
    std::vector<Geometry::StrokePoint> points;
    points.reserve(speeds.size());
    for (std::size_t i = 0; i < speeds.size(); ++i) {
        points.emplace_back(ink.samples[i].x, ink.samples[i].y, speeds[i]);
    }
    return Stroke(std::move(points));
}

/// The stroke in which the ink was found to be a scribble.
std::unique_ptr<Stroke> StrokeWithoutTremor(const Geometry::InkStroke& ink) {
    std::vector<Geometry::Point> points;
    points.reserve(ink.samples.size());
    for (const InkSample& s : ink.samples) {
        points.emplace_back(s.x, s.y);
    }
    return Geometry::WithoutTremor(points);
}

ScribbleHits FindHits(const InkScene& scene, Stroke& stroke) {
    Geometry::SketchRecognizerPreferences preferences = scene.preferences;
    std::vector<Curve*> curves;
    for (const ElementCurve& neighbour : scene.neighbours) {
        curves.push_back(neighbour.curve.get());
    }
    int hitCount = 0;
    int erasedCount = 0;
    int trimCount = 0;
    int cuspCount = 0;
    int status = 0;
    int* arrays[4] = {};
    double* trimRanges = nullptr;
    const int isScribble = Geometry::StrokeRecognizeScribble(
        &stroke, &preferences, static_cast<int>(curves.size()), curves.data(), &hitCount, &arrays[0],
        &erasedCount, &arrays[1], &trimCount, &arrays[2], &trimRanges, &cuspCount, &arrays[3], &status);
    SmArray<int> hitIds(arrays[0]);
    SmArray<int> erasedIds(arrays[1]);
    SmArray<int> trimIds(arrays[2]);
    SmArray<int> cusps(arrays[3]);
    SmArray<double> ranges(trimRanges);
    if (status != 0) {
        throw std::bad_alloc(); // no pointer is null, so memory ran out
    }
    ScribbleHits hits;
    hits.isScribble = isScribble != 0;
    hits.erased.insert(erasedIds.get(), erasedIds.get() + erasedCount);
    for (int i = 0; i < trimCount; ++i) {
        hits.trimmed[trimIds[i]].push_back({ranges[2 * i], ranges[2 * i + 1]});
    }
    return hits;
}

/// What is left of the curve between the ranges, in the order of its parameter.
std::vector<Range> Remaining(const Curve& curve, std::vector<Range> cut) {
    // Of the parameter's extent: a hand that scratches out an end does not aim at the last point, so a
    // shorter rest goes with what is cut.
    constexpr double kShortest = 0.05;
    double limits[2];
    curve.AskRange(limits);
    const double extent = limits[1] - limits[0];
    std::sort(cut.begin(), cut.end(), [](const Range& a, const Range& b) { return a.from < b.from; });
    const bool turns = curve.IsClosed() && curve.GetType() != Geometry::CurveType_Spline;
    std::vector<Range> left;
    double reached = turns ? cut.front().from : limits[0];
    const double end = turns ? cut.front().from + extent : limits[1];
    for (const Range& range : cut) {
        left.push_back({reached, range.from});
        reached = std::max(reached, range.to);
    }
    left.push_back({reached, end});
    std::erase_if(left, [=](const Range& r) { return !(r.to - r.from > kShortest * extent); });
    return left;
}

/// A piece of an element, running the way the element runs.
ElementGeometry PieceOf(const ElementCurve& element, const Range& range) {
    double limits[2] = {range.from, range.to};
    const std::unique_ptr<Curve> piece(element.curve->Extract(limits));
    const Curve* curves[] = {piece.get()};
    ConstructList list;
    AppendCurvesToConstructList(curves, list);
    ElementGeometry geometry(list.front());
    if (list.front().endsExchanged != element.endsExchanged) {
        geometry.ExchangeEnds();
    }
    return geometry;
}

std::int32_t Erase(HostElementId id, DocumentChange& change, InkOutcome& outcome) {
    outcome.erased.push_back(id);
    return change.Erase(id);
}

std::int32_t Trim(const ElementCurve& element, const ElementGeometry& before, const std::vector<Range>& cut,
                  DocumentChange& change, InkOutcome& outcome) {
    const std::vector<Range> left = Remaining(*element.curve, cut);
    if (left.empty()) {
        return Erase(element.id, change, outcome);
    }
    ElementGeometry first = PieceOf(element, left.front());
    first.SetId(element.id);
    std::int32_t code = change.Modify(first.View(), before);
    HostElementId made = element.id;
    for (std::size_t i = 1; code >= 0 && i < left.size(); ++i) {
        code = change.CreateElement(PieceOf(element, left[i]).View(), made);
        outcome.elements.push_back(made);
    }
    outcome.trimmed.push_back(element.id);
    if (code >= 0 && left.size() > 1 && !element.curve->IsClosed()) {
        const std::int32_t end = element.endsExchanged ? kHostPointStart : kHostPointEnd;
        code = change.Retarget({element.id, end, 0}, {made, end, 0});
    }
    return code;
}

} // namespace

std::int32_t EraseUnderScribble(const InkScene& scene, DocumentChange& change, InkOutcome& outcome) {
    ScribbleHits hits = FindHits(scene, *StrokeWithoutTremor(scene.ink));
    if (!hits.isScribble) {
        Stroke stroke = TimedStroke(scene.ink);
        hits = FindHits(scene, stroke);
    }
    outcome.outcome = kHostInkScribble;
    std::int32_t code = kOk;
    for (std::size_t i = 0; code >= 0 && i < scene.neighbours.size(); ++i) {
        const ElementCurve& element = scene.neighbours[i];
        const int id = element.curve->GetId();
        const auto cut = hits.trimmed.find(id);
        if (hits.erased.count(id) != 0) {
            code = Erase(element.id, change, outcome);
        } else if (cut != hits.trimmed.end()) {
            code = Trim(element, scene.elements[i], cut->second, change, outcome);
        }
    }
    return code;
}

} // namespace Tessera::Host
