// Sketches with known constraints: exact shapes of the kinds that people draw, and the same shapes as a hand
// would have drawn them, with directions off by a degree and joints that gape.
#pragma once

#include "tessera/recognition/ConstraintInference.h"
#include "tests/support/SampleCurves.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

using Geometry::InferredConstraint;
using Geometry::SketchElement;
using enum Geometry::ConstraintKind_e;

using CurveList = std::vector<CurvePtr>;

struct SketchNoise {
    double directionDeg = 1.0; ///< standard deviation of each curve's direction
    double shift = 0.9;        ///< each curve is moved by up to this much
    double overrun = 0.9;      ///< each end runs over or falls short by up to this much
    double radius = 0.015;     ///< relative standard deviation of radii
};

struct GeneratedSketch {
    const char* name = "";
    CurveList exact, drawn;
    std::vector<InferredConstraint> intended;

    std::vector<const Curve*> Drawn() const {
        std::vector<const Curve*> curves;
        for (const CurvePtr& c : drawn)
            curves.push_back(c.get());
        return curves;
    }
};

inline InferredConstraint MakeConstraint(Geometry::ConstraintKind_e kind,
                                         std::initializer_list<SketchElement> elements, int side = 0) {
    InferredConstraint c;
    c.kind = kind;
    c.elementCount = static_cast<int>(elements.size());
    std::copy(elements.begin(), elements.end(), c.elements.begin());
    c.side = side;
    return c;
}

/// Largest distance of a joint in the drawing; all stay below it. Shapes measure 50 to 150.
inline constexpr double kSketchZone = 4.0;

/// Builds one sketch; every member draws from the same generator of random numbers.
class SketchMaker {
public:
    explicit SketchMaker(std::mt19937& rng) : rng_(rng) {}

    /// The kinds of shapes, in turn: `family` modulo kFamilyCount.
    static constexpr int kFamilyCount = 12;
    /// A drawing of one shape, noise included.
    GeneratedSketch Make(int family, const SketchNoise& noise) { return MakeDrawing({family}, noise); }
    /// A drawing of several shapes side by side.
    GeneratedSketch MakeDrawing(const std::vector<int>& families, const SketchNoise& noise) {
        sketch_ = GeneratedSketch();
        turn_ = Uniform(0.15, std::numbers::pi / 2 - 0.15);
        for (std::size_t i = 0; i < families.size(); ++i)
            AddShape(families[i], 400.0 * static_cast<double>(i % 8), 400.0 * static_cast<double>(i / 8));
        do {
            sketch_.drawn.clear();
            for (const CurvePtr& c : sketch_.exact)
                sketch_.drawn.push_back(Shake(*c, noise));
        } while (!JointsHold());
        return std::move(sketch_);
    }

    double Uniform(double low, double high) { return std::uniform_real_distribution<>(low, high)(rng_); }
    double Normal(double sigma) { return std::normal_distribution<>(0.0, sigma)(rng_); }
    int Choose(int low, int high) { return std::uniform_int_distribution<>(low, high)(rng_); }

private:
    static constexpr auto kStart = Geometry::SnapPointType_Start;
    static constexpr auto kEnd = Geometry::SnapPointType_End;
    static constexpr auto kWhole = Geometry::SnapPointType_None;
    static constexpr auto kCentre = Geometry::SnapPointType_Center;

    /// Another family takes over when this one has no room left between the directions and radii that are
    /// there.
    void AddShape(int family, double x, double y) {
        shape_ = sketch_.exact.size();
        const std::size_t constraints = sketch_.intended.size();
        int tries = 0;
        do {
            sketch_.exact.resize(shape_);
            sketch_.intended.resize(constraints);
            frame_ = {x + Uniform(-50, 50), y + Uniform(-50, 50), 0.0};
            Draw((family + tries++ / 200) % kFamilyCount);
        } while (IsAmbiguous());
    }

