// Dimensions in pictures: decoration, filled arrowheads, text.
#pragma once

#include <string>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

inline constexpr const char* kDimensionColor = "#1b4f9c";

/// A group of all dimensions, in ink units; empty without any.
std::string DrawDimensions(const RecognizedDrawing& drawing, const std::string& lineWidth);

} // namespace Tessera::Tool
