// One pass over planar points in two interleaved lanes: a single running sum waits for its own additions.
#pragma once

#include "tessera/kernel/VexMath.h"

/// Feeds every point, relative to origin, to sums.Add(dx, dy): even indices to one copy of start, odd ones to
/// another; the answer is even.Merge(odd). start may carry constants of the pass.
template <class Sums>
Sums SumOverPoints(const Vex::Math::Point2* pts, int n, Vex::Math::Point2 origin, const Sums& start) {
    Sums even = start, odd = start;
    int i = 0;
    for (; i + 1 < n; i += 2) {
        even.Add(pts[i].x - origin.x, pts[i].y - origin.y);
        odd.Add(pts[i + 1].x - origin.x, pts[i + 1].y - origin.y);
    }
    if (i < n)
        even.Add(pts[i].x - origin.x, pts[i].y - origin.y);
    even.Merge(odd);
    return even;
}

/// Largest and summed deviation.
struct DeviationSums {
    double largest = 0.0, sum = 0.0;
    void AddDeviation(double d) {
        largest = d > largest ? d : largest;
        sum += d;
    }
    void MergeDeviations(const DeviationSums& other) {
        largest = other.largest > largest ? other.largest : largest;
        sum += other.sum;
    }
};
