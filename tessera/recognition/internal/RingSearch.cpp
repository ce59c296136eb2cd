#include "tessera/recognition/internal/RingSearch.h"

#include <algorithm>
#include <vector>

#include "tessera/recognition/internal/ChainChoice.h"
#include "tessera/recognition/internal/ReadingChoice.h"

namespace Tessera::Geometry {

namespace {

constexpr double kMostGap = 2.5;        // steps of the path between ends that meet
constexpr std::size_t kMostPieces = 32; // of more one that was cut in two is a small matter

// The middle of the longest piece.
int MiddleOf(const PricedPath& ink, const Chain& chain) {
    const auto isShorter = [&](const ChainPiece& a, const ChainPiece& b) {
        return PointsIn(ink, a) < PointsIn(ink, b);
    };
    const ChainPiece& longest = *std::max_element(chain.pieces.begin(), chain.pieces.end(), isShorter);
    return ink.path.Within(longest.first + PointsIn(ink, longest) / 2);
}

void Begin(const PricedPath& ink, int start, Ring& ring) {
    ring.path = std::make_unique<InkPath>(BegunAt(ink.path, start));
    ring.ink = std::make_unique<PricedPath>(*ring.path);
    ring.ink->haste = ink.haste;
    ring.ink->closing = ink.closing;
    ring.ink->seam = ink.path.Size() - start;
    for (auto pace : {&PenPace::wide, &PenPace::close}) {
        std::vector<double>& begun = ring.ink->pace.*pace;
        begun = ink.pace.*pace;
        if (begun.empty())
            continue;
        std::rotate(begun.begin(), begun.begin() + start, begun.end());
        begun.push_back(begun.front());
    }
}

bool IsWithin(const ChainPiece& piece, int point) {
    return piece.first < piece.last ? piece.first <= point && point < piece.last
                                    : piece.first <= point || point < piece.last;
}

} // namespace

std::optional<Ring> FindRing(const PricedPath& ink, const Chain& found, double tolerance) {
    const std::size_t count = found.pieces.size();
    if (count < 2 || count > kMostPieces || AreLines(found) || ink.path.Gap() > kMostGap * ink.path.step)
        return std::nullopt;
    const int start = MiddleOf(ink, found);
    if (start == 0)
        return std::nullopt;
    Ring ring;
    Begin(ink, start, ring);
    const double length = LengthOfHabit(ink, found);
    ring.chain = FindChain(*ring.ink, {}, true, tolerance, length);
    if (!IsRing(ring.chain) || LengthOfHabit(*ring.ink, ring.chain) >= length)
        return std::nullopt;
    std::vector<ChainPiece>& pieces = ring.chain.pieces;
    const auto first = std::find_if(pieces.begin(), pieces.end(),
                                    [&](const ChainPiece& piece) { return IsWithin(piece, ring.ink->seam); });
    std::rotate(pieces.begin(), first == pieces.end() ? pieces.begin() : first, pieces.end());
    return ring;
}

} // namespace Tessera::Geometry
