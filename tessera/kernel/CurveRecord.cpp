#include "tessera/kernel/CurveRecord.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

#include "tessera/kernel/BCDF.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmArray.h"

// Makers, destruction and limits. A record is made header first, so that one failing allocation
// leaves one block to give back.

namespace {

// Radians; how far a sweep may miss the full turn and still close the curve. Fixed, part of the contract.
constexpr double kClosedTol = 1e-10;

void Copy3(const double from[3], double to[3]) {
    std::memcpy(to, from, 3 * sizeof(double));
}

void Set3(double to[3], double x, double y, double z) {
    to[0] = x;
    to[1] = y;
    to[2] = z;
}

/// Header with room for the form data, both uninitialised but for the header's fields.
template <class Data>
KC_CURVE_struct_s* MakeRecord(int form, double start, double span, const char* headerTag,
                              const char* dataTag) {
    auto* c = static_cast<KC_CURVE_struct_s*>(SM_alloc(sizeof(KC_CURVE_struct_s), headerTag));
    if (!c)
        return nullptr;
    *c = {SM_alloc(sizeof(Data), dataTag), form, start, span, 0};
    if (!c->data) {
        SM_free(c);
        return nullptr;
    }
    return c;
}

int CoefficientRows(int order) {
    switch (order) {
    case 2:
        return 5;
    case 3:
        return 7;
    default:
        return order < 2 ? 4 : 4 * order - 6;
    }
}

bool IsUsable(const BCURVE_DATA* d) {
    return d && d->poles && d->knots && d->order >= 1 && d->numPoles >= d->order;
}

struct WrapTags {
    const char *record, *spans, *segments, *coefficients;
};

/// Evaluation record with empty caches around d, which stays the caller's when memory runs out. Only
/// the span flags are cleared: the tables of a long poly-line are large and seldom used whole.
EVC_bcurve_s* WrapDefinition(BCURVE_DATA* d, const WrapTags& tags) {
    if (d->order > std::numeric_limits<int>::max() / 4) // the rows per span would not fit
        return nullptr;
    SmArray<EVC_bcurve_s> record = MakeSmArray<EVC_bcurve_s>(1, tags.record);
    if (!record)
        return nullptr;
    const auto n = static_cast<std::size_t>(d->numPoles);
    const int k = CoefficientRows(d->order);
    SmArray<double> spans(static_cast<double*>(SM_calloc(n, sizeof(double), tags.spans)));
    SmArray<BCURVE_SEGMENT> segments = MakeSmArray<BCURVE_SEGMENT>(n, tags.segments);
    SmArray<double> coefficients =
        MakeSmArray<double>(SmProduct(SmProduct(n, static_cast<std::size_t>(k)), 4), tags.coefficients);
    if (!spans || !segments || !coefficients)
        return nullptr;
    record[0] = {d, spans.release(), segments.release(), coefficients.release(), k};
    return record.release();
}

} // namespace

// --- Makers -----------------------------------------------------------------------------------------

KC_CURVE_struct_s* ev02p0(const double point[3]) {
    struct Position {
        double xyz[3];
    };
    KC_CURVE_struct_s* c = MakeRecord<Position>(kFormPoint, 0.0, 0.0, "ev02p0:0", "ev02p0:1");
    if (c)
        Copy3(point, static_cast<double*>(c->data));
    return c;
}

KC_CURVE_struct_s* ev03p0(const double start[3], const double end[3]) {
    KC_CURVE_struct_s* c = MakeRecord<EVC_line_s>(kFormLine, 0.0, 1.0, "ev03p0:0", "ev03p0:1");
    if (!c)
        return nullptr;
    auto* line = static_cast<EVC_line_s*>(c->data);
    Copy3(start, line->base);
    Set3(line->direction, end[0] - start[0], end[1] - start[1], end[2] - start[2]);
    return c;
}

KC_CURVE_struct_s* ev05p0(const double centre[3], double radius, double startAngle, double endAngle) {
    const double span = endAngle - startAngle;
    KC_CURVE_struct_s* c = MakeRecord<EVC_arc_s>(kFormArc, startAngle, span, "ev05p0:0", "ev05p0:1");
    if (!c)
        return nullptr;
    c->closed = evcrvIsFullTurn(span);
    auto* arc = static_cast<EVC_arc_s*>(c->data);
    arc->startAngle = startAngle;
    arc->endAngle = endAngle;
    Copy3(centre, arc->centre);
    arc->radius = radius;
    Set3(arc->xAxis, radius, 0.0, 0.0);
    Set3(arc->yAxis, 0.0, radius, 0.0);
    return c;
}

