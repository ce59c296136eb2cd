#include <cmath>
#include <cstring>
#include <numbers>

#include "tessera/kernel/BCDF.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/RecordPtr.h"

// Copies, affine maps and the return to standard axes. A map acts on the vectors of a record and leaves
// its parameters alone, so points keep their parameters; only an ellipse whose axes a map has made
// oblique is turned onto its new principal axes.

namespace {

constexpr double kTurn = 2 * std::numbers::pi;

// Cosine; rotations, mirrors and scales keep axes perpendicular within some 1e-16.
constexpr double kObliqueCosine = 1e-13;

// Radians; angles are allowed to grow to a few turns so that a mirror image of a mirror image has its
// first angles back, but repeated rotations must not eat their digits.
constexpr double kLargestStartAngle = 2 * kTurn;

double Dot(const double a[3], const double b[3]) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double Length(const double a[3]) {
    return std::sqrt(Dot(a, a));
}

std::size_t PlainDataSize(int form) {
    switch (form) {
    case kFormPoint:
        return 3 * sizeof(double);
    case kFormLine:
        return sizeof(EVC_line_s);
    case kFormArc:
        return sizeof(EVC_arc_s);
    case kFormConic:
        return sizeof(EVC_conic_s);
    default:
        return 0;
    }
}

KC_CURVE_struct_s* CloneBCurve(const KC_CURVE_struct_s* c) {
    BcurveDataPtr definition(BCDF_copy_bcdf_data(static_cast<const EVC_bcurve_s*>(c->data)->definition));
    KC_CURVE_struct_s* copy = ev09p1(definition.get());
    if (!copy)
        return nullptr;
    (void)definition.release(); // the record owns it now
    copy->start = c->start;
    copy->span = c->span;
    copy->closed = c->closed;
    return copy;
}

KC_CURVE_struct_s* Clone(const KC_CURVE_struct_s* c, const char* tag) {
    if (c && c->form == kFormBCurve)
        return CloneBCurve(c);
    const std::size_t bytes = c ? PlainDataSize(c->form) : 0;
    if (bytes == 0)
        return nullptr;
    auto* copy = static_cast<KC_CURVE_struct_s*>(SM_alloc(sizeof(KC_CURVE_struct_s), tag));
    if (!copy)
        return nullptr;
    *copy = *c;
    copy->data = SM_alloc(bytes, tag);
    if (!copy->data) {
        SM_free(copy);
        return nullptr;
    }
    std::memcpy(copy->data, c->data, bytes);
    return copy;
}

struct AffineMap {
    const double (*m)[3];
    const double* v;

    void Turn(double a[3]) const {
        const double x = a[0], y = a[1], z = a[2];
        for (int i = 0; i < 3; ++i)
            a[i] = m[i][0] * x + m[i][1] * y + m[i][2] * z;
    }
    void Move(double p[3]) const {
        Turn(p);
        for (int i = 0; i < 3; ++i)
            p[i] += v[i];
    }
};

/// Turns oblique axes, which are conjugate radii, onto the principal ones and shifts the angles along.
/// Of the two choices the one nearer to the present major axis is taken (F. Rytz, 1845).
void StraightenAxes(KC_CURVE_struct_s* c, EVC_conic_s* conic) {
    double* x = conic->majorAxis;
    double* y = conic->minorAxis;
    const double xx = Dot(x, x), yy = Dot(y, y), xy = Dot(x, y);
    if (std::fabs(xy) > kObliqueCosine * std::sqrt(xx * yy)) {
        const double phase = 0.5 * std::atan2(xx < yy ? -2 * xy : 2 * xy, std::fabs(xx - yy));
        const double cosine = std::cos(phase), sine = std::sin(phase);
        for (int i = 0; i < 3; ++i) {
            const double major = cosine * x[i] + sine * y[i];
            y[i] = cosine * y[i] - sine * x[i];
            x[i] = major;
        }
        conic->startAngle -= phase;
        conic->endAngle -= phase;
        c->start -= phase;
    }
    conic->radius1 = Length(x);
    conic->radius2 = Length(y);
}

void ScaleVector(double a[3], double s) {
    for (int i = 0; i < 3; ++i)
        a[i] *= s;
}

/// The same direction in [0, 2 pi).
double ReduceAngle(double angle) {
    const double reduced = angle - kTurn * std::floor(angle / kTurn);
    return reduced < kTurn ? reduced : 0.0; // a tiny negative angle rounds up to the full turn
}

/// Moves the sweep to begin at start.
void SetAngles(KC_CURVE_struct_s* c, double* startAngle, double* endAngle, double start) {
    *startAngle = start;
    *endAngle = start + c->span;
    c->start = start;
}

void NormalizeArc(KC_CURVE_struct_s* c, EVC_arc_s* arc) {
    const double* x = arc->xAxis;
    const double* y = arc->yAxis;
    const double turn = std::atan2(x[1], x[0]);
    const bool isMirrored = x[0] * y[1] - x[1] * y[0] < 0.0;
    double start = isMirrored ? turn - (c->start + c->span) : turn + c->start;
    if (c->closed || std::fabs(start) > kLargestStartAngle)
        start = ReduceAngle(start);
    SetAngles(c, &arc->startAngle, &arc->endAngle, start);
    const double radius = Length(x);
    arc->radius = radius;
    const double standardX[3] = {radius, 0.0, 0.0}, standardY[3] = {0.0, radius, 0.0};
    std::memcpy(arc->xAxis, standardX, sizeof standardX);
    std::memcpy(arc->yAxis, standardY, sizeof standardY);
}

void NormalizeEllipse(KC_CURVE_struct_s* c, EVC_conic_s* conic) {
    StraightenAxes(c, conic);
    const double* x = conic->majorAxis;
    double* y = conic->minorAxis;
    if (x[0] * y[1] - x[1] * y[0] >= 0.0)
        return;
    ScaleVector(y, -1.0);
    const double start = -(c->start + c->span);
    SetAngles(c, &conic->startAngle, &conic->endAngle, ReduceAngle(start));
}

} // namespace

