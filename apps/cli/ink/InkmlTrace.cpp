#include "apps/cli/ink/InkmlTrace.h"

#include <charconv>
#include <cmath>

#include "apps/cli/ink/NumberText.h"

namespace Tessera::Tool {

namespace {

constexpr std::string_view kBlank = " \t\r\n";

void SkipBlank(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlank), text.size()));
}

double TakeHexadecimal(std::string_view& text) {
    text.remove_prefix(1);
    unsigned long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc()) {
        throw InkError("\"#\" without a hexadecimal number");
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return static_cast<double>(value);
}

void AdvanceTo(InkmlChannelState& state, double value) {
    const double last = state.value;
    switch (state.prefix) {
    case '\'':
        state.velocity = value;
        state.value += state.velocity;
        break;
    case '"':
        state.velocity += value;
        state.value += state.velocity;
        break;
    default:
        state.value = value;
        state.velocity = value - last;
        break;
    }
}

/// One value with its prefix. `*` repeats the channel's last value, `?` leaves it unknown (kept as it was).
void TakeValue(std::string_view& text, InkmlChannelState& state) {
    if (text.front() == '!' || text.front() == '\'' || text.front() == '"') {
        state.prefix = text.front();
        text.remove_prefix(1);
        SkipBlank(text);
    }
    if (text.empty()) {
        throw InkError("a prefix without a value");
    }
    if (text.front() == '*' || text.front() == '?') {
        text.remove_prefix(1);
    } else if (text.front() == 'T' || text.front() == 'F') {
        state.value = text.front() == 'T' ? 1.0 : 0.0;
        text.remove_prefix(1);
    } else if (text.front() == '#') {
        AdvanceTo(state, TakeHexadecimal(text));
    } else if (const std::optional<double> value = TakeNumber(text)) {
        AdvanceTo(state, *value);
    } else {
        throw InkError("\"" + std::string(text.substr(0, 20)) + "\" is not a number");
    }
}

Sample SampleFrom(const InkmlFormat& format, const std::vector<InkmlChannelState>& states) {
    const auto read = [&](int channel) {
        return channel < 0 ? 0.0 : states[channel].value * format.channels[channel].unitScale;
    };
    const Sample sample{read(format.x), read(format.y), read(format.time)};
    if (!std::isfinite(sample.x) || !std::isfinite(sample.y) || !std::isfinite(sample.timeMs)) {
        throw InkError("a coordinate is not a finite number");
    }
    return sample;
}

void ReadPoint(std::string_view text, const InkmlFormat& format, std::vector<InkmlChannelState>& states) {
    for (std::size_t i = 0; i < format.channels.size(); ++i) {
        SkipBlank(text);
        if (!text.empty()) {
            TakeValue(text, states[i]);
        } else if (format.channels[i].isIntermittent) {
            states[i].value = format.channels[i].defaultValue;
        } else {
            throw InkError("no value for channel " + format.channels[i].name);
        }
    }
    SkipBlank(text);
    if (!text.empty()) {
        throw InkError("more values than channels");
    }
}

} // namespace

void ReadInkmlTrace(std::string_view text, const InkmlFormat& format, std::vector<InkmlChannelState>& states,
                    std::vector<Sample>& samples) {
    SkipBlank(text);
    for (int index = 0; !text.empty(); ++index) {
        const std::size_t end = std::min(text.find(','), text.size());
        std::string_view point = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (point.find_first_not_of(kBlank) == std::string_view::npos && text.empty()) {
            return; // a comma after the last point
        }
        try {
            ReadPoint(point, format, states);
            samples.push_back(SampleFrom(format, states));
        } catch (const InkError& error) {
            throw InkError("point " + std::to_string(index) + ": " + error.what());
        }
        SkipBlank(text);
    }
}

} // namespace Tessera::Tool
