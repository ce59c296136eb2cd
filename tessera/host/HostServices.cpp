#include "tessera/host/HostServices.h"

#include "tessera/host/internal/ReferenceHostServices.h"
#include "tessera/host/internal/Services.h"

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

// Loading the library is what registers it.
[[maybe_unused]] const bool registeredAtLoad = (Announce(), true);

} // namespace

const HostServices& Services() {
    return ServicesInForce();
}

std::int32_t Report(std::int32_t code, const char* sourceFile, std::int32_t line, const char* functionName) {
    const HostServices& services = Services();
    if (services.HRerrEx != nullptr) {
        services.HRerrEx(services.context, code, sourceFile, line, functionName);
    }
    return code;
}

} // namespace Tessera::Host

std::int32_t TesseraHost_InstallServices(const HostServices* services) {
    using namespace Tessera::Host;
    if (services == nullptr) {
        ServicesInForce() = ReferenceHostServices();
    } else {
        if (services->size < sizeof(HostServices)) {
            return TESSERA_REPORT(kErrorInvalidArgument, "TesseraHost_InstallServices");
        }
        if (!HasEveryNeededFunction(*services)) {
            return TESSERA_REPORT(kErrorPointer, "TesseraHost_InstallServices");
        }
        ServicesInForce() = *services;
    }
    Announce();
    return kOk;
}
