// DisplayData - how the host draws an object.
#pragma once

#include <cstdint>

#include "tessera/core/Color.h"
#include "tessera/core/Export.h"

namespace Tessera::Core {

// Values other than 0 belong to the host's drawing; the library only stores and returns them.
enum FontType_e : std::int32_t { FontType_Default = 0 };
enum Texture_e : std::int32_t { Texture_Default = 0 };
enum Endcap_e : std::int32_t { Endcap_Default = 0 };

/// A new object is visible, not highlit, black and 2.0 wide (in the host's line-width unit).
class TESSERA_API DisplayData {
public:
    FontType_e GetFont() const { return font_; }
    void SetFont(FontType_e font) { font_ = font; }
    bool GetVisibility() const { return visibility_; }
    void SetVisibility(bool visibility) { visibility_ = visibility; }
    double GetWidth() const { return width_; }
    void SetWidth(double width) { width_ = width; }
    bool GetHighlit() const { return highlit_; }
    void SetHighlit(bool highlit) { highlit_ = highlit; }
    const Color& GetRGBColor() const { return color_; }
    void SetRGBColor(const Color& color) { color_ = color; }
    Texture_e GetTexture() const { return texture_; }
    void SetTexture(Texture_e texture) { texture_ = texture; }
    Endcap_e GetEndcap() const { return endcap_; }
    void SetEndcap(Endcap_e endcap) { endcap_ = endcap; }

    /// Takes the colour of the indexed table (GetColorFromIntColor).
    void SetColor(ColorType_e color);
    /// Alpha as a fraction of 255.
    double GetOpacity() const;
    /// Stores alpha = opacity x 255, truncated toward zero; what 16 bits cannot hold goes to the nearest end,
    /// NaN to 0.
    void SetOpacity(double opacity);

    bool operator==(const DisplayData&) const = default;

private:
    FontType_e font_ = FontType_Default;
    bool visibility_ = true;
    double width_ = 2.0;
    bool highlit_ = false;
    Color color_{255, 0, 0, 0};
    Texture_e texture_ = Texture_Default;
    Endcap_e endcap_ = Endcap_Default;
};

} // namespace Tessera::Core
