// Prints every kind of dimension in eight directions, on both sides of what it measures, as an SVG picture.

#include "examples/DimensionSheet.h"
#include "examples/PrintCurve.h"

using namespace Tessera::Examples;

namespace {

constexpr double kCell = 96.0;

/// All that a host has to do: curves, filled arrowheads of three points each, the number in its box.
void Draw(const DimensionBase& dim) {
    std::vector<Curve*> curves;
    std::vector<Point> heads;
    std::vector<Point> box;
    dim.GetTempDimDecoObjects(curves, heads, false);
    dim.GetOrientedTextBox(box);
    std::printf("<g class='d'><path d='");
    for (const Curve* curve : curves) {
        PrintCurve(*curve);
        delete curve;
    }
    std::printf("'/><path class='h' d='");
    for (std::size_t i = 0; i < heads.size(); ++i) {
        std::printf("%s%.1f %.1f", i % 3 == 0 ? "M" : " ", heads[i].x, heads[i].y);
    }
    const auto* radial = dynamic_cast<const RadialDimension*>(&dim);
    const char* prefix = radial == nullptr ? "" : radial->DisplayR() ? "R" : "\xC3\x98";
    std::printf(
        "'/><text transform='translate(%.1f %.1f) scale(1 -1) rotate(%.1f)' y='1.6'>%s%.*f%s</text></g>\n",
        (box[0].x + box[2].x) / 2.0, (box[0].y + box[2].y) / 2.0, -dim.GetTextAngle(), prefix,
        dim.GetNumDigitsAfterDecimalPoint(dim.GetNumDigitsRequired()), dim.GetDisplayedValue(),
        dim.GetType() == Angular ? "\xC2\xB0" : "");
}

} // namespace

int main() {
    constexpr int kRowCount = std::size(kRows);
    constexpr double kHeight = kRowCount * kCell;
    std::printf("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %g %g'>\n<style>"
                "path{fill:none;stroke:#222;stroke-width:.8}.d path{stroke:#1b4f9c;stroke-width:.4}"
                ".d .h,text{fill:#1b4f9c;stroke:none}text{font:%gpx sans-serif;text-anchor:middle}</style>\n"
                "<rect width='100%%' height='100%%' fill='#fff'/>\n<g transform='matrix(1 0 0 -1 0 %g)'>\n",
                8 * kCell, kHeight, 0.9 * kFont, kHeight);
    for (int i = 0; i < 8 * kRowCount; ++i) {
        const int row = i / 8;
        const Exhibit e = MakeExhibit(row, i % 8, {(i % 8 + 0.5) * kCell, kHeight - (row + 0.5) * kCell});
        std::printf("<path d='");
        for (const auto& curve : e.curves) {
            PrintCurve(*curve);
        }
        std::printf("'/>\n");
        for (const auto& dim : e.dims) {
            Draw(*dim);
        }
    }
    std::printf("</g>\n</svg>\n");
}
