// The points of a B-curve fit: parameters, the samples that a solution uses, and the deviation of all points.
#pragma once

#include "tessera/kernel/VexMath.h"
#include "tessera/kernel/internal/BCLS.h"

/// Samples a solution may use: evenly spread ones and, behind them, points that an earlier curve missed.
inline constexpr int kMaxEvenSamples = 4096;
inline constexpr int kMaxMissedSamples = 256;
inline constexpr int kMaxSamples = kMaxEvenSamples + kMaxMissedSamples;

struct BCRVFIT_sample_t {
    Vex::Math::Point3 point; ///< in the unit box
    double t;                ///< chord-length parameter
    int index;               ///< in the measured points
};

struct BCRVFIT_samples_t {
    int count = 0;                          ///< measured points
    const Vex::Math::Point3* pts = nullptr; ///< measured points, as given
    const double* t = nullptr;              ///< their chord-length parameters, ascending from 0 to 1
    Vex::Math::Point3 origin{};             ///< unit box: (p - origin) / size
    double size = 1.0;
    bool isPlanar = false; ///< z is 0 in the unit box
    int stride = 1;        ///< every so many points are measured
    int numEven = 0;
    BCRVFIT_sample_t* even = nullptr; ///< kMaxEvenSamples
    int numMissed = 0;
    BCRVFIT_sample_t* missed = nullptr; ///< kMaxMissedSamples

    Vex::Math::Point3 InUnitBox(const Vex::Math::Point3& p) const {
        const double inverse = 1.0 / size;
        return {(p.x - origin.x) * inverse, (p.y - origin.y) * inverse, (p.z - origin.z) * inverse};
    }
};

/// Deviation of all measured points from a curve, in the unit box. Each point is measured from its own
/// stretch of the curve, so that no value is below the distance from the whole curve.
struct BCRVFIT_deviation_t {
    static constexpr int kMaxWorst = 32;
    double largest = 0.0;
    double sum = 0.0;
    double sumSq = 0.0;
    int numWorst = 0; ///< the points farthest off, in no order
    int worstIndex[kMaxWorst];
    double worst[kMaxWorst];
    double bound = 0.0; ///< every point that is not listed lies within this
};

/// Box, chord-length parameters of pts (n, into u) and of the measured points (into t, which may be u when
/// the two are one), even samples. False when a coordinate is not finite or the box overflows.
bool BCRVFIT_prepare_samples(BCRVFIT_samples_t& samples, int n, const Vex::Math::Point3* pts, double* u,
                             double* t);

/// Measures every stride-th point, starting between the feet of the samples used (ascending in index, with
/// their tau). Stops early, with `largest` above tol, when many points are off; notes points that are off as
/// missed.
void BCRVFIT_measure(BCRVFIT_samples_t& samples, const BCLS_curve_t& curve, int numUsed,
                     const BCRVFIT_sample_t* used, const double* tau, double tol, BCRVFIT_deviation_t& dev);
