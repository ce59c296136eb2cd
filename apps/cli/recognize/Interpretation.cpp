#include "apps/cli/recognize/Interpretation.h"

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::CurveEnd;
using Geometry::InkReading;

Geometry::InkStroke OnPage(const InkStroke& ink, const WorkingFrame& page) {
    Geometry::InkStroke stroke;
    stroke.hasTimes = ink.isTimed;
    stroke.samples.reserve(ink.samples.size());
    for (const Sample& sample : ink.samples) {
        const Position p = page.ToWorking({sample.x, sample.y});
        stroke.samples.push_back({p.x, p.y, sample.timeMs});
    }
    return stroke;
}

/// The curve keeps its place and its name; only a curve of another kind is a new object.
void Retrace(Geometry::InterpretedCurve& form, std::unique_ptr<Curve> drawn, Curve* earlier, int by,
             Sketch& sketch) {
    SketchCurve& old = *sketch.Find(earlier);
    old.deviation = form.maxDeviation / sketch.page.scale;
    old.retracedBy = by;
    old.drawn = std::move(drawn);
    if (!earlier->CopyCurveData(form.curve.get())) {
        for (const CurveEnd end : {CurveEnd::Start, CurveEnd::End}) {
            sketch.RenameEnd({earlier, end}, {form.curve.get(), end});
        }
        old.curve = std::move(form.curve);
    }
    sketch.strokes.back().retraces = old.curve.get();
}

void Append(InkReading& reading, std::vector<std::unique_ptr<Curve>> drawn,
            const std::vector<Curve*>& earlier, const WorkingFrame& page, SketchStroke& stroke) {
    const auto curve = [&](int index) { return reading.curves[static_cast<std::size_t>(index)].curve.get(); };
    for (const Geometry::InkJoint& joint : reading.joints) {
        stroke.joints.push_back(
            {{curve(joint.before), joint.beforeEnd}, {curve(joint.after), joint.afterEnd}, joint.kind});
    }
    for (const Geometry::InkConnection& connection : reading.connections) {
        stroke.connections.push_back({{curve(connection.curve), connection.end},
                                      earlier[static_cast<std::size_t>(connection.earlier)],
                                      connection.keyPoint});
    }
    for (std::size_t i = 0; i < reading.curves.size(); ++i) {
        Geometry::InterpretedCurve& made = reading.curves[i];
        stroke.curves.push_back({std::move(made.curve), made.firstSample, made.lastSample,
                                 made.maxDeviation / page.scale, -1, std::move(drawn[i])});
    }
}

} // namespace

void InterpretStroke(const InkStroke& ink, const RecognizeOptions& options, Sketch& sketch,
                     RecognizedStroke& stroke) {
    const std::vector<Curve*> earlier = sketch.Curves();
    Geometry::SketchRecognizerPreferences preferences = options.preferences;
    preferences.SetDoScribble(false); // has been asked
    const Geometry::InkStroke drawing = OnPage(ink, sketch.page);
    InkReading reading = Geometry::InterpretInk(drawing, preferences, earlier);
    std::vector<std::unique_ptr<Curve>> drawn = Geometry::CurvesAsDrawn(drawing, reading);
    stroke.shape = reading.shape;
    if (reading.retraced >= 0) {
        Retrace(reading.curves.front(), std::move(drawn.front()),
                earlier[static_cast<std::size_t>(reading.retraced)], stroke.index, sketch);
    } else {
        Append(reading, std::move(drawn), earlier, sketch.page, sketch.strokes.back());
    }
}

} // namespace Tessera::Tool
