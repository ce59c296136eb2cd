// The text that a call throws, for error paths that promise an exact message.
#pragma once

#include <string>

namespace Tessera::Testing {

/// "(nothing)" when the call returns. Only char* is a message; anything else passes through.
template <class Call>
std::string ThrownMessage(Call call) {
    try {
        call();
    } catch (char* message) {
        return message;
    }
    return "(nothing)";
}

} // namespace Tessera::Testing
