#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "tessera/kernel/BCDF.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/CurveRecord.h"

// Exact conversion. A sweep is cut into equal parts of at most a quarter turn; each is a rational quadratic
// whose middle pole lies where the end tangents meet and weighs the cosine of the half angle (L. Piegl and
// W. Tiller, The NURBS Book, 2nd edition, 1997, algorithm A7.1). The parts are made on the unit circle
// and mapped by the record's axes, which carry it onto circles and ellipses alike.

namespace {

// Fraction of a quarter turn; keeps a full turn at four parts when it is long by a rounding error.
constexpr double kQuarterSlack = 1e-9;

struct TurningCurve {
    const double *centre, *x, *y;
    bool closed;
};

BCURVE_DATA* ConvertLine(const EVC_line_s* line, const double limits[2]) {
    BCURVE_DATA* d = BCEV_alloc_bcurve_data(2, 2);
    if (!d)
        return nullptr;
    for (int i = 0; i < 2; ++i) {
        for (int c = 0; c < 3; ++c)
            d->poles[i][c] = line->base[c] + limits[i] * line->direction[c];
        d->poles[i][3] = 1.0;
        d->knots[2 * i] = d->knots[2 * i + 1] = i;
    }
    return d;
}

void SetPole(double pole[4], const TurningCurve& curve, double angle, double stretch, double weight) {
    const double cosine = stretch * std::cos(angle), sine = stretch * std::sin(angle);
    for (int c = 0; c < 3; ++c)
        pole[c] = curve.centre[c] + cosine * curve.x[c] + sine * curve.y[c];
    pole[3] = weight;
}

BCURVE_DATA* ConvertTurning(const TurningCurve& curve, const double limits[2]) {
    const double sweep = limits[1] - limits[0];
    const double quarters = sweep / (std::numbers::pi / 2);
    if (!(quarters < 1e6)) // a NaN, or angles that mean nothing
        return nullptr;
    const int parts = std::max(1, static_cast<int>(std::ceil(quarters - kQuarterSlack)));
    BCURVE_DATA* d = BCEV_alloc_bcurve_data(2 * parts + 1, 3);
    if (!d)
        return nullptr;
    const double half = 0.5 * sweep / parts, weight = std::cos(half);
    for (int i = 0; i < parts; ++i) {
        SetPole(d->poles[2 * i], curve, limits[0] + 2 * i * half, 1.0, 1.0);
        SetPole(d->poles[2 * i + 1], curve, limits[0] + (2 * i + 1) * half, 1.0 / weight, weight);
        d->knots[2 * i + 1] = d->knots[2 * i + 2] = static_cast<double>(i) / parts;
    }
    if (curve.closed)
        std::memcpy(d->poles[2 * parts], d->poles[0], sizeof d->poles[0]);
    else
        SetPole(d->poles[2 * parts], curve, limits[1], 1.0, 1.0);
    d->knots[0] = 0.0;
    for (int i = 1; i <= 3; ++i)
        d->knots[2 * parts + i] = 1.0;
    BCDF_update_polynomial_flag(d);
    return d;
}

} // namespace

BCURVE_DATA* em0960(KC_CURVE_struct_s* c) {
    if (!c)
        return nullptr;
    double limits[2];
    evcrvp(c, limits);
    switch (c->form) {
    case kFormLine:
        return ConvertLine(static_cast<const EVC_line_s*>(c->data), limits);
    case kFormArc: {
        const auto* arc = static_cast<const EVC_arc_s*>(c->data);
        return ConvertTurning({arc->centre, arc->xAxis, arc->yAxis, c->closed == 1}, limits);
    }
    case kFormConic: {
        const auto* conic = static_cast<const EVC_conic_s*>(c->data);
        return ConvertTurning({conic->centre, conic->majorAxis, conic->minorAxis, c->closed == 1}, limits);
    }
    case kFormBCurve:
        return BCDF_copy_bcdf_data(static_cast<const EVC_bcurve_s*>(c->data)->definition);
    default:
        return nullptr;
    }
}
