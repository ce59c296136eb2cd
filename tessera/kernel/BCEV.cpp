#include "tessera/kernel/BCEV.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmArray.h"

// Everything here acts on homogeneous poles (w x, w y, w z, w), where a rational curve is an ordinary
// polynomial one. The Bezier form of a span is its polar form at the span's two ends, reached in place by
// raising first the left, then the right knot to full multiplicity: all factors lie in [0, 1], so no
// digits are lost (L. Ramshaw, Blossoming: a connect-the-dots approach to splines, 1987; L. Piegl and
// W. Tiller, The NURBS Book, 2nd edition, 1997, algorithms A2.1, A5.1 and A5.6).

namespace {

void ToHomogeneous(const double pole[4], double h[4]) {
    h[0] = pole[0] * pole[3];
    h[1] = pole[1] * pole[3];
    h[2] = pole[2] * pole[3];
    h[3] = pole[3];
}

void FromHomogeneous(const double h[4], bool polynomial, double pole[4]) {
    const double scale = polynomial || h[3] == 0.0 ? 1.0 : 1.0 / h[3];
    pole[0] = h[0] * scale; // pole may be h itself
    pole[1] = h[1] * scale;
    pole[2] = h[2] * scale;
    pole[3] = polynomial ? 1.0 : h[3];
}

/// to = (1 - s) a + s b; to may be a or b.
void Blend(const double a[4], const double b[4], double s, double to[4]) {
    for (int c = 0; c < 4; ++c)
        to[c] = (1.0 - s) * a[c] + s * b[c];
}

/// (u - low) / (high - low), 0 for an empty interval.
double Fraction(double u, double low, double high) {
    const double length = high - low;
    return length > 0.0 ? (u - low) / length : 0.0;
}

/// Greville abscissa i as a curve parameter. The ends of a curve count as 0 and 1 also when its knots
/// are not clamped.
double GrevilleParameter(int numPoles, int order, const double* knots, int i) {
    if (i <= 0)
        return 0.0;
    if (i >= numPoles - 1)
        return 1.0;
    const int degree = order - 1;
    double sum = 0.0;
    for (int j = 1; j <= degree; ++j)
        sum += knots[i + j];
    const double u = degree > 0 ? sum / degree : 0.5 * (knots[i] + knots[i + 1]);
    return std::clamp(Fraction(u, knots[degree], knots[numPoles]), 0.0, 1.0);
}

/// Spreads runs of equal values, which multiple or unclamped knots give, evenly between their neighbours.
void MakeStrictlyAscending(double* values, int n) {
    for (int i = 1; i < n - 1; ++i) {
        if (values[i] > values[i - 1] && values[i] < values[n - 1])
            continue;
        const double low = values[i - 1];
        int next = i + 1;
        while (next < n - 1 && !(values[next] > low && values[next] < values[n - 1]))
            ++next;
        const double step = (values[next] - low) / (next - i + 1);
        for (int j = i; j < next; ++j)
            values[j] = low + step * (j - i + 1);
        i = next - 1;
    }
}

} // namespace

BCURVE_DATA* BCEV_alloc_bcurve_data(int numPoles, int order) {
    if (order < 1 || numPoles < order || numPoles > std::numeric_limits<int>::max() - order)
        return nullptr;
    BcurveDataPtr d(static_cast<BCURVE_DATA*>(SM_alloc(sizeof(BCURVE_DATA), "BCEV_alloc_bcurve_data:0")));
    if (!d)
        return nullptr;
    *d = {nullptr, nullptr, numPoles, order, order - 1, 0, 1};
    const auto n = static_cast<std::size_t>(numPoles), k = static_cast<std::size_t>(order);
    d->poles = MakeSmArray<double[4]>(n, "BCEV_alloc_bcurve_data:1").release();
    d->knots = MakeSmArray<double>(n + k, "BCEV_alloc_bcurve_data:2").release();
    return d->poles && d->knots ? d.release() : nullptr;
}

int BCEV_find_span(const BCURVE_DATA* d, double u) {
    const double* first = d->knots + d->degree;
    const double* last = d->knots + d->numPoles;
    // Above the last knot and, by the negation, for a NaN: the last span that is not empty.
    const bool isInside = u < *last;
    const double* above =
        isInside ? std::upper_bound(first, last, std::max(u, *first)) : std::lower_bound(first, last, *last);
    const int span = static_cast<int>(above - d->knots) - 1;
    return std::clamp(span, d->degree, d->numPoles - 1);
}