KC_CURVE_struct_s* evcrvCopy(KC_CURVE_struct_s* c) {
    return Clone(c, "evcrvCopy");
}

KC_CURVE_struct_s* evcrvx(KC_CURVE_struct_s* c, double m[][3], double* v) {
    KC_CURVE_struct_s* copy = Clone(c, "evcrvx");
    if (!copy)
        return nullptr;
    const AffineMap map{m, v};
    switch (copy->form) {
    case kFormPoint:
        map.Move(static_cast<double*>(copy->data));
        break;
    case kFormLine: {
        auto* line = static_cast<EVC_line_s*>(copy->data);
        map.Move(line->base);
        map.Turn(line->direction);
        break;
    }
    case kFormArc: {
        auto* arc = static_cast<EVC_arc_s*>(copy->data);
        map.Move(arc->centre);
        map.Turn(arc->xAxis);
        map.Turn(arc->yAxis);
        arc->radius = Length(arc->xAxis);
        break;
    }
    case kFormConic: {
        auto* conic = static_cast<EVC_conic_s*>(copy->data);
        map.Move(conic->centre);
        map.Turn(conic->majorAxis);
        map.Turn(conic->minorAxis);
        StraightenAxes(copy, conic);
        break;
    }
    default: { // kFormBCurve; nothing is cached yet
        BCURVE_DATA* d = static_cast<EVC_bcurve_s*>(copy->data)->definition;
        for (int i = 0; i < d->numPoles; ++i)
            map.Move(d->poles[i]);
        break;
    }
    }
    return copy;
}

int evcrvxScale(KC_CURVE_struct_s* c, double s) {
    if (!c || !std::isfinite(s))
        return 1;
    switch (c->form) {
    case kFormPoint:
        ScaleVector(static_cast<double*>(c->data), s);
        return 0;
    case kFormLine: {
        auto* line = static_cast<EVC_line_s*>(c->data);
        ScaleVector(line->base, s);
        ScaleVector(line->direction, s);
        return 0;
    }
    case kFormArc: {
        auto* arc = static_cast<EVC_arc_s*>(c->data);
        ScaleVector(arc->centre, s);
        ScaleVector(arc->xAxis, s);
        ScaleVector(arc->yAxis, s);
        arc->radius *= std::fabs(s);
        return 0;
    }
    case kFormConic: {
        auto* conic = static_cast<EVC_conic_s*>(c->data);
        ScaleVector(conic->centre, s);
        ScaleVector(conic->majorAxis, s);
        ScaleVector(conic->minorAxis, s);
        conic->radius1 *= std::fabs(s);
        conic->radius2 *= std::fabs(s);
        return 0;
    }
    case kFormBCurve: {
        auto* bcurve = static_cast<EVC_bcurve_s*>(c->data);
        for (int i = 0; i < bcurve->definition->numPoles; ++i)
            ScaleVector(bcurve->definition->poles[i], s);
        BCEV_reset_all_bez_pointers(bcurve);
        return 0;
    }
    default:
        return 1;
    }
}

int evcrvNormalizeAxes(KC_CURVE_struct_s* c) {
    if (!c)
        return 1;
    if (c->form == kFormArc) {
        auto* arc = static_cast<EVC_arc_s*>(c->data);
        if (arc->xAxis[2] != 0.0 || arc->yAxis[2] != 0.0)
            return 1;
        NormalizeArc(c, arc);
    } else if (c->form == kFormConic) {
        auto* conic = static_cast<EVC_conic_s*>(c->data);
        if (conic->majorAxis[2] != 0.0 || conic->minorAxis[2] != 0.0)
            return 1;
        NormalizeEllipse(c, conic);
    }
    return 0;
}
