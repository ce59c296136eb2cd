// Colours: four channels, twelve names and the indexed table of the host's palette.
#pragma once

#include <cstdint>

#include "tessera/core/Export.h"

namespace Tessera::Core {

/// Alpha, red, green, blue; 0 to 255 in practice.
class TESSERA_API Color {
public:
    constexpr Color() = default; ///< opaque white
    constexpr Color(std::uint16_t a, std::uint16_t r, std::uint16_t g, std::uint16_t b)
        : alpha(a), red(r), green(g), blue(b) {}

    static Color Black();
    static Color Blue();
    static Color Brown();
    static Color DarkCyan();
    static Color DarkOrange();
    static Color Gray();
    static Color Green();
    static Color LightBlue();
    static Color LightGray();
    static Color Purple();
    static Color Red();
    static Color Yellow();

    bool operator==(const Color&) const = default;

    std::uint16_t alpha = 255, red = 255, green = 255, blue = 255;
};

/// Row of the indexed table.
enum ColorType_e : std::int32_t {
    ColorType_LightGray = 0,
    ColorType_Gray = 1,
    ColorType_Black = 2,
    ColorType_Red = 3,
    ColorType_Green = 4,
    ColorType_Blue = 5,
    ColorType_Brown = 6,
    ColorType_Purple = 7,
    ColorType_DarkOrange = 8,
    ColorType_White = 9,
    ColorType_LightBlue = 10,
    ColorType_DarkCyan = 11,
    ColorType_Yellow = 12
};

/// Colour of a table row. Accepts 0 to 13; row 13 is the all-zero colour, any other index gives Black. A null
/// `out` gets nothing.
extern "C" TESSERA_API void GetColorFromIntColor(int index, Color* out);

} // namespace Tessera::Core
