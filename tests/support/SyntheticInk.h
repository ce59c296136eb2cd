// SyntheticInk - pen strokes with known corners and tangent joints, drawn by a simulated hand.
//
// A plan of lines, arcs and turns is walked with a pen that slows at corners and in tight bends, rounds its
// corners, bows its lines, strays slowly and trembles, and is sampled evenly in time, on a grid where wanted.
// All from a seed.
//
// Hands   The sides of 4,400 drawn rectangles, triangles, carets and brackets deviate from their lines by a
//         root mean square of 0.0045 of the drawing's size (half of them by 0.003 to 0.0065), are bowed by
//         0.016 of their length, their corners are cut by 0.008 of the size, and the pen slows to a fifth of
//         its speed there. A quick hand is like these, within the quartiles; a careful one strays a third as
//         far and draws its lines without bow, as people do who draw for a CAD system and not for a game.
// Plans   Neighbours turn by 35 degrees or more: with less, two sides are told from one bowed side only by
//         chance (a bow of 0.03 turns by 14 degrees from end to end), and people do not agree on the count.
//         The ends of open plans stay apart, else they might be meant to close. An arc sweeps 70 degrees or
//         more, so that its sagitta is many times a bow.
//         Of a drawing of many sides a hand's lengths are shares of what it draws in one go, a few sides: who
//         draws a flight of forty stairs does not tremble more than who draws four of them.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <random>
#include <vector>

#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Testing {

using Geometry::InkSample;
using Geometry::InkStroke;
using Geometry::Point;

/// How a hand draws; lengths are shares of the drawing's size.
struct Hand {
    double rateHz = 120.0;
    double speed = 1.6;      ///< sizes per second along a straight
    double rounding = 0.012; ///< half the stretch over which a corner is rounded
    double tremor = 0.0015;  ///< one sigma, some ten a second
    double stray = 0.006;    ///< one sigma
    double strayHz = 1.0;
    double bow = 0.0;         ///< one sigma of the sagitta of a line over its length
    double cornerPace = 0.25; ///< of the speed along a straight, in a corner
    double pickUp = 6.0;      ///< of it, by which the pen gets faster over a size
    bool isEvenPush = false;  ///< the square of the speed grows with the distance, not the speed
    double paceWander = 0.0;  ///< one sigma of the logarithm of a speed that changes as the stray does
    double grid = 0.0;        ///< step of the digitiser; 0: none
};

/// A stretch of the plan: constant curvature, and a turn on the spot before it.
struct Stretch {
    double turn = 0.0; ///< radians; 0: the stretch goes on smoothly
    double length = 1.0;
    double curvature = 0.0;
};

struct Planned {
    InkStroke ink;
    std::vector<Point> corners;
    std::vector<Point> tangents; ///< smooth joints between stretches of different curvature
    double size = 1.0;           ///< of what the hand draws in one go
};

class InkPlan {
public:
    /// @param sidesAtOnce  the hand draws so many sides of mean length in one go; 0: the whole drawing.
    explicit InkPlan(std::vector<Stretch> stretches, bool isClosed = false, double sidesAtOnce = 0.0)
        : stretches_(std::move(stretches)), isClosed_(isClosed), sidesAtOnce_(sidesAtOnce) {
        Point at;
        double heading = 0.0;
        for (const Stretch& s : stretches_) {
            heading += s.turn;
            starts_.push_back({at, heading, length_});
            at = Along(starts_.back(), s, s.length);
            heading += s.length * s.curvature;
            length_ += s.length;
        }
        end_ = at;
    }

    /// Closed polygon through the given corners.
    static InkPlan Through(const std::vector<Point>& corners, bool isClosed, double sidesAtOnce = 0.0) {
        std::vector<Stretch> stretches;
        double heading = 0.0;
        const std::size_t sides = corners.size() - (isClosed ? 0 : 1);
        for (std::size_t i = 0; i < sides; ++i) {
            const Point side = corners[(i + 1) % corners.size()] - corners[i];
            const double direction = std::atan2(side.y, side.x);
            stretches.push_back(
                {std::remainder(direction - heading, 2.0 * std::numbers::pi), side.Length(), 0.0});
            heading = direction;
        }
        InkPlan plan(std::move(stretches), isClosed, sidesAtOnce);
        for (Start& s : plan.starts_)
            s.at += corners[0];
        plan.end_ += corners[0];
        return plan;
    }

