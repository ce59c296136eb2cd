#include <algorithm>
#include <iomanip>
#include <ostream>

#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/DrawingWriter.h"

namespace Tessera::Tool {

namespace {

std::string Plural(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

class SummaryWriter : public DrawingWriter {
public:
    explicit SummaryWriter(std::ostream& out) : out_(out) {}

    void Add(const RecognizedDrawing& drawing) override {
        ++drawings_;
        out_ << IdText(drawing.ink.id) << ": ";
        if (!drawing.ink.problem.empty()) {
            out_ << drawing.ink.problem << '\n';
            return;
        }
        KindCounts counts{};
        for (const RecognizedStroke& stroke : drawing.strokes) {
            CountKinds(stroke, counts);
        }
        out_ << Plural(drawing.strokes.size(), "stroke") << ", " << DescribeCounts(counts) << '\n';
        for (const RecognizedStroke& stroke : drawing.strokes) {
            AddStroke(stroke);
        }
        for (int kind = 0; kind < kCurveKinds; ++kind) {
            totals_[kind] += counts[kind];
        }
        strokes_ += drawing.strokes.size();
    }

    void Finish() override {
        if (drawings_ > 1) {
            out_ << "all together: " << Plural(drawings_, "drawing") << ", " << Plural(strokes_, "stroke")
                 << ", " << DescribeCounts(totals_) << '\n';
        }
        out_.flush();
    }

private:
    void AddStroke(const RecognizedStroke& stroke) {
        out_ << "  stroke " << stroke.index << " ("
             << Plural(static_cast<std::size_t>(stroke.points), "point") << ")";
        if (!stroke.problem.empty()) {
            out_ << ": " << stroke.problem;
        } else if (stroke.curves.empty()) {
            out_ << ": nothing recognised";
        }
        out_ << '\n';
        for (const RecognizedCurve& curve : stroke.curves) {
            std::string kind = curve.KindName();
            std::replace(kind.begin(), kind.end(), '_', ' ');
            const std::string range = std::to_string(curve.from) + ".." + std::to_string(curve.to);
            out_ << "    " << std::left << std::setw(13) << kind << std::setw(11) << range
                 << DescribeShape(curve.shape) << "; deviation " << ShortNumber(curve.deviation) << '\n';
        }
    }

    std::ostream& out_;
    std::size_t drawings_ = 0;
    std::size_t strokes_ = 0;
    KindCounts totals_{};
};

} // namespace

std::unique_ptr<DrawingWriter> MakeSummaryWriter(std::ostream& out) {
    return std::make_unique<SummaryWriter>(out);
}

} // namespace Tessera::Tool
