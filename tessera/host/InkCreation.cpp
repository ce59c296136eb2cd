#include <cmath>

#include "tessera/geometry/Line.h"
#include "tessera/host/internal/InkConversion.h"
#include "tessera/host/internal/InkingCnstrHelper.h"
#include "tessera/host/internal/ScriptorTesseraRecog.h"
#include "tessera/host/internal/Services.h"

// The reading's curves first take the geometry that satisfies their constraints; only then does anything come
// into the document, where nothing has to be moved again.
namespace Tessera::Host {

using Geometry::Curve;
using Geometry::InkReading;
using Geometry::InkShape;
using Geometry::InterpretedCurve;
using Geometry::Point;

namespace {

// Of the diagonal: how far the corners of the constructed rectangle may be from those of the four lines.
constexpr double kSameCorner = 1e-7;

Point EndOf(const InterpretedCurve& curve, Geometry::CurveEnd end) {
    return end == Geometry::CurveEnd::Start ? curve.curve->GetStart() : curve.curve->GetEnd();
}

/// Lines and corners of a reading that is a rectangle, sides in drawing order and direction.
bool TakeAsRectangle(const InkReading& reading, ConstructList& list, RectangleSink& sink) {
    const bool isMeant = reading.shape == InkShape::Square || reading.shape == InkShape::Rectangle;
    if (!isMeant || reading.curves.size() != 4) {
        return false;
    }
    SideSegment sides[4];
    for (int i = 0; i < 4; ++i) {
        const InterpretedCurve& side = reading.curves[static_cast<std::size_t>(i)];
        if (side.curve->GetType() != Geometry::CurveType_Line) {
            return false;
        }
        const Point first = EndOf(side, side.First());
        const Point last = EndOf(side, side.Last());
        sides[i] = {{first.x, first.y}, {last.x, last.y}};
    }
    ConstructList lines;
    RectangleSink made;
    if (AddTesseraRectangleToConstructList(sides, lines, made) < 0) {
        return false;
    }
    // Constraints to what was there may have drawn the four lines out of square.
    const tagGPosition2d* corners = made.rectangles.front().corners;
    const double diagonal = std::hypot(corners[2].x - corners[0].x, corners[2].y - corners[0].y);
    for (int i = 0; i < 4; ++i) {
        const double off = std::hypot(corners[i].x - sides[i].end.x, corners[i].y - sides[i].end.y);
        const tagGPosition2d& next = sides[(i + 1) % 4].start;
        const double offNext = std::hypot(corners[i].x - next.x, corners[i].y - next.y);
        if (!(off <= kSameCorner * diagonal && offNext <= kSameCorner * diagonal)) {
            return false;
        }
        lines[static_cast<std::size_t>(i)].endsExchanged =
            reading.curves[static_cast<std::size_t>(i)].isReversed;
    }
    list = std::move(lines);
    sink = std::move(made);
    return true;
}

std::vector<const Curve*> CurvesOf(const InkReading& reading) {
    std::vector<const Curve*> curves;
    for (const InterpretedCurve& curve : reading.curves) {
        curves.push_back(curve.curve.get());
    }
    return curves;
}

std::int32_t CreateElements(const ConstructList& list, const RectangleSink& sink, DocumentChange& change,
                            std::vector<HostElementId>& made) {
    made.resize(list.size());
    if (!sink.rectangles.empty()) {
        return change.CreateRectangle(sink.rectangles.front().corners, made.data());
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        const ElementGeometry geometry(list[i]);
        const std::int32_t code = change.CreateElement(geometry.View(), made[i]);
        if (code < 0) {
            return code;
        }
    }
    return kOk;
}

} // namespace

std::int32_t CreateReading(const InkScene& scene, InkReading& reading, DocumentChange& change,
                           InkOutcome& outcome) {
    if (std::erase_if(reading.curves, [](const InterpretedCurve& c) { return c.curve->IsZeroLength(); }) >
        0) {
        reading.joints.clear(); // they name curves by their places
    }
    if (reading.curves.empty()) {
        return kOk;
    }
    SkInkingCnstrHelper relations(scene.neighbours, scene.toleranceZone, scene.relations);
    if (scene.relations != 0) {
        relations.Infer(reading.curves, Geometry::CurvesAsDrawn(scene.ink, reading));
    }
    ConstructList list;
    RectangleSink sink;
    if (!TakeAsRectangle(reading, list, sink)) {
        AppendCurvesToConstructList(CurvesOf(reading), list);
    }
    std::int32_t code = CreateElements(list, sink, change, outcome.elements);
    if (code < 0) {
        return code;
    }
    outcome.outcome = sink.rectangles.empty() ? kHostInkCurves : kHostInkRectangle;
    std::vector<SketchMember> members;
    for (std::size_t i = 0; i < list.size(); ++i) {
        members.push_back({outcome.elements[i], list[i].endsExchanged});
    }
    return relations.CreateConstraints(members, change, outcome.constraints);
}

std::int32_t RetraceElement(const InkScene& scene, const InkReading& reading, DocumentChange& change,
                            InkOutcome& outcome) {
    const auto index = static_cast<std::size_t>(reading.retraced);
    if (reading.curves.size() != 1 || index >= scene.neighbours.size()) {
        return TESSERA_REPORT(kErrorFail, "InkConversion::RetraceElement");
    }
    const ElementCurve& old = scene.neighbours[index];
    const Curve* form[] = {reading.curves.front().curve.get()};
    ConstructList list;
    AppendCurvesToConstructList(form, list);
    ElementGeometry geometry(list.front());
    geometry.SetId(old.id);
    if (list.front().endsExchanged != old.endsExchanged) {
        geometry.ExchangeEnds();
    }
    const std::int32_t code = change.Modify(geometry.View(), scene.elements[index]);
    if (code < 0) {
        return code;
    }
    outcome.outcome = kHostInkRetrace;
    outcome.elements.push_back(old.id);
    return kOk;
}

} // namespace Tessera::Host