    double Length() const { return length_; }
    int Sides() const { return static_cast<int>(stretches_.size()); }
    double Gap() const { return starts_[0].at.Distance(end_); }
    /// The smallest turn on the spot, radians; of closed plans the one at the start too.
    double LeastTurn() const {
        double least = std::numbers::pi;
        for (std::size_t i = 1; i < stretches_.size(); ++i)
            if (stretches_[i].turn != 0.0)
                least = std::min(least, std::fabs(stretches_[i].turn));
        const double closing = starts_[0].heading - starts_.back().heading;
        return isClosed_ ? std::min(least, std::fabs(std::remainder(closing, 2.0 * std::numbers::pi)))
                         : least;
    }

    Planned Draw(std::mt19937& rng, const Hand& hand) const {
        Planned out;
        out.size = SizeOfPlan();
        for (std::size_t i = isClosed_ ? 0 : 1; i < stretches_.size(); ++i) {
            if (stretches_[i].turn != 0.0 || i == 0)
                out.corners.push_back(starts_[i].at);
            else if (stretches_[i].curvature != stretches_[i - 1].curvature)
                out.tangents.push_back(starts_[i].at);
        }
        std::vector<double> bows;
        for (const Stretch& stretch : stretches_)
            bows.push_back(stretch.curvature == 0.0
                               ? stretch.length * std::normal_distribution<double>()(rng) * hand.bow
                               : 0.0);
        Noise stray(rng, hand.stray * out.size, hand.strayHz);
        Noise tremor(rng, hand.tremor * out.size, 10.0);
        std::optional<Noise> wander;
        if (hand.paceWander > 0.0)
            wander.emplace(rng, hand.paceWander, 2.0 * hand.strayHz);
        out.ink.hasTimes = true;
        const double step = 1.0 / hand.rateHz;
        double s = 0.0;
        for (double t = 0.0; s < length_; t += step) {
            Point p = Rounded(s, hand.rounding * out.size, bows) + stray.At(t) + tremor.At(t);
            if (hand.grid > 0.0)
                p = {std::round(p.x / hand.grid) * hand.grid, std::round(p.y / hand.grid) * hand.grid};
            out.ink.samples.push_back({p.x, p.y, 1000.0 * t});
            s += step * hand.speed * out.size * Pace(s, out.size, hand) *
                 (wander ? std::exp(wander->At(t).x) : 1.0);
        }
        return out;
    }

private:
    struct Start {
        Point at;
        double heading;
        double s;
    };

    // A few sines of random phase about the given frequency.
    class Noise {
    public:
        Noise(std::mt19937& rng, double sigma, double hertz) {
            std::uniform_real_distribution<double> phase(0.0, 2.0 * std::numbers::pi);
            std::uniform_real_distribution<double> spread(0.5, 1.5);
            for (Wave& w : waves_)
                w = {2.0 * std::numbers::pi * hertz * spread(rng), phase(rng), phase(rng), sigma * kShare};
        }
        Point At(double t) const {
            Point p;
            for (const Wave& w : waves_)
                p += w.size * Point(std::sin(w.rate * t + w.x), std::sin(w.rate * t + w.y));
            return p;
        }

    private:
        static constexpr double kShare = 0.8164965809; // three waves make one sigma
        struct Wave {
            double rate, x, y, size;
        } waves_[3];
    };

    static Point Along(const Start& from, const Stretch& stretch, double s) {
        const double half = 0.5 * s * stretch.curvature;
        const double chord = std::fabs(half) > 1e-9 ? s * std::sin(half) / half : s;
        return from.at + chord * Point(std::cos(from.heading + half), std::sin(from.heading + half));
    }

    std::size_t IndexAt(double s) const {
        std::size_t i = 0;
        while (i + 1 < starts_.size() && starts_[i + 1].s <= s)
            ++i;
        return i;
    }

    Point Exact(double s) const {
        const double at = std::clamp(s, 0.0, length_);
        const std::size_t i = IndexAt(at);
        return Along(starts_[i], stretches_[i], at - starts_[i].s);
    }

    // The bow leaves the ends' directions as they are: a planned tangent stays one.
    Point Bowed(double s, const std::vector<double>& bows) const {
        const double at = std::clamp(s, 0.0, length_);
        const std::size_t i = IndexAt(at);
        const Start& from = starts_[i];
        const double side = std::sin(std::numbers::pi * (at - from.s) / stretches_[i].length);
        return Exact(s) + bows[i] * side * side * Point(-std::sin(from.heading), std::cos(from.heading));
    }

