#include "apps/cli/write/SvgDimension.h"

#include <cmath>
#include <numbers>

#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/SvgCurve.h"

namespace Tessera::Tool {

namespace {

// A character of a dimension is half the font height wide. The figures of the usual sans-serif faces are
// 0.556 of their size wide and 0.72 of it high.
constexpr double kSizePerFontHeight = 0.9;
constexpr double kFigureHeight = 0.72;

std::string PairText(Position p) {
    return ExactNumber(p.x) + " " + ExactNumber(p.y);
}

std::string TextElement(const DrawnDimension& dimension) {
    const double size = kSizePerFontHeight * dimension.fontHeight;
    return "<text transform=\"translate(" + PairText(dimension.position) + ") rotate(" +
           ShortNumber(dimension.textAngle * 180.0 / std::numbers::pi) + ")\" y=\"" +
           ShortNumber(0.5 * kFigureHeight * size) + "\" font-size=\"" + ShortNumber(size) + "\">" +
           EscapeXml(dimension.text) + "</text>\n";
}

} // namespace

std::string DrawDimensions(const RecognizedDrawing& drawing, const std::string& lineWidth) {
    if (!drawing.dimensions || drawing.dimensions->empty()) {
        return {};
    }
    std::string svg = "<g class=\"dimensions\" stroke=\"" + std::string(kDimensionColor) +
                      "\" stroke-width=\"" + lineWidth + "\" text-anchor=\"middle\">\n";
    for (const DrawnDimension& dimension : *drawing.dimensions) {
        svg += "<g class=\"" + dimension.kind + "\">\n";
        for (const CurveShape& line : dimension.lines) {
            svg += SvgElement(line) + "/>\n";
        }
        svg += "<g fill=\"" + std::string(kDimensionColor) + "\" stroke=\"none\">\n";
        for (const auto& [tip, left, right] : dimension.arrowheads) {
            svg +=
                "<path d=\"M" + PairText(tip) + " L" + PairText(left) + " L" + PairText(right) + " Z\"/>\n";
        }
        svg += TextElement(dimension) + "</g>\n</g>\n";
    }
    return svg + "</g>\n";
}

} // namespace Tessera::Tool
