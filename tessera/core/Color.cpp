#include "tessera/core/Color.h"

#include <iterator>

namespace Tessera::Core {

namespace {

constexpr Color kBlack{255, 0, 0, 0};
constexpr Color kBlue{255, 0, 0, 255};
constexpr Color kBrown{255, 165, 42, 42};
constexpr Color kDarkCyan{255, 0, 139, 139};
constexpr Color kDarkOrange{255, 255, 140, 0};
constexpr Color kGray{255, 128, 128, 128};
constexpr Color kGreen{255, 0, 128, 0};
constexpr Color kLightBlue{255, 173, 216, 230};
constexpr Color kLightGray{255, 211, 211, 211};
constexpr Color kPurple{255, 128, 0, 128};
constexpr Color kRed{255, 255, 0, 0};
constexpr Color kYellow{255, 255, 255, 0};

// In the order of ColorType_e. A constant, so that it stands filled when the library is loaded, whatever
// the order of initialisers. The last row is one past the named colours: hosts may ask for it.
constexpr Color ColorTable[] = {
    kLightGray, kGray,       kBlack,  kRed,       kGreen,    kBlue,   kBrown,
    kPurple,    kDarkOrange, Color(), kLightBlue, kDarkCyan, kYellow, Color(0, 0, 0, 0),
};
static_assert(std::size(ColorTable) == ColorType_Yellow + 2);

} // namespace

Color Color::Black() {
    return kBlack;
}
Color Color::Blue() {
    return kBlue;
}
Color Color::Brown() {
    return kBrown;
}
Color Color::DarkCyan() {
    return kDarkCyan;
}
Color Color::DarkOrange() {
    return kDarkOrange;
}
Color Color::Gray() {
    return kGray;
}
Color Color::Green() {
    return kGreen;
}
Color Color::LightBlue() {
    return kLightBlue;
}
Color Color::LightGray() {
    return kLightGray;
}
Color Color::Purple() {
    return kPurple;
}
Color Color::Red() {
    return kRed;
}
Color Color::Yellow() {
    return kYellow;
}

extern "C" void GetColorFromIntColor(int index, Color* out) {
    if (out == nullptr) {
        return;
    }
    const bool isRow = index >= 0 && index < static_cast<int>(std::size(ColorTable));
    *out = isRow ? ColorTable[index] : kBlack;
}

} // namespace Tessera::Core
