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
/// How far a leg may stray from its chord, in chords: an arc of a right angle does. People's scratches bear
/// 0.15 to 0.35; of 3600 long poly-lines drawn with care 3 are scribbles at 0.2, 48 at 0.35.
constexpr double kWidestLeg = 0.2;
/// Up to here, in degrees, going round a round shape draws it; further on it blackens it.
constexpr double kDrawnTurnDeg = 2.5 * 360.0;
/// So many steps of the walk hold a rounded corner, if the pen turns by more than the angle there.
constexpr std::size_t kCornerSteps = 5;
constexpr double kCornerDeg = 45.0;
/// Of the angle from which the pen goes round and round, off the corners: 0.28 or more in the loops of
/// people, less than 0.25 in 98 of 100 poly-lines that go round.
constexpr double kSmoothShare = 0.25;

/// Steps of the walk: nearer than this the pen goes over its own ink, if that is farther off along the way.
constexpr double kOverInk = 2.5;
constexpr std::size_t kAwayAlong = 10;
/// Of the ink that goes round and round: so much of it lies over earlier ink.
constexpr double kCoveredShare = 0.1;
/// Points that stand for all that lie in a cell as wide as that: more would only cost time.
constexpr std::size_t kMostInCell = 32;
/// Legs this far apart, in steps, and about as far just behind the turn, lie beside each other.
constexpr double kLeastGap = 4.0;
constexpr double kSameGap = 0.8;
/// Of half a leg: farther behind the turn legs that open are nearly as far apart as in their middles.
constexpr double kNearTurn = 0.7;

/// Of the turns of a scratch: some people's have a few blunt ones, a meander has nearly nothing else.
constexpr double kMostSideBySide = 0.6;

double DiagonalOf(std::span<const Point> ink) {
    const auto [left, right] =
        std::minmax_element(ink.begin(), ink.end(), [](const Point& a, const Point& b) { return a.x < b.x; });
    const auto [low, high] =
        std::minmax_element(ink.begin(), ink.end(), [](const Point& a, const Point& b) { return a.y < b.y; });
    return std::hypot(right->x - left->x, high->y - low->y);
}

