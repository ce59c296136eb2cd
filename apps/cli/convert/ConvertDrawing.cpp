#include "apps/cli/convert/ConvertDrawing.h"

#include <memory>
#include <new>

#include "apps/cli/convert/ElementShape.h"
#include "apps/cli/convert/HostReports.h"
#include "tessera/host/HostDocument.h"
#include "tessera/host/ScriptorRecog.h"

namespace Tessera::Tool {

namespace {

struct DocumentRelease {
    void operator()(HostDocument* document) const { TesseraHost_DeleteDocument(document); }
};
struct ResultRelease {
    void operator()(HostInkResult* result) const { TesseraHost_ReleaseInkResult(result); }
};

template <class Id>
std::vector<Id> Listed(const Id* ids, std::int32_t count) {
    return {ids, ids + count};
}

/// A host with one document, which is in the units of the page.
class DrawingHost {
public:
    DrawingHost(const WorkingFrame& page, const ConvertOptions& options)
        : page_(page), options_(options), document_(TesseraHost_CreateDocument()) {
        if (document_ == nullptr) {
            throw std::bad_alloc();
        }
    }

    /// False, with what the library says of it, when there is no such view.
    bool ZoomView(std::string& problem) {
        const HostView view{{0.0, 0.0}, options_.preferences.GetZoomFactor(), 0, 0};
        const bool isGood = TesseraHost_SetView(document_.get(), &view) >= 0;
        problem = reports_.Take();
        return isGood;
    }

    void Convert(const InkStroke& ink, ConvertedStroke& told) {
        HostInkResult result{};
        result.size = sizeof(result);
        const std::unique_ptr<HostInkResult, ResultRelease> held(&result);
        told.code = Call(ink, result);
        const std::string reports = reports_.Take();
        if (*told.code < 0) {
            told.problem = reports.empty() ? "failed with " + CodeText(*told.code) : reports;
            return;
        }
        told.outcome = static_cast<HostInkOutcome>(result.outcome);
        told.shape = static_cast<Geometry::InkShape>(result.shape);
        told.elements = Listed(result.elements, result.elementCount);
        told.constraints = Listed(result.constraints, result.constraintCount);
        told.erased = Listed(result.erased, result.erasedCount);
        told.trimmed = Listed(result.trimmed, result.trimmedCount);
    }

    void Describe(ConvertedDrawing& drawing) const {
        const std::int32_t elementCount = TesseraHost_AskElementCount(document_.get());
        for (std::int32_t i = 0; i < elementCount; ++i) {
            HostElement2d element{};
            TesseraHost_AskElementAt(document_.get(), i, &element);
            drawing.elements.push_back({element.id, ShapeOf(element, page_)});
        }
        const std::int32_t constraintCount = TesseraHost_AskConstraintCount(document_.get());
        for (std::int32_t i = 0; i < constraintCount; ++i) {
            TesseraHost_AskConstraintAt(document_.get(), i, &drawing.constraints.emplace_back());
        }
    }

private:
    std::int32_t Call(const InkStroke& ink, HostInkResult& result) const {
        std::vector<tagGPosition2d> points;
        std::vector<double> times;
        const double zoom = options_.preferences.GetZoomFactor();
        for (const Sample& sample : ink.samples) {
            const Position model = page_.ToWorking({sample.x, sample.y});
            points.push_back({zoom * model.x, zoom * model.y});
            times.push_back(sample.timeMs);
        }
        const HostInkStroke stroke{sizeof(stroke), static_cast<std::int32_t>(points.size()), 0, points.data(),
                                   ink.isTimed ? times.data() : nullptr};
        const std::int32_t relationships = options_.constraintKinds == 0 ? kHostInkNever : kHostInkAsShown;
        const HostInkOptions options{sizeof(options), &options_.preferences, relationships,
                                     ~options_.constraintKinds, options_.toleranceZone.value_or(0.0)};
        return ConvertInkingStrokeToGeometry(&stroke, document_.get(), &options, &result);
    }

    WorkingFrame page_;
    const ConvertOptions& options_;
    HostReports reports_;
    std::unique_ptr<HostDocument, DocumentRelease> document_;
};

ConvertedStroke Untouched(const InkStroke& ink, int index) {
    ConvertedStroke stroke;
    stroke.index = index;
    stroke.points = static_cast<int>(ink.samples.size());
    stroke.problem = ink.problem;
    return stroke;
}

} // namespace

ConvertedDrawing ConvertDrawing(const Drawing& ink, const ConvertOptions& options) {
    ConvertedDrawing drawing;
    drawing.id = ink.id;
    drawing.problem = ink.problem;
    const WorkingFrame page = ChosenFrame(ink, options.inkScale);
    std::string problem = kFrameProblem;
    DrawingHost host(page, options);
    const bool isReady = page.IsUsable() && host.ZoomView(problem);
    for (const InkStroke& strokeInk : ink.strokes) {
        const auto index = static_cast<int>(drawing.strokes.size());
        ConvertedStroke& stroke = drawing.strokes.emplace_back(Untouched(strokeInk, index));
        if (stroke.problem.empty() && isReady) {
            host.Convert(strokeInk, stroke);
        } else if (stroke.problem.empty()) {
            stroke.problem = problem;
        }
    }
    host.Describe(drawing);
    return drawing;
}

} // namespace Tessera::Tool