    Point Rounded(double s, double reach, const std::vector<double>& bows) const {
        Point sum;
        for (int i = -4; i <= 4; ++i)
            sum += Bowed(s + 0.25 * i * reach, bows);
        return sum / 9.0;
    }

    // Slow near corners, and in bends by the power law of hands (speed as the cube root of the radius).
    double Pace(double s, double size, const Hand& hand) const {
        const std::size_t i = IndexAt(s);
        double away = length_ - s;
        for (std::size_t k = 0; k < starts_.size(); ++k)
            if (stretches_[k].turn != 0.0 || k == 0)
                away = std::min(away, std::fabs(s - starts_[k].s));
        const double gained = hand.pickUp * std::max(0.0, away) / size;
        const double pace =
            hand.isEvenPush ? std::hypot(hand.cornerPace, std::sqrt(gained)) : hand.cornerPace + gained;
        return std::min(pace, 1.0 / std::cbrt(1.0 + std::fabs(stretches_[i].curvature) * size));
    }

    double SizeOfPlan() const {
        if (sidesAtOnce_ > 0.0)
            return sidesAtOnce_ * length_ / static_cast<double>(stretches_.size());
        Point low(1e300, 1e300);
        Point high(-1e300, -1e300);
        for (int i = 0; i <= 200; ++i) {
            const Point p = Exact(length_ * i / 200.0);
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
        return (high - low).Length();
    }

    std::vector<Stretch> stretches_;
    bool isClosed_;
    double sidesAtOnce_;
    std::vector<Start> starts_;
    double length_ = 0.0;
    Point end_;
};

/// Random plans. Sides differ by up to three times; neighbours turn by 35 to 145 degrees.
class RandomPlans {
public:
    explicit RandomPlans(unsigned seed) : rng_(seed) {}
    std::mt19937& Rng() { return rng_; }

