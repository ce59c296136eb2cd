// The picture of one drawing: ink thin and grey, geometry on top, joints marked, constraints as glyphs, what
// scribbles erased dashed below them.
#pragma once

#include <string>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

/// Colours by the order of the kinds; told apart by readers with any of the common colour blindnesses.
inline constexpr const char* kKindColors[kCurveKinds] = {"#0072b2", "#d55e00", "#009e73",
                                                         "#cc79a7", "#e69f00", "#7b3fa0"};

/// Ink of scribbles, and the geometry that they erased.
inline constexpr const char* kScribbleColor = "#c03030";
inline constexpr const char* kErasedColor = "#777777";

/// Extent of ink and geometry, in ink units.
struct PictureBox {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
};

PictureBox FitPicture(const RecognizedDrawing& drawing);

struct PictureStyle {
    double lineWidth = 1.0; ///< of the geometry, pixels, unless it is crowded; everything else follows it
    bool showsGlyphs = true;
};

/// An `svg` element of the given place and size in pixels, whose view box is the ink's own coordinates.
std::string DrawPicture(const RecognizedDrawing& drawing, const PictureBox& box, double x, double y,
                        double width, double height, const PictureStyle& style);

} // namespace Tessera::Tool
