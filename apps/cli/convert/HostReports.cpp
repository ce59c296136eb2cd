#include "apps/cli/convert/HostReports.h"

#include <cassert>
#include <cstdio>
#include <filesystem>
#include <new>
#include <utility>

#include "tessera/host/HostServices.h"

namespace Tessera::Tool {

std::string CodeText(std::int32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code));
    return text;
}

HostReports::HostReports() {
    HostServices services{};
    services.size = sizeof(services);
    TesseraHost_AskReferenceServices(&services);
    services.context = this;
    services.HRerrEx = HRerrEx;
    [[maybe_unused]] const std::int32_t code = TesseraHost_InstallServices(&services);
    assert(code >= 0); // the reference host lacks nothing
}

HostReports::~HostReports() {
    TesseraHost_InstallServices(nullptr);
}

std::string HostReports::Take() {
    return std::exchange(told_, {});
}

// Called from within C functions, which no exception may pass: without memory the result code tells enough.
void HostReports::HRerrEx(void* context, std::int32_t code, const char* sourceFile, std::int32_t line,
                          const char* functionName) {
    std::string& told = static_cast<HostReports*>(context)->told_;
    try {
        const std::string file = std::filesystem::path(sourceFile).filename().string();
        told += (told.empty() ? "" : "; ") + std::string(functionName) + " failed with " + CodeText(code) +
                " (" + file + ":" + std::to_string(line) + ")";
    } catch (const std::bad_alloc&) {
        told.clear();
    }
}

} // namespace Tessera::Tool