    double Uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng_); }
    int Count(int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng_); }
    double Sign() { return Uniform(0.0, 1.0) < 0.5 ? -1.0 : 1.0; }

    InkPlan Polyline() {
        for (;;) {
            std::vector<Stretch> stretches{{Heading(), Uniform(50.0, 150.0), 0.0}};
            for (int n = Count(1, 4); n > 0; --n)
                stretches.push_back({Turn(), Uniform(50.0, 150.0), 0.0});
            InkPlan plan(std::move(stretches));
            if (StaysOpen(plan))
                return plan;
        }
    }

    InkPlan Polygon() {
        for (;;) {
            const int n = Count(3, 7);
            std::vector<Point> corners;
            const double phase = Heading();
            for (int i = 0; i < n; ++i) {
                const double a = phase + 2.0 * std::numbers::pi * (i + Uniform(-0.2, 0.2)) / n;
                corners.push_back(Uniform(85.0, 115.0) * Point(std::cos(a), std::sin(a)));
            }
            InkPlan plan = InkPlan::Through(corners, true);
            if (plan.LeastTurn() >= kLeastTurn)
                return plan;
        }
    }

    /// Of 3 to 12 equal sides; from a corner or from within a side, where the pen stops short or runs on by
    /// up to a quarter of it.
    InkPlan Regular() { return RegularOf(Count(3, 12)); }
    InkPlan RegularOf(int sides) {
        const double phase = Heading();
        const double turn = Sign() * 2.0 * std::numbers::pi / sides;
        std::vector<Point> corners;
        for (int i = 0; i < sides; ++i)
            corners.push_back(100.0 * Point(std::cos(phase + i * turn), std::sin(phase + i * turn)));
        if (Uniform(0.0, 1.0) < 0.3)
            return InkPlan::Through(corners, true);
        const double start = Uniform(0.0, 1.0);
        const double end = std::clamp(start + Uniform(-0.25, 0.25), 0.02, 0.98);
        const Point side = corners[1] - corners[0];
        std::rotate(corners.begin(), corners.begin() + 1, corners.end());
        const Point before = corners.back();
        corners.insert(corners.begin(), before + start * side);
        corners.push_back(before + end * side);
        return InkPlan::Through(corners, false);
    }

    /// Lines and arcs in turn, joined by corners or tangentially.
    InkPlan Mixed() {
        for (;;) {
            InkPlan plan = LinesAndArcs();
            if (StaysOpen(plan))
                return plan;
        }
    }

    /// Two parallel lines of 0.6 to 6 radii, joined by half circles; either way round, from any point.
    InkPlan Slot() { return SlotOf(Uniform(0.6, 6.0)); }
    InkPlan SlotOf(double lengthOverRadius) {
        const double radius = Uniform(20.0, 60.0);
        const Stretch line{0.0, lengthOverRadius * radius, 0.0};
        const Stretch arc{0.0, std::numbers::pi * radius, Sign() / radius};
        const bool startsInLine = Uniform(0.0, line.length + arc.length) < line.length;
        const Stretch& first = startsInLine ? line : arc;
        const Stretch& second = startsInLine ? arc : line;
        std::vector<Stretch> stretches{first, second, first, second, first};
        stretches.front().turn = Heading();
        stretches.front().length *= Uniform(0.0, 1.0);
        stretches.back().length -= stretches.front().length;
        return InkPlan(std::move(stretches));
    }

    /// A rectangle up to three times as long as it is wide; its corners are rounded by 15 to 40 % of that.
    /// Either way round, from any point.
    InkPlan RoundedBox() {
        const double width = Uniform(80.0, 120.0);
        const double radius = width * Uniform(0.15, 0.4);
        const Stretch corner{0.0, kRightAngle * radius, Sign() / radius};
        const Stretch across{0.0, width - 2.0 * radius, 0.0};
        const Stretch along{0.0, across.length + width * Uniform(0.0, 2.0), 0.0};
        return FromAnywhere({along, corner, across, corner});
    }

    /// Curvature that changes little by little: no corner anywhere.
    InkPlan Smooth() {
        std::vector<Stretch> stretches;
        const double least = Uniform(0.002, 0.006);
        const double swing = Uniform(0.004, 0.012);
        const double waves = Uniform(0.5, 1.5);
        const double phase = Heading();
        constexpr int kSteps = 120;
        for (int i = 0; i < kSteps; ++i)
            stretches.push_back(
                {i == 0 ? Heading() : 0.0, 300.0 / kSteps,
                 least + swing * std::sin(phase + 2.0 * std::numbers::pi * waves * i / kSteps)});
        return InkPlan(std::move(stretches));
    }

    /// Of 13 to 41 sides, which keep apart: nobody draws on over a muddle.
    InkPlan LongPolyline() {
        for (;;) {
            std::vector<Stretch> stretches;
            std::vector<Point> trail{{}};
            const int sides = Count(13, 41);
            double heading = 0.0;
            for (int tries = 0; static_cast<int>(stretches.size()) < sides && tries < 20 * sides; ++tries) {
                const Stretch side{stretches.empty() ? Heading() : Turn(), Uniform(50.0, 150.0), 0.0};
                if (!KeepsApart(heading + side.turn, side.length, trail))
                    continue;
                heading += side.turn;
                stretches.push_back(side);
            }
            InkPlan plan(std::move(stretches), false, kSidesAtOnce);
            if (plan.Sides() == sides && plan.Gap() > kLongGap)
                return plan;
        }
    }

    /// 13 to 41 sides along two directions: stairs, or the skyline of a town.
    InkPlan Staircase() {
        std::vector<Stretch> stretches;
        const int sides = Count(13, 41);
        const bool isTown = Uniform(0.0, 1.0) < 0.5;
        const double spread = Uniform(0.0, 0.5); // of the sides' lengths
        const double sense = Sign();
        double up = 0.0; // or down, from one level to the next
        for (int i = 0; i < sides; ++i) {
            if (i % 2 == 1)
                up = isTown ? Sign() : 1.0;
            const double turn = i == 0 ? Heading() : (i % 2 == 1 ? up : -up) * sense * kRightAngle;
            stretches.push_back({turn, 100.0 * Uniform(1.0 - spread, 1.0 + spread), 0.0});
        }
        return InkPlan(std::move(stretches), false, kSidesAtOnce);
    }

    /// Closed outline of a gear of 4 to 14 teeth.
    InkPlan Gear() {
        const int teeth = Count(4, 14);
        const double root = 100.0 * teeth / std::numbers::pi;
        const double tip = root + Uniform(70.0, 120.0);
        const double phase = Heading();
        std::vector<Point> corners;
        for (int i = 0; i < 2 * teeth; ++i) {
            const double a = phase + std::numbers::pi * (i + Uniform(-0.1, 0.1)) / teeth;
            const Point flank(std::cos(a), std::sin(a));
            corners.push_back((i % 2 == 0 ? root : tip) * flank);
            corners.push_back((i % 2 == 0 ? tip : root) * flank);
        }
        return InkPlan::Through(corners, true, kSidesAtOnce);
    }

    Hand CarefulHand() {
        Hand hand;
        const double rates[] = {60.0, 100.0, 133.0, 240.0};
        hand.rateHz = rates[Count(0, 3)];
        hand.speed = Uniform(0.8, 2.0);
        hand.rounding = Uniform(0.004, 0.02);
        hand.tremor = Uniform(0.0005, 0.002);
        hand.stray = Uniform(0.002, 0.008);
        hand.grid = Count(0, 1) == 0 ? 0.0 : Uniform(0.3, 1.0);
        return hand;
    }

    /// A careful hand whose pen pushes off from a corner with even force and keeps no even pace: none of the
    /// interpretation's constants was measured on it.
    Hand BriskHand() {
        Hand hand = CarefulHand();
        hand.cornerPace = Uniform(0.05, 0.25);
        hand.pickUp = Uniform(3.0, 8.0);
        hand.isEvenPush = true;
        hand.paceWander = 0.15;
        return hand;
    }

    Hand AnyHand() { return Count(0, 1) == 0 ? CarefulHand() : QuickHand(); }

    Hand QuickHand() {
        Hand hand = CarefulHand();
        hand.speed = Uniform(1.0, 3.0);
        hand.rounding = Uniform(0.01, 0.03);
        hand.stray = Uniform(0.003, 0.010);
        hand.strayHz = 2.5;
        hand.bow = Uniform(0.01, 0.03);
        return hand;
    }

