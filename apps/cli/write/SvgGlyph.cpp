#include "apps/cli/write/SvgGlyph.h"

#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/GlyphLayout.h"
#include "apps/cli/write/SvgCurve.h"

namespace Tessera::Tool {

namespace {

/// Path data within the square from -1 to 1, in the order of ConstraintKind_e.
constexpr const char* kGlyphs[Geometry::kConstraintKindCount] = {
    "M-.3 0A.3 .3 0 1 0 .3 0A.3 .3 0 1 0 -.3 0Z",                  // a dot
    "M-.9 0H.9",                                                   // a bar
    "M0 -.9V.9",                                                   //
    "M-.7 .8L-.1 -.8M.1 .8L.7 -.8",                                // two strokes side by side
    "M-.8 .7H.8M0 .7V-.8",                                         // one standing on the other
    "M-.9 .6L-.2 .13M.2 -.13L.9 -.6M-.2 -.3L.2 .3",                // two stretches of one line
    "M-.9 -.65H.9M-.6 .05A.6 .6 0 1 0 .6 .05A.6 .6 0 1 0 -.6 .05", // a line on a circle
    "M-.85 0A.85 .85 0 1 0 .85 0A.85 .85 0 1 0 -.85 0M-.4 0A.4 .4 0 1 0 .4 0A.4 .4 0 1 0 -.4 0",
    "M-.7 -.3H.7M-.7 .3H.7",                                                        // equals
    "M-.7 -.3H.7M-.7 .3H.7",                                                        //
    "M-.9 .6Q0 -.7 .9 .6M-.22 -.05A.22 .22 0 1 0 .22 -.05A.22 .22 0 1 0 -.22 -.05", // a point on an arc
    "M-.8 .6H.8L0 -.7Z",                                                            // a triangle
    "M0 -.9V.9M-.4 -.5L-.85 0L-.4 .5M.4 -.5L.85 0L.4 .5",                           // arrows from an axis
};

} // namespace

std::string DrawGlyphs(const RecognizedDrawing& drawing, double size) {
    const std::vector<PlacedGlyph> glyphs = PlaceGlyphs(drawing, size);
    if (glyphs.empty()) {
        return {};
    }
    std::string svg =
        "<g class=\"constraints\" stroke=\"" + std::string(kGlyphColor) + "\" stroke-width=\"0.25\">\n";
    for (const PlacedGlyph& glyph : glyphs) {
        const bool isDot = glyph.kind == Geometry::ConstraintKind_Coincident;
        svg += "<path class=\"" + std::string(kConstraintNames[glyph.kind]) + "\" transform=\"translate(" +
               ExactNumber(glyph.center.x) + " " + ExactNumber(glyph.center.y) + ") scale(" +
               ShortNumber(0.5 * size) + ")\" d=\"" + kGlyphs[glyph.kind] + "\"" +
               (isDot ? " fill=\"" + std::string(kGlyphColor) + "\"" : "") + "><title>" +
               EscapeXml(glyph.meaning) + "</title></path>\n";
    }
    return svg + "</g>\n";
}

} // namespace Tessera::Tool
