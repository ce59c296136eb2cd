#include "tessera/kernel/CRV_PROPS.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/internal/BcurveSpans.h"
#include "tessera/kernel/internal/ConicFrame.h"

namespace {

// Positive half of the nodes and weights of the 16-point rule on [-1, 1].
constexpr int kHalfNodes = 8;
constexpr double kNode[kHalfNodes] = {
    0.095012509837637440185, 0.281603550779258913230, 0.458016777657227386342, 0.617876244402643748447,
    0.755404408355003033895, 0.865631202387831743880, 0.944575023073232576078, 0.989400934991649932596};
constexpr double kWeight[kHalfNodes] = {
    0.189450610455068496285, 0.182603415044923588867, 0.169156519395002538189, 0.149595988816576732081,
    0.124628971255533872052, 0.095158511682492784810, 0.062253523938647892863, 0.027152459411754094852};
constexpr double kRelative = 1e-14; // of the whole, per interval: a hundred times below the promise
constexpr int kMaxHalvings = 48;

template <class Speed>
double Rule(const Speed& speed, double a, double b) {
    const double middle = 0.5 * (a + b), half = 0.5 * (b - a);
    double sum = 0.0;
    for (int i = 0; i < kHalfNodes; ++i)
        sum += kWeight[i] * (speed(middle - half * kNode[i]) + speed(middle + half * kNode[i]));
    return sum * half;
}

template <class Speed>
double Refine(const Speed& speed, double a, double b, double whole, double tolerance, int halvings) {
    const double middle = 0.5 * (a + b);
    const double left = Rule(speed, a, middle), right = Rule(speed, middle, b);
    if (halvings == 0 || !(std::fabs(left + right - whole) > tolerance))
        return left + right;
    return Refine(speed, a, middle, left, tolerance, halvings - 1) +
           Refine(speed, middle, b, right, tolerance, halvings - 1);
}

// `rounding` is what the rounding of the speed may change in the result; halving cannot get below it.
template <class Speed>
double Integrate(const Speed& speed, double a, double b, double rounding) {
    const double whole = Rule(speed, a, b);
    return Refine(speed, a, b, whole, std::max(kRelative * whole, rounding), kMaxHalvings);
}

double LengthOfLine(KC_CURVE_struct_s* c, double from, double to) {
    const double* d = static_cast<const EVC_line_s*>(c->data)->direction;
    return std::hypot(d[0], d[1], d[2]) * (to - from);
}

double LengthOfConic(KC_CURVE_struct_s* c, double from, double to) {
    const ConicFrame f = MakeConicFrame(c);
    if (f.a == f.b || c->form == kFormArc)
        return f.a * (to - from);
    const auto speed = [&f](double psi) { return std::hypot(f.a * std::sin(psi), f.b * std::cos(psi)); };
    // Cut where the speed is least and most, so that each piece bends one way.
    constexpr double kQuarter = 1.57079632679489661923;
    double sum = 0.0, a = from - f.phase;
    const double end = to - f.phase;
    while (a < end) {
        double cut = kQuarter * (std::floor(a / kQuarter) + 1.0);
        if (!(cut > a))
            cut += kQuarter;
        const double b = std::min(end, cut);
        sum += Integrate(speed, a, b, 0.0);
        a = b;
    }
    return sum;
}

// One span between the fractions u and v; straight spans by their end points.
double LengthOfSpan(const double* bezier, int degree, double u, double v) {
    double p[3], d1[3], d2[3];
    if (degree == 1) {
        double q[3];
        EvaluateBezier(bezier, 1, u, p, d1, d2);
        EvaluateBezier(bezier, 1, v, q, d1, d2);
        return std::hypot(q[0] - p[0], q[1] - p[1], q[2] - p[2]);
    }
    const auto speed = [&](double x) {
        EvaluateBezier(bezier, degree, x, p, d1, d2);
        return std::sqrt(d1[0] * d1[0] + d1[1] * d1[1] + d1[2] * d1[2]);
    };
    double largest = 0.0; // far from the origin the differences of poles keep only some digits
    for (int i = 0; i < 4 * (degree + 1); ++i)
        largest = std::max(largest, std::fabs(bezier[i]));
    return Integrate(speed, u, v, 4.0 * std::numeric_limits<double>::epsilon() * degree * largest * (v - u));
}

// Between two parameters in [0, 1].
bool AddBcurveLength(EVC_bcurve_s* b, double from, double to, double* sum) {
    const BCURVE_DATA* d = b->definition;
    const double lo = d->knots[d->degree], range = d->knots[d->numPoles] - lo;
    const double first = lo + from * range, last = to >= 1.0 ? d->knots[d->numPoles] : lo + to * range;
    if (!(first < last))
        return true;
    for (int s = BCEV_find_span(d, first); s < d->numPoles && d->knots[s] < last; ++s) {
        if (!IsSpan(d, s))
            continue;
        const double knot = d->knots[s], width = d->knots[s + 1] - knot;
        const double u = std::max(0.0, (first - knot) / width), v = std::min(1.0, (last - knot) / width);
        double line[8];
        const double* bezier = line;
        if (d->degree == 1) { // straight from the poles: no Bezier form per vertex
            StraightSpan(d, s, line);
        } else {
            const BCURVE_SEGMENT* segment = BCEV_ask_bez_segment(b, s);
            if (!segment)
                return false;
            bezier = segment->bezier;
        }
        if (u < v)
            *sum += LengthOfSpan(bezier, d->degree, u, v);
    }
    return true;
}

bool LengthOfBcurve(KC_CURVE_struct_s* c, double from, double to, double* sum) {
    auto* b = static_cast<EVC_bcurve_s*>(c->data);
    if (!AskUsableBcurve(c))
        return false;
    if (!b->definition->periodic && !c->closed)
        return AddBcurveLength(b, std::clamp(from, 0.0, 1.0), std::clamp(to, 0.0, 1.0), sum);
    const double turn = std::floor(from), last = std::floor(to);
    const double u = from - turn, v = to - last;
    if (turn == last)
        return AddBcurveLength(b, u, v, sum);
    double whole = 0.0;
    if (last - turn > 1.0 && !AddBcurveLength(b, 0.0, 1.0, &whole))
        return false;
    *sum += (last - turn - 1.0) * whole;
    return AddBcurveLength(b, u, 1.0, sum) && AddBcurveLength(b, 0.0, v, sum);
}

} // namespace

