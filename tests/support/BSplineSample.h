// Random B-curves and an independent evaluator for the tests of curve records.
#pragma once

#include "tests/support/Records.h"
#include "tests/support/Test.h"

inline RecordPtr RandomOpen(std::mt19937& rng, int order, int numPoles, bool rational) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<double> knots(static_cast<std::size_t>(order), 2.0), poles;
    int repeats = 1;
    for (int i = order; i < numPoles; ++i) {
        const double last = knots.back();
        repeats = i > order && repeats < order - 1 && unit(rng) < 0.4 ? repeats + 1 : 1;
        knots.push_back(repeats > 1 ? last : last + (5.0 - last) * (0.1 + 0.3 * unit(rng)));
    }
    knots.insert(knots.end(), static_cast<std::size_t>(order), 5.0);
    for (int i = 0; i < numPoles; ++i)
        for (int c = 0; c < 4; ++c)
            poles.push_back(c < 3 ? 10.0 * unit(rng) : (rational ? 0.5 + unit(rng) : 1.0));
    return records::Bcurve(order, 0, knots, poles);
}

/// Periodic curve with wrapped poles and uneven knots that repeat with the period.
inline RecordPtr RandomPeriodic(std::mt19937& rng, int order, int segments, bool rational) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const int degree = order - 1, n = segments + degree;
    std::vector<double> steps(static_cast<std::size_t>(segments));
    for (double& step : steps)
        step = 0.2 + unit(rng);
    std::vector<double> knots(static_cast<std::size_t>(n) + order, 0.0), poles;
    for (int i = degree + 1; i < n + order; ++i)
        knots[i] = knots[i - 1] + steps[(i - degree - 1) % segments];
    for (int i = degree - 1; i >= 0; --i)
        knots[i] = knots[i + 1] - steps[((i - degree) % segments + segments) % segments];
    for (int i = 0; i < 4 * n; ++i) {
        const bool isWeight = i % 4 == 3;
        poles.push_back(i >= 4 * segments ? poles[i - 4 * segments]
                        : isWeight        ? (rational ? 0.5 + unit(rng) : 1.0)
                                          : 10.0 * unit(rng));
    }
    return records::Bcurve(order, 1, knots, poles);
}

/// Cox-de Boor recursion in long double, straight from the definition; t in [0, 1].
inline std::vector<long double> DeBoor(const BCURVE_DATA& s, long double t) {
    const int degree = s.degree, n = s.numPoles;
    const long double low = s.knots[degree], high = s.knots[n], u = low + t * (high - low);
    int span = degree;
    for (int i = degree; i < n; ++i)
        if (s.knots[i] < s.knots[i + 1] && s.knots[i] <= u)
            span = i;
    std::vector<std::vector<long double>> q(static_cast<std::size_t>(s.order));
    for (int i = 0; i <= degree; ++i) {
        const double* pole = s.poles[span - degree + i];
        const long double w = pole[3];
        q[i] = {pole[0] * w, pole[1] * w, pole[2] * w, w};
    }
    for (int r = 1; r <= degree; ++r)
        for (int i = degree; i >= r; --i) {
            const long double a = s.knots[span - degree + i], b = s.knots[span + 1 + i - r];
            const long double f = (u - a) / (b - a);
            for (int c = 0; c < 4; ++c)
                q[i][c] = (1 - f) * q[i - 1][c] + f * q[i][c];
        }
    const std::vector<long double>& h = q[degree];
    return {h[0] / h[3], h[1] / h[3], h[2] / h[3]};
}

inline std::vector<double> Evaluate(const RecordPtr& c, double t, int nderiv = 0) {
    std::vector<double> out(3 * (static_cast<std::size_t>(nderiv) + 1));
    evcrve(c.get(), nderiv, t, out.data());
    return out;
}

inline double Apart(const std::vector<double>& p, const std::vector<double>& q) {
    return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

/// Largest distance between c over [a, b] and other over [u, v], both sampled evenly.
inline double LargestGap(const RecordPtr& c, double a, double b, const RecordPtr& other, double u, double v) {
    double gap = 0.0;
    for (int i = 0; i <= 100; ++i)
        gap =
            std::max(gap, Apart(Evaluate(c, a + (b - a) * i / 100), Evaluate(other, u + (v - u) * i / 100)));
    return gap;
}
