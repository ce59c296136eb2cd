#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <span>

#include "tessera/host/ScriptorRecog.h"
#include "tessera/host/internal/InkConversion.h"
#include "tessera/host/internal/Services.h"
#include "tessera/kernel/SM.h"

namespace Tessera::Host {

namespace {

constexpr const char* kName = "ConvertInkingStrokeToGeometry";

struct ResultRelease {
    void operator()(HostInkResult* result) const { TesseraHost_ReleaseInkResult(result); }
};

/// An array for the caller; null for none.
template <class Id>
Id* Copied(const std::vector<Id>& ids, std::int32_t& count) {
    if (ids.empty()) {
        return nullptr;
    }
    auto* copy = static_cast<Id*>(SM_alloc(ids.size() * sizeof(Id), "ConvertInkingStroke:0"));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::copy(ids.begin(), ids.end(), copy);
    count = static_cast<std::int32_t>(ids.size());
    return copy;
}

void Fill(HostInkResult& result, const InkOutcome& outcome, Geometry::InkShape shape) {
    result.outcome = outcome.outcome;
    result.shape = static_cast<std::int32_t>(shape);
    result.elements = Copied(outcome.elements, result.elementCount);
    result.constraints = Copied(outcome.constraints, result.constraintCount);
    result.erased = Copied(outcome.erased, result.erasedCount);
    result.trimmed = Copied(outcome.trimmed, result.trimmedCount);
}

std::int32_t DoWhatWasMeant(const InkScene& scene, Geometry::InkReading& reading, DocumentChange& change,
                            InkOutcome& outcome) {
    switch (reading.shape) {
    case Geometry::InkShape::Nothing:
        return kOk;
    case Geometry::InkShape::Scribble:
        return EraseUnderScribble(scene, change, outcome);
    case Geometry::InkShape::Retrace:
        return RetraceElement(scene, reading, change, outcome);
    default:
        return CreateReading(scene, reading, change, outcome);
    }
}

std::int32_t ConvertInk(const HostInkStroke& ink, HostDocument* document, const HostInkOptions& options,
                        HostInkResult& result) {
    InkScene scene;
    std::int32_t code = SetScene(ink, document, options, scene);
    if (code < 0 || scene.ink.samples.empty()) {
        return code;
    }
    std::vector<Geometry::Curve*> earlier;
    for (const ElementCurve& neighbour : scene.neighbours) {
        earlier.push_back(neighbour.curve.get());
    }
    Geometry::InkReading reading = Geometry::InterpretInk(scene.ink, scene.preferences, earlier);

    DocumentChange change(document);
    InkOutcome outcome;
    code = DoWhatWasMeant(scene, reading, change, outcome);
    if (code < 0) {
        return code;
    }
    HostInkResult filled{};
    const std::unique_ptr<HostInkResult, ResultRelease> held(&filled);
    Fill(filled, outcome, reading.shape);
    code = change.Commit();
    if (code >= 0) {
        std::swap(filled, result);
    }
    return code;
}

bool IsWhole(const HostInkStroke& ink, const HostInkOptions& options, const HostInkResult& result) {
    return ink.size >= sizeof(HostInkStroke) && options.size >= sizeof(HostInkOptions) &&
           result.size >= sizeof(HostInkResult);
}

bool IsInRange(const HostInkStroke& ink, const HostInkOptions& options) {
    return ink.pointCount >= 0 && options.relationships >= kHostInkAsShown &&
           options.relationships <= kHostInkAlways && options.toleranceZone >= 0.0 &&
           std::isfinite(options.toleranceZone);
}

} // namespace

} // namespace Tessera::Host

void TesseraHost_ReleaseInkResult(HostInkResult* result) {
    if (result == nullptr) {
        return;
    }
    for (void* array : {static_cast<void*>(result->elements), static_cast<void*>(result->constraints),
                        static_cast<void*>(result->erased), static_cast<void*>(result->trimmed)}) {
        SM_free(array);
    }
    const std::size_t size = result->size;
    *result = {};
    result->size = size;
}

std::int32_t ConvertInkingStrokeToGeometry(const HostInkStroke* ink, HostDocument* document,
                                           const HostInkOptions* options, HostInkResult* result) {
    using namespace Tessera::Host;
    if (ink == nullptr || document == nullptr || options == nullptr || result == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    if (!IsWhole(*ink, *options, *result)) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    const std::size_t size = result->size;
    *result = {};
    result->size = size;
    if ((ink->points == nullptr && ink->pointCount > 0) || !HasInkServices()) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    if (!IsInRange(*ink, *options)) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    const ExceptionCode onException;
    try {
        const std::int32_t code = ConvertInk(*ink, document, *options, *result);
        result->size = size;
        return code < 0 ? code : kOk;
    } catch (...) {
        return TESSERA_REPORT(onException.Or(kErrorFail), kName);
    }
}