int CRV_PROPS_arc_length(KC_CURVE_struct_s* c, const double limits[2], double* length) {
    if (!c || !c->data || !(limits[0] <= limits[1]) || !std::isfinite(limits[1] - limits[0]))
        return 1;
    double sum = 0.0;
    switch (c->form) {
    case kFormLine:
        sum = LengthOfLine(c, limits[0], limits[1]);
        break;
    case kFormArc:
    case kFormConic:
        sum = LengthOfConic(c, limits[0], limits[1]);
        break;
    case kFormBCurve:
        if (!LengthOfBcurve(c, limits[0], limits[1], &sum))
            return 1;
        break;
    default:
        return 1;
    }
    if (!std::isfinite(sum))
        return 1;
    *length = sum;
    return 0;
}

int CRV_PROPS_curvature(KC_CURVE_struct_s* c, double t, double* curvature) {
    constexpr double kStandstill = 1e-12; // speed against second derivative: what rounding leaves at a cusp
    if (!c || !c->data)
        return 1;
    if (c->form != kFormLine && c->form != kFormArc && c->form != kFormConic && c->form != kFormBCurve)
        return 1;
    if (c->form == kFormBCurve && !AskUsableBcurve(c))
        return 1;
    double out[9] = {};
    evcrve(c, 2, t, out);
    const double *d1 = out + 3, *d2 = out + 6;
    const double speed = std::hypot(d1[0], d1[1]);
    if (!(speed > kStandstill * std::hypot(d2[0], d2[1])))
        return 1;
    *curvature = (d1[0] / speed * d2[1] - d1[1] / speed * d2[0]) / speed / speed;
    return 0;
}