    // --- Exact curves, in the shape's frame
    Point Place(double x, double y) const {
        const double c = std::cos(frame_[2]), s = std::sin(frame_[2]);
        return {frame_[0] + c * x - s * y, frame_[1] + s * x + c * y};
    }
    int Keep(CurvePtr curve) {
        sketch_.exact.push_back(std::move(curve));
        return static_cast<int>(sketch_.exact.size()) - 1;
    }
    int AddLine(double x0, double y0, double x1, double y1) {
        return Keep(std::make_unique<Geometry::Line>(Place(x0, y0), Place(x1, y1)));
    }
    int AddArc(double x, double y, double r, double from, double to) {
        return Keep(MakeArc(Place(x, y), r, from + frame_[2], to + frame_[2]));
    }
    int AddCircle(double x, double y, double r) {
        return Keep(std::make_unique<Geometry::Arc>(Place(x, y), r));
    }
    void Intend(Geometry::ConstraintKind_e kind, std::initializer_list<SketchElement> elements,
                int side = 0) {
        sketch_.intended.push_back(MakeConstraint(kind, elements, side));
    }
    void Join(int a, Geometry::SnapPointType_e endA, int b, Geometry::SnapPointType_e endB) {
        Intend(ConstraintKind_Coincident, {{a, endA}, {b, endB}});
    }
    /// Joined and smooth.
    void Flow(int a, Geometry::SnapPointType_e endA, int b, Geometry::SnapPointType_e endB) {
        Join(a, endA, b, endB);
        Intend(ConstraintKind_Tangent, {{a, endA}, {b, endB}});
    }
    void Relate(Geometry::ConstraintKind_e kind, int a, int b) { Intend(kind, {{a, kWhole}, {b, kWhole}}); }
    /// Joined lines through the points; returns the first line's index.
    int AddOutline(const std::vector<Point>& pts, bool closed) {
        const int n = static_cast<int>(pts.size()), first = static_cast<int>(sketch_.exact.size());
        const int count = closed ? n : n - 1;
        for (int i = 0; i < count; ++i)
            AddLine(pts[i].x, pts[i].y, pts[(i + 1) % n].x, pts[(i + 1) % n].y);
        for (int i = 0; i + 1 < count + (closed ? 1 : 0); ++i)
            Join(first + i, kEnd, first + (i + 1) % count, kStart);
        return first;
    }
    void IntendAxes(int first, int count, bool horizontalFirst) {
        for (int i = 0; i < count; ++i)
            Intend((i % 2 == 0) == horizontalFirst ? ConstraintKind_Horizontal : ConstraintKind_Vertical,
                   {{first + i, kWhole}});
    }
    /// Turned shapes of one drawing are turned alike.
    void TurnFrame() { frame_[2] = turn_; }
    bool TurnSome() {
        const bool turned = Choose(0, 1) == 1;
        if (turned)
            TurnFrame();
        return turned;
    }

