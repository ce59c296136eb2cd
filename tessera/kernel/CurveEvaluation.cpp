#include <algorithm>
#include <cmath>
#include <cstring>

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/CurveRecord.h"

// Position and derivatives of every form. Lines and conics are closed formulas. A B-curve is evaluated
// on the cached Bezier form of its span: one triangle of de Casteljau gives the position and, from the
// differences of its intermediate rows, every derivative (G. Farin, Curves and Surfaces for CAGD, 5th
// edition, 2002, section 5.4). Quotients follow algorithm A4.2 of The NURBS Book (L. Piegl and W. Tiller,
// 2nd edition, 1997). Nothing here allocates.

namespace {

void Zero(int from, int nderiv, double* out) {
    if (from <= nderiv)
        std::fill(out + 3 * from, out + 3 * (nderiv + 1), 0.0);
}

/// The k-th derivative of cos t X + sin t Y is the same at t turned by k quarters.
void EvaluateTurning(const double centre[3], const double x[3], const double y[3], int nderiv, double t,
                     double* out) {
    const double cosine = std::cos(t), sine = std::sin(t);
    const double onX[4] = {cosine, -sine, -cosine, sine};
    const double onY[4] = {sine, cosine, -sine, -cosine};
    for (int k = 0; k == 0 || k <= nderiv; ++k)
        for (int c = 0; c < 3; ++c)
            out[3 * k + c] = (k == 0 ? centre[c] : 0.0) + onX[k % 4] * x[c] + onY[k % 4] * y[c];
}

/// Where a parameter lies: span, place in the span from 0 to 1 (outside when extrapolating), and how
/// many spans of this length the whole curve would take.
struct SpanPlace {
    int span;
    double x, perParameter;
};

SpanPlace FindPlace(const BCURVE_DATA* d, double t) {
    const double u = BCEV_ask_knot_of_parameter(d, t);
    const int s = BCEV_find_span(d, u);
    const double from = d->knots[s], length = d->knots[s + 1] - from;
    if (!(length > 0.0))
        return {s, 0.0, 0.0};
    return {s, (u - from) / length, (d->knots[d->numPoles] - d->knots[d->degree]) / length};
}

/// Orders whose triangle fits on the stack; higher ones use rows of the record that no span needs.
constexpr int kStackOrder = 16;

/// Homogeneous derivatives of a Bezier span: x, y, z into out, the weight's into weights (degree + 1 of
/// them). The rows are used up.
void EvaluateBezier(double* rows, int degree, const SpanPlace& place, int nderiv, double* out,
                    double* weights) {
    const double x = place.x, y = 1.0 - x;
    const int top = std::min(nderiv, degree);
    for (int left = degree; left >= 0; --left) {
        // Rows 0 .. left are now the control points of the remaining degree.
        if (left <= top) {
            double difference[4] = {0.0, 0.0, 0.0, 0.0};
            double binomial = left % 2 == 0 ? 1.0 : -1.0;
            for (int i = 0; i <= left; ++i) {
                for (int c = 0; c < 4; ++c)
                    difference[c] += binomial * rows[4 * i + c];
                binomial *= -static_cast<double>(left - i) / (i + 1);
            }
            for (int c = 0; c < 3; ++c)
                out[3 * left + c] = difference[c];
            weights[left] = difference[3];
        }
        for (int i = 0; i < left; ++i)
            for (int c = 0; c < 4; ++c)
                rows[4 * i + c] = y * rows[4 * i + c] + x * rows[4 * (i + 1) + c];
    }
    double factor = 1.0; // degree! / (degree - k)! with the chain rule's power
    for (int k = 1; k <= top; ++k) {
        factor *= (degree - k + 1) * place.perParameter;
        for (int c = 0; c < 3; ++c)
            out[3 * k + c] *= factor;
        weights[k] *= factor;
    }
}

/// Derivatives of the quotient, in place: out holds those of the numerator and receives the curve's.
void DivideByWeight(const double* weights, int degree, int nderiv, double* out) {
    for (int k = 0; k <= nderiv; ++k) {
        double binomial = 1.0;
        for (int i = 1; i <= std::min(k, degree); ++i) {
            binomial *= static_cast<double>(k - i + 1) / i;
            for (int c = 0; c < 3; ++c)
                out[3 * k + c] -= binomial * weights[i] * out[3 * (k - i) + c];
        }
        for (int c = 0; c < 3; ++c)
            out[3 * k + c] /= weights[0];
    }
}

/// A polynomial chord needs no cache: a poly-line of a million poles keeps its tables untouched.
void EvaluateChord(const BCURVE_DATA* d, const SpanPlace& place, int nderiv, double* out) {
    const double* a = d->poles[place.span - 1];
    const double* b = d->poles[place.span];
    for (int c = 0; c < 3; ++c)
        out[c] = (1.0 - place.x) * a[c] + place.x * b[c];
    if (nderiv > 0)
        for (int c = 0; c < 3; ++c)
            out[3 + c] = (b[c] - a[c]) * place.perParameter;
    Zero(2, nderiv, out);
}

} // namespace

