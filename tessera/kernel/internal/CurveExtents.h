// How far a curve reaches along a direction.
#pragma once

#include "tessera/kernel/CurveRecord.h"

struct CurveExtent {
    double low, high;

    double Middle() const { return 0.5 * (low + high); }
    double Half() const { return 0.5 * (high - low); }
    void Add(double value) {
        low = value < low ? value : low;
        high = value > high ? value : high;
    }
};

/// Range of a cos t + b sin t over the ascending limits: closed form.
CurveExtent ExtentOfTurn(double a, double b, const double limits[2]);

/// Range of one coordinate (0 x, 1 y, 2 z) over a whole B-curve, to some 1e-13 of its size. False when
/// memory runs out. Leaves the evaluation caches alone. O(n) spans, plus some fifty halvings for each place
/// where a span sets a new bound.
bool ExtentOfBCurve(const BCURVE_DATA* d, int coordinate, CurveExtent* extent);
