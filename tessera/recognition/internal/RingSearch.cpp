#include "tessera/recognition/internal/RingSearch.h"

#include <algorithm>
#include <vector>

#include "tessera/recognition/internal/ChainChoice.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/EndJoin.h"
#include "tessera/recognition/internal/ReadingChoice.h"

namespace Tessera::Geometry {

namespace {

constexpr double kUsualPace = 1.0;      // across a gap
constexpr double kLeastBow = 0.1;       // sagitta over length
constexpr double kGoesOn = 0.85;        // cosine of 32 degrees: no more of a corner is within a few points
constexpr double kTurns = 0.9;          // cosine of 26 degrees: halves of an arc do
constexpr std::size_t kMostPieces = 32; // of more one that was cut in two is a small matter

// The middle of the longest piece.
int MiddleOf(const PricedPath& ink, const Chain& chain) {
    const auto isShorter = [&](const ChainPiece& a, const ChainPiece& b) {
        return PointsIn(ink, a) < PointsIn(ink, b);
    };
    const ChainPiece& longest = *std::max_element(chain.pieces.begin(), chain.pieces.end(), isShorter);
    return ink.path.Within(longest.first + PointsIn(ink, longest) / 2);
}

void Begin(const PricedPath& ink, const EndJoin& join, int start, Ring& ring) {
    ring.path = std::make_unique<InkPath>(BegunAt(ink.path, join, start));
    ring.ink = std::make_unique<PricedPath>(*ring.path);
    ring.ink->haste = ink.haste;
    ring.ink->closing = ink.closing;
    ring.ink->seam = ink.path.Size() - join.cut - start;
    for (auto pace : {&PenPace::wide, &PenPace::close})
        ring.ink->pace.*pace = BegunAt(ink.pace.*pace, join, start, kUsualPace);
}

// Of the ring's description if it were one of the path as it was drawn: points that were cut off or added
// would have been no worse than the others.
double LengthAlong(const InkPath& path, const Ring& ring) {
    const double sumSq = ring.chain.sumSq;
    return LengthOfHabit(*ring.ink, ring.chain) - LengthOf(*ring.path, {0.0, sumSq}) +
           LengthOf(path, {0.0, sumSq * path.Size() / ring.path->Size()});
}

// Whether a closed chain of lines may have an arc where the pen touched down: the ink goes on there and the
// lines turn, or the line that crosses the place is bowed.
bool HidesArc(const PricedPath& ink, const Chain& lines) {
    if (!lines.isClosed)
        return false;
    const ChainPiece& first = lines.pieces.front();
    if (IsRing(lines)) {
        const RunFits fits = FitRun(ink, first.first, first.last, 0.0);
        return fits.hasArc && fits.BowOfLine() > kLeastBow;
    }
    return CosineAtEnds(ink.path) > kGoesOn &&
           DirectionAt(ink, lines.pieces.back(), true).Dot(DirectionAt(ink, first, false)) < kTurns;
}

bool IsWithin(const ChainPiece& piece, int point) {
    return piece.first < piece.last ? piece.first <= point && point < piece.last
                                    : piece.first <= point || point < piece.last;
}

} // namespace

std::optional<Ring> FindRing(const PricedPath& ink, const Chain& found, double tolerance) {
    const std::size_t count = found.pieces.size();
    if (count < 2 || count > kMostPieces || (AreLines(found) && !HidesArc(ink, found)))
        return std::nullopt;
    const std::optional<EndJoin> join = JoinEnds(ink.path, ink.closing);
    const int start = MiddleOf(ink, found);
    if (!join || start == 0 || start >= ink.path.Size() - join->cut)
        return std::nullopt;
    Ring ring;
    Begin(ink, *join, start, ring);
    const double length = LengthOfHabit(ink, found);
    ring.chain = FindChain(*ring.ink, {}, true, tolerance, length);
    ring.length = LengthAlong(ink.path, ring);
    if (!IsRing(ring.chain) || ring.length >= length)
        return std::nullopt;
    std::vector<ChainPiece>& pieces = ring.chain.pieces;
    const auto first = std::find_if(pieces.begin(), pieces.end(),
                                    [&](const ChainPiece& piece) { return IsWithin(piece, ring.ink->seam); });
    std::rotate(pieces.begin(), first == pieces.end() ? pieces.begin() : first, pieces.end());
    return ring;
}

} // namespace Tessera::Geometry
