// The text of an InkML trace: points separated by commas, a value for each channel, values plain or as first
// or second differences (W3C Ink Markup Language, section 3.2.1).
#pragma once

#include <string_view>
#include <vector>

#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

struct InkmlChannel {
    std::string name;
    double unitScale = 1.0;      ///< to the drawing's unit, or to milliseconds for T
    double defaultValue = 0.0;   ///< of an intermittent channel that a point leaves out
    bool isIntermittent = false; ///< may be left out at the end of a point
};

struct InkmlFormat {
    std::vector<InkmlChannel> channels;
    int x = -1;
    int y = -1;
    int time = -1;
};

/// Where a channel has got to: kept between points, and from one trace to the trace that continues it.
struct InkmlChannelState {
    double value = 0.0;
    double velocity = 0.0;
    char prefix = '!';
};

/// Appends the points of the text. `states` has one entry for each channel. Throws InkError with the number
/// of the point.
void ReadInkmlTrace(std::string_view text, const InkmlFormat& format, std::vector<InkmlChannelState>& states,
                    std::vector<Sample>& samples);

} // namespace Tessera::Tool
