#include "tessera/recognition/internal/AngularCover.h"

#include <numbers>

namespace Tessera::Geometry {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kLastStart = 6.283185307079586; // 2 pi less 1e-10: a later start counts as angle 0

// In [0, 2 pi], where 2 pi stands for directions just below the positive x axis.
double PolarAngle(double x, double y) {
    const double angle = std::atan2(y, x);
    return angle < 0.0 ? angle + kTurn : angle;
}

} // namespace

AngularRange AngularCover::Covered() const {
    std::size_t first = 0;
    while (first < kBins && bins_[first].IsEmpty())
        ++first;
    if (first == kBins)
        return {0.0, kTurn};

    AngularRange covered{0.0, kTurn};
    double widest = 0.0;
    std::size_t before = first; // last filled bin so far
    for (std::size_t i = first + 1; i < kBins; ++i) {
        if (bins_[i].IsEmpty())
            continue;
        if (i > before + 1) {
            const double from = PolarAngle(bins_[before].last.x, bins_[before].last.y);
            const double to = PolarAngle(bins_[i].first.x, bins_[i].first.y);
            if (to - from > widest) {
                widest = to - from;
                covered = to > kLastStart ? AngularRange{to - kTurn, from} : AngularRange{to, from + kTurn};
            }
        }
        before = i;
    }
    if (first > 0 || before + 1 < kBins) {
        const double from = PolarAngle(bins_[before].last.x, bins_[before].last.y);
        const double to = PolarAngle(bins_[first].first.x, bins_[first].first.y);
        if (to + kTurn - from > widest)
            covered = {to, from};
    }
    return covered;
}

} // namespace Tessera::Geometry
