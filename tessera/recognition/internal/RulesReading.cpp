#include "tessera/recognition/internal/RulesReading.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/recognition/internal/InkCurves.h"
#include "tessera/recognition/internal/RecognitionTolerances.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

// Diagonal of the box at which the most drawn shapes come back right (45 of 30, 45, 60, 100).
constexpr double kWorkingDiagonal = 45.0;

struct Frame {
    double x = 0.0, y = 0.0, scale = 1.0; // working = scale (model - (x, y))
};

Frame FrameOf(const std::vector<InkSample>& samples) {
    double low[2] = {samples[0].x, samples[0].y};
    double high[2] = {samples[0].x, samples[0].y};
    for (const InkSample& s : samples) {
        low[0] = std::min(low[0], s.x);
        low[1] = std::min(low[1], s.y);
        high[0] = std::max(high[0], s.x);
        high[1] = std::max(high[1], s.y);
    }
    const double diagonal = std::hypot(high[0] - low[0], high[1] - low[1]);
    return {low[0], low[1], kWorkingDiagonal / diagonal};
}

// Length per time over the neighbours of sample i.
double SpeedAt(const InkStroke& ink, std::size_t i) {
    const InkSample& a = ink.samples[i > 0 ? i - 1 : i];
    const InkSample& b = ink.samples[i];
    const InkSample& c = ink.samples[i + 1 < ink.samples.size() ? i + 1 : i];
    const double time = c.t - a.t;
    return ink.hasTimes && time > 0.0
               ? (std::hypot(b.x - a.x, b.y - a.y) + std::hypot(c.x - b.x, c.y - b.y)) / time
               : 0.0;
}

InkShape ShapeOf(const Curve& only) {
    switch (only.GetType()) {
    case CurveType_Line:
        return InkShape::Line;
    case CurveType_Arc:
        return only.IsClosed() ? InkShape::Circle : InkShape::Arc;
    case CurveType_Ellipse:
        return only.IsClosed() ? InkShape::Ellipse : InkShape::EllipticArc;
    default:
        return InkShape::Spline;
    }
}

// Whether the curve runs against the ink that it stands for.
bool RunsAgainst(const InterpretedCurve& made, const std::vector<InkSample>& samples) {
    if (made.curve->IsClosed())
        return false;
    const InkSample& first = samples[static_cast<std::size_t>(made.firstSample)];
    const Point p(first.x, first.y);
    return p.Distance2(made.curve->GetEnd()) < p.Distance2(made.curve->GetStart());
}

} // namespace

void ReadByRules(const InkStroke& ink, const SketchRecognizerPreferences& preferences, InkReading& reading) {
    const Frame frame = FrameOf(ink.samples);
    Stroke stroke;
    stroke.Resize(static_cast<int>(ink.samples.size()));
    for (std::size_t i = 0; i < ink.samples.size(); ++i)
        stroke.AssignPoint({frame.scale * (ink.samples[i].x - frame.x),
                            frame.scale * (ink.samples[i].y - frame.y), frame.scale * SpeedAt(ink, i)},
                           static_cast<int>(i));
    SketchRecognizer recognizer;
    SketchRecognizerPreferences working = preferences;
    recognizer.SetPreferences(working);
    recognizer.Recognize(stroke, true, CurveType_Line);
    CloseRoundStroke(recognizer);
    double back[3][3] = {
        {1.0, 0.0, frame.scale * frame.x}, {0.0, 1.0, frame.scale * frame.y}, {0.0, 0.0, frame.scale}};
    for (RecognizedGeometry* result : recognizer.GetResults()) {
        const std::unique_ptr<RecognizedGeometry> owner(result);
        InterpretedCurve made;
        made.curve.reset(&result->GetResult());
        made.curve->Transform(back);
        made.firstSample = result->GetStartIndex();
        made.lastSample = result->GetEndIndex();
        made.isReversed = RunsAgainst(made, ink.samples);
        reading.curves.push_back(std::move(made));
    }
    if (reading.curves.size() == 1)
        reading.shape = ShapeOf(*reading.curves[0].curve);
    else if (!reading.curves.empty())
        reading.shape = InkShape::Pieces;
    reading.isClosed = reading.curves.size() == 1 && reading.curves[0].curve->IsClosed();
    MeasureDeviations(ink.samples, reading);
}

double ClosingShare(const InkStroke& ink, double length, const SketchRecognizerPreferences& preferences) {
    const double working = FrameOf(ink.samples).scale * length;
    return ClosedStrokeTolerance(preferences, working) / working;
}

} // namespace Tessera::Geometry
