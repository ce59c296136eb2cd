// One drawing fills the picture; several become a sheet of tiles. Below stands the legend.

#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/DrawingWriter.h"
#include "apps/cli/write/SvgCurve.h"
#include "apps/cli/write/SvgGlyph.h"
#include "apps/cli/write/SvgPicture.h"

namespace Tessera::Tool {

namespace {

// Pixels.
constexpr double kPictureSide = 860.0; ///< longer side of a single picture
constexpr double kNarrowest = 460.0;   ///< the legend must fit
constexpr double kTileSide = 220.0;
constexpr double kCaption = 24.0; ///< above every picture
constexpr double kLegend = 44.0;
constexpr double kLegendRow = 22.0;
constexpr std::size_t kMostColumns = 8;

class SvgWriter : public DrawingWriter {
public:
    SvgWriter(std::ostream& out, bool showsGlyphs) : out_(out), showsGlyphs_(showsGlyphs) {}

    void Add(const RecognizedDrawing& drawing) override {
        for (const RecognizedStroke& stroke : drawing.strokes) {
            CountKinds(stroke, counts_);
            scribbles_ += stroke.isScribble ? 1 : 0;
        }
        constraints_ += drawing.constraints && showsGlyphs_ ? drawing.constraints->size() : 0;
        drawings_.push_back(drawing);
    }

    void Finish() override {
        if (drawings_.size() == 1) {
            WriteSingle(drawings_.front());
        } else {
            WriteSheet();
        }
        out_.flush();
    }

private:
    void WriteSingle(const RecognizedDrawing& drawing) {
        const PictureBox box = FitPicture(drawing);
        const double pixelsPerInk = kPictureSide / std::max(box.width, box.height);
        const double drawn = box.width * pixelsPerInk;
        const double width = std::max(drawn, kNarrowest);
        const double height = std::max(box.height * pixelsPerInk, 60.0);
        Open(width, kCaption + height + LegendHeight());
        Caption(drawing, 14.0, 0.0);
        out_ << DrawPicture(drawing, box, 0.0, kCaption, width, height, {3.2, showsGlyphs_});
        Close(kCaption + height);
    }

    void WriteSheet() {
        const auto root =
            static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(drawings_.size()))));
        const std::size_t columns = std::clamp<std::size_t>(root, 3, kMostColumns);
        const std::size_t rows = (drawings_.size() + columns - 1) / columns;
        const double height = static_cast<double>(rows) * (kTileSide + kCaption);
        Open(static_cast<double>(columns) * kTileSide, height + LegendHeight());
        for (std::size_t i = 0; i < drawings_.size(); ++i) {
            const std::size_t row = i / columns;
            const double x = static_cast<double>(i % columns) * kTileSide;
            const double y = static_cast<double>(row) * (kTileSide + kCaption);
            Caption(drawings_[i], x + 10.0, y);
            out_ << DrawPicture(drawings_[i], FitPicture(drawings_[i]), x, y + kCaption, kTileSide, kTileSide,
                                {2.0, showsGlyphs_});
        }
        Close(height);
    }

    /// A second row where the first may not hold all kinds.
    double LegendHeight() const {
        const auto kinds = std::count_if(counts_.begin(), counts_.end(), [](int count) { return count > 0; });
        return kinds + (scribbles_ > 0 ? 1 : 0) + (constraints_ > 0 ? 1 : 0) > 3 ? kLegend + kLegendRow
                                                                                 : kLegend;
    }

    void Open(double width, double height) {
        width_ = width;
        const std::string w = ShortNumber(std::ceil(width));
        const std::string h = ShortNumber(std::ceil(height));
        out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << w << "\" height=\"" << h
             << "\" viewBox=\"0 0 " << w << ' ' << h << "\" font-family=\"sans-serif\" font-size=\"13\">\n"
             << "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    }

    void Caption(const RecognizedDrawing& drawing, double x, double y) {
        constexpr std::size_t kMostCharacters = 60;
        std::string text = IdText(drawing.ink.id);
        const std::size_t room = drawings_.size() == 1 ? kMostCharacters : kMostCharacters / 2;
        if (text.size() > room) {
            std::size_t end = room;
            while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
                --end; // not inside a character of several bytes
            }
            text = text.substr(0, end) + "\xE2\x80\xA6";
        }
        out_ << "<text x=\"" << ShortNumber(x) << "\" y=\"" << ShortNumber(y + 18.0) << "\" fill=\"#777777\">"
             << EscapeXml(text) << "</text>\n";
    }

    /// A swatch for each kind that occurs, then ink and break points.
    void Close(double y) {
        double x = 14.0;
        double row = y + 20.0;
        const auto entry = [&](const std::string& color, const char* lineWidth, const std::string& text) {
            const double length = 48.0 + 7.0 * static_cast<double>(text.size());
            if (x + length > width_) {
                x = 14.0;
                row += kLegendRow;
            }
            const std::string middle = ShortNumber(row);
            const std::string base = ShortNumber(row + 4.5);
            out_ << "<line x1=\"" << ShortNumber(x) << "\" y1=\"" << middle << "\" x2=\""
                 << ShortNumber(x + 22.0) << "\" y2=\"" << middle << "\" stroke=\"" << color
                 << "\" stroke-width=\"" << lineWidth << "\" stroke-linecap=\"round\"/>\n<text x=\""
                 << ShortNumber(x + 30.0) << "\" y=\"" << base << "\" fill=\"#333333\">" << text
                 << "</text>\n";
            x += length;
        };
        entry("#9a9a9a", "1.5", "ink");
        for (int kind = 0; kind < kCurveKinds; ++kind) {
            if (counts_[kind] > 0) {
                KindCounts one{};
                one[kind] = counts_[kind];
                entry(kKindColors[kind], "3.2", DescribeCounts(one));
            }
        }
        if (scribbles_ > 0) {
            entry(kScribbleColor, "1.5",
                  scribbles_ == 1 ? "1 scribble" : std::to_string(scribbles_) + " scribbles");
        }
        if (constraints_ > 0) {
            entry(kGlyphColor, "1.5",
                  constraints_ == 1 ? "1 constraint" : std::to_string(constraints_) + " constraints");
        }
        out_ << "</svg>\n";
    }

    std::ostream& out_;
    bool showsGlyphs_;
    std::vector<RecognizedDrawing> drawings_;
    KindCounts counts_{};
    int scribbles_ = 0;
    std::size_t constraints_ = 0;
    double width_ = 0.0;
};

} // namespace

std::unique_ptr<DrawingWriter> MakeSvgWriter(std::ostream& out, bool showsGlyphs) {
    return std::make_unique<SvgWriter>(out, showsGlyphs);
}

} // namespace Tessera::Tool
