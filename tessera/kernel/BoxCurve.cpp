#include "tessera/kernel/BoxCurve.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/BoxPoints.h"
#include "tessera/kernel/internal/CurveExtents.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmArray.h"

// Boxes of records. Arcs and ellipses have closed-form extents in every direction: up to half a turn they
// are boxed along the chord, beyond that along the axes of the plane. A B-curve lies in the hull of the
// Bezier poles of its spans, so the box of those points is a box of the curve. Parameter ranges of B-curves
// are cut out first; nothing here fills an evaluation cache of the record but the span of a single point.

namespace {

// Curve parameter; shorter ranges are points, as the boxes built from the answer have it.
constexpr double kEmptyRange = 1e-10;
// Relative; a half turn may be long by this and still count as one.
constexpr double kHalfTurn = std::numbers::pi * (1 + 1e-12);

struct OrientedBox {
    int dimension;
    double centre[3];
    double halfSizes[3][3];

    /// Adds a side unless it is too short to have a direction.
    void AddSide(const double unit[3], double half) {
        if (!(half >= EQ_ask_length_tolerance()))
            return;
        for (int c = 0; c < 3; ++c)
            halfSizes[dimension][c] = half * unit[c];
        ++dimension;
    }
};

struct Turn {
    const double *centre, *x, *y;
};

double Dot(const double a[3], const double b[3]) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

void Cross(const double a[3], const double b[3], double out[3]) {
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

/// Unit vector in place; a vector without a direction is left alone and answers false.
bool Unitize(double a[3]) {
    const double length = std::sqrt(Dot(a, a));
    if (!(length > 0.0))
        return false;
    for (int c = 0; c < 3; ++c)
        a[c] /= length;
    return true;
}

void SortLimits(const double limits[2], double sorted[2]) {
    sorted[0] = std::min(limits[0], limits[1]);
    sorted[1] = std::max(limits[0], limits[1]);
}

void BoxLine(const EVC_line_s* line, const double limits[2], OrientedBox* box) {
    double unit[3];
    std::memcpy(unit, line->direction, sizeof unit);
    const double length = std::sqrt(Dot(unit, unit));
    for (int c = 0; c < 3; ++c)
        box->centre[c] = line->base[c] + 0.5 * (limits[0] + limits[1]) * unit[c];
    if (Unitize(unit))
        box->AddSide(unit, 0.5 * (limits[1] - limits[0]) * length);
}

/// Directions of the box's sides in the plane of the turn.
void ChooseSides(const Turn& turn, const double limits[2], double u[3], double v[3]) {
    double normal[3];
    Cross(turn.x, turn.y, normal);
    const bool isLevel = turn.x[2] == 0.0 && turn.y[2] == 0.0;
    if (isLevel || !Unitize(normal)) {
        normal[0] = normal[1] = 0.0;
        normal[2] = 1.0;
    }
    const double cosine = std::cos(limits[1]) - std::cos(limits[0]);
    const double sine = std::sin(limits[1]) - std::sin(limits[0]);
    for (int c = 0; c < 3; ++c)
        u[c] = cosine * turn.x[c] + sine * turn.y[c];
    if (limits[1] - limits[0] > kHalfTurn || !Unitize(u)) {
        const double* longer = Dot(turn.x, turn.x) >= Dot(turn.y, turn.y) ? turn.x : turn.y;
        const double level[3] = {1.0, 0.0, 0.0};
        std::memcpy(u, isLevel ? level : longer, 3 * sizeof(double));
        Unitize(u);
    }
    Cross(normal, u, v);
}

void BoxTurn(const Turn& turn, const double limits[2], OrientedBox* box) {
    double sides[2][3];
    ChooseSides(turn, limits, sides[0], sides[1]);
    std::memcpy(box->centre, turn.centre, sizeof box->centre);
    for (const double* side : {sides[0], sides[1]}) {
        const CurveExtent extent = ExtentOfTurn(Dot(turn.x, side), Dot(turn.y, side), limits);
        for (int c = 0; c < 3; ++c)
            box->centre[c] += extent.Middle() * side[c];
        box->AddSide(side, extent.Half());
    }
}

/// The Bezier poles of all spans, ends shared, as (x, y, z); count 0 when there is no memory.
SmArray<double> CollectBezierPoles(const BCURVE_DATA* d, int* count) {
    const auto order = static_cast<std::size_t>(d->order), degree = order - 1;
    const auto spans = static_cast<std::size_t>(d->numPoles) - degree;
    *count = 0;
    if (spans * order > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return nullptr;
    SmArray<double> points = MakeSmArray<double>(SmProduct(3 * spans, order), "BoxCurve:0");
    SmArray<double> bezier = MakeSmArray<double>(4 * order, "BoxCurve:1");
    if (!points || !bezier)
        return nullptr;
    for (int s = d->degree; s < d->numPoles; ++s) {
        if (!(d->knots[s] < d->knots[s + 1]) && *count > 0)
            continue;
        BCEV_ask_bezier_of_span(d, s, bezier.get());
        for (std::size_t i = 0; i < order; ++i) {
            const double* h = bezier.get() + 4 * i;
            double* point = points.get() + 3 * static_cast<std::size_t>((*count)++);
            for (int c = 0; c < 3; ++c)
                point[c] = h[c] / h[3];
        }
    }
    return points;
}

/// Adds the third side to a box in the plane.
void AddHeight(const CurveExtent& height, OrientedBox* box) {
    const double up[3] = {0.0, 0.0, 1.0};
    box->centre[2] = height.Middle();
    box->AddSide(up, height.Half());
}

/// Without a hull (weights of both signs) the box follows the axes and the true extents.
bool BoxByExtents(const BCURVE_DATA* d, OrientedBox* box) {
    for (int c = 0; c < 3; ++c) {
        CurveExtent extent{};
        if (!ExtentOfBCurve(d, c, &extent))
            return false;
        const double unit[3] = {c == 0 ? 1.0 : 0.0, c == 1 ? 1.0 : 0.0, c == 2 ? 1.0 : 0.0};
        box->centre[c] = extent.Middle();
        box->AddSide(unit, extent.Half());
    }
    return true;
}

bool BoxBCurve(const BCURVE_DATA* d, OrientedBox* box) {
    if (!HasPositiveWeights(d))
        return BoxByExtents(d, box);
    SmArray<double> collected;
    const double* points = &d->poles[0][0];
    int count = d->numPoles, stride = 4;
    if (d->degree > 1) { // the vertices of a poly-line are its poles
        collected = CollectBezierPoles(d, &count);
        if (!collected)
            return false;
        points = collected.get();
        stride = 3;
    }
    BoxPoints(count, points, stride, &box->dimension, box->centre, box->halfSizes);
    CurveExtent height{points[2], points[2]};
    for (int i = 1; i < count; ++i)
        height.Add(points[static_cast<std::size_t>(i) * static_cast<std::size_t>(stride) + 2]);
    AddHeight(height, box);
    return true;
}

/// Definition of the range: the record's own for a whole curve, else a piece that `piece` owns. Null when
/// memory runs out.
const BCURVE_DATA* AskDefinition(KC_CURVE_struct_s* c, const double limits[2], RecordPtr* piece) {
    if (limits[0] > 0.0 || limits[1] < 1.0 || limits[1] - limits[0] > 1.0) {
        piece->reset(em0941(c, limits));
        c = piece->get();
    }
    return c ? static_cast<const EVC_bcurve_s*>(c->data)->definition : nullptr;
}

Turn AskTurn(const KC_CURVE_struct_s* c) {
    if (c->form == kFormArc) {
        const auto* arc = static_cast<const EVC_arc_s*>(c->data);
        return {arc->centre, arc->xAxis, arc->yAxis};
    }
    const auto* conic = static_cast<const EVC_conic_s*>(c->data);
    return {conic->centre, conic->majorAxis, conic->minorAxis};
}

bool IsKnownForm(const KC_CURVE_struct_s* c) {
    return c && (c->form == kFormPoint || c->form == kFormLine || c->form == kFormArc ||
                 c->form == kFormConic || c->form == kFormBCurve);
}

} // namespace

int BoxCurve(KC_CURVE_struct_s* c, const double limits[2], int* dimension, double centre[3],
             double halfSizes[3][3]) {
    if (!IsKnownForm(c))
        return 1;
    double range[2];
    SortLimits(limits, range);
    OrientedBox box{};
    if (c->form == kFormPoint || (c->form == kFormBCurve && !(range[1] - range[0] > kEmptyRange))) {
        evcrve(c, 0, range[0], box.centre);
    } else if (c->form == kFormLine) {
        BoxLine(static_cast<const EVC_line_s*>(c->data), range, &box);
    } else if (c->form == kFormBCurve) {
        RecordPtr piece;
        const BCURVE_DATA* d = AskDefinition(c, range, &piece);
        if (!d || !BoxBCurve(d, &box))
            return 1;
    } else {
        BoxTurn(AskTurn(c), range, &box);
    }
    *dimension = box.dimension;
    std::memcpy(centre, box.centre, sizeof box.centre);
    std::memcpy(halfSizes, box.halfSizes, sizeof box.halfSizes);
    return 0;
}

int BoxCurveXY(KC_CURVE_struct_s* c, const double limits[2], double min[2], double max[2]) {
    if (!IsKnownForm(c))
        return 1;
    double range[2];
    SortLimits(limits, range);
    CurveExtent extents[2];
    if (c->form == kFormArc || c->form == kFormConic) {
        const Turn turn = AskTurn(c);
        for (int k = 0; k < 2; ++k) {
            const CurveExtent extent = ExtentOfTurn(turn.x[k], turn.y[k], range);
            extents[k] = {turn.centre[k] + extent.low, turn.centre[k] + extent.high};
        }
    } else if (c->form == kFormBCurve && range[1] - range[0] > kEmptyRange) {
        RecordPtr piece;
        const BCURVE_DATA* d = AskDefinition(c, range, &piece);
        if (!d || !ExtentOfBCurve(d, 0, &extents[0]) || !ExtentOfBCurve(d, 1, &extents[1]))
            return 1;
    } else { // monotone between its ends
        double a[3], b[3];
        evcrve(c, 0, range[0], a);
        evcrve(c, 0, range[1], b);
        for (int k = 0; k < 2; ++k)
            extents[k] = {std::min(a[k], b[k]), std::max(a[k], b[k])};
    }
    for (int k = 0; k < 2; ++k) {
        min[k] = extents[k].low;
        max[k] = extents[k].high;
    }
    return 0;
}
