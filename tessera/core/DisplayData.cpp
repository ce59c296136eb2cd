#include "tessera/core/DisplayData.h"

#include <limits>

namespace Tessera::Core {

namespace {

constexpr double kOpaqueAlpha = 255.0;

// Truncated toward zero; what a channel cannot hold goes to its nearest end, NaN to 0.
std::uint16_t ToChannel(double value) {
    constexpr double kLargest = std::numeric_limits<std::uint16_t>::max();
    if (!(value > 0.0)) {
        return 0;
    }
    return static_cast<std::uint16_t>(value < kLargest ? value : kLargest);
}

} // namespace

void DisplayData::SetColor(ColorType_e color) {
    GetColorFromIntColor(color, &color_);
}

double DisplayData::GetOpacity() const {
    return color_.alpha / kOpaqueAlpha;
}

void DisplayData::SetOpacity(double opacity) {
    color_.alpha = ToChannel(opacity * kOpaqueAlpha);
}

} // namespace Tessera::Core
