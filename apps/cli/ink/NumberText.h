// Numbers and line numbers in text, as the readers need them: independent of the locale, never beyond the
// end.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

/// Reads a decimal number (a leading + is allowed) from the front of the text and drops it from there.
inline std::optional<double> TakeNumber(std::string_view& text) {
    std::string_view digits = text;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') {
        digits.remove_prefix(1);
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    const auto length = static_cast<std::size_t>(end - text.data());
    if (error != std::errc() || !std::isfinite(value)) {
        throw InkError("\"" + std::string(text.substr(0, std::min<std::size_t>(length, 40))) +
                       "\" is not a finite number");
    }
    text.remove_prefix(length);
    return value;
}

/// The line, counted from 1, in which the offset lies.
inline std::size_t LineAt(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

} // namespace Tessera::Tool
