#include "tessera/kernel/BCRVFIT.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/internal/BCLS.h"
#include "tessera/kernel/internal/BCRVFIT_samples.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmArray.h"

// For a number of poles: solve the linear least-squares problem at chord-length parameters, measure, move
// each parameter to its foot point and solve again, a few times (Hoschek, CAGD 5 (1988) 27-40). The pole
// count grows by the rate at which the error of a spline of this order falls, then is bisected back to the
// fewest poles that keep the tolerance. Every count starts from the chord-length parameters again: repeated
// correction lets parameters of different stretches run together.
//
// The solutions use a bounded number of evenly spread samples, some to each pole. A curve that satisfies
// them is measured on all points; points that it misses join the samples. Adaptive knots: spans in error are
// halved until the tolerance is kept, and smaller pole counts spread their knots over those spans evenly.

namespace {

using Vex::Math::Point3;

// Most poles of a fit: a curve that needs more is not one that anyone would edit. A count, beside a limit of
// twice the points, which uniform knots may need where the points are unevenly spread.
constexpr int kMaxPoles = 512;
// Samples a solution uses: at least this many, and so many for each pole. Counts; points that they pass over
// and the curve misses join them.
constexpr int kFewestSamples = 64;
constexpr int kSamplesPerPole = 4;
// Solutions by pole count: one at chord-length parameters, the others at foot points. A count.
constexpr int kFewestSolutions = 3;
constexpr int kMaxSolutions = 6;
// An error below this share of the tolerance needs no correction. A pure number.
constexpr double kExactError = 0.01;
// Length of a correction against the step to the foot point. A pure number between 1 and 2.
constexpr double kRelaxation = 1.5;
// A first error beyond this many tolerances is not mended by moving parameters. A pure number.
constexpr double kHopelessError = 6.0;
// Most by which the spans grow from one count to the next. A pure number.
constexpr double kFastestGrowth = 2.0;
// The same between a count that failed and one that held. A pure number.
constexpr double kBisectionError = 5.0;
// A pole count that fits by luck shows a first error within this many tolerances; looked for up to so many
// spans, as every count costs a solution. A pure number and a count.
constexpr double kLuckyError = 2.0;
constexpr int kMostLuckySpans = 16;
// A step to a foot point below this share of the tolerance is the last; the distance is exact to third order
// in it, and the measurement of all points looks closer.
constexpr double kFootResolution = 1.0;
// Samples off the curve for which a solution looks for a better foot point farther away. A count.
constexpr int kMostSearches = 8;
// Points measured while pole counts are compared; all are measured at the end. A count.
constexpr int kMeasuredInSearch = 1024;
// Part of the tolerance given up to rounding between the unit box and the record. A pure number.
constexpr double kRoundingShare = 1e-9;

struct Workspace {
    BCRVFIT_sample_t* used = nullptr; // kMaxSamples
    Point3* points = nullptr;         // their positions
    double* tau = nullptr;            // their parameters in the solution
    double* feet = nullptr;           // and those of their foot points
    double* spanError = nullptr;      // maxSpans, squared
    double* breaks = nullptr;         // maxSpans + 1
    double* nextBreaks = nullptr;
    double* bestKnots = nullptr;
    double (*bestPoles)[3] = nullptr;
    BCLS_scratch_t scratch;
};

struct Fit {
    BCRVFIT_samples_t samples;
    BCLS_curve_t curve;
    Workspace work;
    double tol = 0.0; // in the unit box
    double first[3] = {}, last[3] = {};
    int maxSpans = 0;
    int numBreaks = 0; // of adaptive knots; 0: uniform
    int numUsed = 0, numEvenUsed = 0;
    int bestPoles = 0;
    int bestSolutions = 0;         // that the best curve took
    std::uint32_t failedSpans = 0; // bit by number of uniform spans, of those below 32
    BCRVFIT_deviation_t bestDeviation, deviation;
};

// Hands out pieces of one block; a first walk without a block adds up its size.
class Carver {
public:
    explicit Carver(char* block) : block_(block) {}
    template <class T>
    void Take(T*& piece, std::size_t count) {
        static_assert(alignof(T) <= alignof(double));
        piece = block_ ? reinterpret_cast<T*>(block_ + used_) : nullptr;
        used_ += (count * sizeof(T) + sizeof(double) - 1) / sizeof(double) * sizeof(double);
    }
    std::size_t AskUsed() const { return used_; }

private:
    char* block_;
    std::size_t used_ = 0;
};

std::size_t CarveWorkspace(Fit& fit, char* block, int n, int nCheck, double*& u, double*& t) {
    const auto order = static_cast<std::size_t>(fit.curve.order);
    const auto spans = static_cast<std::size_t>(fit.maxSpans);
    const std::size_t poles = spans + order - 1;
    const auto even = static_cast<std::size_t>(std::min(fit.samples.count, kMaxEvenSamples));
    Carver carver(block);
    carver.Take(u, static_cast<std::size_t>(n));
    carver.Take(t, static_cast<std::size_t>(nCheck));
    carver.Take(fit.samples.even, even);
    carver.Take(fit.samples.missed, kMaxMissedSamples);
    carver.Take(fit.work.used, even + kMaxMissedSamples);
    carver.Take(fit.work.points, even + kMaxMissedSamples);
    carver.Take(fit.work.tau, even + kMaxMissedSamples);
    carver.Take(fit.work.feet, even + kMaxMissedSamples);
    carver.Take(fit.work.spanError, spans);
    carver.Take(fit.work.breaks, spans + 1);
    carver.Take(fit.work.nextBreaks, spans + 1);
    carver.Take(fit.work.bestKnots, poles + order);
    carver.Take(fit.work.bestPoles, poles);
    carver.Take(fit.curve.knots, poles + order);
    carver.Take(fit.curve.poles, poles);
    carver.Take(fit.curve.basis, spans * order * order);
    carver.Take(fit.curve.power, spans * order);
    carver.Take(fit.work.scratch.moments, spans * (2 * order - 1));
    carver.Take(fit.work.scratch.loads, spans * order * 3);
    carver.Take(fit.work.scratch.band, poles * order);
    carver.Take(fit.work.scratch.rhs, poles * 4);
    return carver.AskUsed();
}

void AddUsed(Fit& fit, const BCRVFIT_sample_t& sample) {
    fit.work.used[fit.numUsed] = sample;
    fit.work.points[fit.numUsed] = sample.point;
    fit.work.tau[fit.numUsed] = BCLS_ask_tau(fit.curve, sample.t);
    ++fit.numUsed;
}

// Takes every so many of the even samples, first and last among them, and all the missed ones.
void ChooseSamples(Fit& fit) {
    const int wanted = std::max(kFewestSamples, kSamplesPerPole * fit.curve.numPoles);
    const int stride = std::max(1, fit.samples.numEven / wanted), last = fit.samples.numEven - 1;
    fit.numUsed = 0;
    for (int i = 0; i < last; i += stride)
        AddUsed(fit, fit.samples.even[i]);
    AddUsed(fit, fit.samples.even[last]);
    fit.numEvenUsed = fit.numUsed;
    for (int i = 0; i < fit.samples.numMissed; ++i)
        AddUsed(fit, fit.samples.missed[i]);
}

// Finds the foot points of the samples in use; returns the largest distance, or the first one above giveUp.
double FindFeet(Fit& fit, double giveUp) {
    const double tolSq = fit.tol * fit.tol, resolution = kFootResolution * fit.tol;
    std::fill_n(fit.work.spanError, fit.curve.numSpans, 0.0);
    double largestSq = 0.0;
    int searched = 0;
    for (int i = 0; i < fit.numUsed; ++i) {
        double& tau = fit.work.feet[i];
        tau = fit.work.tau[i];
        const int span = std::min(static_cast<int>(tau), fit.curve.numSpans - 1);
        double distSq = BCLS_foot_near(fit.curve, fit.work.points[i], resolution, tau);
        // The start may have been on the wrong side of a bend; worth a search while few points are off.
        if (distSq > tolSq && ++searched <= kMostSearches) {
            double around = tau;
            const double aroundSq = BCLS_foot_around(fit.curve, fit.work.points[i], resolution, around);
            if (aroundSq < distSq) {
                distSq = aroundSq;
                tau = around;
            }
        }
        fit.work.spanError[span] = std::max(fit.work.spanError[span], distSq);
        largestSq = std::max(largestSq, distSq);
        if (distSq > giveUp * giveUp)
            break;
    }
    return std::sqrt(largestSq);
}

// Parameters of the next solution: beyond the foot points, as alternating minimisation falls short of its
// limit by a fixed share each time.
void MoveBeyondFeet(Fit& fit) {
    const double end = fit.curve.numSpans;
    for (int i = 0; i < fit.numUsed; ++i) {
        const double step = fit.work.feet[i] - fit.work.tau[i];
        fit.work.tau[i] = std::clamp(fit.work.tau[i] + kRelaxation * step, 0.0, end);
    }
}

void KeepBest(Fit& fit, int solutions) {
    fit.bestPoles = fit.curve.numPoles;
    fit.bestSolutions = solutions;
    fit.bestDeviation = fit.deviation;
    std::copy_n(fit.curve.knots, fit.curve.numPoles + fit.curve.order, fit.work.bestKnots);
    std::copy_n(&fit.curve.poles[0][0], 3 * fit.curve.numPoles, &fit.work.bestPoles[0][0]);
}

// Measures all points; those that are off join the samples in use.
bool HoldsForAllPoints(Fit& fit) {
    const int missed = fit.samples.numMissed;
    BCRVFIT_measure(fit.samples, fit.curve, fit.numEvenUsed, fit.work.used, fit.work.feet, fit.tol,
                    fit.deviation);
    for (int i = missed; i < fit.samples.numMissed; ++i) {
        AddUsed(fit, fit.samples.missed[i]);
        fit.work.feet[fit.numUsed - 1] = fit.work.tau[fit.numUsed - 1];
    }
    return fit.deviation.largest <= fit.tol;
}

// The largest error, in tolerances as `before` is, that falls below 1 in `more` solutions at the rate from
// before.
double ReachableError(double before, int more) {
    return std::isfinite(before) ? std::max(1.0, std::pow(before, more / (more + 1.0))) : HUGE_VAL;
}

// Fits a curve of the given number of spans. Returns its error: at most tol when all measured points are
// within tol, and then the curve is kept as the best. Gives up after the first solution when a sample is more
// than `hopeless` tolerances off; goes on to `fewestSolutions` where the first are good enough.
double TrySpans(Fit& fit, int numSpans, int numBreaks, const double* breaks, double hopeless = kHopelessError,
                int fewestSolutions = 1) {
    BCLS_set_knots(fit.curve, numSpans, numBreaks, breaks);
    ChooseSamples(fit);
    // Uniform spans grow no faster however large the error; adaptive ones are judged one by one.
    const double enough = std::max(kHopelessError, std::pow(kFastestGrowth, fit.curve.order));
    const double giveUp = hopeless < kHopelessError ? hopeless : (breaks ? HUGE_VAL : enough);
    double error = HUGE_VAL;
    for (int i = 0; i < kMaxSolutions; ++i) {
        if (!BCLS_solve(fit.curve, fit.numUsed, fit.work.points, fit.work.tau, fit.first, fit.last,
                        fit.work.scratch))
            return error;
        const double before = error, reachable = ReachableError(before / fit.tol, kMaxSolutions - 1 - i);
        error = FindFeet(fit, (breaks ? giveUp : std::min(giveUp, reachable)) * fit.tol);
        const bool isSettled = i + 1 >= fewestSolutions || error <= kExactError * fit.tol;
        if (error <= fit.tol && isSettled) {
            if (HoldsForAllPoints(fit)) {
                KeepBest(fit, i + 1);
                return fit.deviation.largest;
            }
            error = fit.deviation.largest;
        } else if (error <= fit.tol) {
            // Good enough; a correction or two make it better still.
        } else if (error > std::min(hopeless, reachable) * fit.tol) {
            return error;
        }
        MoveBeyondFeet(fit);
    }
    return std::max(error, std::nextafter(fit.tol, HUGE_VAL));
}

double TryUniform(Fit& fit, int numSpans, double hopeless) {
    const double error = TrySpans(fit, numSpans, 0, nullptr, hopeless);
    if (error > fit.tol && numSpans < 32)
        fit.failedSpans |= std::uint32_t{1} << numSpans;
    return error;
}

// The fewest spans above `low` (which failed) and up to `high` (which held).
template <class Try>
void BisectSpans(const Fit& fit, int low, int high, Try trySpans) {
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        if (trySpans(middle) <= fit.tol)
            high = middle;
        else
            low = middle;
    }
}