double BCEV_ask_knot_of_parameter(const BCURVE_DATA* d, double t) {
    const double low = d->knots[d->degree], high = d->knots[d->numPoles];
    if (d->periodic && !(t >= 0.0 && t <= 1.0))
        t -= std::floor(t);
    return t <= 0.5 ? low + t * (high - low) : high - (1.0 - t) * (high - low);
}

void BCEV_sample_Greville_parameters(int numPoles, int order, const double* knots, int n, double* params) {
    if (n <= 0)
        return;
    params[0] = 0.0;
    for (int i = 1; i < n; ++i) {
        const double position = static_cast<double>(i) * (numPoles - 1) / (n - 1);
        const int index = std::min(static_cast<int>(position), numPoles - 1);
        const double fraction = position - index;
        const double low = GrevilleParameter(numPoles, order, knots, index);
        const double high = GrevilleParameter(numPoles, order, knots, index + 1);
        params[i] = fraction > 0.0 ? low + fraction * (high - low) : low;
    }
    if (n > 1)
        params[n - 1] = 1.0;
    MakeStrictlyAscending(params, n);
}

void BCEV_reset_all_bez_pointers(EVC_bcurve_s* b) {
    if (b && b->definition)
        std::fill_n(b->spanCache, b->definition->numPoles, 0.0);
}

void BCEV_ask_bezier_of_span(const BCURVE_DATA* d, int s, double* bezier) {
    const int p = d->degree;
    const double* t = d->knots + s;
    for (int j = 0; j <= p; ++j)
        ToHomogeneous(d->poles[s - p + j], bezier + 4 * j);
    for (int r = 1; r < p; ++r)
        for (int j = 0; j < p - r; ++j)
            Blend(bezier + 4 * j, bezier + 4 * (j + 1), Fraction(t[0], t[j + r - p], t[j + 1]),
                  bezier + 4 * j);
    for (int r = 1; r < p; ++r)
        for (int j = p; j > r; --j)
            Blend(bezier + 4 * (j - 1), bezier + 4 * j, Fraction(t[1], t[0], t[j - r + 1]), bezier + 4 * j);
}

const BCURVE_SEGMENT* BCEV_ask_bez_segment(EVC_bcurve_s* b, int s) {
    BCURVE_SEGMENT* segment = b->segments + s;
    if (b->spanCache[s] == 0.0) {
        const BCURVE_DATA* d = b->definition;
        double* rows = b->coefficients + static_cast<std::size_t>(s) * static_cast<std::size_t>(b->k) * 4;
        *segment = {d->knots[s], d->knots[s + 1], rows};
        BCEV_ask_bezier_of_span(d, s, rows);
        b->spanCache[s] = 1.0;
    }
    return segment;
}

BCURVE_DATA* BCEV_insert_knot(const BCURVE_DATA* d, double u, int times) {
    const int p = d->degree, n = d->numPoles;
    if (times < 0 || times > p || !(u >= d->knots[p] && u <= d->knots[n]))
        return nullptr;
    BCURVE_DATA* result = BCEV_alloc_bcurve_data(n + times, d->order);
    if (!result)
        return nullptr;
    result->periodic = d->periodic;
    result->polynomial = d->polynomial;

    const int s = BCEV_find_span(d, u);
    std::copy(d->knots, d->knots + s + 1, result->knots);
    std::fill_n(result->knots + s + 1, times, u);
    std::copy(d->knots + s + 1, d->knots + n + d->order, result->knots + s + 1 + times);

    // Rows s - p .. s hold the triangle of the insertion. Each round moves one pole to the right flank and
    // leaves one behind on the left.
    const auto row = sizeof(*d->poles);
    std::memcpy(result->poles, d->poles, static_cast<std::size_t>(s + 1) * row);
    std::memcpy(result->poles + s + times, d->poles + s, static_cast<std::size_t>(n - s) * row);
    if (times == 0)
        return result;
    for (int i = s - p; i <= s; ++i)
        ToHomogeneous(d->poles[i], result->poles[i]);
    for (int j = 1; j <= times; ++j) {
        std::memcpy(result->poles[s + times - j + 1], result->poles[s], row);
        for (int i = s; i >= s - p + j; --i)
            Blend(result->poles[i - 1], result->poles[i], Fraction(u, d->knots[i], d->knots[i + p - j + 1]),
                  result->poles[i]);
    }
    for (int i = s - p + 1; i < s + times; ++i)
        FromHomogeneous(result->poles[i], d->polynomial != 0, result->poles[i]);
    std::memcpy(result->poles[s - p], d->poles[s - p], row);
    std::memcpy(result->poles[s + times], d->poles[s], row);
    return result;
}
