// Cost of the shape fits, each beside U, the plain loop that sums x and y of the same points. U is measured
// inside every benchmark, so that the counter "U" compares like with like whatever else the machine does.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "benchmarks/Workloads.h"
#include "tessera/kernel/LSFIT.h"
#include "tessera/kernel/NR.h"
#include "tessera/kernel/internal/EllipseFoot.h"

using Vex::Math::Point2;
using Vex::Math::Vector2;

namespace {

std::vector<Point2> MakePoints(workload::Shape shape, int n) {
    const workload::Ink ink = workload::MakeInk(shape, n);
    std::vector<Point2> pts(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < pts.size(); ++i)
        pts[i] = {ink.x[i], ink.y[i]};
    return pts;
}

double Seconds(std::chrono::steady_clock::duration d) {
    return std::chrono::duration<double>(d).count();
}

// Best of many: the least disturbed pass.
double MeasureUnit(const std::vector<Point2>& pts) {
    const int repeats = std::max(5, 2'000'000 / static_cast<int>(pts.size()));
    double best = 1e300;
    for (int k = 0; k < repeats; ++k) {
        const auto start = std::chrono::steady_clock::now();
        double x = 0.0, y = 0.0;
        for (const Point2& p : pts) {
            x += p.x;
            y += p.y;
        }
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        best = std::min(best, Seconds(std::chrono::steady_clock::now() - start));
    }
    return best;
}

template <class Fit>
void RunFit(benchmark::State& state, workload::Shape shape, Fit fit) {
    std::vector<Point2> pts = MakePoints(shape, static_cast<int>(state.range(0)));
    const double unit = MeasureUnit(pts);
    double best = 1e300;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        fit(pts);
        best = std::min(best, Seconds(std::chrono::steady_clock::now() - start));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["U"] = best / unit;
}

void FitLine(std::vector<Point2>& pts) {
    Point2 point;
    Vector2 normal;
    int status = 0;
    double err[3] = {};
    LSFIT_line_to_points_2d(pts.data(), static_cast<int>(pts.size()), &point, &normal, &status, err);
    benchmark::DoNotOptimize(err[0]);
}

void FitCircle(std::vector<Point2>& pts) {
    Point2 centre;
    double radius = 0.0, err[3];
    int status = 0;
    LSFIT_circle_to_points_2d(pts.data(), static_cast<int>(pts.size()), &centre, &radius, &status, err);
    benchmark::DoNotOptimize(err[0]);
}

void FitEllipse(std::vector<Point2>& pts) {
    Point2 centre;
    double a = 0.0, b = 0.0, angle = 0.0, err[3];
    int status = 0;
    LSFIT_ellipse_to_points_2d(pts.data(), static_cast<int>(pts.size()), &centre, &a, &b, &angle, &status,
                               err);
    benchmark::DoNotOptimize(err[0]);
}

void LineFit(benchmark::State& state) {
    RunFit(state, workload::Shape::Line, FitLine);
}
void CircleFit(benchmark::State& state) {
    RunFit(state, workload::Shape::Arc, FitCircle);
}
void EllipseFit(benchmark::State& state) {
    RunFit(state, workload::Shape::NoisyEllipse, FitEllipse);
}
// What no ellipse describes: most points are far from the fit.
void EllipseFitOfFreeform(benchmark::State& state) {
    RunFit(state, workload::Shape::Freeform, FitEllipse);
}

void Sizes(benchmark::internal::Benchmark* b) {
    for (int n : workload::kStrokeSizes)
        b->Arg(n);
}
BENCHMARK(LineFit)->Apply(Sizes);
BENCHMARK(CircleFit)->Apply(Sizes);
BENCHMARK(EllipseFit)->Apply(Sizes);
BENCHMARK(EllipseFitOfFreeform)->Apply(Sizes);

void EllipseFootPoint(benchmark::State& state) {
    const std::vector<workload::Xy> queries = workload::MakeCurveQueries(1024);
    for (auto _ : state)
        for (const workload::Xy& q : queries)
            benchmark::DoNotOptimize(FindEllipseFoot(120.0, 50.0, q.x - 150.0, q.y).cosT);
    state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(EllipseFootPoint);

void JacobiEigen4(benchmark::State& state) {
    const auto matrices = workload::MakeScatterMatrices<4>(256);
    for (auto _ : state)
        for (auto matrix : matrices) {
            double values[4], vectors[16];
            benchmark::DoNotOptimize(NR_jacobi_eigen(4, matrix.data(), 60, values, vectors));
            benchmark::DoNotOptimize(values[0]);
        }
    state.SetItemsProcessed(state.iterations() * 256);
}
BENCHMARK(JacobiEigen4);

void BandCholesky(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0)), half = 3;
    const std::vector<double> band = workload::MakeBand(n, half);
    std::vector<double> factor, rhs;
    for (auto _ : state) {
        factor = band;
        rhs.assign(static_cast<std::size_t>(2 * n), 1.0);
        benchmark::DoNotOptimize(NR_band_cholesky_decomp(n, half, factor.data()));
        NR_band_cholesky_solve(n, half, factor.data(), 2, rhs.data());
        benchmark::DoNotOptimize(rhs.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BandCholesky)->Arg(32)->Arg(256)->Arg(4096);

} // namespace

BENCHMARK_MAIN();
