// Recognition of one stroke, beside the unit U: a plain loop that reads x, y and speed of every sample.
//
// Counters  ratio  CPU time of one recognition, in U (medians of the same run)
//           heap   heap calls of one recognition
//           curves results of one recognition
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include "benchmarks/Allocations.h"
#include "benchmarks/Workloads.h"
#include "tessera/geometry/Curve.h"
#include "tessera/recognition/ClosedShape.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/strokes/Stroke.h"

namespace {

using namespace Tessera::Geometry;

constexpr int kUnitRuns = 25;

double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Stroke MakeStroke(workload::Shape shape, int n) {
    workload::Ink ink = workload::MakeInk(shape, n);
    return Stroke(n, ink.x.data(), ink.y.data(), ink.speed.data());
}

// Seconds of the plain loop over the samples.
double UnitOf(const std::vector<StrokePoint>& points) {
    const int repeats = std::max(1, 20000 / static_cast<int>(points.size()));
    std::vector<double> seconds;
    for (int run = 0; run < kUnitRuns; ++run) {
        const double start = CpuSeconds();
        for (int i = 0; i < repeats; ++i) {
            double x = 0.0;
            double y = 0.0;
            double speed = 0.0;
            for (const StrokePoint& p : points) {
                x += p.x;
                y += p.y;
                speed += p.GetSpeed();
            }
            // One value, after the loop: an accumulator that is looked at itself leaves its register.
            const double read = x + y + speed;
            benchmark::DoNotOptimize(read);
        }
        seconds.push_back((CpuSeconds() - start) / repeats);
    }
    return Median(seconds);
}

int DropResults(SketchRecognizer& recognizer) {
    for (const RecognizedGeometry* result : recognizer.GetResults()) {
        delete &result->GetResult();
        delete result;
    }
    return static_cast<int>(recognizer.GetResults().size());
}

void Recognition(benchmark::State& state, workload::Shape shape, int n) {
    Stroke stroke = MakeStroke(shape, n);
    const double unit = UnitOf(stroke.GetPoints());
    std::vector<double> seconds;
    int curves = 0;
    std::uint64_t heapCalls = 0;
    for (auto _ : state) {
        const double start = CpuSeconds();
        const std::uint64_t callsBefore = allocations::calls;
        SketchRecognizer recognizer;
        recognizer.Recognize(stroke, true, CurveType_Line);
        CloseRoundStroke(recognizer);
        heapCalls = allocations::calls - callsBefore;
        seconds.push_back(CpuSeconds() - start);
        curves = DropResults(recognizer);
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["ratio"] = Median(seconds) / unit;
    state.counters["heap"] = static_cast<double>(heapCalls);
    state.counters["curves"] = curves;
}

} // namespace

int main(int argc, char** argv) {
    for (const workload::Shape shape : workload::kShapes)
        for (const int n : workload::kStrokeSizes)
            benchmark::RegisterBenchmark(
                (std::string("Recognition/") + workload::Name(shape) + "/" + std::to_string(n)).c_str(),
                [shape, n](benchmark::State& state) { Recognition(state, shape, n); });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
