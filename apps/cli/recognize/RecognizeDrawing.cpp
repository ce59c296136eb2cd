#include "apps/cli/recognize/RecognizeDrawing.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "apps/cli/prepare/InkPreparation.h"
#include "apps/cli/recognize/CurveShapes.h"
#include "apps/cli/recognize/Scribbles.h"
#include "tessera/geometry/Curve.h"
#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::RecognizedGeometry;

/// Longer side of the samples' box: the unit in which the recogniser tells a piece's deviation.
double PieceSize(const std::vector<PreparedSample>& samples, int first, int last) {
    const auto begin = samples.begin() + first;
    const auto end = samples.begin() + last + 1;
    const auto [minX, maxX] =
        std::minmax_element(begin, end, [](const auto& a, const auto& b) { return a.x < b.x; });
    const auto [minY, maxY] =
        std::minmax_element(begin, end, [](const auto& a, const auto& b) { return a.y < b.y; });
    return std::max(maxX->x - minX->x, maxY->y - minY->y);
}

/// The results of a recogniser, which belong to whoever takes them.
class OwnedResults {
public:
    explicit OwnedResults(Geometry::SketchRecognizer& recognizer) {
        for (RecognizedGeometry* result : recognizer.GetResults()) {
            curves_.emplace_back(&result->GetResult());
            results_.emplace_back(result);
        }
    }
    const std::vector<std::unique_ptr<RecognizedGeometry>>& Get() const { return results_; }

private:
    std::vector<std::unique_ptr<Curve>> curves_;
    std::vector<std::unique_ptr<RecognizedGeometry>> results_;
};

/// Longer side of a free-form piece's box when it is fitted for good: at this size the spline tolerance is
/// about a hundredth of the piece. The working size, made for telling shapes, would allow seven times as
/// much.
constexpr double kFreeFormSide = 500.0;

Geometry::Stroke MakeStroke(const std::vector<PreparedSample>& samples, int first, int last, double factor) {
    Geometry::Stroke stroke;
    for (int i = first; i <= last; ++i) {
        stroke.AddPoint({samples[i].x * factor, samples[i].y * factor, samples[i].speed * factor});
    }
    return stroke;
}

/// Fits a spline's samples again, more finely; leaves the curve as it is when that gives no single spline.
void RefineFreeForm(const std::vector<PreparedSample>& samples, int first, int last,
                    const WorkingFrame& frame, const RecognizeOptions& options, RecognizedCurve& curve) {
    const double factor = kFreeFormSide / PieceSize(samples, first, last);
    if (!(factor > 1.0)) {
        return;
    }
    Geometry::Stroke stroke = MakeStroke(samples, first, last, factor);
    Geometry::SketchRecognizer recognizer;
    *recognizer.AskPreferences() = options.preferences;
    double absolute = 0.0;
    double relative = 0.0;
    options.preferences.AskCloseStrokeTolerances(&absolute, &relative);
    recognizer.AskPreferences()->SetCloseStrokeTolerances(absolute * factor, relative); // open stays open
    recognizer.Recognize(stroke, false, Geometry::CurveType_Spline);
    const OwnedResults results(recognizer);
    if (results.Get().size() == 1 && results.Get()[0]->GetResult().GetType() == Geometry::CurveType_Spline) {
        curve.shape = ShapeOf(results.Get()[0]->GetResult(), {frame.origin, frame.scale * factor});
        curve.deviation = results.Get()[0]->GetMaxDeviation() * PieceSize(samples, first, last) / frame.scale;
    }
}

std::vector<RecognizedCurve> RecognizeSamples(const std::vector<PreparedSample>& samples,
                                              const WorkingFrame& frame, const RecognizeOptions& options) {
    Geometry::Stroke stroke = MakeStroke(samples, 0, static_cast<int>(samples.size()) - 1, 1.0);
    Geometry::SketchRecognizer recognizer;
    *recognizer.AskPreferences() = options.preferences;
    recognizer.Recognize(stroke, true, Geometry::CurveType_Line);
    Geometry::CloseRoundStroke(recognizer);
    const OwnedResults results(recognizer);
    std::vector<RecognizedCurve> curves;
    for (const auto& result : results.Get()) {
        const int first = result->GetStartIndex();
        const int last = result->GetEndIndex();
        RecognizedCurve& curve = curves.emplace_back();
        curve.shape = ShapeOf(result->GetResult(), frame);
        curve.from = static_cast<int>(std::lround(samples[first].source));
        curve.to = static_cast<int>(std::lround(samples[last].source));
        curve.deviation = result->GetMaxDeviation() * PieceSize(samples, first, last) / frame.scale;
        if (!options.inkScale && !options.useRulesOnly && std::holds_alternative<SplineShape>(curve.shape)) {
            RefineFreeForm(samples, first, last, frame, options, curve);
        }
    }
    return curves;
}

WorkingFrame ChooseFrame(const Drawing& drawing, const RecognizeOptions& options) {
    if (options.inkScale || options.useRulesOnly) {
        return FixedFrame(options.inkScale.value_or(1.0));
    }
    return AutomaticFrame(drawing);
}

} // namespace

RecognizedDrawing RecognizeDrawing(Drawing drawing, const RecognizeOptions& options) {
    RecognizedDrawing recognized;
    recognized.ink = std::move(drawing);
    const WorkingFrame frame = ChooseFrame(recognized.ink, options);
    const bool canScale = std::isfinite(1.0 / frame.scale) && std::isfinite(frame.scale) &&
                          std::isfinite(frame.origin.x) && std::isfinite(frame.origin.y);
    for (const InkStroke& ink : recognized.ink.strokes) {
        RecognizedStroke& stroke = recognized.strokes.emplace_back();
        stroke.index = static_cast<int>(recognized.strokes.size()) - 1;
        stroke.points = static_cast<int>(ink.samples.size());
        stroke.problem = ink.problem;
        if (stroke.problem.empty() && !canScale) {
            stroke.problem = "too large or too small to compute with";
        }
        if (stroke.problem.empty() && !AskScribble(ink, options, stroke)) {
            const std::vector<PreparedSample> samples =
                options.useRulesOnly ? TakeSamples(ink, frame) : PrepareStroke(ink, frame);
            stroke.curves = RecognizeSamples(samples, frame, options);
        }
    }
    if (canScale) {
        EraseScribbled(recognized, options);
    }
    if (!options.dimensions.empty()) {
        AddDimensions(recognized, options.dimensions);
    }
    return recognized;
}

} // namespace Tessera::Tool
