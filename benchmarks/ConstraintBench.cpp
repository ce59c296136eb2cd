// Constraint inference on sketches as a hand leaves them: directions a degree off, joints that gape.
//
// Argument  number of curves
// Counters  found  constraints of the set
//           heap   heap calls of one inference
//
// Growth rows measure two sizes in turn, so that noise of the machine meets both:
//           ratio  time of the larger over that of the smaller; their sizes are 1 to 4
#include <chrono>
#include <cmath>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/Allocations.h"
#include "benchmarks/Workloads.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/ConstraintInference.h"

namespace {

using namespace Tessera::Geometry;

constexpr double kZone = 4.0;
constexpr double kGap = 0.9;
constexpr double kTurnDeg = 1.0;

/// Curves with the noise of a hand.
class Drawing {
public:
    explicit Drawing(std::uint64_t seed) : random_(seed) {}

    double In(double low, double high) { return random_.In(low, high); }
    void AddLine(const Point& a, const Point& b) {
        const double turn = In(-kTurnDeg, kTurnDeg) * workload::kTau / 360.0;
        const Point half = (b - a) / 2.0;
        const Point mid = a + half + Shift();
        const Point turned(half.x * std::cos(turn) - half.y * std::sin(turn),
                           half.x * std::sin(turn) + half.y * std::cos(turn));
        curves_.push_back(std::make_unique<Line>(mid - turned, mid + turned));
    }
    void AddArc(const Point& start, const Point& end, const Point& centre) {
        const Point shift = Shift();
        curves_.push_back(std::make_unique<Arc>(start + shift, end + shift, centre + shift));
    }
    void AddCircle(const Point& centre, double radius) {
        curves_.push_back(std::make_unique<Arc>(centre + Shift(), radius * In(0.98, 1.02)));
    }
    void AddRectangle(const Point& corner, double w, double h) {
        const Point c[] = {corner, corner + Point(w, 0), corner + Point(w, h), corner + Point(0, h)};
        for (int i = 0; i < 4; ++i)
            AddLine(c[i], c[(i + 1) % 4]);
    }
    std::vector<const Curve*> Borrow() const {
        std::vector<const Curve*> curves;
        for (const auto& c : curves_)
            curves.push_back(c.get());
        return curves;
    }

private:
    Point Shift() { return {In(-kGap, kGap), In(-kGap, kGap)}; }

