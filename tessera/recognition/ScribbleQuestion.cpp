#include "tessera/recognition/ScribbleQuestion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Vector.h"
#include "tessera/recognition/RecognizedGeometry.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/internal/ScribbleRecord.h"
#include "tessera/strokes/Stroke.h"

// The walk with an opened divider (Richardson 1961) passes over jitter below its opening, which steps evenly
// spaced along the ink would count as way.
namespace Tessera::Geometry {

namespace {

constexpr double kStepsPerDiagonal = 100.0;
/// Ink longer than two hundred diagonals is judged by its beginning, which bounds time and memory.
constexpr std::size_t kMostSteps = 20000;
/// Of a simple shape, with some to spare.
constexpr std::size_t kUsualSteps = 400;
/// The box's diagonal in the frame in which the question is asked: the size at which the recogniser's own
/// tolerances read round shapes.
constexpr double kQuestionSize = 100.0;
constexpr double kDegreesPerRadian = 57.29577951308232;
/// Legs two apart of a scratch differ by less, those of a star (72 degrees) and of an arrow by more.
constexpr double kSameWayCos = 0.7071067811865476; // 45 degrees
/// Legs that opened so wide would cover nothing: half of that, and twice as many are needed.
constexpr double kWideOpenDeg = 100.0;
/// Shorter legs, parts of the box's diagonal, are hooks of the pen and strokes drawn back along themselves.
constexpr double kShortestLeg = 0.04;
/// Up to here, in degrees, going round a round shape draws it; further on it blackens it.
constexpr double kDrawnTurnDeg = 2.5 * 360.0;

double DiagonalOf(std::span<const Point> ink) {
    const auto [left, right] =
        std::minmax_element(ink.begin(), ink.end(), [](const Point& a, const Point& b) { return a.x < b.x; });
    const auto [low, high] =
        std::minmax_element(ink.begin(), ink.end(), [](const Point& a, const Point& b) { return a.y < b.y; });
    return std::hypot(right->x - left->x, high->y - low->y);
}

// The part of a->b, in (0, 1], at which it first gets as far as `step` from `last`; above 1 when it does not.
double WayOut(const Point& last, const Point& a, const Point& b, double step) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double fx = a.x - last.x;
    const double fy = a.y - last.y;
    const double square = dx * dx + dy * dy;
    const double along = fx * dx + fy * dy;
    const double inside = step * step - fx * fx - fy * fy;
    if (!(square > 0.0)) {
        return 2.0;
    }
    return (-along + std::sqrt(std::max(along * along + square * inside, 0.0))) / square;
}

std::vector<Point> DividerWalk(std::span<const Point> ink, double step) {
    std::vector<Point> walk;
    walk.reserve(kUsualSteps);
    walk.push_back(ink[0]);
    for (std::size_t i = 1; i < ink.size() && walk.size() < kMostSteps; ++i) {
        Point from = ink[i - 1];
        for (double t = WayOut(walk.back(), from, ink[i], step); t <= 1.0 && walk.size() < kMostSteps;
             t = WayOut(walk.back(), from, ink[i], step)) {
            from = Point(from.x + t * (ink[i].x - from.x), from.y + t * (ink[i].y - from.y));
            walk.push_back(from);
        }
    }
    if (ink.back().x != walk.back().x || ink.back().y != walk.back().y) {
        walk.push_back(ink.back());
    }
    return walk;
}

// The walk in coordinates relative to the first point: far from the origin a step may be lost to rounding.
std::vector<Point> WalkOf(std::span<const Point> ink, double diagonal) {
    std::vector<Point> relative;
    relative.reserve(ink.size());
    for (const Point& p : ink) {
        relative.emplace_back(p.x - ink[0].x, p.y - ink[0].y);
    }
    return DividerWalk(relative, diagonal / kStepsPerDiagonal);
}

std::unique_ptr<Stroke> StrokeOf(std::span<const Point> relative, const Point& origin, double scale) {
    std::vector<StrokePoint> points;
    points.reserve(relative.size());
    for (const Point& p : relative) {
        points.emplace_back(origin.x + p.x * scale, origin.y + p.y * scale, 0.0);
    }
    return std::make_unique<Stroke>(std::move(points));
}

// From the first sample over the cusps to the last.
std::vector<Vector> LegsOf(const Stroke& stroke, const std::vector<int>& cusps) {
    const std::vector<StrokePoint>& points = stroke.GetPoints();
    std::vector<Vector> legs;
    int from = 0;
    for (const int cusp : cusps) {
        legs.emplace_back(points[from], points[cusp]);
        from = cusp;
    }
    legs.emplace_back(points[from], points.back());
    return legs;
}

double CosBetween(const Vector& a, const Vector& b) {
    const double lengths = a.Length() * b.Length();
    return lengths > 0.0 ? a.Dot(b) / lengths : 0.0;
}

// How close a leg lies to the one before it: 1 where it runs back along that, 0 where a drawing opens.
double Closeness(const Vector& before, const Vector& leg) {
    const double openDeg = std::acos(std::clamp(-CosBetween(before, leg), -1.0, 1.0)) * kDegreesPerRadian;
    return std::max(0.0, 1.0 - openDeg / kWideOpenDeg);
}

// As many reversals in succession as the preferences ask for, every second leg the same way; and all of the
// stroke's reversals, each counted by how close its legs lie, as many again.
bool RunsForthAndBack(const std::vector<Vector>& legs, const ScribbleRecord& record) {
    const double reversalCos = std::cos(record.cuspAngleDeg / kDegreesPerRadian);
    const auto isLong = [](const Vector& leg) { return leg.Length() >= kShortestLeg * kQuestionSize; };
    int run = 0;
    int longest = 0;
    double covered = 0.0;
    for (std::size_t i = 1; i < legs.size(); ++i) {
        if (!isLong(legs[i - 1]) || !isLong(legs[i]) || CosBetween(legs[i - 1], legs[i]) >= reversalCos) {
            run = 0;
            continue;
        }
        run = run > 0 && CosBetween(legs[i - 2], legs[i]) < kSameWayCos ? 1 : run + 1;
        longest = std::max(longest, run);
        covered += Closeness(legs[i - 1], legs[i]);
    }
    return longest >= record.minNumCusps && covered >= record.minNumCusps;
}

double TurnAtCornersDeg(const std::vector<Vector>& legs) {
    double turn = 0.0;
    for (std::size_t i = 1; i < legs.size(); ++i) {
        turn += legs[i - 1].AngleBetween(legs[i]);
    }
    return turn * kDegreesPerRadian;
}

bool IsOneRoundShape(Stroke& stroke, const SketchRecognizerPreferences& preferences) {
    SketchRecognizer recognizer;
    *recognizer.AskPreferences() = preferences;
    recognizer.RecognizePeriodic(stroke);
    const bool isRound = !recognizer.GetResults().empty();
    for (RecognizedGeometry* result : recognizer.GetResults()) {
        const std::unique_ptr<Curve> curve(&result->GetResult());
        delete result;
    }
    return isRound;
}

bool BlackensRoundAndRound(Stroke& stroke, const std::vector<Vector>& legs, const ScribbleRecord& record,
                           const SketchRecognizerPreferences& preferences) {
    const double turnDeg = stroke.ComputeCummulativeAngle();
    if (!(std::fabs(turnDeg - TurnAtCornersDeg(legs)) > record.minRotationAngleDeg)) {
        return false;
    }
    return std::fabs(turnDeg) > kDrawnTurnDeg || !IsOneRoundShape(stroke, preferences);
}

} // namespace

