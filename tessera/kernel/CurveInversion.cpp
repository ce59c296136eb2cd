#include "tessera/kernel/CurveInversion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/kernel/internal/ConicFrame.h"
#include "tessera/kernel/internal/NearestPoint.h"

// Lines and circles in closed form; ellipses through the local minima of the distance (ConicFrame.h),
// B-curves in CurveInversion_bcurve.cpp.

namespace {

constexpr double kLimitSlack =
    1e-10; // parameters this near a limit are on it; the kernel's parameter constant

struct Inversion {
    double t = 0.0;
    double foot[3] = {};
    bool ambiguous = false;
};

void EvaluateAt(KC_CURVE_struct_s* c, double t, Inversion& out) {
    out.t = t;
    evcrve(c, 0, t, out.foot);
}

void InvertLine(KC_CURVE_struct_s* c, const double p[3], bool bounded, Inversion& out) {
    const auto* line = static_cast<const EVC_line_s*>(c->data);
    double along = 0.0, lengthSq = 0.0;
    for (int k = 0; k < 3; ++k) {
        along += (p[k] - line->base[k]) * line->direction[k];
        lengthSq += line->direction[k] * line->direction[k];
    }
    const double t = lengthSq > 0.0 ? along / lengthSq : 0.0;
    EvaluateAt(c, bounded ? std::clamp(t, 0.0, 1.0) : t, out);
}

void OfferAngle(KC_CURVE_struct_s* c, double t, NearestPoint& nearest) {
    double point[3];
    evcrve(c, 0, t, point);
    nearest.Offer(t, point);
}

// The whole circle or ellipse, or of it what lies inside the limits and the two ends.
void InvertConic(KC_CURVE_struct_s* c, const double p[3], bool bounded, Inversion& out) {
    const ConicFrame f = MakeConicFrame(c);
    NearestPoint nearest(p);
    double x = 0.0, y = 0.0, psi[24];
    ConicLocal(f, p, &x, &y);
    int n = 0;
    bool centreOfCircle = false;
    if (c->form == kFormArc && f.a > 0.0) {
        const double reach = std::hypot(x, y);
        centreOfCircle = reach <= 1e-14 * f.a;
        psi[n++] = centreOfCircle ? f.limits[0] - f.phase : std::atan2(y * f.a, x * f.b);
    } else {
        n = ConicFootCandidates(f, x, y, psi);
    }
    for (int i = 0; i < n; ++i) {
        double t = psi[i] + f.phase;
        if (LiftAngle(f.limits, kLimitSlack, &t))
            OfferAngle(c, t, nearest);
        else if (!bounded)
            OfferAngle(c, std::remainder(t, 2.0 * std::numbers::pi), nearest);
    }
    if (bounded) {
        OfferAngle(c, f.limits[0], nearest);
        OfferAngle(c, f.limits[1], nearest);
    }
    out.t = nearest.T();
    std::copy(nearest.Point(), nearest.Point() + 3, out.foot);
    out.ambiguous = nearest.IsAmbiguous() || centreOfCircle;
}

bool Invert(KC_CURVE_struct_s* c, const double p[3], bool bounded, Inversion& out) {
    if (!c || !c->data)
        return false;
    switch (c->form) {
    case kFormLine:
        InvertLine(c, p, bounded, out);
        break;
    case kFormArc:
    case kFormConic:
        InvertConic(c, p, bounded, out);
        break;
    case kFormBCurve: {
        NearestPoint nearest(p);
        if (!FindNearestOnBcurve(c, p, nearest))
            return false;
        EvaluateAt(c, nearest.T(), out);
        out.ambiguous = nearest.IsAmbiguous();
        break;
    }
    default:
        return false;
    }
    return std::isfinite(out.t) && std::isfinite(out.foot[0]) && std::isfinite(out.foot[1]);
}

int StateOf(KC_CURVE_struct_s* c, const Inversion& found) {
    if (found.ambiguous)
        return kInversionAmbiguous;
    double limits[2];
    evcrvp(c, limits);
    const bool atEnd =
        std::fabs(found.t - limits[0]) <= kLimitSlack || std::fabs(found.t - limits[1]) <= kLimitSlack;
    return atEnd ? kInversionAtEnd : kInversionInside;
}

} // namespace

int em015c(KC_CURVE_struct_s* c, const double p[3], int /*flag*/, double* t, double foot[3],
           double tangent[3]) {
    Inversion found;
    if (!Invert(c, p, false, found))
        return kInversionFailed;
    *t = found.t;
    if (foot)
        std::copy(found.foot, found.foot + 3, foot);
    if (tangent) {
        double out[6];
        evcrve(c, 1, found.t, out);
        std::copy(out + 3, out + 6, tangent);
    }
    return StateOf(c, found);
}

int em015cBounded(KC_CURVE_struct_s* c, const double p[3], double* t, double foot[3], double* distance) {
    Inversion found;
    if (!Invert(c, p, true, found))
        return kInversionFailed;
    *t = found.t;
    if (foot)
        std::copy(found.foot, found.foot + 3, foot);
    if (distance)
        *distance = std::hypot(found.foot[0] - p[0], found.foot[1] - p[1], found.foot[2] - p[2]);
    return StateOf(c, found);
}
