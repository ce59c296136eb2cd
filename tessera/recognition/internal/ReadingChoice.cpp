#include "tessera/recognition/internal/ReadingChoice.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "tessera/recognition/internal/ChainSearch.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/DeeShape.h"
#include "tessera/recognition/internal/MeantBows.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr double kTriangleSaving = 2.0;  // numbers
constexpr double kRectangleSaving = 3.0; // five instead of eight
// Three sides like these are meant as a bracket, even where the back is kinked by up to 30 degrees: measured
// on 120 drawn ones, of which four more are read as such, while five poly-lines of 1,600 are taken for one.
constexpr double kBracketSaving = 7.0;
constexpr double kMeantBowPrice = 2.0;  // of a line that was meant as an arc
constexpr double kDeeSaving = 2.0;      // five instead of seven
constexpr double kLeastCorner = 0.5;    // cosine of 60 degrees
constexpr double kMostBow = 0.16;       // sagitta of a straight side over its length
constexpr double kDoubtfulCorner = 2.0; // price from which a joint is hardly a corner
// The same between two lines that turn less than that, in radians: a shallow wave looks like these. Where the
// pace of the pen is known the pen must have slowed down, else the ink must turn nearly at once.
constexpr double kShallowTurn = 1.2;
constexpr double kDoubtfulKink = 0.5;
constexpr double kDoubtfulPacedKink = -3.0;
constexpr std::size_t kMostOfBracket = 6; // pieces that are mere kinks of three
constexpr double kLeastMouth = 0.5;       // distance of the ends of a bracket over the length of its back
constexpr double kRunsBack = -0.9;        // cosine of 154 degrees

// Sides that hardly bow: what bows more was drawn as an arc.
bool AreStraight(const PricedPath& ink, const Chain& lines) {
    return std::none_of(lines.pieces.begin(), lines.pieces.end(), [&](const ChainPiece& side) {
        const RunFits fits = FitRun(ink, side.first, side.last, 0.0);
        return fits.hasArc && fits.BowOfLine() > kMostBow;
    });
}

// Three lines with two corners of 60 to 120 degrees, of which the last runs back along the first; the ends
// stay apart.
bool IsBracket(const PricedPath& ink, const Chain& lines) {
    const auto isCorner = [](const ChainPiece& side) { return side.joint == JointSight::Corner; };
    if (!std::all_of(lines.pieces.begin() + 1, lines.pieces.end(), isCorner))
        return false;
    const Point first = DirectionAt(ink, lines.pieces[0], true);
    const Point middle = DirectionAt(ink, lines.pieces[1], false);
    const Point last = DirectionAt(ink, lines.pieces[2], false);
    const double back = ink.path.step * PointsIn(ink, lines.pieces[1]);
    return std::fabs(first.Dot(middle)) <= kLeastCorner && std::fabs(middle.Dot(last)) <= kLeastCorner &&
           first.Dot(last) <= kRunsBack && ink.path.Gap() >= kLeastMouth * back;
}

bool IsRectangle(const Chain& lines) {
    for (std::size_t i = 0; i < 4; ++i) {
        const Point& a = lines.pieces[i].line.direction;
        const Point& b = lines.pieces[(i + 1) % 4].line.direction;
        if (std::fabs(a.Dot(b)) > kLeastCorner)
            return false;
    }
    return true;
}

bool IsQuadrilateral(const Chain& chain) {
    return chain.pieces.size() == 4 && AreLines(chain);
}

// What a closed chain is worth by its shape.
double SavingOf(const PricedPath& ink, const Chain& chain) {
    if (IsQuadrilateral(chain))
        return IsRectangle(chain) && !HasMeantBow(ink, chain) ? kRectangleSaving : 0.0;
    if (const int bows = CountMeantBows(ink, chain); bows > 0)
        return -kMeantBowPrice * bows;
    if (IsDee(ink, chain))
        return kDeeSaving;
    return AreLines(chain) && chain.pieces.size() == 3 && !HasBend(chain) ? kTriangleSaving : 0.0;
}

// Whether the ink shows the corner before a piece without doubt.
bool IsShown(const ChainPiece& piece) {
    return piece.joint == JointSight::Corner && piece.jointPrice <= kDoubtfulCorner;
}

// Whether a corner of an open chain may be a bend of a shallow wave.
bool MayBeBend(const PricedPath& ink, const ChainPiece& before, const ChainPiece& piece) {
    if (before.isArc || piece.isArc ||
        piece.jointPrice <= (ink.pace.close.empty() ? kDoubtfulKink : kDoubtfulPacedKink))
        return false;
    const Point from = DirectionAt(ink, before, true);
    return std::fabs(SignedAngle(from, DirectionAt(ink, piece, false))) < kShallowTurn;
}

} // namespace

double LengthOfHabit(const PricedPath& ink, const Chain& chain) {
    double saved = 0.0;
    if (chain.isClosed)
        saved = SavingOf(ink, chain);
    else if (chain.pieces.size() == 3 && AreLines(chain) && IsBracket(ink, chain) && AreStraight(ink, chain))
        saved = kBracketSaving;
    return LengthOf(ink, chain) - saved * kNumberPrice;
}

std::optional<Chain> AsBracket(const PricedPath& ink, const Chain& chain) {
    const std::size_t count = chain.pieces.size();
    if (chain.isClosed || count < 3 || count > kMostOfBracket || (count == 3 && !AreLines(chain)))
        return std::nullopt;
    const int last = ink.path.Size() - 1;
    if (chain.pieces[0].first != 0 || chain.pieces[count - 1].last != last)
        return std::nullopt; // what is left out at the ends has its price
    std::vector<Chain> hands = ChainsOver(ink, {0, chain.pieces[0].last, chain.pieces[count - 1].first, last},
                                          {false, false, false});
    Chain bracket = WithCorner(ink, WithCorner(ink, std::move(hands[kUsualHand]), 1), 2);
    if (!IsBracket(ink, bracket) || !AreStraight(ink, bracket))
        return std::nullopt;
    return bracket;
}

bool HasCorner(const Chain& chain) {
    return std::any_of(chain.pieces.begin() + 1, chain.pieces.end(),
                       [](const ChainPiece& piece) { return piece.joint == JointSight::Corner; });
}

bool HasBend(const Chain& chain) {
    return std::any_of(chain.pieces.begin(), chain.pieces.end(),
                       [](const ChainPiece& piece) { return piece.joint == JointSight::Bend; });
}

bool ShowsCorner(const PricedPath& ink, const Chain& chain) {
    for (std::size_t i = 1; i < chain.pieces.size(); ++i)
        if (IsShown(chain.pieces[i]) &&
            (chain.isClosed || !MayBeBend(ink, chain.pieces[i - 1], chain.pieces[i])))
            return true;
    return false;
}

bool ShowsAllCorners(const Chain& chain) {
    return std::all_of(chain.pieces.begin() + (chain.isClosed ? 0 : 1), chain.pieces.end(), IsShown);
}

} // namespace Tessera::Geometry
