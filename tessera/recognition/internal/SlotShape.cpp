// A slot is the limit of a rectangle whose corners are rounded more and more. How far the residuals go back
// towards a smaller rounding (to first order), against the radius, tells whether the ends were drawn round;
// for an ellipse they go the other way.
#include "tessera/recognition/internal/SlotShape.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/recognition/internal/RoundedCourse.h"

namespace Tessera::Geometry {

namespace {

constexpr int kNumbers = 5;
constexpr int kEvaluations = 20; // of the fit: five to eight settle a drawn slot

// What the decision rests on, measured on drawn ovals, circles and rectangles, and on slots of a simulated
// hand.
constexpr double kShortest = 0.6;         // length of a line over the radius
constexpr double kHopeful = 0.53;         // half of it, as the moments have it: they overrate short lines
constexpr double kHopelessCorners = 20.0; // price of corners that nothing makes good
constexpr double kRoundEnds = 0.3; // by how much of the radius the corners' rounding may seem to differ
// Part of that which is free, and one sigma beyond in spreads over the radius: what slots of simulated hands
// show grows with these.
constexpr double kFreeSquareness = 0.1;
constexpr double kSquarenessOfSpread = 2.0;
constexpr double kOpenEnd = 0.5; // of a half circle, what may be missing

// From the second moments, by formulas that are near those of slots of any length.
RoundedOutline Start(const PricedPath& ink) {
    const int n = ink.path.Size();
    const Moments moments = ink.moments.Of(0, n - 1);
    const LineFit fit = FitLine(moments);
    const double across = std::sqrt(fit.sumSq / n);
    const double all = (moments.xx + moments.yy) / n - fit.centre.Dot(fit.centre);
    const double along = std::sqrt(std::max(0.0, all - across * across));
    RoundedOutline start;
    start.centre = fit.centre;
    start.axis = fit.direction;
    start.radius = 1.15 * across;
    start.along = std::max(0.1 * start.radius, 1.6 * along - start.radius);
    return start;
}

// As if each turn stood in the middle of a half circle.
double LeastPriceOfCorners(const PricedPath& ink, double radius) {
    return PriceOfHiddenCorners(
        ink, [=](const TurningPeak& peak) { return std::copysign(1.0 / radius, peak.turn); });
}

// Of ends that look squarer than the ink's spread lets those of a slot: it is a rounded box of short sides.
double PriceOfSquareness(const PricedPath& ink, const RoundedShape& slot, double squareness) {
    const double spread = std::max(kLeastSpread, std::sqrt(slot.sumSq / ink.path.Size()));
    const double sigma = kSquarenessOfSpread * spread / slot.outline.radius;
    const double odd = std::max(0.0, squareness - kFreeSquareness) / sigma;
    return 0.5 * odd * odd;
}

} // namespace

std::optional<RoundedOutline> FitSlot(const PricedPath& ink) {
    RoundedOutline slot = Start(ink);
    return FitOutline(ink.path, OutlineKind::Slot, kEvaluations, slot) ? std::optional(slot) : std::nullopt;
}

std::optional<RoundedShape> FindSlot(const PricedPath& ink) {
    if (ink.path.Gap() > ink.closing)
        return std::nullopt;
    RoundedOutline slot = Start(ink);
    if (slot.along < kHopeful * slot.radius || LeastPriceOfCorners(ink, slot.radius) > kHopelessCorners ||
        !FitOutline(ink.path, OutlineKind::Slot, kEvaluations, slot) ||
        2.0 * slot.along < kShortest * slot.radius)
        return std::nullopt;
    const double squareness = SquarenessOf(ink.path, slot);
    if (std::fabs(squareness) > kRoundEnds)
        return std::nullopt;
    const RoundedCourse course(ink.path, slot);
    if (course.Gap() > std::min(ink.closing, kOpenEnd * std::numbers::pi * slot.radius) ||
        course.Turns() > kMostTurns)
        return std::nullopt;
    RoundedShape shape = Describe(ink, course, kNumbers, SumSqFrom(ink.path, slot));
    shape.description.price += PriceOfSquareness(ink, shape, squareness);
    return shape;
}

} // namespace Tessera::Geometry
