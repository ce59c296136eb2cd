// Analysis of one stroke: point reduction, hull, polygon tests, up-sampling, turning, cusps, scribble test.
//
// The time per sample ("items_per_second") tells the growth: each of these stays linear or n log n on every
// shape, the spiral and the zigzag of Simplify included.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Workloads.h"
#include "tessera/kernel/SM.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/Stroke.h"

namespace {

using namespace Tessera::Geometry;

constexpr double kTolerance = 0.5; // of Simplify: most samples go, corners and turns stay
constexpr int kPolygonCorners = 64;

Stroke MakeStroke(workload::Shape shape, int n) {
    workload::Ink ink = workload::MakeInk(shape, n);
    return Stroke(n, ink.x.data(), ink.y.data(), ink.speed.data());
}

// The copy that Simplify works on is timed too: it is a small part, and pausing the clock costs more.
void Simplify(const Stroke& stroke, benchmark::State& state, double tol) {
    int kept = 0;
    for (auto _ : state) {
        Stroke work(stroke);
        work.Simplify(tol);
        kept = work.AskNumberOfPoints();
    }
    state.counters["kept"] = kept;
}

void SimplifyCoarse(Stroke& stroke, benchmark::State& state) {
    Simplify(stroke, state, kTolerance);
}

// Keeps every sample: the most splits there can be.
void SimplifyNothing(Stroke& stroke, benchmark::State& state) {
    Simplify(stroke, state, 0.0);
}

void ConvexHull(Stroke& stroke, benchmark::State& state) {
    for (auto _ : state) {
        int n = 0;
        double* x = nullptr;
        double* y = nullptr;
        stroke.ComputeConvexHull(&n, &x, &y);
        benchmark::DoNotOptimize(n);
        SM_free(x);
        SM_free(y);
    }
}

// A polygon round the whole stroke, so that no sample ends the test early.
void IsInPolygon(Stroke& stroke, benchmark::State& state) {
    std::vector<double> xs, ys;
    for (const workload::Xy& p : workload::MakePolygon(kPolygonCorners)) {
        xs.push_back(1e6 * p.x);
        ys.push_back(1e6 * p.y);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(stroke.IsInPolygon(kPolygonCorners, xs.data(), ys.data()));
}

void UpSample(Stroke& stroke, benchmark::State& state) {
    for (auto _ : state) {
        const std::unique_ptr<Stroke> dense(stroke.UpSampleStroke(4));
        benchmark::DoNotOptimize(dense->AskNumberOfPoints());
    }
}

void CumulativeAngle(Stroke& stroke, benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(stroke.ComputeCummulativeAngle());
}

void Cusps(Stroke& stroke, benchmark::State& state) {
    std::vector<int> cusps;
    for (auto _ : state)
        stroke.GetCuspIds(110.0, 8, cusps);
    state.counters["cusps"] = static_cast<double>(cusps.size());
}

void ScribbleShape(Stroke& stroke, benchmark::State& state) {
    SketchRecognizerPreferences preferences;
    int cusps = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(StrokeIsScribbleShape(&stroke, &preferences, &cusps));
}

struct Operation {
    const char* name;
    void (*run)(Stroke&, benchmark::State&);
};
constexpr Operation kOperations[] = {
    {"SimplifyCoarse", SimplifyCoarse},
    {"SimplifyNothing", SimplifyNothing},
    {"ConvexHull", ConvexHull},
    {"IsInPolygon", IsInPolygon},
    {"UpSample", UpSample},
    {"CumulativeAngle", CumulativeAngle},
    {"Cusps", Cusps},
    {"ScribbleShape", ScribbleShape},
};

} // namespace

int main(int argc, char** argv) {
    for (const Operation& operation : kOperations)
        for (const workload::Shape shape : workload::kShapes)
            for (const int n : workload::kStrokeSizes)
                benchmark::RegisterBenchmark(
                    (std::string(operation.name) + "/" + workload::Name(shape) + "/" + std::to_string(n))
                        .c_str(),
                    [operation, shape, n](benchmark::State& state) {
                        Stroke stroke = MakeStroke(shape, n);
                        operation.run(stroke, state);
                        state.SetItemsProcessed(state.iterations() * n);
                    });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