// Spans to try after `spans` gave `error`: the error of a spline falls with the power `order` of its spans.
int PredictSpans(const Fit& fit, int spans, double error) {
    const double growth = std::min(kFastestGrowth, std::pow(error / fit.tol, 1.0 / fit.curve.order));
    const double predicted = spans * growth;
    return std::clamp(static_cast<int>(std::ceil(predicted)), spans + 1, std::max(spans + 1, fit.maxSpans));
}

// Fewer spans than bisection found hold where uniform knots happen to fall on the knots of the shape. One
// solution each shows it.
void TryLuckySpans(Fit& fit, int fewest) {
    const int high = fit.bestPoles - fit.curve.order + 1;
    if (high > kMostLuckySpans)
        return;
    for (int spans = std::max(fewest, high / 2); spans < high; ++spans)
        if ((fit.failedSpans >> spans & 1U) == 0 && TryUniform(fit, spans, kLuckyError) <= fit.tol)
            return;
}

bool FitUniform(Fit& fit, int fewest) {
    int low = fewest - 1, spans = fewest;
    while (true) {
        const double error = TryUniform(fit, spans, kHopelessError);
        if (error <= fit.tol)
            break;
        if (spans >= fit.maxSpans)
            return false;
        low = spans;
        spans = PredictSpans(fit, spans, error);
    }
    BisectSpans(fit, low, spans, [&fit](int n) { return TryUniform(fit, n, kBisectionError); });
    TryLuckySpans(fit, fewest);
    return true;
}

