// Recognition of free-form strokes as B-splines, beside the unit: a plain loop that sums x and y.
#include <algorithm>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/Allocations.h"
#include "benchmarks/Workloads.h"
#include "tessera/kernel/BCRVFIT.h"
#include "tessera/recognition/internal/SplineRecognition.h"

namespace {

using Vex::Math::Point2;
using Vex::Math::Point3;

constexpr int kInterval = 5;
constexpr double kTolerance = 0.01; // in the unit box, as the recogniser asks

// The stroke in the unit box.
std::vector<Point2> MakePoints(workload::Shape shape, int n) {
    const workload::Ink ink = workload::MakeInk(shape, n);
    const auto [left, right] = std::minmax_element(ink.x.begin(), ink.x.end());
    const auto [low, high] = std::minmax_element(ink.y.begin(), ink.y.end());
    const double size = std::max(*right - *left, *high - *low);
    std::vector<Point2> pts;
    for (std::size_t i = 0; i < ink.x.size(); ++i)
        pts.push_back({(ink.x[i] - *left) / size, (ink.y[i] - *low) / size});
    return pts;
}

void Unit(benchmark::State& state) {
    const std::vector<Point2> pts = MakePoints(workload::Shape::Freeform, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        double x = 0.0, y = 0.0;
        for (const Point2& p : pts) {
            x += p.x;
            y += p.y;
        }
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Recognise(benchmark::State& state, workload::Shape shape) {
    const std::vector<Point2> pts = MakePoints(shape, static_cast<int>(state.range(0)));
    const std::uint64_t before = allocations::calls;
    int poles = 0;
    for (auto _ : state) {
        double maxDev = 0.0;
        const std::unique_ptr<Tessera::Geometry::Spline> spline(
            Tessera::Geometry::RecognizeSpline(pts, kInterval, kTolerance, 2 * kTolerance, &maxDev));
        benchmark::DoNotOptimize(maxDev);
        poles = spline ? spline->GetNumPoles() : 0;
    }
    state.counters["heap_calls"] = static_cast<double>(allocations::calls - before) /
                                   static_cast<double>(std::max<std::int64_t>(1, state.iterations()));
    state.counters["poles"] = poles;
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Fit(benchmark::State& state, BCRVFIT_knots_t knots) {
    std::vector<Point3> pts;
    for (const Point2& p : MakePoints(workload::Shape::Freeform, static_cast<int>(state.range(0))))
        pts.push_back({p.x, p.y, 0.0});
    for (auto _ : state) {
        int status = 1;
        double err[3];
        KC_CURVE_struct_s* record = BCRVFIT_least_squares_fit(static_cast<int>(pts.size()), pts.data(), 0,
                                                              nullptr, 3, 0, knots, kTolerance, &status, err);
        benchmark::DoNotOptimize(record);
        evcrvf(record);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (const int n : workload::kStrokeSizes)
        benchmark->Arg(n);
}

BENCHMARK(Unit)->Apply(Sizes);
BENCHMARK_CAPTURE(Recognise, freeform, workload::Shape::Freeform)->Apply(Sizes);
BENCHMARK_CAPTURE(Recognise, spiral, workload::Shape::Spiral)->Apply(Sizes);
BENCHMARK_CAPTURE(Fit, uniform, BCRVFIT_KNOTS_UNIFORM)->Apply(Sizes);
BENCHMARK_CAPTURE(Fit, adaptive, BCRVFIT_KNOTS_ADAPTIVE)->Apply(Sizes);

} // namespace

BENCHMARK_MAIN();
