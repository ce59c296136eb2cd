// Curve records for tests of the kernel: short makers and random ones from a fixed seed.
#pragma once

#include "tessera/kernel/CurveRecord.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tests/support/Test.h"

namespace records {

inline constexpr double kPi = std::numbers::pi;

struct Xy {
    double x = 0.0, y = 0.0;
};

inline RecordPtr Line(double x0, double y0, double x1, double y1) {
    const double a[3] = {x0, y0, 0.0}, b[3] = {x1, y1, 0.0};
    return RecordPtr(ev03p0(a, b));
}

inline RecordPtr Arc(double x, double y, double r, double start = 0.0, double end = 2.0 * kPi) {
    const double c[3] = {x, y, 0.0};
    return RecordPtr(ev05p0(c, r, start, end));
}

inline RecordPtr Ellipse(double x, double y, double r1, double r2, double rotation, double start = 0.0,
                         double end = 2.0 * kPi) {
    const double c[3] = {x, y, 0.0};
    return RecordPtr(ev06p0(c, r1, r2, rotation, start, end));
}

/// Poles (x, y, z, weight) one after the other.
inline RecordPtr Bcurve(int order, int periodic, std::vector<double> knots, std::vector<double> poles) {
    int sizes[3] = {static_cast<int>(poles.size() / 4), order, periodic};
    BcurveDataPtr d(ev091p(sizes, knots.data(), reinterpret_cast<double(*)[4]>(poles.data())));
    RecordPtr record(ev09p1(d.get()));
    if (record)
        (void)d.release(); // the record owns it now
    return record;
}

/// Poles (x, y, weight) over the given knots; clamped uniform knots when none are given.
inline RecordPtr Bcurve(int order, const std::vector<std::array<double, 3>>& poles,
                        std::vector<double> knots = {}) {
    const int n = static_cast<int>(poles.size());
    if (knots.empty())
        for (int i = 0; i < n + order; ++i)
            knots.push_back(std::clamp((i - order + 1) / static_cast<double>(n - order + 1), 0.0, 1.0));
    std::vector<double> flat;
    for (const auto& p : poles)
        flat.insert(flat.end(), {p[0], p[1], 0.0, p[2]});
    return Bcurve(order, 0, knots, flat);
}

inline RecordPtr Copy(const RecordPtr& c) {
    return RecordPtr(evcrvCopy(c.get()));
}

/// The range as a record of its own; null when there is none.
inline RecordPtr Part(const RecordPtr& c, double from, double to) {
    const double limits[2] = {from, to};
    return RecordPtr(em0941(c.get(), limits));
}

/// The same curve as a B-curve.
inline RecordPtr AsBcurve(const RecordPtr& c) {
    return RecordPtr(ev09p1(em0960(c.get())));
}

inline std::array<double, 2> LimitsOf(const RecordPtr& c) {
    std::array<double, 2> limits{};
    evcrvp(c.get(), limits.data());
    return limits;
}

/// Parameter at a fraction of the range.
inline double ParameterAt(const RecordPtr& c, double fraction) {
    const std::array<double, 2> limits = LimitsOf(c);
    return limits[0] + fraction * (limits[1] - limits[0]);
}

inline BCURVE_DATA& DefinitionOf(const RecordPtr& c) {
    return *static_cast<EVC_bcurve_s*>(c->data)->definition;
}

class Random {
public:
    explicit Random(unsigned seed) : rng_(seed) {}
    double In(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
    int Below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }

    /// A record of about the given size near the offset: line, arc, circle, ellipse (whole or part), B-curve
    /// of degree 1 to 7 (polynomial or rational, now and then with a repeated inner knot or coincident
    /// poles).
    RecordPtr Record(int kind, double size, Xy at) {
        const double x = at.x + size * In(-1, 1), y = at.y + size * In(-1, 1);
        const double start = In(-6, 6), end = start + In(0.3, 6.0);
        switch (kind) {
        case 0:
            return Line(x, y, at.x + size * In(-1, 1), at.y + size * In(-1, 1));
        case 1:
            return Arc(x, y, size * In(0.2, 1.2), start, end);
        case 2:
            return Arc(x, y, size * In(0.2, 1.2));
        case 3:
            return Ellipse(x, y, size * In(0.5, 1.2), size * In(0.05, 0.6), In(-4, 4), start, end);
        case 4:
            return Ellipse(x, y, size * In(0.05, 1.2), size * In(0.2, 0.6), In(-4, 4));
        default:
            return Spline(kind - 3, size, at);
        }
    }
    static constexpr int kKinds = 11; // 5 .. 10: B-curves of order 2 .. 7

    RecordPtr Spline(int order, double size, Xy at) {
        const int n = order + Below(12);
        const bool rational = Below(2) == 0;
        std::vector<std::array<double, 3>> poles;
        poles.reserve(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i)
            poles.push_back(
                {at.x + size * In(-1, 1), at.y + size * In(-1, 1), rational ? In(0.3, 3.0) : 1.0});
        if (Below(4) == 0) // coincident poles, never all of them
            poles[1] = poles[0];
        std::vector<double> knots;
        knots.reserve(poles.size() + 8);
        for (int i = 0; i < n + order; ++i)
            knots.push_back(std::clamp((i - order + 1) / static_cast<double>(n - order + 1), 0.0, 1.0) * 4.0 -
                            1.0);
        if (order > 2 && n > 2 * order && Below(2) == 0) // a kink: an inner knot of multiplicity degree
            for (int k = 1; k < order - 1; ++k)
                *(knots.begin() + order + k) = *(knots.begin() + order);
        return Bcurve(order, poles, knots);
    }

private:
    std::mt19937 rng_;
};

inline Xy At(const RecordPtr& c, double t) {
    double out[3] = {};
    evcrve(c.get(), 0, t, out);
    return {out[0], out[1]};
}

inline double Distance(Xy a, Xy b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

} // namespace records
