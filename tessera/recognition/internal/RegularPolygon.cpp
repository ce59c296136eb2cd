// Seen from its centre the distance of a polygon's side from the round of the same size is a wave: outwards
// at the corners, inwards in the middle of a side, as often as there are sides. The residuals of the ellipse
// of least distances show how strong that wave is, of what such a polygon has, and how strong its neighbours
// are, which no polygon explains: these are the hand's. The wave's phase tells where the corners lie.
#include "tessera/recognition/internal/RegularPolygon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "tessera/kernel/NR.h"
#include "tessera/recognition/internal/CornerEvidence.h"
#include "tessera/recognition/internal/PiecePrices.h"

namespace Tessera::Geometry {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
constexpr int kFewest = 5; // sides: of fewer every corner is clear
constexpr int kMost = 12;
constexpr int kNeighbours = 3;     // waves to either side that tell the hand's strength
constexpr int kSlowest = 4;        // waves a turn; slower ones are the hand's way of drawing a round
constexpr int kSamplesPerSide = 3; // a round of fewer samples is a polygon of chords
constexpr double kMostOblong = 0.35;
constexpr double kLeastWinding = 0.85;
constexpr double kMostWinding = 1.3;
// Odds for a polygon: how the wave stands out among its neighbours and what any hand has of it, how sharp its
// corners are, how far it is from being as strong as the polygon's, and how the pen slows down where its
// corners would be. A logistic regression over 2,400 synthetic polygons, 1,800 synthetic rounds and 685 that
// people drew: of these none comes up to the threshold, of the synthetic ones one of a quick hand.
constexpr double kWeakest = 0.35; // of the polygon's own strength
constexpr double kStrongest = 1.8;
constexpr double kHand = 0.15;
constexpr double kMostClear = 5.0;
constexpr double kSharpGain = 3.0;
constexpr double kLeastSharp = -0.5;
constexpr double kStrengthLoss = 3.5;
constexpr double kDipGain = 8.0;
constexpr double kDoubtfulDip = 0.25; // of the logarithm of the pace
constexpr double kThreshold = 3.8;
constexpr double kLeastPace = 0.02;
constexpr double kReach = 0.3;        // of a side: how far a corner may lie from where it is expected
constexpr int kNearEnd[] = {1, 3, 6}; // points, tried in turn
constexpr int kSteps = 2;
constexpr double kMostStray = 0.035; // root mean square distance of the ink, of the inscribed round's radius
constexpr double kNumbers = 5.0;     // centre, radius, rotation, count

using Wave = std::complex<double>;

/// What goes on along one turn.
struct OneTurn {
    std::vector<Wave> back;    ///< one over the direction from the centre, eccentric
    std::vector<double> share; ///< of the turn that a point stands for
    std::vector<double> out;   ///< distance outwards, of the mean radius
    std::vector<double> slow;  ///< logarithm of what the pen lacks of its usual speed; empty without times
};

OneTurn FirstTurn(const PricedPath& ink, const EllipseEvidence& ellipse) {
    OneTurn one;
    const double radius = 0.5 * (ellipse.a + ellipse.b);
    const double start = ellipse.terms[0][kDriftTerm];
    std::vector<double> turned;
    for (std::size_t i = 0; i < ellipse.terms.size(); ++i) {
        const EllipseTerms& terms = ellipse.terms[i];
        if (std::fabs(terms[kDriftTerm] - start) > 1.0)
            break;
        turned.push_back(terms[kDriftTerm] - start);
        one.back.emplace_back(terms[kCosTerm], -terms[kSinTerm]);
        one.out.push_back(ellipse.distance[i] / radius);
        if (!ink.pace.close.empty())
            one.slow.push_back(-std::log(std::max(kLeastPace, ink.pace.close[i])));
    }
    const std::size_t last = turned.size() - 1;
    const double drift = (one.out[last] - one.out[0]) / turned[last]; // of the pen, until it comes back
    for (std::size_t i = 0; i <= last; ++i) {
        one.share.push_back(0.5 * std::fabs(turned[std::min(i + 1, last)] - turned[i > 0 ? i - 1 : i]));
        one.out[i] -= drift * turned[i];
    }
    return one;
}

Wave WaveOf(const OneTurn& one, const std::vector<double>& values, int perTurn) {
    Wave sum;
    for (std::size_t i = 0; i < values.size(); ++i) {
        Wave power(2.0 * one.share[i] * values[i], 0.0);
        Wave square = one.back[i];
        for (int k = perTurn; k > 0; k /= 2) {
            if (k % 2 == 1)
                power *= square;
            square *= square;
        }
        sum += power;
    }
    return sum;
}

using Waves = std::array<Wave, kMost + kNeighbours + 1>; ///< by waves a turn

Waves WavesOf(const OneTurn& one) {
    Waves waves{};
    for (std::size_t i = 0; i < one.out.size(); ++i) {
        Wave power(2.0 * one.share[i] * one.out[i], 0.0);
        for (Wave& wave : waves) {
            wave += power;
            power *= one.back[i];
        }
    }
    return waves;
}

// Of the wave of a regular polygon, of its mean radius.
double StrengthOf(int sides) {
    return 2.0 / (sides * sides - 1.0);
}

double StrengthBeside(const Waves& waves, int sides) {
    double sumSq = 0.0;
    int count = 0;
    for (int k = std::max(kSlowest, sides - kNeighbours); k <= sides + kNeighbours; ++k)
        if (k != sides) {
            sumSq += std::norm(waves[static_cast<std::size_t>(k)]);
            ++count;
        }
    return std::sqrt(sumSq / count);
}

double OddsOf(const OneTurn& one, int sides, const Wave& wave, double beside) {
    const double strength = std::abs(wave) / StrengthOf(sides);
    const Wave phase = std::conj(wave) / std::abs(wave);
    const double sharp = (WaveOf(one, one.out, 2 * sides) * phase * phase).real() / StrengthOf(2 * sides);
    double odds = std::min(strength / (beside / StrengthOf(sides) + kHand), kMostClear) +
                  kSharpGain * std::clamp(sharp, kLeastSharp, 1.0) -
                  kStrengthLoss * std::fabs(std::log(strength));
    if (!one.slow.empty())
        odds += kDipGain * ((WaveOf(one, one.slow, sides) * phase).real() - kDoubtfulDip);
    return odds;
}

/// What the waves tell: no polygon is zero sides.
struct Seen {
    int sides = 0;
    double corner = 0.0; ///< the angle of one
};

Seen LookAt(const OneTurn& one) {
    const Waves waves = WavesOf(one);
    Seen seen;
    double strongest = 0.0;
    for (int sides = kFewest; sides <= kMost; ++sides) {
        const Wave& wave = waves[static_cast<std::size_t>(sides)];
        const double strength = std::abs(wave);
        if (strength < kWeakest * StrengthOf(sides) || strength > kStrongest * StrengthOf(sides) ||
            strength <= strongest || OddsOf(one, sides, wave, StrengthBeside(waves, sides)) < kThreshold)
            continue;
        strongest = strength;
        seen = {sides, -std::arg(wave) / sides};
    }
    return seen;
}

// The point that turns most about the one at which a corner is expected.
int PlaceOf(const PricedPath& ink, int expected, int reach) {
    int best = expected;
    double most = 0.0;
    for (const TurningPeak& peak : ink.peaks)
        if (std::abs(peak.at - expected) <= reach && std::fabs(peak.turn) > most) {
            most = std::fabs(peak.turn);
            best = peak.at;
        }
    return best;
}

// Corners of the ink, the ends of the stroke aside.
std::vector<int> CornersOf(const PricedPath& ink, const EllipseEvidence& ellipse, const Seen& seen) {
    const int last = ink.path.Size() - 1;
    const double side = kTurn / seen.sides;
    const EllipseTerms& start = ellipse.terms[0];
    const double first = std::atan2(start[kSinTerm], start[kCosTerm]) - seen.corner;
    const int reach = static_cast<int>(kReach * last / (seen.sides * std::fabs(ellipse.winding)));
    std::vector<int> corners;
    double before = std::floor(first / side);
    for (int i = 1; i < last; ++i) {
        const double turned = ellipse.terms[static_cast<std::size_t>(i)][kDriftTerm] - start[kDriftTerm];
        const double at = std::floor((first + kTurn * turned) / side);
        if (at != before)
            corners.push_back(PlaceOf(ink, i, reach));
        before = at;
    }
    return corners;
}

// The sides between corners; those that come nearer to an end of the stroke than so many points lie there.
// Where the stroke starts within a side, its last piece belongs to that.
std::optional<Chain> SidesBetween(const PricedPath& ink, const std::vector<int>& corners, int nearEnd,
                                  std::size_t sides) {
    const int last = ink.path.Size() - 1;
    std::vector<int> breaks{0};
    for (const int corner : corners)
        if (corner > breaks.back() && corner >= nearEnd && corner <= last - nearEnd)
            breaks.push_back(corner);
    const std::size_t inner = breaks.size() - 1;
    if (inner + 1 < sides || inner > sides)
        return std::nullopt;
    breaks.push_back(last);
    Chain chain;
    chain.isClosed = true;
    for (std::size_t b = 1; b <= sides; ++b)
        chain.pieces.push_back(PriceRun(ink, breaks[b - 1], breaks[b]).line.piece);
    if (inner == sides)
        chain.pieces.front() = PriceRun(ink, breaks[sides], breaks[1]).line.piece;
    for (ChainPiece& piece : chain.pieces)
        chain.sumSq += piece.sumSq = piece.line.sumSq;
    return chain;
}

std::optional<Chain> FindSides(const PricedPath& ink, const EllipseEvidence& ellipse, const Seen& seen) {
    const std::vector<int> corners = CornersOf(ink, ellipse, seen);
    std::optional<Chain> best;
    for (const int nearEnd : kNearEnd) {
        std::optional<Chain> chain =
            SidesBetween(ink, corners, nearEnd, static_cast<std::size_t>(seen.sides));
        if (chain && (!best || chain->sumSq < best->sumSq))
            best = std::move(chain);
    }
    return best;
}

// The direction of the first side: the mean of what all sides say of it.
double DirectionOfFirst(const PricedPath& ink, const Chain& chain, double turn) {
    Wave sum;
    double turned = 0.0;
    for (const ChainPiece& piece : chain.pieces) {
        const Point along = DirectionAt(ink, piece, false);
        sum += Wave(along.x, along.y) * std::polar(1.0, -turned);
        turned += turn;
    }
    return std::arg(sum);
}

/// A regular polygon by its inscribed round.
struct Figure {
    Point centre;
    double radius = 0.0;
    double direction = 0.0; ///< of the first side
    double turn = 0.0;      ///< at each corner
};

// One step towards the least squared distances of the sides' ink from the figure's sides: the mean of these
// squares before it.
double Improve(const PricedPath& ink, const Chain& chain, Figure& figure) {
    constexpr int kUnknowns = 4;               // of the centre two, the radius, the direction
    double normal[kUnknowns * kUnknowns] = {}; // lower triangle
    double x[kUnknowns] = {};
    double sumSq = 0.0;
    int count = 0;
    double direction = figure.direction;
    for (const ChainPiece& piece : chain.pieces) {
        const Point along(std::cos(direction), std::sin(direction));
        const double sense = figure.turn < 0.0 ? -1.0 : 1.0;
        const Point out = sense * Point(along.y, -along.x);
        const int points = PointsIn(ink, piece);
        const int trim = TrimOf(points);
        for (int i = trim; i <= points - trim; ++i) {
            const Point from = ink.path.At(piece.first + i) - figure.centre;
            const double off = from.Dot(out) - figure.radius;
            const double row[kUnknowns] = {out.x, out.y, 1.0, -sense * from.Dot(along)};
            for (int r = 0; r < kUnknowns; ++r) {
                for (int k = 0; k <= r; ++k)
                    normal[r * kUnknowns + k] += row[r] * row[k];
                x[r] += row[r] * off;
            }
            sumSq += off * off;
            ++count;
        }
        direction += figure.turn;
    }
    if (NR_cholesky_decomp(kUnknowns, normal) == 0)
        return sumSq / count;
    NR_cholesky_solve(kUnknowns, normal, x);
    figure.centre += Point(x[0], x[1]);
    figure.radius += x[2];
    figure.direction += x[3];
    return sumSq / count;
}

// The figure of least squared distances, and their root mean square, of its radius.
Figure FitFigure(const PricedPath& ink, const EllipseEvidence& ellipse, const Chain& chain, double& strays) {
    Figure figure;
    figure.centre = ellipse.centre;
    figure.turn = std::copysign(kTurn / static_cast<double>(chain.pieces.size()), ellipse.winding);
    figure.radius = 0.5 * (ellipse.a + ellipse.b) * std::cos(0.5 * figure.turn);
    figure.direction = DirectionOfFirst(ink, chain, figure.turn);
    for (int i = 0; i < kSteps; ++i)
        Improve(ink, chain, figure);
    Figure next = figure;
    strays = std::sqrt(Improve(ink, chain, next)) / figure.radius;
    return figure;
}

std::vector<Point> CornersOf(const Figure& figure, int sides) {
    const double radius = figure.radius / std::cos(0.5 * figure.turn);
    const double first = figure.direction - 0.25 * std::copysign(kTurn, figure.turn) - 0.5 * figure.turn;
    std::vector<Point> corners;
    for (int i = 0; i < sides; ++i) {
        const double at = first + i * figure.turn;
        corners.push_back(figure.centre + radius * Point(std::cos(at), std::sin(at)));
    }
    return corners;
}

} // namespace

std::optional<RegularPolygon> FindRegularPolygon(const PricedPath& ink, const EllipseEvidence& ellipse,
                                                 int samples) {
    const double winding = std::fabs(ellipse.winding);
    if (winding < kLeastWinding || winding > kMostWinding ||
        ellipse.a - ellipse.b > kMostOblong * ellipse.a || ink.path.Gap() > ink.closing)
        return std::nullopt;
    const Seen seen = LookAt(FirstTurn(ink, ellipse));
    if (seen.sides == 0 || samples < kSamplesPerSide * seen.sides)
        return std::nullopt;
    std::optional<Chain> sides = FindSides(ink, ellipse, seen);
    if (!sides)
        return std::nullopt;
    double strays = 0.0;
    const Figure figure = FitFigure(ink, ellipse, *sides, strays);
    if (strays > kMostStray)
        return std::nullopt;
    sides->price = kNumbers * kNumberPrice;
    return RegularPolygon{std::move(*sides), CornersOf(figure, seen.sides)};
}

} // namespace Tessera::Geometry