    // --- The shapes
    int AddBox() {
        const double w = Uniform(50, 150), h = Uniform(50, 150);
        return AddOutline({{0, 0}, {w, 0}, {w, h}, {0, h}}, true);
    }
    void Draw(int family) {
        using Maker = SketchMaker;
        static constexpr struct {
            const char* name;
            void (Maker::*draw)();
        } kFamilies[] = {{"rectangle", &Maker::Rectangle}, {"turned rectangle", &Maker::TurnedRectangle},
                         {"slot", &Maker::Slot},           {"bracket", &Maker::Bracket},
                         {"holes", &Maker::Holes},         {"symmetric profile", &Maker::Profile},
                         {"chain", &Maker::Chain},         {"regular polygon", &Maker::Polygon},
                         {"T and middles", &Maker::Tees},  {"belt", &Maker::Belt},
                         {"ribbon", &Maker::Ribbon},       {"sector", &Maker::Sector}};
        static_assert(std::size(kFamilies) == kFamilyCount);
        const auto& chosen = kFamilies[family];
        sketch_.name = chosen.name;
        (this->*chosen.draw)();
    }
    void Rectangle() { IntendAxes(AddBox(), 4, true); }
    void TurnedRectangle() {
        TurnFrame();
        const int first = AddBox();
        for (int i = 0; i < 3; ++i)
            Relate(ConstraintKind_Perpendicular, first + i, first + i + 1);
        Relate(ConstraintKind_Parallel, first, first + 2);
        Relate(ConstraintKind_Parallel, first + 1, first + 3);
    }
    void Slot() {
        const bool turned = TurnSome();
        const double l = Uniform(50, 120), r = Uniform(14, 35), half = std::numbers::pi / 2;
        const int bottom = AddLine(0, -r, l, -r), right = AddArc(l, 0, r, -half, half);
        const int top = AddLine(l, r, 0, r), left = AddArc(0, 0, r, half, 3 * half);
        Flow(bottom, kEnd, right, kStart);
        Flow(right, kEnd, top, kStart);
        Flow(top, kEnd, left, kStart);
        Flow(left, kEnd, bottom, kStart);
        Relate(ConstraintKind_Parallel, bottom, top);
        Relate(ConstraintKind_EqualRadius, right, left);
        if (!turned)
            Intend(ConstraintKind_Horizontal, {{bottom, kWhole}});
    }
    void Bracket() {
        const double w = Uniform(90, 150), h = Uniform(90, 150), a = Uniform(30, w - 40);
        const double b = Uniform(30, h - 40);
        IntendAxes(AddOutline({{0, 0}, {w, 0}, {w, b}, {a, b}, {a, h}, {0, h}}, true), 6, true);
        const double r = Uniform(5, 8);
        const int hole1 = AddCircle(a / 2, h - a / 2, r), hole2 = AddCircle(w - b / 2, b / 2, r);
        Relate(ConstraintKind_EqualRadius, hole1, hole2);
    }
    void Holes() {
        const double r = Uniform(15, 25);
        const int inner = AddCircle(0, 0, r), outer = AddCircle(0, 0, r * Uniform(1.6, 2.2));
        Intend(ConstraintKind_Concentric, {{inner, kCentre}, {outer, kCentre}});
        const double d = Uniform(80, 100);
        const int left = AddCircle(-d, Uniform(-9, 9), r / 1.7);
        const int right = AddCircle(d, Uniform(-9, 9), r / 1.7);
        Relate(ConstraintKind_EqualRadius, left, right);
    }
    void Profile() {
        const bool turned = TurnSome();
        const double w[] = {Uniform(30, 60), Uniform(25, 70), Uniform(25, 70)};
        const double h[] = {0, Uniform(30, 60), Uniform(80, 120)};
        const int first = AddOutline(
            {{w[0], h[0]}, {w[1], h[1]}, {w[2], h[2]}, {-w[2], h[2]}, {-w[1], h[1]}, {-w[0], h[0]}}, true);
        const int axis = AddLine(0, -20, 0, h[2] + 20);
        for (int i = 0; i < 3; ++i)
            Intend(ConstraintKind_Symmetric, {{first + i, kStart}, {first + 5 - i, kStart}, {axis, kWhole}});
        if (!turned)
            Intend(ConstraintKind_Vertical, {{axis, kWhole}});
    }
    void Chain() {
        std::vector<Point> pts{{0, 0}};
        const int n = Choose(2, 6);
        for (int i = 0; i < n; ++i) {
            const double angle = Uniform(-1.3, 1.3);
            pts.push_back(pts.back() + Point(std::cos(angle), std::sin(angle)) * Uniform(40, 110));
        }
        AddOutline(pts, false);
    }
    void Polygon() {
        const int n = Choose(3, 8);
        frame_[2] = Uniform(0, 7);
        const double r = Uniform(25, 35) / std::sin(std::numbers::pi / n);
        std::vector<Point> pts;
        for (int i = 0; i < n; ++i)
            pts.push_back(
                Point(std::cos(i * 2 * std::numbers::pi / n), std::sin(i * 2 * std::numbers::pi / n)) * r);
        const int first = AddOutline(pts, true);
        for (int i = 0; i + 1 < n; ++i)
            Relate(ConstraintKind_EqualLength, first + i, first + i + 1);
        for (int i = 0; n % 2 == 0 && i < n / 2; ++i)
            Relate(ConstraintKind_Parallel, first + i, first + n / 2 + i);
    }
    void Tees() {
        const bool turned = TurnSome();
        const double l = Uniform(90, 150);
        const int base = AddLine(0, 0, l, 0);
        if (!turned)
            Intend(ConstraintKind_Horizontal, {{base, kWhole}});
        const double angle = Uniform(0.9, 1.2), height = Uniform(30, 60);
        const int stem = AddLine(l / 2, 0, l / 2, height);
        Intend(ConstraintKind_MidPoint, {{stem, kStart}, {base, Geometry::SnapPointType_Mid}});
        Relate(ConstraintKind_Perpendicular, base, stem);
        const double at = Uniform(0.7, 0.85) * l;
        const int slanted = AddLine(at, 0, at + 75 * std::cos(angle), -75 * std::sin(angle));
        Intend(ConstraintKind_PointOnCurve, {{slanted, kStart}, {base, kWhole}});
        const double gap = Uniform(15, 30);
        const int beyond = AddLine(l + gap, 0, 1.6 * l + gap, 0);
        Relate(ConstraintKind_Collinear, base, beyond);
    }
    /// Two pulleys, their lines ending on the circles.
    void Belt() {
        TurnFrame();
        const double d = Uniform(110, 150), r1 = Uniform(28, 40), r2 = r1 * Uniform(0.45, 0.7);
        const int big = AddCircle(0, 0, r1), small = AddCircle(d, 0, r2);
        const double a = std::acos((r1 - r2) / d);
        for (double s : {a, -a}) {
            const int line =
                AddLine(r1 * std::cos(s), r1 * std::sin(s), d + r2 * std::cos(s), r2 * std::sin(s));
            for (const auto& [end, circle] : {std::pair{kStart, big}, std::pair{kEnd, small}}) {
                Intend(ConstraintKind_PointOnCurve, {{line, end}, {circle, kWhole}});
                Intend(ConstraintKind_Tangent, {{line, end}, {circle, kWhole}});
            }
        }
    }
    /// A smooth chain: line, arc, arc the other way, line.
    void Ribbon() {
        TurnFrame();
        const double l = Uniform(50, 90), r1 = Uniform(30, 45), r2 = r1 * Uniform(1.4, 1.8);
        const double a = Uniform(0.8, 1.3), b = a * Uniform(0.5, 0.7) + 0.4;
        const double half = std::numbers::pi / 2;
        const int in = AddLine(-l, 0, 0, 0), left = AddArc(0, r1, r1, -half, a - half);
        const double c2x = (r1 + r2) * std::sin(a), c2y = r1 - (r1 + r2) * std::cos(a);
        const int right = AddArc(c2x, c2y, r2, half + a - b, half + a);
        const double ex = c2x + r2 * std::cos(half + a - b), ey = c2y + r2 * std::sin(half + a - b);
        const double l2 = l * 1.4;
        const int out = AddLine(ex, ey, ex + l2 * std::cos(a - b), ey + l2 * std::sin(a - b));
        Flow(in, kEnd, left, kStart);
        Flow(left, kEnd, right, kEnd);
        Flow(right, kStart, out, kStart);
    }
    /// Two arcs about one centre, closed by two lines towards it.
    void Sector() {
        TurnFrame();
        const double r = Uniform(45, 60), outer = r + Uniform(30, 45), sweep = Uniform(1.1, 1.4);
        const int inside = AddArc(0, 0, r, 0, sweep), outside = AddArc(0, 0, outer, 0, sweep);
        const int low = AddLine(r, 0, outer, 0);
        const double c = std::cos(sweep), s = std::sin(sweep);
        const int high = AddLine(r * c, r * s, outer * c, outer * s);
        Join(inside, kStart, low, kStart);
        Join(outside, kStart, low, kEnd);
        Join(inside, kEnd, high, kStart);
        Join(outside, kEnd, high, kEnd);
        Intend(ConstraintKind_Concentric, {{inside, kCentre}, {outside, kCentre}});
    }

