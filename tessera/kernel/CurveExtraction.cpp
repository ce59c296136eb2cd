#include <algorithm>
#include <cmath>
#include <cstring>

#include "tessera/kernel/BCDF.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/internal/RecordPtr.h"

// Sub-ranges. A B-curve is first cut down to the spans that the range meets, then knots are inserted at both
// ends up to full multiplicity, which clamps the piece, and the surplus poles fall away (L. Piegl and
// W. Tiller, The NURBS Book, 2nd edition, 1997, section 5.2). The cost follows the piece, not the curve.
// A range across the seam of a periodic curve reads the definition round and round; where poles or
// knots do not repeat, so that the seam has a knot of its own, the two pieces are made apart and joined.

namespace {

// Curve parameter; a range end this near to a knot is meant to be that knot.
constexpr double kKnotSnap = 1e-12;
// Relative; poles and knots that agree like this are one pole, one knot, computed twice.
constexpr double kSameValue = 1e-14;
// Spans a piece of many turns may have; far below where the indices overflow.
constexpr double kMostSpans = 1e8;

bool IsSame(double a, double b, double size) {
    return std::fabs(a - b) <= kSameValue * size;
}

/// The definition read as an endless periodic one: pole and knot i for any i from 0 on.
struct Unrolled {
    const BCURVE_DATA* d;
    int segments; ///< per turn
    double period;

    explicit Unrolled(const BCURVE_DATA* definition)
        : d(definition), segments(definition->numPoles - definition->degree),
          period(definition->knots[definition->numPoles] - definition->knots[definition->degree]) {}

