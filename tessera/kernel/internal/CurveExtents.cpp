// A turn reaches its bounds where its derivative vanishes or at its ends. A B-curve is searched span by
// span: the hull of the Bezier coefficients bounds a span, its ends are points of the curve, and a span
// is halved until the hull promises nothing beyond the bounds known so far. Hulls close in with the square
// of the length (W. Dahmen, Subdivision algorithms converge quadratically, J. Comput. Appl. Math. 16, 1986),
// so no derivative is formed, and rational curves, repeated extrema and flat stretches need no special care.
#include "tessera/kernel/internal/CurveExtents.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/internal/SmArray.h"

namespace {

constexpr double kTurn = 2 * std::numbers::pi;

// Relative; what a hull may promise beyond the bounds and still be ignored.
constexpr double kHullSlack = 1e-14;
// Halvings of one span: its length is then a rounding error of its place.
constexpr int kDeepest = 48;

bool Holds(const double limits[2], double angle) {
    return angle + kTurn * std::ceil((limits[0] - angle) / kTurn) <= limits[1];
}

/// One coordinate of a span as pairs (w x, w), with room for the halves still to be seen behind it.
class SpanSearch {
public:
    SpanSearch(int degree, double* room, CurveExtent* extent)
        : degree_(degree), room_(room), extent_(extent) {}

    void Search(const double* bezier, int coordinate) {
        for (int i = 0; i <= degree_; ++i) {
            room_[2 * i] = bezier[4 * i + coordinate];
            room_[2 * i + 1] = bezier[4 * i + 3];
        }
        AddEnds(room_);
        Halve(room_, 0);
    }

private:
    void AddEnds(const double* c) {
        extent_->Add(c[0] / c[1]);
        extent_->Add(c[2 * degree_] / c[2 * degree_ + 1]);
    }

    /// The hull reaches beyond the bounds, or the weights change sign and there is no hull.
    bool IsPromising(const double* c) const {
        const double slack = kHullSlack * std::max(std::fabs(extent_->low), std::fabs(extent_->high));
        bool promising = false;
        for (int i = 0; i <= degree_; ++i) {
            const double value = c[2 * i] / c[2 * i + 1];
            promising = promising || value < extent_->low - slack || value > extent_->high + slack ||
                        (c[2 * i + 1] > 0.0) != (c[1] > 0.0);
        }
        return promising;
    }

    void Halve(double* c, int depth) {
        double* left = c + 2 * (degree_ + 1);
        for (; depth < kDeepest && IsPromising(c); ++depth) {
            for (int i = 0; i <= degree_; ++i) { // c ends as the right half
                left[2 * i] = c[0];
                left[2 * i + 1] = c[1];
                for (int j = 0; j < 2 * (degree_ - i); ++j)
                    c[j] = 0.5 * (c[j] + c[j + 2]);
            }
            AddEnds(left);
            Halve(left, depth + 1);
        }
    }

    int degree_;
    double* room_;
    CurveExtent* extent_;
};

} // namespace

CurveExtent ExtentOfTurn(double a, double b, const double limits[2]) {
    const double first = a * std::cos(limits[0]) + b * std::sin(limits[0]);
    CurveExtent extent{first, first};
    extent.Add(a * std::cos(limits[1]) + b * std::sin(limits[1]));
    const double reach = std::sqrt(a * a + b * b), angle = std::atan2(b, a);
    if (Holds(limits, angle))
        extent.Add(reach);
    if (Holds(limits, angle + std::numbers::pi))
        extent.Add(-reach);
    return extent;
}

bool ExtentOfBCurve(const BCURVE_DATA* d, int coordinate, CurveExtent* extent) {
    *extent = {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    const auto order = static_cast<std::size_t>(d->order);
    SmArray<double> room = MakeSmArray<double>(order * (4 + 2 * (kDeepest + 2)), "ExtentOfBCurve:0");
    if (!room)
        return false;
    double* bezier = room.get();
    SpanSearch search(d->degree, bezier + 4 * order, extent);
    for (int s = d->degree; s < d->numPoles; ++s) {
        if (!(d->knots[s] < d->knots[s + 1]))
            continue;
        if (d->degree == 1) {
            extent->Add(d->poles[s - 1][coordinate]);
            extent->Add(d->poles[s][coordinate]);
            continue;
        }
        BCEV_ask_bezier_of_span(d, s, bezier);
        search.Search(bezier, coordinate);
    }
    if (extent->low > extent->high) { // no parameter interval at all
        const double value = d->poles[0][coordinate];
        *extent = {value, value};
    }
    return true;
}
