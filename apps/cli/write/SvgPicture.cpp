#include "apps/cli/write/SvgPicture.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>

#include "apps/cli/recognize/CurveShapes.h"
#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/SvgCurve.h"
#include "apps/cli/write/SvgDimension.h"
#include "apps/cli/write/SvgGlyph.h"

namespace Tessera::Tool {

namespace {

/// Margin around the drawing, part of its longer side.
constexpr double kMargin = 0.06;
/// Ink finer than this part of the picture's longer side cannot be seen and is left out.
constexpr double kFinestInk = 1.0 / 4000.0;
constexpr double kGlyphSize = 4.2; ///< line widths
/// Half of the curves are at least this long, in line widths, in a picture of the usual line width ...
constexpr double kUsualLength = 25.0;
constexpr double kFinest = 0.5; ///< ... which goes down to this part of it

struct Extent {
    double minX = std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();

    void Add(double x, double y) {
        minX = std::min(minX, x);
        minY = std::min(minY, y);
        maxX = std::max(maxX, x);
        maxY = std::max(maxY, y);
    }
    void AddAround(Position p, double rx, double ry) {
        Add(p.x - rx, p.y - ry);
        Add(p.x + rx, p.y + ry);
    }
};

/// What may stick out of the ink's box: full shapes, and the poles of splines, which hold them. Pieces of
/// circles and ellipses stay within a margin of their ink.
void AddShape(const CurveShape& shape, Extent& extent) {
    if (const auto* line = std::get_if<LineShape>(&shape)) {
        extent.Add(line->start.x, line->start.y);
        extent.Add(line->end.x, line->end.y);
    } else if (const auto* circle = std::get_if<CircleShape>(&shape)) {
        extent.AddAround(circle->center, circle->radius, circle->radius);
    } else if (const auto* ellipse = std::get_if<EllipseShape>(&shape)) {
        const double c = std::cos(ellipse->rotation);
        const double s = std::sin(ellipse->rotation);
        extent.AddAround(ellipse->center, std::hypot(ellipse->radii[0] * c, ellipse->radii[1] * s),
                         std::hypot(ellipse->radii[0] * s, ellipse->radii[1] * c));
    }
}

void AddDimension(const DrawnDimension& dimension, Extent& extent) {
    const double reach = 0.25 * dimension.fontHeight * static_cast<double>(dimension.text.size());
    extent.AddAround(dimension.position,
                     reach * std::fabs(std::cos(dimension.textAngle)) + 0.5 * dimension.fontHeight,
                     reach * std::fabs(std::sin(dimension.textAngle)) + 0.5 * dimension.fontHeight);
    for (const CurveShape& shape : dimension.lines) {
        AddShape(shape, extent);
    }
    for (const auto& arrowhead : dimension.arrowheads) {
        for (const Position& p : arrowhead) {
            extent.Add(p.x, p.y);
        }
    }
}

std::string Rounded(double value, int decimals) {
    char text[64];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text, end) : ExactNumber(value);
}

/// Decimals that show a hundredth of a pixel-sized step.
int DecimalsFor(double size) {
    return std::clamp(static_cast<int>(std::ceil(5.0 - std::log10(size))), 0, 12);
}

std::string InkPath(const InkStroke& stroke, double finest, int decimals) {
    std::string path = "<path d=\"M";
    const Sample* last = nullptr;
    for (const Sample& sample : stroke.samples) {
        const bool isEnd = &sample == &stroke.samples.back();
        if (last != nullptr && !isEnd && std::hypot(sample.x - last->x, sample.y - last->y) < finest) {
            continue;
        }
        path +=
            (last == nullptr ? "" : " ") + Rounded(sample.x, decimals) + " " + Rounded(sample.y, decimals);
        last = &sample;
    }
    return path + "\"/>\n";
}

/// "line" of `<line x1=...`.
std::string TagOf(const std::string& element) {
    return element.substr(1, element.find(' ') - 1);
}

std::string CurveElement(const RecognizedCurve& curve, const char* color) {
    std::string kind = curve.KindName();
    std::replace(kind.begin(), kind.end(), '_', ' ');
    const std::string element = SvgElement(curve.shape);
    return element + " stroke=\"" + std::string(color) + "\"><title>" + kind + ", " +
           DescribeShape(curve.shape) + "; samples " + std::to_string(curve.from) + " to " +
           std::to_string(curve.to) + "; deviation " + ShortNumber(curve.deviation) + "</title></" +
           TagOf(element) + ">\n";
}

/// Dots where one piece of a stroke gives way to the next: joints where they are known, filled where the
/// direction does not change, else the samples of the breaks.
std::string BreakMarks(const RecognizedDrawing& drawing, double radius) {
    std::string marks;
    const auto mark = [&](double x, double y, bool isSmooth) {
        marks += "<circle cx=\"" + ExactNumber(x) + "\" cy=\"" + ExactNumber(y) + "\" r=\"" +
                 ShortNumber(radius) + (isSmooth ? "\" fill=\"#222222\"/>\n" : "\"/>\n");
    };
    for (const RecognizedStroke& stroke : drawing.strokes) {
        for (const RecognizedJoint& joint : stroke.joints) {
            mark(joint.position.x, joint.position.y, joint.isTangent);
        }
        std::set<int> breaks;
        for (std::size_t i = 1; i < stroke.curves.size() && !stroke.shape; ++i) {
            breaks.insert(stroke.curves[i].from);
        }
        for (const int index : breaks) {
            const Sample& sample = drawing.ink.strokes[stroke.index].samples[index];
            mark(sample.x, sample.y, false);
        }
    }
    return marks;
}

/// How much finer than usual the drawing is to be drawn: where its curves are short, lines and marks are
/// thin.
double Fineness(const RecognizedDrawing& drawing, const WorkingFrame& pixels, double lineWidth) {
    std::vector<double> lengths;
    for (const RecognizedStroke& stroke : drawing.strokes) {
        for (const RecognizedCurve& curve : stroke.curves) {
            lengths.push_back(CurveOf(curve.shape, pixels)->Length());
        }
    }
    if (lengths.empty()) {
        return 1.0;
    }
    const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
    std::nth_element(lengths.begin(), middle, lengths.end());
    return std::clamp(*middle / (kUsualLength * lineWidth), kFinest, 1.0);
}

} // namespace

