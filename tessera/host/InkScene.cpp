#include <algorithm>
#include <cmath>

#include "tessera/host/internal/InkConversion.h"
#include "tessera/host/internal/InkingCnstrHelper.h"
#include "tessera/host/internal/Services.h"

namespace Tessera::Host {

namespace {

constexpr std::uint32_t kAllRelations = (std::uint32_t{1} << Geometry::kConstraintKindCount) - 1;

struct Box {
    tagGPosition2d lower{kUnsetCoordinate, kUnsetCoordinate};
    tagGPosition2d upper{-kUnsetCoordinate, -kUnsetCoordinate};

    double Diagonal() const { return std::hypot(upper.x - lower.x, upper.y - lower.y); }
};

Box BoxOf(const Geometry::InkStroke& ink) {
    Box box;
    for (const Geometry::InkSample& s : ink.samples) {
        box.lower = {std::min(box.lower.x, s.x), std::min(box.lower.y, s.y)};
        box.upper = {std::max(box.upper.x, s.x), std::max(box.upper.y, s.y)};
    }
    return box;
}

std::int32_t SetPreferences(const HostInkOptions& options, const Box& box, InkScene& scene) {
    double scale = 1.0;
    std::int32_t code = AskViewScale(scene.document, box.lower, box.Diagonal(), &scale);
    if (code < 0) {
        return code;
    }
    if (options.preferences != nullptr) {
        scene.preferences = *options.preferences;
    }
    scene.preferences.SetZoomFactor(scale);

    const SkPrefsRelator preferred(scene.document);
    double zone = options.toleranceZone;
    if (zone == 0.0 && (code = preferred.GetToleranceZone(zone)) < 0) {
        return code;
    }
    scene.toleranceZone = zone / scale;
    bool isWanted = options.relationships == kHostInkAlways;
    if (options.relationships == kHostInkAsShown && (code = preferred.GetShowRelationship(isWanted)) < 0) {
        return code;
    }
    scene.relations = isWanted ? kAllRelations & ~options.excludedRelations : 0;
    return kOk;
}

/// How far from the ink an element can still matter to it.
double ReachOf(const InkScene& scene) {
    double first = 0.0;
    double second = 0.0;
    scene.preferences.AskOverSketchTolerances(&first, &second);
    double reach = std::max({first, second, scene.preferences.AskSnapDistanceCreate(),
                             scene.preferences.GetScribbleTrimTolerance()});
    scene.preferences.ContextAdjustTolerance(&reach);
    return std::max(reach, scene.toleranceZone);
}

std::int32_t ReadElement(JSMHelper2d& locator, HostElementId id, InkScene& scene) {
    HostElement2d element;
    std::int32_t code = locator.SetTarget(id);
    if (code < 0 || (code = locator.Evaluate(element)) < 0) {
        return code;
    }
    if (!IsSound(element)) {
        return TESSERA_REPORT(kErrorFail, "InkScene::ReadElement");
    }
    scene.neighbours.push_back(CurveOf(element));
    scene.elements.emplace_back(element);
    return kOk;
}

std::int32_t LocateNeighbours(const Box& box, InkScene& scene) {
    JSMHelper2d locator(scene.document);
    const double reach = ReachOf(scene);
    std::vector<HostElementId> found;
    std::int32_t code = locator.Locate({box.lower.x - reach, box.lower.y - reach},
                                       {box.upper.x + reach, box.upper.y + reach}, found);
    for (std::size_t i = 0; code >= 0 && i < found.size(); ++i) {
        code = ReadElement(locator, found[i], scene);
    }
    return code < 0 ? code : locator.Clear();
}

} // namespace

std::int32_t SetScene(const HostInkStroke& ink, HostDocument* document, const HostInkOptions& options,
                      InkScene& scene) {
    scene.document = document;
    std::int32_t code = InkToModel(ink, document, scene.ink);
    const Box box = BoxOf(scene.ink);
    if (code < 0 || scene.ink.samples.empty() || box.Diagonal() == 0.0) {
        scene.ink.samples.clear();
        return code;
    }
    code = SetPreferences(options, box, scene);
    return code < 0 ? code : LocateNeighbours(box, scene);
}

} // namespace Tessera::Host
