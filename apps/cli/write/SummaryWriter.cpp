#include <algorithm>
#include <iomanip>
#include <ostream>

#include "apps/cli/write/CurveText.h"
#include "apps/cli/write/DrawingWriter.h"

namespace Tessera::Tool {

namespace {

std::string DescribeScribble(const RecognizedStroke& stroke) {
    return "scribble, " + Plural(static_cast<std::size_t>(stroke.cusps), "cusp") +
           (stroke.erases.empty() ? ", erases nothing"
                                  : ", erases from " + NumberList("stroke", stroke.erases));
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
        if (drawing.constraints) {
            ConstraintCounts constraints{};
            for (const RecognizedConstraint& constraint : *drawing.constraints) {
                ++constraints[constraint.kind];
            }
            out_ << "  constraints: " << DescribeConstraints(constraints) << '\n';
        }
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
            out_ << DescribeTotals(drawings_, strokes_, totals_) << '\n';
        }
        out_.flush();
    }

private:
    void AddStroke(const RecognizedStroke& stroke) {
        out_ << "  stroke " << stroke.index << " ("
             << Plural(static_cast<std::size_t>(stroke.points), "point") << ")";
        if (!stroke.problem.empty()) {
            out_ << ": " << stroke.problem;
        } else if (stroke.isScribble) {
            out_ << ": " << DescribeScribble(stroke);
        } else if (stroke.retraces) {
            out_ << ": draws curve " << stroke.retraces->curve << " of stroke " << stroke.retraces->stroke
                 << " anew";
        } else if (stroke.shape && *stroke.shape != Geometry::InkShape::Nothing) {
            out_ << ": " << Spaced(kShapeNames[static_cast<int>(*stroke.shape)]);
        } else if (stroke.curves.empty() && stroke.erased.empty()) {
            out_ << ": nothing recognised";
        }
        out_ << '\n';
        for (const RecognizedCurve& curve : stroke.curves) {
            AddCurve(curve);
            out_ << '\n';
        }
        for (const ErasedCurve& erased : stroke.erased) {
            AddCurve(erased.curve);
            out_ << "; erased by stroke " << erased.by << '\n';
        }
    }

    void AddCurve(const RecognizedCurve& curve) {
        const std::string kind = Spaced(curve.KindName());
        const std::string range = std::to_string(curve.from) + ".." + std::to_string(curve.to) + " ";
        out_ << "    " << std::left << std::setw(13) << kind << std::setw(11) << range
             << DescribeShape(curve.shape) << "; deviation " << ShortNumber(curve.deviation);
    }

    std::ostream& out_;
    std::size_t drawings_ = 0;
    std::size_t strokes_ = 0;
    KindCounts totals_{};
};

class ScribbleSummaryWriter : public DrawingWriter {
public:
    explicit ScribbleSummaryWriter(std::ostream& out) : out_(out) {}

    void Add(const RecognizedDrawing& drawing) override {
        out_ << IdText(drawing.ink.id) << ": ";
        if (!drawing.ink.problem.empty()) {
            out_ << drawing.ink.problem << '\n';
            return;
        }
        const auto scribbles =
            std::count_if(drawing.strokes.begin(), drawing.strokes.end(),
                          [](const RecognizedStroke& stroke) { return stroke.isScribble; });
        out_ << Plural(drawing.strokes.size(), "stroke") << ", "
             << Plural(static_cast<std::size_t>(scribbles), "scribble") << '\n';
        for (const RecognizedStroke& stroke : drawing.strokes) {
            out_ << "  stroke " << stroke.index << ": "
                 << (!stroke.problem.empty() ? stroke.problem
                     : stroke.isScribble
                         ? DescribeScribble(stroke)
                         : "no scribble, " + Plural(static_cast<std::size_t>(stroke.cusps), "cusp"))
                 << '\n';
        }
    }
    void Finish() override { out_.flush(); }

private:
    std::ostream& out_;
};

} // namespace

std::unique_ptr<DrawingWriter> MakeScribbleSummaryWriter(std::ostream& out) {
    return std::make_unique<ScribbleSummaryWriter>(out);
}

std::unique_ptr<DrawingWriter> MakeSummaryWriter(std::ostream& out) {
    return std::make_unique<SummaryWriter>(out);
}

} // namespace Tessera::Tool