// Halves the spans whose error is above tol, all when the samples in use show none; returns the new number
// of spans, the old one when none can be halved.
int SplitBreaks(Fit& fit, int spans) {
    constexpr double kShortestSpan = 1e-6; // of the parameter range: a corner is as sharp as it gets
    const double worst = *std::max_element(fit.work.spanError, fit.work.spanError + spans);
    const double tolSq = worst > fit.tol * fit.tol ? fit.tol * fit.tol : -1.0;
    int count = 0;
    for (int s = 0; s < spans; ++s) {
        const double from = fit.work.breaks[s], to = fit.work.breaks[s + 1];
        fit.work.nextBreaks[count++] = from;
        const bool hasRoom = count + (spans - s) <= fit.maxSpans && to - from > kShortestSpan;
        if (fit.work.spanError[s] > tolSq && hasRoom)
            fit.work.nextBreaks[count++] = 0.5 * (from + to);
    }
    fit.work.nextBreaks[count] = 1.0;
    std::swap(fit.work.breaks, fit.work.nextBreaks);
    return count;
}

bool FitAdaptive(Fit& fit, int fewest) {
    int spans = fewest;
    for (int i = 0; i <= spans; ++i)
        fit.work.breaks[i] = static_cast<double>(i) / spans;
    while (TrySpans(fit, spans, spans, fit.work.breaks) > fit.tol) {
        const int more = SplitBreaks(fit, spans);
        if (more == spans)
            return false;
        spans = more;
    }
    fit.numBreaks = spans;
    BisectSpans(fit, fewest - 1, spans,
                [&fit, spans](int n) { return TrySpans(fit, n, spans, fit.work.breaks, kBisectionError); });
    return true;
}

