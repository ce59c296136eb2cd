// The stages: the ink in a frame of its own; scribbles; curves drawn over; ink drawn forth and back; the
// hypotheses for what is new.
#include "tessera/recognition/InkInterpretation.h"

#include <cmath>
#include <optional>
#include <utility>

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/ScribbleQuestion.h"
#include "tessera/recognition/internal/InkDeviations.h"
#include "tessera/recognition/internal/InkHypotheses.h"
#include "tessera/recognition/internal/InkPath.h"
#include "tessera/recognition/internal/OverSketch.h"
#include "tessera/recognition/internal/ThinWall.h"

namespace Tessera::Geometry {

namespace {

bool IsScribble(const InkStroke& ink, const SketchRecognizerPreferences& preferences, InkReading& reading) {
    if (!preferences.GetDoScribble())
        return false;
    std::vector<Point> points;
    points.reserve(ink.samples.size());
    for (const InkSample& s : ink.samples)
        points.emplace_back(s.x, s.y);
    int cusps = 0;
    if (!IsScribbleInk(points, preferences, &cusps))
        return false;
    reading.shape = InkShape::Scribble;
    reading.cusps = cusps;
    return true;
}

void MoveNearerEnd(Curve& line, const Point& to) {
    const Point start = line.GetStart();
    const Point end = line.GetEnd();
    if (to.Distance2(start) < to.Distance2(end))
        line.SetLimits(to, end);
    else
        line.SetLimits(start, to);
}

// Neighbours that are lines meet where their carriers do.
void JoinLines(std::span<InterpretedCurve> chain) {
    for (std::size_t i = 1; i < chain.size(); ++i) {
        Curve& before = *chain[i - 1].curve;
        Curve& after = *chain[i].curve;
        std::vector<Point> meet;
        if (before.GetType() == CurveType_Line && after.GetType() == CurveType_Line)
            before.Intersect(after, meet);
        if (meet.empty())
            continue;
        MoveNearerEnd(before, meet[0]);
        MoveNearerEnd(after, meet[0]);
    }
}

// The sides of a wall, from its centre line: where two straight sides meet, so do their parallels.
void SplitIntoSides(const ThinWall& wall, bool areJoined, InkReading& reading) {
    const InkReading centre = std::exchange(reading, InkReading());
    for (const bool isForth : {true, false}) {
        const std::size_t base = reading.curves.size();
        for (std::size_t i = 0; i < centre.curves.size(); ++i) {
            const InterpretedCurve& middle = centre.curves[isForth ? i : centre.curves.size() - 1 - i];
            // Left of the pen on its way forth; the curve may run against it.
            const double left = (isForth == middle.isReversed ? -1.0 : 1.0) * wall.halfWidth;
            InterpretedCurve side;
            side.curve = ParallelCurve(*middle.curve, left);
            if (!side.curve)
                continue;
            const std::vector<int>& samples = isForth ? wall.forth : wall.back;
            const auto from = static_cast<std::size_t>(isForth ? middle.firstSample : middle.lastSample);
            const auto to = static_cast<std::size_t>(isForth ? middle.lastSample : middle.firstSample);
            side.firstSample = samples[from];
            side.lastSample = samples[to];
            side.isReversed = isForth ? middle.isReversed : !middle.isReversed;
            reading.curves.push_back(std::move(side));
        }
        if (areJoined)
            JoinLines({reading.curves.data() + base, reading.curves.size() - base});
    }
    reading.shape = InkShape::ThinWall;
}

bool ReadThinWall(const InkStroke& ink, const PricedPath& priced,
                  const SketchRecognizerPreferences& preferences, std::span<Curve* const> earlier,
                  InkReading& reading) {
    const std::optional<ThinWall> wall = FindThinWall(priced);
    if (!wall)
        return false;
    const bool asSides = preferences.GetThinWallRecognition();
    const std::vector<InkSample>& samples = wall->centre.samples;
    const InkPath path = FitToPieces(samples, MakeInkPath(samples));
    PricedPath centre(path);
    ReadByHypotheses(wall->centre, centre, preferences, asSides ? std::span<Curve* const>() : earlier,
                     reading);
    if (asSides) {
        SplitIntoSides(*wall, preferences.GetCurveTidy(), reading);
    } else {
        for (InterpretedCurve& made : reading.curves) {
            made.firstSample = wall->forth[static_cast<std::size_t>(made.firstSample)];
            made.lastSample = wall->forth[static_cast<std::size_t>(made.lastSample)];
        }
        if (reading.curves.size() == 1)
            reading.curves[0].lastSample = static_cast<int>(ink.samples.size()) - 1; // both runs
    }
    MeasureDeviations(ink.samples, reading);
    return true;
}

void Interpret(const InkStroke& ink, const SketchRecognizerPreferences& preferences,
               std::span<Curve* const> earlier, InkReading& reading) {
    const InkPath path = MakeInkPath(ink.samples);
    if (path.pts.empty() || IsScribble(ink, preferences, reading))
        return;
    if (ReadRetrace(path, preferences, earlier, reading)) {
        MeasureDeviations(ink.samples, reading);
        return;
    }
    PricedPath priced(path);
    if ((preferences.GetCurveTidy() || preferences.GetThinWallRecognition()) &&
        ReadThinWall(ink, priced, preferences, earlier, reading))
        return;
    const InkPath fitted = FitToPieces(ink.samples, path);
    if (fitted.scale < path.scale) {
        PricedPath finer(fitted);
        ReadByHypotheses(ink, finer, preferences, earlier, reading);
    } else
        ReadByHypotheses(ink, priced, preferences, earlier, reading);
}

} // namespace

InkReading InterpretInk(const InkStroke& ink, const SketchRecognizerPreferences& preferences,
                        std::span<Curve* const> earlier) {
    for (const InkSample& s : ink.samples)
        if (!std::isfinite(s.x) || !std::isfinite(s.y) || !std::isfinite(s.t))
            Core::ThrowMessage("InterpretInk - a sample is not finite");
    const long refusals = SM_ask_refusal_count();
    InkReading reading;
    Interpret(ink, preferences, earlier, reading);
    // A fit that got no memory is a hypothesis lost: what won without it may not be what was meant.
    if (SM_ask_refusal_count() != refusals)
        Core::ThrowMessage("InterpretInk - out of memory");
    return reading;
}

} // namespace Tessera::Geometry
