#include "apps/cli/recognize/RecognizeDrawing.h"

#include "apps/cli/recognize/Constraints.h"
#include "apps/cli/recognize/Interpretation.h"
#include "apps/cli/recognize/RulesReading.h"
#include "apps/cli/recognize/Scribbles.h"

namespace Tessera::Tool {

namespace {

/// Reads the sketch's last stroke, whatever it is.
void ReadStroke(const RecognizeOptions& options, RecognizedDrawing& drawing, Sketch& sketch,
                RecognizedStroke& stroke) {
    const InkStroke& ink = drawing.ink.strokes[stroke.index];
    if (AskScribble(ink, options, sketch.page, stroke)) {
        if (!options.useRulesOnly) {
            stroke.shape = Geometry::InkShape::Scribble;
        }
        EraseScribbled(options, sketch, drawing, stroke);
    } else if (options.useRulesOnly) {
        sketch.strokes.back().curves = ReadByRules(drawing.ink, ink, options, sketch.page);
    } else {
        InterpretStroke(ink, options, sketch, stroke);
    }
}

} // namespace

RecognizedDrawing RecognizeDrawing(Drawing ink, const RecognizeOptions& options) {
    RecognizedDrawing drawing;
    drawing.ink = std::move(ink);
    drawing.strokes.reserve(drawing.ink.strokes.size());
    Sketch sketch;
    sketch.page = ChosenFrame(drawing.ink, options.inkScale);
    for (const InkStroke& strokeInk : drawing.ink.strokes) {
        RecognizedStroke& stroke = drawing.strokes.emplace_back();
        stroke.index = static_cast<int>(drawing.strokes.size()) - 1;
        stroke.points = static_cast<int>(strokeInk.samples.size());
        stroke.problem = strokeInk.problem;
        if (stroke.problem.empty() && !sketch.page.IsUsable()) {
            stroke.problem = kFrameProblem;
        }
        sketch.strokes.emplace_back();
        if (stroke.problem.empty()) {
            try {
                ReadStroke(options, drawing, sketch, stroke);
            } catch (const char* message) {
                stroke.problem = message;
            }
        }
    }
    if (options.constraintKinds != 0 && !options.useRulesOnly) {
        ConstrainSketch(options.constraintKinds, sketch, drawing);
    }
    DescribeSketch(sketch, drawing);
    if (!options.dimensions.empty()) {
        AddDimensions(drawing, options.dimensions);
    }
    return drawing;
}

} // namespace Tessera::Tool
