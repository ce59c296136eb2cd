#include <iomanip>
#include <ostream>

#include "apps/cli/convert/ConvertedWriter.h"
#include "apps/cli/write/CurveText.h"

namespace Tessera::Tool {

namespace {

std::string DescribeScribble(const ConvertedStroke& stroke) {
    std::string text = "scribble";
    text += stroke.erased.empty() ? "" : ", erases " + NumberList("element", stroke.erased);
    text += stroke.trimmed.empty() ? "" : ", trims " + NumberList("element", stroke.trimmed);
    return text + (stroke.erased.empty() && stroke.trimmed.empty() ? ", erases nothing" : "");
}

std::string DescribeStroke(const ConvertedStroke& stroke) {
    if (!stroke.problem.empty()) {
        return stroke.problem;
    }
    std::string text;
    switch (stroke.outcome) {
    case kHostInkNothing:
        return "nothing";
    case kHostInkRetrace:
        return "draws " + NumberList("element", stroke.elements) + " anew";
    case kHostInkScribble:
        text = DescribeScribble(stroke);
        break;
    case kHostInkCurves:
    case kHostInkRectangle:
        text = Spaced(kShapeNames[static_cast<int>(stroke.shape)]);
        break;
    }
    text += stroke.elements.empty() ? "" : ", makes " + NumberList("element", stroke.elements);
    return text + (stroke.constraints.empty() ? "" : ", " + Plural(stroke.constraints.size(), "constraint"));
}

class ConvertedSummaryWriter : public ConvertedWriter {
public:
    explicit ConvertedSummaryWriter(std::ostream& out) : out_(out) {}

    void Add(const ConvertedDrawing& drawing) override {
        ++drawings_;
        out_ << IdText(drawing.id) << ": ";
        if (!drawing.problem.empty()) {
            out_ << drawing.problem << '\n';
            return;
        }
        KindCounts kinds{};
        for (const ConvertedElement& element : drawing.elements) {
            ++kinds[element.shape.index()];
            ++totals_[element.shape.index()];
        }
        ConstraintCounts constraints{};
        for (const HostConstraint2d& constraint : drawing.constraints) {
            ++constraints[static_cast<std::size_t>(constraint.kind)];
        }
        strokes_ += drawing.strokes.size();
        out_ << Plural(drawing.strokes.size(), "stroke") << ", " << DescribeCounts(kinds) << '\n'
             << "  constraints: " << DescribeConstraints(constraints) << '\n';
        for (const ConvertedStroke& stroke : drawing.strokes) {
            out_ << "  stroke " << stroke.index << " ("
                 << Plural(static_cast<std::size_t>(stroke.points), "point")
                 << "): " << DescribeStroke(stroke) << '\n';
        }
        for (const ConvertedElement& element : drawing.elements) {
            out_ << "  element " << std::left << std::setw(5) << element.id << std::setw(13)
                 << Spaced(kCurveKindNames[element.shape.index()]) << DescribeShape(element.shape) << '\n';
        }
    }

    void Finish() override {
        if (drawings_ > 1) {
            out_ << DescribeTotals(drawings_, strokes_, totals_) << '\n';
        }
        out_.flush();
    }

private:
    std::ostream& out_;
    std::size_t drawings_ = 0;
    std::size_t strokes_ = 0;
    KindCounts totals_{};
};

} // namespace

std::unique_ptr<ConvertedWriter> MakeConvertedSummaryWriter(std::ostream& out) {
    return std::make_unique<ConvertedSummaryWriter>(out);
}

} // namespace Tessera::Tool