    // --- What nobody could tell from the drawing: relations that nearly hold
    bool IsAmbiguous() const {
        for (std::size_t i = 0; i < sketch_.exact.size(); ++i) {
            const Curve& a = *sketch_.exact[i];
            if (a.GetType() == Geometry::CurveType_Line && !IsClear(DirectionDeg(a), 90.0))
                return true;
            for (std::size_t j = std::max(i + 1, shape_); j < sketch_.exact.size(); ++j)
                if (!IsClearPair(a, *sketch_.exact[j], i >= shape_))
                    return true;
        }
        return false;
    }
    static double DirectionDeg(const Curve& line) {
        const Point d = line.GetEnd() - line.GetStart();
        return std::atan2(d.y, d.x) * 180.0 / std::numbers::pi;
    }
    /// A multiple of the period or well away from one.
    static bool IsClear(double deg, double period) {
        const double off = std::fabs(std::remainder(deg, period));
        return off < 1e-6 || off > 8.0;
    }
    /// Lengths of different shapes are nobody's business.
    static bool IsClearPair(const Curve& a, const Curve& b, bool sameShape) {
        if (a.GetType() != b.GetType())
            return true;
        const bool lines = a.GetType() == Geometry::CurveType_Line;
        if (lines && !IsClear(DirectionDeg(a) - DirectionDeg(b), 90.0))
            return false;
        if (lines && !sameShape)
            return true;
        const double sizeA = lines ? a.Length() : static_cast<const Geometry::Arc&>(a).GetRadius();
        const double sizeB = lines ? b.Length() : static_cast<const Geometry::Arc&>(b).GetRadius();
        const double difference = std::fabs(sizeA - sizeB);
        return difference < 1e-6 || difference > (lines ? 1.8 * kSketchZone : 0.2 * std::max(sizeA, sizeB));
    }