// The part of the way from a along d, in (0, 1], at which it first gets as far as `step` from `last`; above 1
// when it does not.
double WayOut(const Point& last, const Point& a, const Vector& d, double step) {
    const Vector off(last, a);
    const double square = d.Dot(d);
    const double along = off.Dot(d);
    const double inside = step * step - off.Dot(off);
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
        const Point& from = ink[i - 1];
        const Vector along(from, ink[i]);
        double t = WayOut(walk.back(), from, along, step);
        if (t > 1.0) {
            continue;
        }
        const double stride = step / along.Length(); // the steps that follow lie on the segment, too
        for (; t <= 1.0 && walk.size() < kMostSteps; t += stride) {
            walk.emplace_back(from.x + t * along.x, from.y + t * along.y);
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

struct Leg {
    Vector chord;
    bool isStraight;
};

Leg LegOf(std::span<const StrokePoint> points) {
    const Vector chord(points.front(), points.back());
    double widest = 0.0;
    for (const StrokePoint& p : points) {
        widest = std::max(widest, std::fabs(chord.Cross(Vector(points.front(), p))));
    }
    return {chord, widest <= kWidestLeg * chord.Dot(chord)};
}

// From the first sample over the cusps to the last.
std::vector<Leg> LegsOf(std::span<const StrokePoint> points, const std::vector<int>& cusps) {
    std::vector<Leg> legs;
    legs.reserve(cusps.size() + 1);
    std::size_t from = 0;
    for (const int cusp : cusps) {
        const auto to = static_cast<std::size_t>(cusp);
        legs.push_back(LegOf(points.subspan(from, to - from + 1)));
        from = to;
    }
    legs.push_back(LegOf(points.subspan(from)));
    return legs;
}

double CosBetween(const Vector& a, const Vector& b) {
    const double lengths = a.Length() * b.Length();
    return lengths > 0.0 ? a.Dot(b) / lengths : 0.0;
}

// How close a leg lies to the one before it: 1 where it runs back along that, 0 where a drawing opens or
// where one of them is bent.
double Closeness(const Leg& before, const Leg& leg) {
    if (!before.isStraight || !leg.isStraight) {
        return 0.0;
    }
    const double openDeg =
        std::acos(std::clamp(-CosBetween(before.chord, leg.chord), -1.0, 1.0)) * kDegreesPerRadian;
    return std::max(0.0, 1.0 - openDeg / kWideOpenDeg);
}

// Whether the legs before and after a turn run side by side with a gap, as in a meander: just behind the turn
// they are as far apart as in their middles. Who scratches turns at a tip.
bool RunSideBySide(std::span<const StrokePoint> points, int before, int turn, int after) {
    const int half = std::min(turn - before, after - turn) / 2;
    const auto widthAt = [&](int steps) {
        return Vector(points[turn - steps], points[turn + steps]).Length();
    };
    const double gap = widthAt(half);
    const int behind = static_cast<int>(std::lround(gap));
    return gap >= kLeastGap && behind < kNearTurn * half && widthAt(behind) > kSameGap * gap;
}

// As many reversals in succession as the preferences ask for, every second leg the same way; and all of the
// stroke's reversals, each counted by how close its legs lie, as many again. Enough of them are tips.
bool RunsForthAndBack(const std::vector<StrokePoint>& points, const ScribbleRecord& record) {
    const std::vector<Leg> legs = LegsOf(points, record.cusps);
    std::vector<int> ends{0};
    ends.insert(ends.end(), record.cusps.begin(), record.cusps.end());
    ends.push_back(static_cast<int>(points.size()) - 1);
    const double reversalCos = std::cos(record.cuspAngleDeg / kDegreesPerRadian);
    const auto isLong = [](const Leg& leg) { return leg.chord.Length() >= kShortestLeg * kQuestionSize; };
    int run = 0;
    int longest = 0;
    double covered = 0.0;
    int reversals = 0;
    int sideBySide = 0;
    for (std::size_t i = 1; i < legs.size(); ++i) {
        if (!isLong(legs[i - 1]) || !isLong(legs[i]) ||
            CosBetween(legs[i - 1].chord, legs[i].chord) >= reversalCos) {
            run = 0;
            continue;
        }
        run = run > 0 && CosBetween(legs[i - 2].chord, legs[i].chord) < kSameWayCos ? 1 : run + 1;
        longest = std::max(longest, run);
        covered += Closeness(legs[i - 1], legs[i]);
        ++reversals;
        sideBySide += RunSideBySide(points, ends[i - 1], ends[i], ends[i + 1]) ? 1 : 0;
    }
    return longest >= record.minNumCusps && covered >= record.minNumCusps &&
           sideBySide <= kMostSideBySide * reversals;
}

// Direction of each step against the first, turns summed up; radians.
std::vector<double> HeadingsOf(const std::vector<StrokePoint>& points) {
    std::vector<double> headings;
    headings.reserve(points.size());
    headings.push_back(0.0);
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        headings.push_back(headings.back() +
                           SignedAngle(points[i] - points[i - 1], points[i + 1] - points[i]));
    }
    return headings;
}

// The turning in all but for the stretches of a few steps that turn like a corner.
double SmoothTurnDeg(const std::vector<StrokePoint>& points) {
    const std::vector<double> headings = HeadingsOf(points);
    double corners = 0.0;
    std::size_t lastCorner = 0;
    for (std::size_t i = kCornerSteps; i < headings.size(); ++i) {
        const std::size_t from = i - kCornerSteps;
        if (std::fabs(headings[i] - headings[from]) * kDegreesPerRadian > kCornerDeg) {
            corners += headings[i] - headings[std::max(from, lastCorner)];
            lastCorner = i;
        }
    }
    return std::fabs(headings.back() - corners) * kDegreesPerRadian;
}

// The part of the ink that lies over earlier ink. Cells as wide as the reach hold the points gone by, oldest
// first: where the pen goes over ink again and again one of the first is near.
double CoveredShare(const std::vector<StrokePoint>& points) {
    double left = points[0].x;
    double low = points[0].y;
    for (const StrokePoint& p : points) {
        left = std::min(left, p.x);
        low = std::min(low, p.y);
    }
    constexpr int kCells = 43; // across the question's size, and one more all round
    static_assert(kCells * kOverInk >= kQuestionSize + 3 * kOverInk);
    std::vector<std::vector<std::size_t>> cells(std::size_t{kCells} * kCells);
    const auto columnOf = [&](const StrokePoint& p) { return static_cast<int>((p.x - left) / kOverInk) + 1; };
    const auto rowOf = [&](const StrokePoint& p) { return static_cast<int>((p.y - low) / kOverInk) + 1; };
    std::size_t covered = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i >= kAwayAlong) {
            const StrokePoint& away = points[i - kAwayAlong];
            std::vector<std::size_t>& cell = cells[rowOf(away) * kCells + columnOf(away)];
            if (cell.size() < kMostInCell)
                cell.push_back(i - kAwayAlong);
        }
        bool isOver = false;
        for (int cell = 0; cell < 9 && !isOver; ++cell) {
            const int at = (rowOf(points[i]) + cell / 3 - 1) * kCells + columnOf(points[i]) + cell % 3 - 1;
            const auto& near = cells[at];
            isOver = std::any_of(near.begin(), near.end(), [&](std::size_t k) {
                return Vector(points[k], points[i]).Length() <= kOverInk;
            });
        }
        covered += isOver ? 1 : 0;
    }
    return static_cast<double>(covered) / static_cast<double>(points.size());
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

bool BlackensRoundAndRound(Stroke& stroke, const ScribbleRecord& record,
                           const SketchRecognizerPreferences& preferences) {
    const double turnDeg = std::fabs(stroke.ComputeCummulativeAngle());
    if (!(turnDeg > record.minRotationAngleDeg) ||
        !(SmoothTurnDeg(stroke.GetPoints()) > kSmoothShare * record.minRotationAngleDeg) ||
        !(CoveredShare(stroke.GetPoints()) > kCoveredShare)) {
        return false;
    }
    return turnDeg > kDrawnTurnDeg || !IsOneRoundShape(stroke, preferences);
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
    return (record.isZigzag && RunsForthAndBack(stroke->GetPoints(), record)) ||
           BlackensRoundAndRound(*stroke, record, preferences);
}

} // namespace Tessera::Geometry