    workload::Random random_;
    std::vector<std::unique_ptr<Curve>> curves_;
};

/// A chain of horizontal and vertical lines.
Drawing Stairs(int n) {
    Drawing drawing(1);
    Point at(0, 0);
    for (int i = 0; i < n; ++i) {
        const double length = drawing.In(30, 110);
        const Point next = at + (i % 2 == 0 ? Point(length, 0) : Point(0, length));
        drawing.AddLine(at, next);
        at = next;
    }
    return drawing;
}

/// A chain of lines in any direction: many are nearly parallel or square to each other by chance.
Drawing Chain(int n) {
    Drawing drawing(2);
    Point at(0, 0);
    for (int i = 0; i < n; ++i) {
        const double angle = drawing.In(-1.3, 1.3);
        const Point next = at + Point(std::cos(angle), std::sin(angle)) * drawing.In(40, 110);
        drawing.AddLine(at, next);
        at = next;
    }
    return drawing;
}

/// A meander: lines joined smoothly by half circles.
Drawing Meander(int n) {
    Drawing drawing(3);
    Point at(0, 0);
    for (int i = 0; i < n; ++i) {
        const bool isBack = i / 2 % 2 == 1;
        const double length = 80.0;
        const double radius = 20.0;
        if (i % 2 == 0) {
            const Point next = at + Point(isBack ? -length : length, 0);
            drawing.AddLine(at, next);
            at = next;
        } else {
            const Point next = at + Point(0, 2 * radius);
            // Arcs run counter-clockwise.
            drawing.AddArc(isBack ? next : at, isBack ? at : next, at + Point(0, radius));
            at = next;
        }
    }
    return drawing;
}

/// A closed outline of lines in any direction.
Drawing Outline(int n) {
    Drawing drawing(4);
    std::vector<Point> corners;
    for (int i = 0; i < n; ++i) {
        const double angle = workload::kTau * i / n;
        corners.push_back(Point(std::cos(angle), std::sin(angle)) * (12.0 * n * drawing.In(0.8, 1.2)));
    }
    for (int i = 0; i < n; ++i)
        drawing.AddLine(corners[i], corners[(i + 1) % n]);
    return drawing;
}

Drawing Rectangles(int n) {
    Drawing drawing(5);
    const int columns = static_cast<int>(std::ceil(std::sqrt(n / 4.0)));
    for (int i = 0; i < n / 4; ++i)
        drawing.AddRectangle(Point(150.0 * (i % columns), 130.0 * (i / columns)), drawing.In(50, 120),
                             drawing.In(50, 100));
    return drawing;
}

Drawing Circles(int n) {
    Drawing drawing(6);
    const double side = 60.0 * std::sqrt(n);
    for (int i = 0; i < n; ++i)
        drawing.AddCircle({drawing.In(0, side), drawing.In(0, side)}, 10.0 + 8.0 * (i % 4));
    return drawing;
}

/// One outline that wanders in any direction and crosses itself everywhere.
Drawing Walk(int n) {
    Drawing drawing(7);
    Point at(0, 0);
    for (int i = 0; i < n; ++i) {
        const double angle = drawing.In(0, workload::kTau);
        const Point next = at + Point(std::cos(angle), std::sin(angle)) * drawing.In(30, 110);
        drawing.AddLine(at, next);
        at = next;
    }
    return drawing;
}

/// Lines between random points of a square: their ends lie on each other by chance.
Drawing Crossing(int n) {
    Drawing drawing(8);
    const double side = 1000.0 * std::sqrt(n / 250.0);
    for (int i = 0; i < n; ++i) {
        const Point from(drawing.In(0, side), drawing.In(0, side));
        drawing.AddLine(from, {drawing.In(0, side), drawing.In(0, side)});
    }
    return drawing;
}

/// A plan of rooms, turned: joined walls in two directions.
Drawing Rooms(int n) {
    Drawing drawing(9);
    const int across = static_cast<int>(std::sqrt(n / 2.0));
    const auto place = [](int x, int y) {
        return Point(70.0 * x * std::cos(0.35) - 70.0 * y * std::sin(0.35),
                     70.0 * x * std::sin(0.35) + 70.0 * y * std::cos(0.35));
    };
    for (int x = 0; x < across; ++x)
        for (int y = 0; y < across; ++y) {
            drawing.AddLine(place(x, y), place(x + 1, y));
            drawing.AddLine(place(x, y), place(x, y + 1));
        }
    return drawing;
}

void Infer(benchmark::State& state, Drawing (*make)(int)) {
    const Drawing drawing = make(static_cast<int>(state.range(0)));
    const std::vector<const Curve*> curves = drawing.Borrow();
    ConstraintOptions options;
    options.toleranceZone = kZone;
    std::size_t found = 0;
    std::uint64_t heapCalls = 0;
    for (auto _ : state) {
        const std::uint64_t before = allocations::calls;
        const InferredConstraints inferred = InferConstraints(curves, options);
        heapCalls = allocations::calls - before;
        found = inferred.constraints.size();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["found"] = static_cast<double>(found);
    state.counters["heap"] = static_cast<double>(heapCalls);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond);
    for (const int n : {12, 20, 40, 100, 250, 1000})
        benchmark->Arg(n);
}

void Growth(benchmark::State& state, Drawing (*make)(int)) {
    const int n = static_cast<int>(state.range(0));
    const Drawing drawings[] = {make(n), make(4 * n)};
    ConstraintOptions options;
    options.toleranceZone = kZone;
    double seconds[2] = {};
    for (auto _ : state)
        for (int i = 0; i < 2; ++i) {
            const std::vector<const Curve*> curves = drawings[i].Borrow();
            const auto start = std::chrono::steady_clock::now();
            benchmark::DoNotOptimize(InferConstraints(curves, options));
            seconds[i] += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        }
    state.counters["ratio"] = seconds[1] / seconds[0];
}

BENCHMARK_CAPTURE(Growth, chain, Chain)->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Growth, walk, Walk)->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Growth, crossing, Crossing)->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Growth, rooms, Rooms)->Arg(250)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Infer, stairs, Stairs)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, chain, Chain)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, meander, Meander)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, outline, Outline)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, rectangles, Rectangles)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, circles, Circles)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, walk, Walk)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, crossing, Crossing)->Apply(Sizes);
BENCHMARK_CAPTURE(Infer, rooms, Rooms)->Apply(Sizes);

} // namespace

BENCHMARK_MAIN();