private:
    static constexpr double kLeastTurn = 35.0 * std::numbers::pi / 180.0;
    static constexpr double kMostTurn = 145.0 * std::numbers::pi / 180.0;

    static constexpr double kRightAngle = 0.5 * std::numbers::pi;
    static constexpr double kSidesAtOnce = 2.5;
    static constexpr double kLongGap = 150.0; // between the ends of what is not meant to close

    // Whether a further side comes no nearer than a fifth of a side to those before its neighbour, of which
    // the trail holds ten points a side; it joins the trail then.
    static bool KeepsApart(double heading, double length, std::vector<Point>& trail) {
        constexpr int kPoints = 10;
        const Point from = trail.back();
        std::vector<Point> side;
        for (int i = 1; i <= kPoints; ++i)
            side.push_back(from + (length * i / kPoints) * Point(std::cos(heading), std::sin(heading)));
        for (std::size_t i = 0; i + kPoints + 1 < trail.size(); ++i)
            for (const Point& p : side)
                if (p.Distance(trail[i]) < 20.0)
                    return false;
        trail.insert(trail.end(), side.begin(), side.end());
        return true;
    }

    // Half of a closed outline walked twice, from any of its points.
    InkPlan FromAnywhere(const std::vector<Stretch>& half) {
        double length = 0.0;
        for (const Stretch& stretch : half)
            length += stretch.length;
        std::vector<Stretch> stretches = half;
        stretches.insert(stretches.end(), half.begin(), half.end());
        double from = Uniform(0.0, length);
        while (from > stretches.front().length) {
            from -= stretches.front().length;
            std::rotate(stretches.begin(), stretches.begin() + 1, stretches.end());
        }
        stretches.push_back(stretches.front());
        stretches.back().length = from;
        stretches.front().length -= from;
        stretches.front().turn = Heading();
        return InkPlan(std::move(stretches));
    }

    static bool StaysOpen(const InkPlan& plan) { return plan.Gap() > 0.25 * plan.Length(); }

    InkPlan LinesAndArcs() {
        std::vector<Stretch> stretches;
        bool isArc = Uniform(0.0, 1.0) < 0.5;
        for (int n = Count(2, 4), i = 0; i < n; ++i, isArc = !isArc) {
            const bool smooth = Uniform(0.0, 1.0) < 0.5;
            const double turn = i == 0 ? Heading() : smooth ? 0.0 : Turn();
            const double radius = Uniform(35.0, 80.0);
            const double sweep = Uniform(70.0, 170.0) * std::numbers::pi / 180.0;
            stretches.push_back(isArc ? Stretch{turn, radius * sweep, Sign() / radius}
                                      : Stretch{turn, Uniform(60.0, 150.0), 0.0});
        }
        return InkPlan(std::move(stretches));
    }

    double Heading() { return Uniform(-std::numbers::pi, std::numbers::pi); }
    double Turn() { return Sign() * Uniform(kLeastTurn, kMostTurn); }

    std::mt19937 rng_;
};

} // namespace Tessera::Testing
