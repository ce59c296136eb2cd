// Curve records: evaluation, sub-ranges, conversion and boxes, over the shared B-spline workloads.
#include <benchmark/benchmark.h>

#include "benchmarks/Workloads.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/BoxCurve.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/internal/RecordPtr.h"

namespace {

constexpr int kParameters = 1024;

RecordPtr MakeRecord(const workload::BSpline& s) {
    std::vector<double> poles;
    for (std::size_t i = 0; i < s.poles.size(); ++i)
        poles.insert(poles.end(), {s.poles[i].x, s.poles[i].y, 0.0, s.weights[i]});
    std::vector<double> knots = s.knots;
    int sizes[3] = {static_cast<int>(s.poles.size()), s.order, 0};
    return RecordPtr(ev09p1(ev091p(sizes, knots.data(), reinterpret_cast<double(*)[4]>(poles.data()))));
}

RecordPtr MakePolyline(int n) {
    return MakeRecord(workload::MakePolylineSpline(workload::MakeInk(workload::Shape::Freeform, n)));
}

/// Arguments: order, poles, rational, derivatives.
void Evaluate(benchmark::State& state) {
    const RecordPtr c = MakeRecord(workload::MakeBSpline(
        static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), state.range(2) != 0));
    const std::vector<double> t = workload::MakeParameters(kParameters);
    const int nderiv = static_cast<int>(state.range(3));
    double out[9];
    for (auto _ : state)
        for (double parameter : t) {
            evcrve(c.get(), nderiv, parameter, out);
            benchmark::DoNotOptimize(out);
        }
    state.SetItemsProcessed(state.iterations() * kParameters);
}
BENCHMARK(Evaluate)->ArgsProduct({{3, 4, 7}, {8, 256, 4096}, {0, 1}, {0, 2}});

void EvaluateEllipse(benchmark::State& state) {
    const workload::EllipseCase& e = workload::kEllipseA;
    const double centre[3] = {e.centre.x, e.centre.y, 0.0};
    const RecordPtr c(ev06p0(centre, e.r1, e.r2, e.rotation, e.start, e.end));
    const std::vector<double> t = workload::MakeParameters(kParameters);
    double out[9];
    for (auto _ : state)
        for (double parameter : t) {
            evcrve(c.get(), 2, parameter, out);
            benchmark::DoNotOptimize(out);
        }
    state.SetItemsProcessed(state.iterations() * kParameters);
}
BENCHMARK(EvaluateEllipse);

/// A poly-line is made, evaluated once at each vertex and freed: the tables must cost nothing unread.
void PolylineOnce(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const workload::BSpline s = workload::MakePolylineSpline(workload::MakeInk(workload::Shape::Freeform, n));
    double out[3];
    for (auto _ : state) {
        const RecordPtr c = MakeRecord(s);
        for (int i = 0; i < n; ++i) {
            evcrve(c.get(), 0, static_cast<double>(i) / (n - 1), out);
            benchmark::DoNotOptimize(out);
        }
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(PolylineOnce)->RangeMultiplier(10)->Range(1000, 1000000);

void Extract(benchmark::State& state) {
    const RecordPtr c = MakeRecord(workload::MakeBSpline(4, static_cast<int>(state.range(0)), true));
    const double limits[2] = {0.31, 0.72};
    for (auto _ : state)
        benchmark::DoNotOptimize(RecordPtr(em0941(c.get(), limits)));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Extract)->Arg(8)->Arg(32)->Arg(256)->Arg(4096);

void ConvertEllipse(benchmark::State& state) {
    const double centre[3] = {};
    const RecordPtr c(ev06p0(centre, 120, 50, 0.5, 0, workload::kTau));
    for (auto _ : state)
        benchmark::DoNotOptimize(BcurveDataPtr(em0960(c.get())));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ConvertEllipse);

template <bool kOriented>
void Box(benchmark::State& state, const RecordPtr& c) {
    const double limits[2] = {0, 1};
    double low[2], high[2], centre[3], halfSizes[3][3];
    int dimension = 0;
    for (auto _ : state) {
        if (kOriented)
            benchmark::DoNotOptimize(BoxCurve(c.get(), limits, &dimension, centre, halfSizes));
        else
            benchmark::DoNotOptimize(BoxCurveXY(c.get(), limits, low, high));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <bool kOriented>
void BoxSpline(benchmark::State& state) {
    Box<kOriented>(state, MakeRecord(workload::MakeBSpline(4, static_cast<int>(state.range(0)), true)));
}
template <bool kOriented>
void BoxPolyline(benchmark::State& state) {
    Box<kOriented>(state, MakePolyline(static_cast<int>(state.range(0))));
}
BENCHMARK(BoxSpline<true>)->Arg(8)->Arg(256)->Arg(4096);
BENCHMARK(BoxSpline<false>)->Arg(8)->Arg(256)->Arg(4096);
BENCHMARK(BoxPolyline<true>)->RangeMultiplier(10)->Range(1000, 1000000);
BENCHMARK(BoxPolyline<false>)->RangeMultiplier(10)->Range(1000, 1000000);

} // namespace

BENCHMARK_MAIN();
