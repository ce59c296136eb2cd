#include "tessera/recognition/internal/AngularCover.h"

#include <numbers>

namespace Tessera::Geometry {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr double kLastStart = 6.283185307079586; // 2 pi less 1e-10: a later start counts as angle 0

constexpr double kCosineRounding = 1e-12;
constexpr double kNoGap = 2.0; // above every cosine

// In [0, 2 pi], where 2 pi stands for directions just below the positive x axis.
double PolarAngle(double x, double y) {
    const double angle = std::atan2(y, x);
    return angle < 0.0 ? angle + kTurn : angle;
}

// The direction of a key, on the square of its corners (1, 0), (0, 1), (-1, 0), (0, -1).
double XOf(double key) {
    return std::fabs(key - 2.0) - 1.0;
}
double YOf(double key) {
    return key < 3.0 ? 1.0 - std::fabs(key - 1.0) : key - 4.0;
}

// Falls from 1 to -3 while the turn from one direction to the other grows from 0 to 2 pi: the square of its
// cosine with the cosine's sign, reflected at pi.
double FallOf(double from, double to) {
    const double ax = XOf(from), ay = YOf(from), bx = XOf(to), by = YOf(to);
    const double dot = ax * bx + ay * by;
    const double square = dot * std::fabs(dot) / ((ax * ax + ay * ay) * (bx * bx + by * by));
    return ax * by - ay * bx >= 0.0 ? square : -2.0 - square;
}

} // namespace

// Angles are taken of the gaps alone that can be the widest.
AngularRange AngularCover::Covered() const {
    struct Gap {
        const Direction *from, *to;
        double fall;
    };
    std::array<Gap, kBins> gaps;
    std::size_t count = 0;
    std::size_t before = kBins; // last filled bin so far
    std::size_t first = kBins;
    for (std::size_t i = 0; i < kBins; ++i) {
        if (bins_[i].IsEmpty())
            continue;
        if (before == kBins)
            first = i;
        else if (i > before + 1)
            gaps[count++] = {&bins_[before].last, &bins_[i].first, 0.0};
        before = i;
    }
    if (before < kBins && (first > 0 || before + 1 < kBins))
        gaps[count++] = {&bins_[before].last, &bins_[first].first, 0.0};

    double least = kNoGap;
    for (std::size_t i = 0; i < count; ++i) {
        gaps[i].fall = FallOf(gaps[i].from->key, gaps[i].to->key);
        least = std::min(least, gaps[i].fall);
    }
    AngularRange covered{0.0, kTurn};
    double widest = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        if (gaps[i].fall > least + kCosineRounding)
            continue;
        const double from = PolarAngle(gaps[i].from->x, gaps[i].from->y);
        const double to = PolarAngle(gaps[i].to->x, gaps[i].to->y);
        const bool isAcross = gaps[i].to->key <= gaps[i].from->key;
        const double width = (isAcross ? to + kTurn : to) - from;
        if (width > widest) {
            widest = width;
            covered = {to, isAcross ? from : from + kTurn};
            if (!isAcross && to > kLastStart)
                covered = {to - kTurn, from};
        }
    }
    return covered;
}

} // namespace Tessera::Geometry
