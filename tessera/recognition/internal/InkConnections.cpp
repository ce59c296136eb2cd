#include "tessera/recognition/internal/InkConnections.h"

#include <algorithm>
#include <optional>

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/SnapSearch.h"
#include "tessera/recognition/internal/RecognitionTolerances.h"

namespace Tessera::Geometry {

namespace {

constexpr double kMoveShare = 1.0 / 6.0; // of a piece's length: farther its end does not move

using Found = std::optional<SnapPoint>;

Found NearestKeyPoint(const Point& p, std::span<Curve* const> earlier,
                      const SketchRecognizerPreferences& preferences, double reach) {
    for (const SnapCandidate& found : FindSnapPoints(p, earlier, preferences, SnapUse::Create))
        if (found.distance <= reach)
            return found.point;
    return std::nullopt;
}

Found NearestFreeEnd(const Point& p, std::span<Curve* const> earlier, double reach) {
    Found nearest;
    for (Curve* curve : earlier) {
        if (curve == nullptr || curve->IsClosed())
            continue;
        for (const SnapPointType_e type : {SnapPointType_Start, SnapPointType_End}) {
            const SnapPoint end(curve, type);
            const double distance = end.Distance(p);
            if (distance <= reach && (!nearest || distance < nearest->Distance(p)))
                nearest = end;
        }
    }
    return nearest;
}

} // namespace

std::vector<InkConnection> FindConnections(const InkPath& path, std::span<Curve* const> earlier,
                                           const SketchRecognizerPreferences& preferences,
                                           const ExactChain& chain) {
    std::vector<InkConnection> connections;
    if (chain.isClosed || earlier.empty())
        return connections;
    const double closing = ClosedStrokeTolerance(preferences, path.scale * path.length);
    for (const bool isLast : {false, true}) {
        const ExactPiece& piece = isLast ? chain.pieces.back() : chain.pieces.front();
        const Point at = path.ToModel(isLast ? piece.to : piece.from);
        const double reach = kMoveShare * path.scale * piece.from.Distance(piece.to);
        Found found = NearestKeyPoint(at, earlier, preferences, reach);
        if (!found && preferences.GetCurveTidy())
            found = NearestFreeEnd(at, earlier, std::min(closing, reach));
        if (!found)
            continue;
        const auto parent = std::find(earlier.begin(), earlier.end(), found->AskParent());
        connections.push_back({0, isLast ? CurveEnd::End : CurveEnd::Start,
                               static_cast<int>(parent - earlier.begin()), found->AskSnapType(), *found});
    }
    return connections;
}

std::optional<Point> PlaceOf(const InkPath& path, std::span<const InkConnection> connections, CurveEnd end) {
    for (const InkConnection& connection : connections)
        if (connection.end == end)
            return path.FromModel(connection.position);
    return std::nullopt;
}

void MoveEnds(const InkPath& path, std::span<InkConnection> connections, ExactChain& chain) {
    for (InkConnection& connection : connections) {
        const bool isLast = connection.end == CurveEnd::End;
        connection.curve = isLast ? static_cast<int>(chain.pieces.size()) - 1 : 0;
        (isLast ? chain.pieces.back().to : chain.pieces.front().from) = path.FromModel(connection.position);
    }
}

std::vector<InkConnection> ConnectEnds(const InkPath& path, std::span<Curve* const> earlier,
                                       const SketchRecognizerPreferences& preferences, ExactChain& chain) {
    std::vector<InkConnection> connections = FindConnections(path, earlier, preferences, chain);
    MoveEnds(path, connections, chain);
    return connections;
}

} // namespace Tessera::Geometry
