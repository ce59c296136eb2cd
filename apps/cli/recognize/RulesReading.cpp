#include "apps/cli/recognize/RulesReading.h"

#include <algorithm>
#include <cmath>

#include "apps/cli/recognize/CurveShapes.h"
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

} // namespace

std::vector<SketchCurve> ReadByRules(const Drawing& drawing, const InkStroke& ink,
                                     const RecognizeOptions& options, const WorkingFrame& page) {
    const WorkingFrame frame = options.inkScale ? page : AutomaticFrame(drawing);
    const std::vector<PreparedSample> samples =
        options.inkScale ? TakeSamples(ink, frame) : PrepareStroke(ink, frame);
    Geometry::Stroke stroke;
    for (const PreparedSample& sample : samples) {
        stroke.AddPoint({sample.x, sample.y, sample.speed});
    }
    Geometry::SketchRecognizer recognizer;
    *recognizer.AskPreferences() = options.preferences;
    recognizer.Recognize(stroke, true, Geometry::CurveType_Line);
    if (options.preferences.GetCurveTidy()) {
        Geometry::CloseRoundStroke(recognizer);
    }
    std::vector<SketchCurve> curves;
    const OwnedResults results(recognizer);
    for (const auto& result : results.Get()) {
        const int first = result->GetStartIndex();
        const int last = result->GetEndIndex();
        curves.push_back({CurveOf(ShapeOf(result->GetResult(), frame), page),
                          static_cast<int>(std::lround(samples[first].source)),
                          static_cast<int>(std::lround(samples[last].source)),
                          result->GetMaxDeviation() * PieceSize(samples, first, last) / frame.scale, -1,
                          nullptr});
    }
    return curves;
}

} // namespace Tessera::Tool