std::unique_ptr<Stroke> WithoutTremor(std::span<const Point> ink) {
    const double diagonal = ink.size() < 2 ? 0.0 : DiagonalOf(ink);
    return diagonal > 0.0 ? StrokeOf(WalkOf(ink, diagonal), ink[0], 1.0) : StrokeOf(ink, Point(), 1.0);
}

bool IsScribbleInk(std::span<const Point> ink, const SketchRecognizerPreferences& preferences,
                   int* cuspCount) {
    if (cuspCount != nullptr) {
        *cuspCount = 0;
    }
    const double diagonal = ink.size() < 2 ? 0.0 : DiagonalOf(ink);
    const double scale = kQuestionSize / diagonal;
    if (!(diagonal > 0.0) || !std::isfinite(diagonal) || !std::isfinite(scale)) {
        return false;
    }
    const std::unique_ptr<Stroke> stroke = StrokeOf(WalkOf(ink, diagonal), Point(), scale);
    ScribbleRecord record(preferences);
    record.segmentThreshold = std::numeric_limits<double>::infinity(); // the steps are even already
    const bool hasShape = record.Test(*stroke);
    if (cuspCount != nullptr) {
        *cuspCount = static_cast<int>(record.cusps.size());
    }
    if (!hasShape || !preferences.GetDoScribble()) {
        return false;
    }
    const std::vector<Vector> legs = LegsOf(*stroke, record.cusps);
    return (record.isZigzag && RunsForthAndBack(legs, record)) ||
           BlackensRoundAndRound(*stroke, legs, record, preferences);
}

} // namespace Tessera::Geometry