void evcrve(KC_CURVE_struct_s* c, int nderiv, double t, double* out) {
    switch (c->form) {
    case kFormPoint:
        return ev0200(c, nderiv, t, out);
    case kFormLine:
        return ev0300(c, nderiv, t, out);
    case kFormArc:
        return ev0500(c, nderiv, t, out);
    case kFormConic:
        return ev0600(c, nderiv, t, out);
    case kFormBCurve:
        return ev0900(c, nderiv, t, out);
    default:
        return;
    }
}

void ev0200(KC_CURVE_struct_s* c, int nderiv, double /*t*/, double* out) {
    std::memcpy(out, c->data, 3 * sizeof(double));
    Zero(1, nderiv, out);
}

void ev0300(KC_CURVE_struct_s* c, int nderiv, double t, double* out) {
    const auto* line = static_cast<const EVC_line_s*>(c->data);
    for (int i = 0; i < 3; ++i)
        out[i] = line->base[i] + t * line->direction[i];
    if (nderiv > 0)
        std::memcpy(out + 3, line->direction, 3 * sizeof(double));
    Zero(2, nderiv, out);
}

void ev0500(KC_CURVE_struct_s* c, int nderiv, double t, double* out) {
    const auto* arc = static_cast<const EVC_arc_s*>(c->data);
    EvaluateTurning(arc->centre, arc->xAxis, arc->yAxis, nderiv, t, out);
}

void ev0600(KC_CURVE_struct_s* c, int nderiv, double t, double* out) {
    const auto* conic = static_cast<const EVC_conic_s*>(c->data);
    EvaluateTurning(conic->centre, conic->majorAxis, conic->minorAxis, nderiv, t, out);
}

void ev0900(KC_CURVE_struct_s* c, int nderiv, double t, double* out) {
    auto* bcurve = static_cast<EVC_bcurve_s*>(c->data);
    const BCURVE_DATA* d = bcurve->definition;
    const SpanPlace place = FindPlace(d, t);
    nderiv = std::max(nderiv, 0);
    if (d->degree == 1 && d->polynomial)
        return EvaluateChord(d, place, nderiv, out);

    const auto order = static_cast<std::size_t>(d->order);
    double stackRows[4 * kStackOrder], stackWeights[kStackOrder];
    double* rows = stackRows;
    double* weights = stackWeights;
    const double* bezier = BCEV_ask_bez_segment(bcurve, place.span)->bezier;
    if (d->order > kStackOrder) {
        rows = bcurve->segments[place.span].bezier + 4 * order;
        weights = rows + 4 * order;
    }
    std::memcpy(rows, bezier, 4 * order * sizeof(double));
    EvaluateBezier(rows, d->degree, place, nderiv, out, weights);
    Zero(d->degree + 1, nderiv, out);
    if (!d->polynomial)
        DivideByWeight(weights, d->degree, nderiv, out);
}
