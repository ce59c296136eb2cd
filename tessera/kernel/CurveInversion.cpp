#include "tessera/kernel/CurveInversion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/kernel/internal/ConicFrame.h"
#include "tessera/kernel/internal/EllipseFoot.h"
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

// Nearest angles on the whole circle or ellipse: several only where symmetry makes them equally near.
int WholeTurnFeet(const ConicFrame& f, double x, double y, double psi[4]) {
    constexpr double kOnAxis = 1e-12; // of the radius: mirrored feet are then level to rounding
    const EllipseFoot foot = FindEllipseFoot(f.a, f.b, x, y);
    int n = 0;
    psi[n++] = std::atan2(foot.sinT, foot.cosT);
    if (std::fabs(y) <= kOnAxis * f.b)
        psi[n++] = std::atan2(-foot.sinT, foot.cosT);
    if (std::fabs(x) <= kOnAxis * f.a) {
        psi[n++] = std::atan2(foot.sinT, -foot.cosT);
        if (n == 3)
            psi[n++] = std::atan2(-foot.sinT, -foot.cosT);
    }
    return n;
}

void InvertConic(KC_CURVE_struct_s* c, const double p[3], bool bounded, Inversion& out) {
    const ConicFrame f = MakeConicFrame(c);
    NearestPoint nearest(p);
    double x = 0.0, y = 0.0, psi[24];
    ConicLocal(f, p, &x, &y);
    bool inside = true;
    const auto offer = [&](double angle) {
        double t = angle + f.phase;
        if (LiftAngle(f.limits, kLimitSlack, &t)) {
            OfferAngle(c, t, nearest);
            return;
        }
        inside = false;
        if (bounded)
            return;
        t = std::remainder(t, 2.0 * std::numbers::pi);
        OfferAngle(c, t > -std::numbers::pi ? t : std::numbers::pi, nearest);
    };
    const bool centreOfCircle = c->form == kFormArc && std::hypot(x, y) <= 1e-14 * f.a;
    const int whole = centreOfCircle ? 0 : WholeTurnFeet(f, x, y, psi);
    for (int i = 0; i < whole; ++i)
        offer(psi[i]);
    if (bounded && !inside && c->form != kFormArc) { // the other local minima
        const int n = ConicFootCandidates(f, x, y, psi);
        for (int i = 0; i < n; ++i)
            offer(psi[i]);
    }
    if (bounded || centreOfCircle) {
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