// Searches with some of the points measured, then measures all of them and adds spans while any is off. The
// last curve is corrected a few times even where its first solution holds.
bool FitAllPoints(Fit& fit, BCRVFIT_knots_t knots, int fewest) {
    const bool isAdaptive = knots == BCRVFIT_KNOTS_ADAPTIVE;
    fit.samples.stride = std::max(1, fit.samples.count / kMeasuredInSearch);
    if (!(isAdaptive ? FitAdaptive(fit, fewest) : FitUniform(fit, fewest)))
        return false;
    const bool isFound = fit.samples.stride == 1;
    if (isFound && fit.bestSolutions >= kFewestSolutions)
        return true;
    fit.samples.stride = 1;
    const double* breaks = isAdaptive ? fit.work.breaks : nullptr;
    const int found = fit.bestPoles - fit.curve.order + 1;
    for (int spans = found; spans <= fit.maxSpans; spans += 1 + (spans - found) / 2)
        if (TrySpans(fit, spans, fit.numBreaks, breaks, kHopelessError, kFewestSolutions) <= fit.tol ||
            isFound)
            return true;
    return false;
}

// The best curve as a record, its end poles the very points.
RecordPtr MakeRecord(const Fit& fit, const Point3& first, const Point3& last) {
    const int n = fit.bestPoles;
    const auto poles = MakeSmArray<double[4]>(static_cast<std::size_t>(n), "BCRVFIT_least_squares_fit:1");
    if (!poles)
        return nullptr;
    for (int i = 0; i < n; ++i) {
        const double* p = fit.work.bestPoles[i];
        poles[i][0] = fit.samples.origin.x + fit.samples.size * p[0];
        poles[i][1] = fit.samples.origin.y + fit.samples.size * p[1];
        poles[i][2] = fit.samples.origin.z + fit.samples.size * p[2];
        poles[i][3] = 1.0;
    }
    const Point3* ends[2] = {&first, &last};
    for (int e = 0; e < 2; ++e) {
        double* pole = poles[e == 0 ? 0 : n - 1];
        pole[0] = ends[e]->x;
        pole[1] = ends[e]->y;
        pole[2] = ends[e]->z;
    }
    int sizes[3] = {n, fit.curve.order, 0};
    BcurveDataPtr definition(ev091p(sizes, fit.work.bestKnots, poles.get()));
    if (!definition)
        return nullptr;
    RecordPtr record(ev09p1(definition.get()));
    if (record)
        static_cast<void>(definition.release());
    return record;
}