    const double* Pole(int i) const { return d->poles[i < d->numPoles ? i : i % segments]; }
    double Knot(int i) const {
        if (i < d->numPoles + d->degree) // the outermost knot shapes nothing and need not repeat
            return d->knots[i];
        const int turns = (i - d->degree) / segments;
        return d->knots[i - turns * segments] + turns * period;
    }
    /// Poles and knots repeat, so that reading on gives the curve's next turn.
    bool Repeats() const;
};

bool Unrolled::Repeats() const {
    double size = 0.0;
    for (int i = 0; i < d->numPoles; ++i)
        for (int c = 0; c < 4; ++c)
            size = std::max(size, std::fabs(d->poles[i][c]));
    for (int i = 0; i < d->degree; ++i)
        for (int c = 0; c < 4; ++c)
            if (!IsSame(d->poles[i][c], d->poles[i + segments][c], size))
                return false;
    const double knotSize = std::max(std::fabs(d->knots[d->degree]), std::fabs(d->knots[d->numPoles]));
    for (int i = 1; i + segments < d->numPoles + d->degree; ++i)
        if (!IsSame(d->knots[i] + period, d->knots[i + segments], knotSize))
            return false;
    return true;
}

/// u, or the knot that lies within kKnotSnap of it as a curve parameter.
double SnapToKnot(const BCURVE_DATA* d, double u) {
    const double reach = kKnotSnap * (d->knots[d->numPoles] - d->knots[d->degree]);
    const int s = BCEV_find_span(d, u);
    if (std::fabs(u - d->knots[s]) <= reach)
        return d->knots[s];
    return std::fabs(u - d->knots[s + 1]) <= reach ? d->knots[s + 1] : u;
}

/// The spans from first to last as a definition of their own, knots unclamped.
BCURVE_DATA* CopySpans(const Unrolled& source, int first, int last) {
    const int degree = source.d->degree;
    BCURVE_DATA* piece = BCEV_alloc_bcurve_data(last - first + source.d->order, source.d->order);
    if (!piece)
        return nullptr;
    for (int i = 0; i < piece->numPoles; ++i)
        std::memcpy(piece->poles[i], source.Pole(first - degree + i), sizeof piece->poles[i]);
    for (int i = 0; i < piece->numPoles + piece->order; ++i)
        piece->knots[i] = source.Knot(first - degree + i);
    piece->polynomial = source.d->polynomial;
    return piece;
}

/// The same curve with u as a knot of multiplicity degree at least.
BcurveDataPtr Saturate(BcurveDataPtr d, double u) {
    const auto held = std::count(d->knots, d->knots + d->numPoles + d->order, u);
    const int missing = d->degree - static_cast<int>(held);
    return missing > 0 ? BcurveDataPtr(BCEV_insert_knot(d.get(), u, missing)) : std::move(d);
}

/// Cuts [a, b], both knots of full multiplicity, out of d; knots run from 0 to 1.
BCURVE_DATA* CutClamped(const BCURVE_DATA* d, double a, double b) {
    const double* knots = d->knots;
    const double* knotsEnd = knots + d->numPoles + d->order;
    const int first = static_cast<int>(std::upper_bound(knots, knotsEnd, a) - knots) - 1;
    const int last = static_cast<int>(std::lower_bound(knots, knotsEnd, b) - knots) - 1;
    BCURVE_DATA* piece = BCEV_alloc_bcurve_data(last - first + d->order, d->order);
    if (!piece)
        return nullptr;
    std::memcpy(piece->poles, d->poles + (first - d->degree),
                static_cast<std::size_t>(piece->numPoles) * sizeof(*d->poles));
    for (int i = 0; i < d->order; ++i) {
        piece->knots[i] = 0.0;
        piece->knots[piece->numPoles + i] = 1.0;
    }
    for (int i = d->order; i < piece->numPoles; ++i)
        piece->knots[i] = std::clamp((d->knots[first - d->degree + i] - a) / (b - a), 0.0, 1.0);
    piece->polynomial = d->polynomial;
    return piece;
}

/// Clamped definition of the knot interval [a, b], which lies in the spans first to last.
BCURVE_DATA* ExtractSpans(const Unrolled& source, int first, int last, double a, double b) {
    BcurveDataPtr piece(CopySpans(source, first, last));
    if (piece)
        piece = Saturate(std::move(piece), a);
    if (piece)
        piece = Saturate(std::move(piece), b);
    return piece ? CutClamped(piece.get(), a, b) : nullptr;
}

/// Clamped definition of the parameters [from, to] within [0, 1].
BCURVE_DATA* ExtractInside(const BCURVE_DATA* d, double from, double to) {
    const double a = SnapToKnot(d, BCEV_ask_knot_of_parameter(d, from));
    const double b = SnapToKnot(d, BCEV_ask_knot_of_parameter(d, to));
    if (!(a < b))
        return nullptr;
    const double* knots = d->knots;
    const int first = BCEV_find_span(d, a);
    const int last =
        static_cast<int>(std::lower_bound(knots + first + 1, knots + d->numPoles, b) - knots) - 1;
    return ExtractSpans(Unrolled(d), first, last, a, b);
}

/// Clamped definition of [from, to], 0 <= from < 1 < to, of a curve whose poles and knots repeat.
BCURVE_DATA* ExtractRound(const Unrolled& source, double from, double to) {
    const BCURVE_DATA* d = source.d;
    const double turns = std::floor(to);
    const double a = SnapToKnot(d, BCEV_ask_knot_of_parameter(d, from));
    const double bInTurn = SnapToKnot(d, BCEV_ask_knot_of_parameter(d, to - turns));
    const int lap = static_cast<int>(turns) * source.segments;
    const int span = BCEV_find_span(d, bInTurn);
    int last = span + lap;
    double b = std::clamp(bInTurn + turns * source.period, source.Knot(last), source.Knot(last + 1));
    if (bInTurn == d->knots[span]) // take the knot itself: its copies must compare equal
        b = source.Knot(last);
    while (source.Knot(last) >= b)
        --last;
    return ExtractSpans(source, BCEV_find_span(d, a), last, a, b);
}

/// One definition of two clamped ones, the first over [0, share], the second over [share, 1].
BCURVE_DATA* Join(const BCURVE_DATA* a, const BCURVE_DATA* b, double share) {
    // Where the ends meet they become one pole of a knot of multiplicity degree; the second piece's
    // weights follow suit. Ends that lie apart keep their two poles.
    const double* end = a->poles[a->numPoles - 1];
    const double* begin = b->poles[0];
    const double size = std::max({std::fabs(end[0]), std::fabs(end[1]), std::fabs(end[2])});
    bool meet = a->degree > 0;
    for (int c = 0; c < 3; ++c)
        meet = meet && IsSame(end[c], begin[c], size);
    const int shared = meet ? 1 : 0;
    BCURVE_DATA* joined = BCEV_alloc_bcurve_data(a->numPoles + b->numPoles - shared, a->order);
    if (!joined)
        return nullptr;
    std::copy_n(&a->poles[0][0], 4 * a->numPoles, &joined->poles[0][0]);
    std::copy_n(&b->poles[shared][0], 4 * (b->numPoles - shared), &joined->poles[a->numPoles][0]);
    joined->polynomial = a->polynomial;
    if (meet && !a->polynomial && begin[3] != 0.0)
        for (int i = a->numPoles; i < joined->numPoles; ++i)
            joined->poles[i][3] *= end[3] / begin[3];
    for (int i = 0; i < a->numPoles; ++i)
        joined->knots[i] = a->knots[i] * share;
    const int seam = a->numPoles + a->order - shared;
    std::fill(joined->knots + a->numPoles, joined->knots + seam, share);
    for (int i = seam; i < joined->numPoles + joined->order; ++i)
        joined->knots[i] = share + b->knots[i - seam + b->order] * (1.0 - share);
    std::fill_n(joined->knots + joined->numPoles, joined->order, 1.0);
    return joined;
}

BCURVE_DATA* ExtractPeriodic(const BCURVE_DATA* d, double from, double to) {
    const double turn = std::floor(from);
    from -= turn;
    to -= turn;
    if (1.0 - from <= kKnotSnap) {
        from = 0.0;
        to -= 1.0;
    }
    if (to <= 1.0 + kKnotSnap)
        return ExtractInside(d, from, std::min(to, 1.0));
    const Unrolled unrolled(d);
    if ((to + 1.0) * unrolled.segments < kMostSpans && unrolled.Repeats())
        return ExtractRound(unrolled, from, to);
    if (to - from > 1.0 + kKnotSnap)
        return nullptr; // more than a turn of a curve that does not repeat
    const BcurveDataPtr left(ExtractInside(d, from, 1.0));
    const BcurveDataPtr right(left ? ExtractInside(d, 0.0, to - 1.0) : nullptr);
    return right ? Join(left.get(), right.get(), (1.0 - from) / (to - from)) : nullptr;
}

KC_CURVE_struct_s* ExtractBCurve(const BCURVE_DATA* d, const double limits[2]) {
    BcurveDataPtr piece(d->periodic ? ExtractPeriodic(d, limits[0], limits[1])
                                    : ExtractInside(d, std::max(limits[0], 0.0), std::min(limits[1], 1.0)));
    if (piece)
        BCDF_update_polynomial_flag(piece.get()); // its weights may be equal where the curve's are not
    KC_CURVE_struct_s* c = ev09p1(piece.get());
    if (c)
        (void)piece.release(); // the record owns it now
    return c;
}

void SetAngles(KC_CURVE_struct_s* c, const double limits[2], double* startAngle, double* endAngle) {
    *startAngle = limits[0];
    *endAngle = limits[1];
    c->start = limits[0];
    c->span = limits[1] - limits[0];
    c->closed = evcrvIsFullTurn(c->span);
}

} // namespace

KC_CURVE_struct_s* em0941(KC_CURVE_struct_s* c, const double limits[2]) {
    if (!c || !(limits[1] > limits[0]) || !std::isfinite(limits[1] - limits[0]))
        return nullptr;
    if (c->form == kFormBCurve)
        return ExtractBCurve(static_cast<const EVC_bcurve_s*>(c->data)->definition, limits);
    KC_CURVE_struct_s* piece = evcrvCopy(c);
    if (!piece)
        return nullptr;
    if (c->form == kFormLine) {
        auto* line = static_cast<EVC_line_s*>(piece->data);
        for (int i = 0; i < 3; ++i) {
            line->base[i] += limits[0] * line->direction[i];
            line->direction[i] *= limits[1] - limits[0];
        }
    } else if (c->form == kFormArc) {
        auto* arc = static_cast<EVC_arc_s*>(piece->data);
        SetAngles(piece, limits, &arc->startAngle, &arc->endAngle);
    } else if (c->form == kFormConic) {
        auto* conic = static_cast<EVC_conic_s*>(piece->data);
        SetAngles(piece, limits, &conic->startAngle, &conic->endAngle);
    }
    return piece;
}
