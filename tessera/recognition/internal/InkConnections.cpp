#include "tessera/recognition/internal/InkConnections.h"

#include <algorithm>

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/SnapSearch.h"

namespace Tessera::Geometry {

namespace {

constexpr double kMoveShare = 1.0 / 6.0;

// Whether the piece was moved onto a key point; fills all of the connection but the curve and its end.
bool ConnectEnd(const InkPath& path, std::span<Curve* const> earlier,
                const SketchRecognizerPreferences& preferences, ExactPiece& piece, bool isLast,
                InkConnection& connection) {
    Point& end = isLast ? piece.to : piece.from;
    const double reach = kMoveShare * piece.from.Distance(piece.to);
    for (const SnapCandidate& found :
         FindSnapPoints(path.ToModel(end), earlier, preferences, SnapUse::Create)) {
        const Point target = path.FromModel(found.point);
        if (target.Distance(end) > reach)
            break; // the nearest came first
        const auto parent = std::find(earlier.begin(), earlier.end(), found.point.AskParent());
        connection.earlier = static_cast<int>(parent - earlier.begin());
        connection.keyPoint = found.point.AskSnapType();
        connection.position = found.point;
        end = target;
        return true;
    }
    return false;
}

} // namespace

std::vector<InkConnection> ConnectEnds(const InkPath& path, std::span<Curve* const> earlier,
                                       const SketchRecognizerPreferences& preferences, ExactChain& chain) {
    std::vector<InkConnection> connections;
    if (chain.isClosed || earlier.empty() || !preferences.AskSnapping())
        return connections;
    for (const bool isLast : {false, true}) {
        InkConnection connection;
        connection.curve = isLast ? static_cast<int>(chain.pieces.size()) - 1 : 0;
        connection.end = isLast ? CurveEnd::End : CurveEnd::Start;
        ExactPiece& piece = isLast ? chain.pieces.back() : chain.pieces.front();
        if (ConnectEnd(path, earlier, preferences, piece, isLast, connection))
            connections.push_back(connection);
    }
    return connections;
}

} // namespace Tessera::Geometry
