#include "tessera/recognition/ClosedShape.h"

#include "tessera/recognition/internal/ReportErrors.h"
#include "tessera/recognition/internal/SketchRecognizerAccess.h"
#include "tessera/recognition/internal/WholeStroke.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

constexpr double kAnyGapDeg = 180.0; // from whole turns: the closing tolerance alone decides

bool TryClose(SketchRecognizer& recognizer) {
    const SketchRecognizerAccess access{recognizer};
    const std::vector<StrokePoint>& points = access.Points();
    const std::vector<RecognizedGeometry*>& results = recognizer.GetResults();
    if (points.empty() || !(results.empty() || IsWholeStrokePreferred(results)))
        return false;
    SketchRecognizer rounds;
    rounds.SetPreferences(*recognizer.AskPreferences());
    if (points.front().Distance(points.back()) <= recognizer.AskClosedStrokeTolerance())
        rounds.AskPreferences()->SetPeriodicAngleThreshold(kAnyGapDeg);
    Stroke stroke(points);
    rounds.RecognizePeriodic(stroke);
    if (rounds.GetResults().empty())
        return false;
    access.TakeResultsOf(rounds);
    return true;
}

} // namespace

bool CloseRoundStroke(SketchRecognizer& recognizer) {
    bool isClosed = false;
    ReportErrors([&] { isClosed = TryClose(recognizer); });
    return isClosed;
}

} // namespace Tessera::Geometry
