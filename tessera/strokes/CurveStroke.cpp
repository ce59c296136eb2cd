// Sampling a curve into a stroke. By length, each sample is found from the one before by Newton's iteration
// on the arc length between them, kept inside a shrinking bracket (bisection where the curve's speed
// vanishes), so the cost is a few short quadratures a sample and errors do not add up beyond the
// quadrature's.
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Curve.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

constexpr double kRelativeLengthTol = 1e-12; // of the whole length sampled
constexpr int kMaxIterations = 80;           // enough for bisection alone to exhaust a double

double LengthBetween(const Curve& curve, double a, double b) {
    double range[2] = {std::min(a, b), std::max(a, b)};
    return range[0] < range[1] ? curve.CurveLength(range) : 0.0;
}

double SpeedAt(const Curve& curve, double t) {
    double derivatives[6] = {};
    evcrve(curve.AskCurveData(), 1, t, derivatives);
    return std::hypot(derivatives[3], derivatives[4]);
}

// Parameter between `from` and `to` (in either order) whose arc length from `from` is `length`.
double ParameterAtLength(const Curve& curve, double from, double to, double length, double tol) {
    const double sense = to >= from ? 1.0 : -1.0;
    double below = from;
    double above = to;
    double t = from;
    double excess = -length;
    for (int i = 0; i < kMaxIterations && std::fabs(excess) > tol; ++i) {
        const double next = t - sense * excess / SpeedAt(curve, t);
        const bool isInside = (next - below) * sense > 0.0 && (above - next) * sense > 0.0;
        t = isInside ? next : below + (above - below) / 2.0;
        excess = LengthBetween(curve, from, t) - length;
        (excess < 0.0 ? below : above) = t;
    }
    return t;
}

std::vector<double> SampleParameters(const Curve& curve, double t0, double t1, int n, bool byLength) {
    std::vector<double> parameters(n, t1);
    const double total = byLength ? LengthBetween(curve, t0, t1) : 0.0;
    const double tol = total * kRelativeLengthTol;
    double reached = t0;
    parameters.front() = t0;
    for (int i = 1; i < n - 1; ++i) {
        reached = total > 0.0 ? ParameterAtLength(curve, reached, t1, total / (n - 1), tol)
                              : t0 + (t1 - t0) * i / (n - 1);
        parameters[i] = reached;
    }
    return parameters;
}

} // namespace

Stroke* Curve::CreateStroke(double t0, double t1, int n, bool byLength) const {
    if (curve_ == nullptr) {
        Core::ThrowMessage("Curve::CreateStroke - CURVE cannot be NULL");
    }
    if (n < 2) {
        Core::ThrowMessage("Curve::CreateStroke - at least two points are needed");
    }
    std::vector<double> xs;
    std::vector<double> ys;
    for (const double t : SampleParameters(*this, t0, t1, n, byLength)) {
        const Point point = GetPointAtParameter(t, false);
        xs.push_back(point.x);
        ys.push_back(point.y);
    }
    return new Stroke(n, xs.data(), ys.data(), nullptr);
}

} // namespace Tessera::Geometry
