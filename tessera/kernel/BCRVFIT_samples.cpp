#include "tessera/kernel/internal/BCRVFIT_samples.h"

#include <algorithm>
#include <cmath>

// Parameters come from the points to fit: the chord length of thinned points is not inflated by jitter.
// Measured points that stand among them in the same order take their places between them.

namespace {

using Vex::Math::Point3;

// Points off the curve that end a measurement: the fit has failed. A count.
constexpr int kEnoughMissed = 16;
// Foot points are found to this share of the tolerance; the distance is then exact to third order.
constexpr double kFootResolution = 0.1;

double Distance(const Point3& a, const Point3& b) {
    const double dx = b.x - a.x, dy = b.y - a.y, dz = b.z - a.z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

bool IsSame(const Point3& a, const Point3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

struct Box {
    double lo[3] = {HUGE_VAL, HUGE_VAL, HUGE_VAL};
    double hi[3] = {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    double finite = 0.0; // stays 0: 0 x is NaN for what is not finite
    void Add(int n, const Point3* pts) {
        for (int i = 0; i < n; ++i) {
            const double p[3] = {pts[i].x, pts[i].y, pts[i].z};
            for (int c = 0; c < 3; ++c) {
                lo[c] = std::min(lo[c], p[c]);
                hi[c] = std::max(hi[c], p[c]);
                finite += 0.0 * p[c];
            }
        }
    }
};

// Chord-length parameters from 0 to 1, in the units of the box so that no length overflows.
void SetChordParameters(const BCRVFIT_samples_t& samples, int n, const Point3* pts, double* u) {
    double length = 0.0;
    u[0] = 0.0;
    Point3 before = samples.InUnitBox(pts[0]);
    for (int i = 1; i < n; ++i) {
        const Point3 now = samples.InUnitBox(pts[i]);
        length += Distance(before, now);
        u[i] = length;
        before = now;
    }
    for (int i = 1; i < n; ++i)
        u[i] = length > 0.0 ? u[i] / length : static_cast<double>(i) / (n - 1);
    u[n - 1] = 1.0;
}

// Gives measured points from..to, which match parameters a and b, the parameters between by chord length.
void FillBetween(const BCRVFIT_samples_t& samples, int from, int to, double a, double b, double* t) {
    double length = 0.0;
    for (int i = from; i < to; ++i) {
        t[i] = length;
        length += Distance(samples.pts[i], samples.pts[i + 1]);
    }
    const double scale = length > 0.0 ? (b - a) / length : 0.0;
    for (int i = from; i < to; ++i)
        t[i] = a + scale * t[i];
}

// Finds the fitted points among the measured ones, in order; false when some are not there.
bool MatchParameters(const BCRVFIT_samples_t& samples, int n, const Point3* pts, const double* u, double* t) {
    const int last = samples.count - 1;
    if (!IsSame(samples.pts[0], pts[0]))
        return false;
    int from = 0, matched = 1;
    for (int i = 1; i <= last && matched < n - 1; ++i)
        if (IsSame(samples.pts[i], pts[matched])) {
            FillBetween(samples, from, i, u[matched - 1], u[matched], t);
            from = i;
            ++matched;
        }
    if (matched < n - 1)
        return false;
    // On a closed curve the last fitted point is not measured: it repeats the first, moved there from the
    // last measured point or added behind it.
    FillBetween(samples, from, last, u[n - 2], 1.0, t);
    t[last] = from == last ? u[n - 2] : 1.0;
    return true;
}

void AddEven(BCRVFIT_samples_t& samples, int i) {
    samples.even[samples.numEven++] = {samples.InUnitBox(samples.pts[i]), samples.t[i], i};
}

void ChooseEvenSamples(BCRVFIT_samples_t& samples) {
    const int last = samples.count - 1;
    AddEven(samples, 0);
    if (samples.count <= kMaxEvenSamples) {
        for (int i = 1; i < last; ++i)
            AddEven(samples, i);
    } else {
        const double step = 1.0 / (kMaxEvenSamples - 1);
        double next = step;
        for (int i = 1; i < last; ++i)
            if (samples.t[i] >= next && samples.numEven < kMaxEvenSamples - 1) {
                AddEven(samples, i);
                next = (std::floor(samples.t[i] / step) + 1.0) * step;
            }
    }
    AddEven(samples, last);
}

void NoteWorst(BCRVFIT_deviation_t& dev, int index, double distance) {
    if (dev.numWorst < BCRVFIT_deviation_t::kMaxWorst) {
        dev.worstIndex[dev.numWorst] = index;
        dev.worst[dev.numWorst++] = distance;
    } else {
        const auto least = std::min_element(dev.worst, dev.worst + dev.numWorst) - dev.worst;
        dev.worstIndex[least] = index;
        dev.worst[least] = distance;
    }
    if (dev.numWorst == BCRVFIT_deviation_t::kMaxWorst)
        dev.bound = *std::min_element(dev.worst, dev.worst + dev.numWorst);
}

} // namespace

bool BCRVFIT_prepare_samples(BCRVFIT_samples_t& samples, int n, const Point3* pts, double* u, double* t) {
    Box box;
    box.Add(n, pts);
    if (samples.pts != pts)
        box.Add(samples.count, samples.pts);
    const double extent[3] = {box.hi[0] - box.lo[0], box.hi[1] - box.lo[1], box.hi[2] - box.lo[2]};
    const double size = std::max({extent[0], extent[1], extent[2]});
    if (!(box.finite == 0.0) || !std::isfinite(size))
        return false;
    samples.origin = {box.lo[0] + 0.5 * extent[0], box.lo[1] + 0.5 * extent[1], box.lo[2] + 0.5 * extent[2]};
    samples.isPlanar = extent[2] == 0.0;
    // All points in one place: any size serves.
    samples.size = size > 0.0 ? size : 1.0;
    if (!std::isfinite(1.0 / samples.size))
        return false;
    SetChordParameters(samples, n, pts, u);
    if (t != u && !MatchParameters(samples, n, pts, u, t))
        SetChordParameters(samples, samples.count, samples.pts, t);
    samples.t = t;
    ChooseEvenSamples(samples);
    return true;
}

void BCRVFIT_measure(BCRVFIT_samples_t& samples, const BCLS_curve_t& curve, int numUsed,
                     const BCRVFIT_sample_t* used, const double* tau, double tol, BCRVFIT_deviation_t& dev) {
    dev = BCRVFIT_deviation_t{};
    const double resolution = kFootResolution * tol;
    int numOff = 0, segment = -1;
    double slope = 0.0, largestSq = 0.0;
    for (int i = 0, next = 0; i < samples.count && numOff < kEnoughMissed; i += samples.stride) {
        while (next < numUsed && used[next].index <= i)
            ++next;
        if (segment != next - 1) {
            segment = next - 1;
            const double span = next < numUsed ? used[next].t - used[segment].t : 0.0;
            slope = span > 0.0 ? (tau[next] - tau[segment]) / span : 0.0;
        }
        double foot = tau[segment] + slope * (samples.t[i] - used[segment].t);
        const Point3 p = samples.InUnitBox(samples.pts[i]);
        double distSq = BCLS_foot_near(curve, p, resolution, foot);
        if (distSq > tol * tol)
            distSq = std::min(distSq, BCLS_foot_around(curve, p, resolution, foot));
        const double distance = std::sqrt(distSq);
        dev.sum += distance;
        dev.sumSq += distSq;
        largestSq = std::max(largestSq, distSq);
        if (distance > dev.bound)
            NoteWorst(dev, i, distance);
        if (distSq > tol * tol) {
            ++numOff;
            if (samples.numMissed < kMaxMissedSamples)
                samples.missed[samples.numMissed++] = {p, samples.t[i], i};
        }
    }
    dev.largest = std::sqrt(largestSq);
}