    // --- The hand
    CurvePtr Shake(const Curve& curve, const SketchNoise& noise) {
        const double turn = Normal(noise.directionDeg) * std::numbers::pi / 180.0;
        const double way = Uniform(0, 2 * std::numbers::pi);
        const Point shift = Point(std::cos(way), std::sin(way)) * Uniform(0, noise.shift);
        const Point mid = curve.GetMidPoint();
        const auto turned = [&](const Point& p) {
            const Point d = p - mid;
            return mid + shift +
                   Point(d.x * std::cos(turn) - d.y * std::sin(turn),
                         d.x * std::sin(turn) + d.y * std::cos(turn));
        };
        if (curve.GetType() == Geometry::CurveType_Line) {
            const Point a = turned(curve.GetStart()), b = turned(curve.GetEnd());
            const Point u = (b - a) / curve.Length();
            return std::make_unique<Geometry::Line>(a + u * Uniform(-noise.overrun, noise.overrun),
                                                    b + u * Uniform(-noise.overrun, noise.overrun));
        }
        const auto& arc = static_cast<const Geometry::Arc&>(curve);
        const double scale = 1.0 + Normal(noise.radius);
        if (arc.IsClosed())
            return std::make_unique<Geometry::Arc>(arc.GetCenter() + shift, arc.GetRadius() * scale);
        const Point centre = turned(mid + (arc.GetCenter() - mid) * scale);
        const double r = arc.GetRadius() * scale;
        return MakeArc(centre, r, arc.GetStartAngle() + turn + Uniform(-noise.overrun, noise.overrun) / r,
                       arc.GetEndAngle() + turn + Uniform(-noise.overrun, noise.overrun) / r);
    }
    bool JointsHold() const {
        for (const InferredConstraint& c : sketch_.intended) {
            if (c.kind != ConstraintKind_Coincident)
                continue;
            const auto at = [&](const SketchElement& e) {
                const Curve& curve = *sketch_.drawn[e.curve];
                return e.point == kStart ? curve.GetStart() : curve.GetEnd();
            };
            if (at(c.elements[0]).Distance(at(c.elements[1])) > kSketchZone)
                return false;
        }
        return true;
    }

    std::mt19937& rng_;
    GeneratedSketch sketch_;
    std::array<double, 3> frame_{}; ///< origin x, y and rotation of the shape
    double turn_ = 0.0;
    std::size_t shape_ = 0; ///< index of the shape's first curve
};

} // namespace Tessera::Testing
