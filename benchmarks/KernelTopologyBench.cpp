// Point inversion, intersections, overlaps and lengths of curve records.
#include <array>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/Workloads.h"
#include "tessera/kernel/CRV_PROPS.h"
#include "tessera/kernel/CRV_TOPOL.h"
#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/RecordPtr.h"

namespace {

RecordPtr MakeRecord(const workload::BSpline& s) {
    std::vector<std::array<double, 4>> poles;
    for (std::size_t i = 0; i < s.poles.size(); ++i)
        poles.push_back({s.poles[i].x, s.poles[i].y, 0.0, s.weights[i]});
    std::vector<double> knots = s.knots;
    int sizes[3] = {static_cast<int>(poles.size()), s.order, 0};
    return RecordPtr(ev09p1(ev091p(sizes, knots.data(), reinterpret_cast<double(*)[4]>(poles.data()))));
}

RecordPtr MakeRecord(const workload::EllipseCase& e) {
    const double centre[3] = {e.centre.x, e.centre.y, 0.0};
    return RecordPtr(ev06p0(centre, e.r1, e.r2, e.rotation, e.start, e.end));
}

RecordPtr MakeChord() {
    const double a[3] = {workload::kChord[0].x, workload::kChord[0].y, 0.0};
    const double b[3] = {workload::kChord[1].x, workload::kChord[1].y, 0.0};
    return RecordPtr(ev03p0(a, b));
}

void RunInversion(benchmark::State& state, const RecordPtr& c) {
    const std::vector<workload::Xy> queries = workload::MakeCurveQueries(1024);
    std::size_t i = 0;
    for (auto _ : state) {
        const double p[3] = {queries[i % 1024].x, queries[i % 1024].y, 0.0};
        double t = 0.0, distance = 0.0;
        benchmark::DoNotOptimize(em015cBounded(c.get(), p, &t, nullptr, &distance));
        benchmark::DoNotOptimize(distance);
        ++i;
    }
    state.SetItemsProcessed(state.iterations());
}

void RunIntersection(benchmark::State& state, const RecordPtr& a, const RecordPtr& b) {
    int n = 0;
    for (auto _ : state) {
        CRV_TOPOL_hit_t* hits = nullptr;
        benchmark::DoNotOptimize(
            CRV_TOPOL_intersect(a.get(), CRV_TOPOL_BOUNDED, b.get(), CRV_TOPOL_BOUNDED, 1e-9, &n, &hits));
        SM_free(hits);
    }
    state.counters["hits"] = n;
    state.SetItemsProcessed(state.iterations());
}

void InvertSpline(benchmark::State& state) {
    const bool rational = state.range(1) != 0;
    RunInversion(state, MakeRecord(workload::MakeBSpline(4, static_cast<int>(state.range(0)), rational)));
}
void InvertPolyline(benchmark::State& state) {
    RunInversion(state, MakeRecord(workload::MakeBSpline(2, static_cast<int>(state.range(0)))));
}
void InvertEllipse(benchmark::State& state) {
    RunInversion(state, MakeRecord(workload::kEllipseA));
}
void InvertEllipticArc(benchmark::State& state) {
    workload::EllipseCase arc = workload::kEllipseA;
    arc.end = 2.0;
    RunInversion(state, MakeRecord(arc));
}

void ChordEllipse(benchmark::State& state) {
    RunIntersection(state, MakeChord(), MakeRecord(workload::kEllipseA));
}
void EllipseEllipse(benchmark::State& state) {
    RunIntersection(state, MakeRecord(workload::kEllipseA), MakeRecord(workload::kEllipseB));
}
void ChordSpline(benchmark::State& state) {
    RunIntersection(state, MakeChord(),
                    MakeRecord(workload::MakeBSpline(4, static_cast<int>(state.range(0)))));
}
void EllipseSpline(benchmark::State& state) {
    RunIntersection(state, MakeRecord(workload::kEllipseA),
                    MakeRecord(workload::MakeBSpline(4, static_cast<int>(state.range(0)))));
}
void SplineSpline(benchmark::State& state) {
    const workload::BSpline s =
        workload::MakeBSpline(4, static_cast<int>(state.range(0)), state.range(1) != 0);
    RunIntersection(state, MakeRecord(s), MakeRecord(workload::Turned(s, 0.3, 0.0, 0.0)));
}
void SplineItself(benchmark::State& state) {
    const workload::BSpline s = workload::MakeBSpline(4, static_cast<int>(state.range(0)));
    RunIntersection(state, MakeRecord(s), MakeRecord(s));
}
void PolylinePolyline(benchmark::State& state) {
    const workload::BSpline s = workload::MakeBSpline(2, static_cast<int>(state.range(0)));
    RunIntersection(state, MakeRecord(s), MakeRecord(workload::Turned(s, 0.3, 0.0, 0.0)));
}

void OverlapItself(benchmark::State& state) {
    const workload::BSpline s = workload::MakeBSpline(4, static_cast<int>(state.range(0)));
    const RecordPtr a = MakeRecord(s), b = MakeRecord(s);
    CRV_TOPOL_state_t found = CRV_TOPOL_SEPARATE;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            CRV_TOPOL_overlap(a.get(), b.get(), 1e-8, 1e-6, 1e-9, &found, nullptr, nullptr));
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RunLength(benchmark::State& state, const RecordPtr& c) {
    double limits[2], length = 0.0;
    evcrvp(c.get(), limits);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CRV_PROPS_arc_length(c.get(), limits, &length));
        benchmark::DoNotOptimize(length);
    }
}
void LengthOfEllipse(benchmark::State& state) {
    RunLength(state, MakeRecord(workload::kEllipseA));
}
void LengthOfSpline(benchmark::State& state) {
    RunLength(state, MakeRecord(workload::MakeBSpline(4, static_cast<int>(state.range(0)))));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Poles(benchmark::internal::Benchmark* b) {
    for (const int n : workload::kPoleCounts)
        b->Arg(n);
}
void PolesAndKinds(benchmark::internal::Benchmark* b) {
    for (const int n : workload::kPoleCounts)
        for (const int rational : {0, 1})
            b->Args({n, rational});
}

BENCHMARK(InvertSpline)->Apply(PolesAndKinds);
BENCHMARK(InvertPolyline)->Apply(Poles)->Arg(1'000'000);
BENCHMARK(InvertEllipse);
BENCHMARK(InvertEllipticArc);
BENCHMARK(ChordEllipse);
BENCHMARK(EllipseEllipse);
BENCHMARK(ChordSpline)->Apply(Poles);
BENCHMARK(EllipseSpline)->Apply(Poles);
BENCHMARK(SplineSpline)->Apply(PolesAndKinds);
BENCHMARK(SplineItself)->Apply(Poles);
BENCHMARK(PolylinePolyline)->Apply(Poles)->Arg(1'000'000);
BENCHMARK(OverlapItself)->Apply(Poles);
BENCHMARK(LengthOfEllipse);
BENCHMARK(LengthOfSpline)->Apply(Poles);

} // namespace

BENCHMARK_MAIN();
