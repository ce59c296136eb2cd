#include "tessera/recognition/SnapSearch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

namespace {

constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

int Rank(SnapPointType_e type) {
    switch (type) {
    case SnapPointType_Start:
    case SnapPointType_End:
        return 0;
    case SnapPointType_Mid:
        return 1;
    default:
        return 2;
    }
}

bool HasCenter(const Curve& curve) {
    return curve.GetType() == CurveType_Arc || curve.GetType() == CurveType_Ellipse;
}

void OfferKeyPoints(const Point& p, Curve& curve, double limit, std::vector<SnapCandidate>& candidates) {
    const auto offer = [&](SnapPointType_e type) {
        const SnapPoint key(&curve, type);
        const double distance = key.Distance(p);
        if (distance <= limit) {
            candidates.push_back({key, distance});
        }
    };
    if (!(HasCenter(curve) && curve.IsClosed())) {
        offer(SnapPointType_Start);
        offer(SnapPointType_End);
        offer(SnapPointType_Mid);
    }
    if (HasCenter(curve)) {
        offer(SnapPointType_Center);
    }
}

} // namespace

std::vector<SnapCandidate> FindSnapPoints(const Point& p, std::span<Curve* const> curves,
                                          const SketchRecognizerPreferences& preferences, SnapUse use) {
    std::vector<SnapCandidate> candidates;
    if (!preferences.AskSnapping()) {
        return candidates;
    }
    double limit =
        use == SnapUse::Create ? preferences.AskSnapDistanceCreate() : preferences.AskSnapDistanceEdit();
    preferences.ContextAdjustTolerance(&limit);
    for (Curve* curve : curves) {
        if (curve != nullptr) {
            OfferKeyPoints(p, *curve, limit, candidates);
        }
    }
    std::stable_sort(
        candidates.begin(), candidates.end(), [](const SnapCandidate& a, const SnapCandidate& b) {
            return a.distance < b.distance ||
                   (a.distance == b.distance && Rank(a.point.AskSnapType()) < Rank(b.point.AskSnapType()));
        });
    const auto most = static_cast<std::size_t>(std::max(preferences.AskSnapCandidateCount(), 0));
    if (candidates.size() > most) {
        candidates.erase(candidates.begin() + static_cast<std::ptrdiff_t>(most), candidates.end());
    }
    return candidates;
}

std::optional<SnapDirection> FindSnapDirection(const Point& fixedEnd, const Point& freeEnd,
                                               std::span<const Vector> neighbourDirections,
                                               const SketchRecognizerPreferences& preferences, SnapUse use) {
    const Vector drawn(fixedEnd, freeEnd);
    Vector unit = drawn;
    if (!preferences.AskSnapping() || !unit.Normalize()) {
        return std::nullopt;
    }
    const double limitDeg =
        use == SnapUse::Create ? preferences.AskSnapAngleCreate() : preferences.AskSnapAngleEdit();
    std::optional<SnapDirection> best;
    const auto offer = [&](Vector direction) {
        if (!direction.Normalize()) {
            return;
        }
        if (direction.Dot(unit) < 0.0) {
            direction = -1.0 * direction;
        }
        const double angleDeg = std::fabs(unit.AngleBetween(direction)) * kDegreesPerRadian;
        if (angleDeg <= limitDeg && (!best || angleDeg < best->angleDeg)) {
            best = SnapDirection{direction, fixedEnd.AffineCombine(drawn.Length(), direction), angleDeg};
        }
    };
    offer(Vector(1.0, 0.0));
    offer(Vector(0.0, 1.0));
    for (const Vector& direction : neighbourDirections) {
        offer(direction);
    }
    return best;
}

} // namespace Tessera::Geometry