PictureBox FitPicture(const RecognizedDrawing& drawing) {
    Extent extent;
    for (const InkStroke& stroke : drawing.ink.strokes) {
        for (const Sample& sample : stroke.samples) {
            extent.Add(sample.x, sample.y);
        }
    }
    for (const RecognizedStroke& stroke : drawing.strokes) {
        for (const RecognizedCurve& curve : stroke.curves) {
            AddShape(curve.shape, extent);
        }
    }
    if (drawing.dimensions) {
        for (const DrawnDimension& dimension : *drawing.dimensions) {
            AddDimension(dimension, extent);
        }
    }
    if (extent.minX > extent.maxX) {
        return {0.0, 0.0, 1.0, 1.0};
    }
    const double width = extent.maxX - extent.minX;
    const double height = extent.maxY - extent.minY;
    double margin = kMargin * std::max(width, height);
    if (!(margin > 0.0)) {
        margin = 1.0;
    }
    return {extent.minX - margin, extent.minY - margin, width + 2.0 * margin, height + 2.0 * margin};
}

std::string DrawPicture(const RecognizedDrawing& drawing, const PictureBox& box, double x, double y,
                        double width, double height, const PictureStyle& style) {
    const double inkPerPixel = std::max(box.width / width, box.height / height);
    const double lineWidth =
        style.lineWidth * Fineness(drawing, {{box.x, box.y}, 1.0 / inkPerPixel, 0.0}, style.lineWidth);
    const double size = std::max(box.width, box.height);
    const auto pixels = [inkPerPixel](double count) { return ShortNumber(count * inkPerPixel); };
    std::string svg = "<svg x=\"" + ShortNumber(x) + "\" y=\"" + ShortNumber(y) + "\" width=\"" +
                      ShortNumber(width) + "\" height=\"" + ShortNumber(height) + "\" viewBox=\"" +
                      ExactNumber(box.x) + " " + ExactNumber(box.y) + " " + ExactNumber(box.width) + " " +
                      ExactNumber(box.height) +
                      "\" fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
    const auto ink = [&](const char* name, const std::string& look, bool isScribble) {
        std::string group = "<g class=\"" + std::string(name) + "\" " + look + " stroke-width=\"" +
                            pixels(0.45 * lineWidth) + "\">\n";
        for (std::size_t i = 0; i < drawing.ink.strokes.size(); ++i) {
            const bool hasKind = (i < drawing.strokes.size() && drawing.strokes[i].isScribble) == isScribble;
            if (hasKind && drawing.ink.strokes[i].samples.size() > 1) {
                group += InkPath(drawing.ink.strokes[i], kFinestInk * size, DecimalsFor(size));
            }
        }
        return group + "</g>\n";
    };
    svg += ink("ink", "stroke=\"#9a9a9a\"", false);
    svg += "<g class=\"erased\" stroke-width=\"" + pixels(0.6 * lineWidth) + "\" stroke-dasharray=\"" +
           pixels(1.5 * lineWidth) + " " + pixels(2.0 * lineWidth) + "\">\n";
    for (const RecognizedStroke& stroke : drawing.strokes) {
        for (const ErasedCurve& erased : stroke.erased) {
            svg += CurveElement(erased.curve, kErasedColor);
        }
    }
    svg += "</g>\n" + ink("scribbles", "stroke=\"" + std::string(kScribbleColor) + "\"", true);
    svg += "<g class=\"geometry\" stroke-width=\"" + pixels(lineWidth) + "\" stroke-opacity=\"0.85\">\n";
    for (const RecognizedStroke& stroke : drawing.strokes) {
        for (const RecognizedCurve& curve : stroke.curves) {
            svg += CurveElement(curve, kKindColors[curve.shape.index()]);
        }
    }
    svg += "</g>\n" +
           (style.showsGlyphs ? DrawGlyphs(drawing, kGlyphSize * lineWidth * inkPerPixel) : std::string()) +
           "<g class=\"breaks\" fill=\"#ffffff\" stroke=\"#222222\" stroke-width=\"" +
           pixels(0.5 * lineWidth) + "\">\n" + BreakMarks(drawing, 1.3 * lineWidth * inkPerPixel) + "</g>\n" +
           DrawDimensions(drawing, pixels(0.3 * lineWidth)) + "</svg>\n";
    return svg;
}

} // namespace Tessera::Tool
