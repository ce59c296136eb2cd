// Every curve near both ends of the ink is followed from end to end; what decides is how far the ink strays
// from it in distance and in direction.
#include "tessera/recognition/internal/OverSketch.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/AxisSnap.h"
#include "tessera/recognition/internal/InkConnections.h"
#include "tessera/recognition/internal/RetracedForm.h"

namespace Tessera::Geometry {

namespace {

constexpr double kNearShare = 0.15; // of the ink's length: how far its ends may lie from the curve
// Root mean square angle between ink and curve, radians. A bow of nine hundredths of its chord, which still
// reads as a line, makes 0.21. Free forms are redrawn more freely.
constexpr double kMostAngle = 0.21;
constexpr double kMostAngleFree = 0.35;
constexpr double kStraight = 0.1;    // the same about the chord: ink that is a line by itself
constexpr double kMostLengths = 1.3; // ink per length of the curve that it covers, and the other way round
constexpr double kMostBack = 0.1;    // of the covered length: hooks that run back
constexpr double kFlattest = 0.01;   // of the chord: height of an arc whose ends are moved
constexpr int kReach = 3;            // points to either side over which directions are taken

struct Limits {
    double first = 0.0;
    double second = 0.0;
};

Limits LimitsOf(const SketchRecognizerPreferences& preferences) {
    Limits limits;
    preferences.AskOverSketchTolerances(&limits.first, &limits.second);
    preferences.ContextAdjustTolerance(&limits.first);
    preferences.ContextAdjustTolerance(&limits.second);
    return limits;
}

bool IsNearBothEnds(const Curve& curve, const Point& start, const Point& end, double reach) {
    XYBox box;
    if (!curve.AskXYBox(box))
        return false;
    for (const Point& p : {start, end})
        if (p.x < box.min.x - reach || p.x > box.max.x + reach || p.y < box.min.y - reach ||
            p.y > box.max.y + reach || !(curve.DistanceBounded(p) <= reach))
            return false;
    return true;
}

// Root mean square angle between the directions of two rows of points.
template <class First, class Second>
double AngleApart(int n, const First& first, const Second& second) {
    double sumSq = 0.0;
    int count = 0;
    for (int i = kReach; i + kReach < n; ++i) {
        const Point other = second(i);
        if (other.Dot(other) <= 0.0)
            continue; // past the end of the curve
        const double angle = SignedAngle(other, first(i));
        sumSq += angle * angle;
        ++count;
    }
    return count > 0 ? std::sqrt(sumSq / count) : std::numeric_limits<double>::infinity();
}

bool RunsAlong(const CurveTrack& track, const Retrace& retrace, bool isFree) {
    const int n = static_cast<int>(retrace.ink.size());
    std::vector<Point> on;
    on.reserve(retrace.feet.size());
    for (const TrackFoot& foot : retrace.feet)
        on.push_back(track.At(foot.along));
    const auto across = [](const std::vector<Point>& pts) {
        return [&pts](int i) {
            const Point* at = &pts[static_cast<std::size_t>(i)];
            return at[kReach] - at[-kReach];
        };
    };
    const auto inkRun = across(retrace.ink);
    const auto curveRun = across(on);
    const double angle = AngleApart(n, inkRun, curveRun);
    if (angle <= kMostAngle)
        return true;
    if (!isFree || angle > kMostAngleFree)
        return false;
    const Point chord = retrace.ink.back() - retrace.ink.front();
    return AngleApart(n, inkRun, [&](int) { return chord; }) > kStraight;
}

bool CoversSteadily(const Retrace& retrace, double inkLength) {
    double back = 0.0;
    for (std::size_t i = 1; i < retrace.feet.size(); ++i)
        back += std::max(0.0, retrace.feet[i - 1].along - retrace.feet[i].along);
    const double covered = retrace.CoveredLength();
    return inkLength <= kMostLengths * covered && covered <= kMostLengths * inkLength &&
           back <= kMostBack * covered;
}

// The ink along one curve; no curve when it does not run along it.
Retrace Follow(const CurveTrack& track, const std::vector<Point>& ink, double step) {
    Retrace retrace;
    retrace.ink = ink;
    retrace.feet = FollowTrack(track, ink, step);
    retrace.isAgainst = retrace.CoveredLength() < 0.0;
    if (retrace.isAgainst) {
        std::reverse(retrace.ink.begin(), retrace.ink.end());
        std::reverse(retrace.feet.begin(), retrace.feet.end());
    }
    return retrace;
}

double MeanSqDistance(const Retrace& retrace) {
    double sumSq = 0.0;
    for (const TrackFoot& foot : retrace.feet)
        sumSq += foot.distance * foot.distance;
    return sumSq / static_cast<double>(retrace.feet.size());
}

double LargestDistance(const Retrace& retrace) {
    return std::max_element(retrace.feet.begin(), retrace.feet.end(),
                            [](const TrackFoot& a, const TrackFoot& b) { return a.distance < b.distance; })
        ->distance;
}

// What a new line or arc gets, the new form gets too: directions of axes, ends on the other curves.
void Tidy(const InkPath& path, const SketchRecognizerPreferences& preferences, std::vector<Curve*> others,
          InkReading& reading) {
    std::unique_ptr<Curve>& form = reading.curves[0].curve;
    const CurveType_e kind = form->GetType();
    if (form->IsClosed() || (kind != CurveType_Line && kind != CurveType_Arc))
        return;
    others[static_cast<std::size_t>(reading.retraced)] = nullptr;
    ExactChain chain;
    chain.pieces.push_back(
        {PieceKind::Line, path.FromModel(form->GetStart()), path.FromModel(form->GetEnd()), {}, 0, 0});
    ExactPiece& piece = chain.pieces[0];
    reading.connections = FindConnections(path, others, preferences, chain);
    if (kind == CurveType_Line)
        SnapToAxis(SnapAngle(preferences), PlaceOf(path, reading.connections, CurveEnd::Start),
                   PlaceOf(path, reading.connections, CurveEnd::End), piece);
    MoveEnds(path, reading.connections, chain);
    const Point from = path.ToModel(piece.from);
    const Point to = path.ToModel(piece.to);
    const Point middle = form->GetMidPoint();
    if (kind == CurveType_Line)
        form = std::make_unique<Line>(from, to);
    else if ((middle - from).Cross(to - middle) > kFlattest * from.Distance2(to))
        form.reset(Arc::FromThreePoints(from, middle, to));
    else
        reading.connections.clear(); // the ends would take the bend out of the arc
}

} // namespace

Retrace FindRetrace(const InkPath& path, const SketchRecognizerPreferences& preferences,
                    std::span<Curve* const> earlier) {
    const Limits limits = LimitsOf(preferences);
    const double length = path.scale * path.length;
    const double reach = std::min(limits.first, kNearShare * length);
    std::vector<Point> ink;
    ink.reserve(path.pts.size());
    for (const Point& p : path.pts)
        ink.push_back(path.ToModel(p));
    Retrace best;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < earlier.size(); ++i) {
        if (earlier[i] == nullptr || earlier[i]->IsZeroLength() ||
            !IsNearBothEnds(*earlier[i], ink.front(), ink.back(), reach))
            continue;
        const CurveTrack track(*earlier[i]);
        Retrace found = Follow(track, ink, path.scale * path.step);
        const double meanSq = MeanSqDistance(found);
        if (meanSq > least || LargestDistance(found) > limits.second || !CoversSteadily(found, length) ||
            !RunsAlong(track, found, earlier[i]->GetType() == CurveType_Spline))
            continue;
        least = meanSq;
        best = std::move(found);
        best.earlier = static_cast<int>(i);
        best.reach = reach;
    }
    return best;
}

bool ReadRetrace(const InkPath& path, const SketchRecognizerPreferences& preferences,
                 std::span<Curve* const> earlier, InkReading& reading) {
    if (!preferences.AskOversketch() || earlier.empty())
        return false;
    const Retrace retrace = FindRetrace(path, preferences, earlier);
    if (retrace.earlier < 0)
        return false;
    const Curve& old = *earlier[static_cast<std::size_t>(retrace.earlier)];
    InterpretedCurve made;
    made.curve = MakeRetracedForm(old, CurveTrack(old), retrace, LimitsOf(preferences).first,
                                  preferences.GetChangeCurveType());
    if (!made.curve)
        return false;
    made.isReversed = retrace.isAgainst;
    made.lastSample = static_cast<int>(path.source.back());
    reading.shape = InkShape::Retrace;
    reading.retraced = retrace.earlier;
    reading.isClosed = made.curve->IsClosed();
    reading.curves.push_back(std::move(made));
    Tidy(path, preferences, {earlier.begin(), earlier.end()}, reading);
    return true;
}

} // namespace Tessera::Geometry
