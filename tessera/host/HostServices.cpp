#include "tessera/host/HostServices.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "tessera/host/internal/ReferenceHostServices.h"
#include "tessera/host/internal/Services.h"
#include "tessera/kernel/internal/SmFault.h"

namespace Tessera::Host {

namespace {

constexpr const char* kModuleName = "Tessera";

HostServices& ServicesInForce() {
    static HostServices services = ReferenceHostServices();
    return services;
}

void Announce() {
    const HostServices& services = Services();
    if (services.registerExtensionModule != nullptr) {
        services.registerExtensionModule(services.context, kModuleName);
    }
}

bool HasEveryNeededFunction(const HostServices& s) {
    return s.buildPosition2d != nullptr && s.buildVector2d != nullptr && s.giveAngle != nullptr &&
           s.lineFromPositions != nullptr && s.arcThroughPositions != nullptr &&
           s.bsplineFromPoles != nullptr && s.projectOnCurve != nullptr && s.splitCurve != nullptr;
}

constexpr std::size_t kPolyLineSize = offsetof(HostServices, HCreateLine2d);

/// The entries that the given table has whole; the others stay null.
HostServices TableOf(const HostServices& given) {
    HostServices table{};
    const std::size_t size = std::min(given.size, sizeof(HostServices));
    std::memcpy(&table, &given, size - size % sizeof(void*));
    return table;
}

// Loading the library is what registers it.
[[maybe_unused]] const bool registeredAtLoad = (Announce(), true);

} // namespace

const HostServices& Services() {
    return ServicesInForce();
}

bool HasInkServices() {
    const HostServices& s = Services();
    return s.HCreateLine2d != nullptr && s.HCreateArc2d != nullptr && s.HCreateCircle2d != nullptr &&
           s.HCreateEllipse2d != nullptr && s.HCreateEllipArc2d != nullptr &&
           s.HCreateBspCurve2dEx != nullptr && s.HCreateRectangle2d != nullptr &&
           s.HModifyElement2d != nullptr && s.HRemoveElement2d != nullptr && s.HRestoreElement2d != nullptr &&
           s.DCToModel != nullptr && s.ModelToDC != nullptr && s.GetShowRelationship != nullptr &&
           s.GetToleranceZone != nullptr && s.createConstraint != nullptr &&
           s.retargetConstraint != nullptr && s.removeConstraint != nullptr &&
           s.commitConstraints != nullptr && s.Locate != nullptr && s.SetTarget != nullptr &&
           s.Evaluate != nullptr && s.Clear != nullptr;
}

std::int32_t Report(std::int32_t code, const char* sourceFile, std::int32_t line, const char* functionName) {
    const HostServices& services = Services();
    if (services.HRerrEx != nullptr) {
        services.HRerrEx(services.context, code, sourceFile, line, functionName);
    }
    return code;
}

ExceptionCode::ExceptionCode() : refusalsBefore_(SM_ask_refusal_count()) {}

std::int32_t ExceptionCode::Or(std::int32_t code) const {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return kErrorOutOfMemory;
    } catch (...) {
        return SM_ask_refusal_count() != refusalsBefore_ ? kErrorOutOfMemory : code;
    }
}

} // namespace Tessera::Host

std::int32_t TesseraHost_InstallServices(const HostServices* services) {
    using namespace Tessera::Host;
    if (services == nullptr) {
        ServicesInForce() = ReferenceHostServices();
    } else {
        if (services->size < kPolyLineSize) {
            return TESSERA_REPORT(kErrorInvalidArgument, "TesseraHost_InstallServices");
        }
        if (!HasEveryNeededFunction(*services)) {
            return TESSERA_REPORT(kErrorPointer, "TesseraHost_InstallServices");
        }
        ServicesInForce() = TableOf(*services);
    }
    Announce();
    return kOk;
}

std::int32_t TesseraHost_AskReferenceServices(HostServices* services) {
    using namespace Tessera::Host;
    constexpr const char* kName = "TesseraHost_AskReferenceServices";
    if (services == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    if (services->size < kPolyLineSize) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    const std::size_t size = std::min(services->size, sizeof(HostServices));
    const HostServices reference = ReferenceHostServices();
    std::memcpy(services, &reference, size);
    services->size = size;
    return kOk;
}
