// The services in force, and the one way in which the bridge reports a failure.
#pragma once

#include "tessera/host/HostServices.h"

namespace Tessera::Host {

// Result codes of the bridge; negative is failure.
inline constexpr std::int32_t kOk = 0;
inline constexpr std::int32_t kErrorPointer = static_cast<std::int32_t>(0x80004003);
inline constexpr std::int32_t kErrorFail = static_cast<std::int32_t>(0x80004005);
inline constexpr std::int32_t kErrorOutOfMemory = static_cast<std::int32_t>(0x8007000E);
inline constexpr std::int32_t kErrorInvalidArgument = static_cast<std::int32_t>(0x80070057);

const HostServices& Services();

/// Whether the table in force has all that the ink entry needs.
bool HasInkServices();

/// Reports through the host's HRerrEx and returns the code. Use TESSERA_REPORT, which knows the place.
std::int32_t Report(std::int32_t code, const char* sourceFile, std::int32_t line, const char* functionName);

/// What an exception means to the host. Made before the work that may throw.
class ExceptionCode {
public:
    ExceptionCode();
    /// Called while an exception is handled: 0x8007000E when memory has run out on the way, in the kernel
    /// too, which the layers above it report by a text; else the code given.
    std::int32_t Or(std::int32_t code) const;

private:
    long refusalsBefore_;
};

} // namespace Tessera::Host

// A macro because the place of the call has to be known.
#define TESSERA_REPORT(code, functionName) ::Tessera::Host::Report(code, __FILE__, __LINE__, functionName)