// Largest distance of the measured points from the record. The distances at hand are upper bounds: the
// listed points are settled exactly, the farthest first, until one is no nearer than all the rest.
double SettleLargest(const Fit& fit, KC_CURVE_struct_s* record) {
    BCRVFIT_deviation_t dev = fit.bestDeviation;
    double largest = 0.0;
    while (dev.numWorst > 0) {
        const auto at = std::max_element(dev.worst, dev.worst + dev.numWorst) - dev.worst;
        const double bound = dev.worst[at] * fit.samples.size;
        if (bound <= largest)
            return largest;
        const Point3& p = fit.samples.pts[dev.worstIndex[at]];
        const double position[3] = {p.x, p.y, p.z};
        double t = 0.0, distance = bound;
        if (em015cBounded(record, position, &t, nullptr, &distance) == kInversionFailed)
            distance = bound;
        largest = std::max(largest, distance);
        --dev.numWorst;
        dev.worst[at] = dev.worst[dev.numWorst];
        dev.worstIndex[at] = dev.worstIndex[dev.numWorst];
    }
    return std::max(largest, dev.bound * fit.samples.size);
}

} // namespace

KC_CURVE_struct_s* BCRVFIT_least_squares_fit(int n, const Point3* pts, int nCheck, const Point3* check,
                                             int order, int closed, BCRVFIT_knots_t knots, double tol,
                                             int* status, double err[3]) {
    *status = 1;
    if (order < 2 || order > kBclsMaxOrder || n < order || !pts || !(tol > 0.0))
        return nullptr;
    const bool hasCheck = check && nCheck > 1;
    Fit fit;
    fit.curve.order = order;
    fit.curve.closed = closed != 0;
    fit.samples.count = hasCheck ? nCheck : n;
    fit.samples.pts = hasCheck ? check : pts;
    // A closed curve of order 3 and above has its seam and one pole either side of it at the least.
    const int fewestPoles = fit.curve.closed ? std::max(order, 4) : order;
    const int fewest = fewestPoles - order + 1;
    const int mostPoles = std::min(kMaxPoles, 2 * std::min(fit.samples.count, kMaxPoles) + order);
    fit.maxSpans = std::max(fewest, mostPoles - order + 1);

    double *u = nullptr, *t = nullptr;
    const std::size_t bytes = CarveWorkspace(fit, nullptr, n, hasCheck ? nCheck : 0, u, t);
    const auto block = MakeSmArray<char>(bytes, "BCRVFIT_least_squares_fit:0");
    if (!block)
        return nullptr;
    CarveWorkspace(fit, block.get(), n, hasCheck ? nCheck : 0, u, t);
    if (!BCRVFIT_prepare_samples(fit.samples, n, pts, u, hasCheck ? t : u))
        return nullptr;
    fit.curve.isPlanar = fit.samples.isPlanar;
    fit.tol = tol / fit.samples.size * (1.0 - kRoundingShare);
    const Point3 &first = pts[0], &last = fit.curve.closed ? pts[0] : pts[n - 1];
    const Point3 ends[2] = {fit.samples.InUnitBox(first), fit.samples.InUnitBox(last)};
    fit.first[0] = ends[0].x;
    fit.first[1] = ends[0].y;
    fit.first[2] = ends[0].z;
    fit.last[0] = ends[1].x;
    fit.last[1] = ends[1].y;
    fit.last[2] = ends[1].z;

    if (!FitAllPoints(fit, knots, fewest))
        return nullptr;
    RecordPtr record = MakeRecord(fit, first, last);
    if (!record)
        return nullptr;
    const double largest = SettleLargest(fit, record.get());
    if (!(largest <= tol))
        return nullptr;
    err[0] = largest;
    err[1] = fit.samples.size * std::sqrt(fit.bestDeviation.sumSq / fit.samples.count);
    err[2] = fit.samples.size * fit.bestDeviation.sum / fit.samples.count;
    *status = 0;
    return record.release();
}