KC_CURVE_struct_s* ev06p0(const double centre[3], double radius1, double radius2, double rotation,
                          double startAngle, double endAngle) {
    const double span = endAngle - startAngle;
    KC_CURVE_struct_s* c = MakeRecord<EVC_conic_s>(kFormConic, startAngle, span, "ev06p0:0", "ev06p0:1");
    if (!c)
        return nullptr;
    c->closed = evcrvIsFullTurn(span);
    auto* conic = static_cast<EVC_conic_s*>(c->data);
    conic->startAngle = startAngle;
    conic->endAngle = endAngle;
    conic->radius1 = radius1;
    conic->radius2 = radius2;
    conic->conicType = 2;
    Copy3(centre, conic->centre);
    // The minor direction is the major one turned by a quarter: exact, where cos(rotation + pi/2) is not.
    const double cosine = std::cos(rotation), sine = std::sin(rotation);
    Set3(conic->majorAxis, radius1 * cosine, radius1 * sine, 0.0);
    Set3(conic->minorAxis, -radius2 * sine, radius2 * cosine, 0.0);
    return c;
}

BCURVE_DATA* ev091p(int* const sizes, double* knots, double (*poles)[4]) {
    if (!sizes || !knots || !poles)
        return nullptr;
    BCURVE_DATA* d = BCEV_alloc_bcurve_data(sizes[0], sizes[1]);
    if (!d)
        return nullptr;
    const auto n = static_cast<std::size_t>(d->numPoles), order = static_cast<std::size_t>(d->order);
    std::memcpy(d->knots, knots, (n + order) * sizeof(double));
    std::memcpy(d->poles, poles, n * sizeof(*d->poles));
    d->periodic = sizes[2];
    BCDF_update_polynomial_flag(d);
    return d;
}

EVC_bcurve_s* ev09p0(int* const sizes, double* knots, double (*poles)[4]) {
    BcurveDataPtr d(ev091p(sizes, knots, poles));
    if (!d)
        return nullptr;
    EVC_bcurve_s* record = WrapDefinition(d.get(), {"ev09p0: 1", "ev09p0:2", "ev09p0:3", "ev09p0:4"});
    if (record)
        (void)d.release(); // the record owns it now
    return record;
}

KC_CURVE_struct_s* ev09p1(BCURVE_DATA* d) {
    if (!IsUsable(d))
        return nullptr;
    SmArray<KC_CURVE_struct_s> c = MakeSmArray<KC_CURVE_struct_s>(1, "ev09p1:0");
    if (!c)
        return nullptr;
    EVC_bcurve_s* record = WrapDefinition(d, {"ev09p1: 1", "ev09p1:2", "ev09p1:3", "ev09p1:4"});
    if (!record)
        return nullptr;
    c[0] = {record, kFormBCurve, 0.0, 1.0, d->periodic};
    return c.release();
}

// --- Freeing ----------------------------------------------------------------------------------------

void evcrvf(KC_CURVE_struct_s* c) {
    if (!c)
        return;
    switch (c->form) {
    case kFormPoint:
        ev0250(static_cast<double*>(c->data));
        break;
    case kFormLine:
        ev0350(static_cast<EVC_line_s*>(c->data));
        break;
    case kFormArc:
        ev0550(static_cast<EVC_arc_s*>(c->data));
        break;
    case kFormConic:
        ev0650(static_cast<EVC_conic_s*>(c->data));
        break;
    case kFormBCurve:
        ev0950(static_cast<EVC_bcurve_s*>(c->data));
        break;
    case 8:
    case 10: // the data of these two belongs to someone else
        break;
    default:
        return;
    }
    SM_free(c);
}

void ev0250(double* point) {
    SM_free(point);
}
void ev0350(EVC_line_s* line) {
    SM_free(line);
}
void ev0550(EVC_arc_s* arc) {
    SM_free(arc);
}
void ev0650(EVC_conic_s* conic) {
    SM_free(conic);
}

void ev0950(EVC_bcurve_s* bcurve) {
    if (!bcurve)
        return;
    ev0952(bcurve->definition);
    SM_free(bcurve->spanCache);
    SM_free(bcurve->segments);
    SM_free(bcurve->coefficients);
    SM_free(bcurve);
}

void ev0952(BCURVE_DATA* d) {
    if (!d)
        return;
    SM_free(d->knots);
    SM_free(d->poles);
    SM_free(d);
}

// --- Limits -----------------------------------------------------------------------------------------

void evcrvp(KC_CURVE_struct_s* c, double limits[2]) {
    const double end = c->start + c->span;
    limits[0] = c->span < 0.0 ? end : c->start;
    limits[1] = c->span < 0.0 ? c->start : end;
}

int evcrvIsFullTurn(double span) {
    return std::fabs(span - 2 * std::numbers::pi) <= kClosedTol ? 1 : 0;
}
