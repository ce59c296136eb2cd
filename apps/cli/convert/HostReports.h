// Failures as the library tells them to its host.
#pragma once

#include <cstdint>
#include <string>

namespace Tessera::Tool {

/// "0x80070057"
std::string CodeText(std::int32_t code);

/// The reference host with an HRerrEx that keeps what it is told; in force while this lives.
class HostReports {
public:
    HostReports();
    ~HostReports();
    HostReports(const HostReports&) = delete;
    HostReports& operator=(const HostReports&) = delete;

    /// What has been told since the last time, "FFMGEOM::InkToModel failed with 0x80070057
    /// (FFMGEOM.cpp:287)", several separated by "; ".
    std::string Take();

private:
    static void HRerrEx(void* context, std::int32_t code, const char* sourceFile, std::int32_t line,
                        const char* functionName);

    std::string told_;
};

} // namespace Tessera::Tool
