// ChainSearch - the cheapest description of a path as a chain of lines and circular arcs.
//
// A description costs a price for each parameter and the squared distances of the ink, measured against the
// spread of the hand. A hand does not draw straight: the bow of a line costs by its share of the length, so
// that a slightly bent side stays a line whatever its length. The ink next to a break is left out of the
// fits: there the pen rounds its corners.
//
// The search is exact over the candidate breaks (dynamic programming); the breaks are moved to the cheapest
// points beside them afterwards.
#pragma once

#include <vector>

#include "tessera/recognition/internal/InkPath.h"
#include "tessera/recognition/internal/PathMoments.h"

namespace Tessera::Geometry {

/// What a description costs. Units of the path's frame; costs are natural logarithms of odds.
struct InkPrices {
    double parameter = 4.0; ///< one more number: logarithm of the size over the spread of the hand
    double squared = 100.0; ///< per squared distance of one point
    double bow = 0.06;      ///< one sigma of a line's sagitta over its length
};

enum class JointSight {
    Corner,  ///< the ink turns here
    Tangent, ///< the fits run on into each other within the angle that a hand keeps
    Bend     ///< the fits enclose an angle, but the ink only bends: no chain of these pieces was meant
};

/// A run of the path. After closing it may cross the start of the path: then last < first.
struct ChainPiece {
    int first = 0; ///< points of the path; the next piece begins at `last`
    int last = 0;
    bool isArc = false;
    double cost = 0.0;
    LineFit line{};                        ///< always
    CircleFit circle{};                    ///< of arcs
    JointSight joint = JointSight::Corner; ///< with the piece before
    Point meet{};                          ///< where it touches the piece before, at a tangent joint
    bool isJudged = false;                 ///< whether the joint was searched together with the pieces
};

struct Chain {
    std::vector<ChainPiece> pieces;
    double cost = 0.0;
    bool isClosed = false;
};

/// A point at which the ink turns more than beside it.
struct TurningPeak {
    int at = 0;
    double turn = 0.0; ///< radians between the chords before and after, counter-clockwise positive
};

/// A path with what its descriptions are priced by.
struct PricedPath {
    explicit PricedPath(const InkPath& inkPath);

    const InkPath& path;
    PathMoments moments;
    std::vector<TurningPeak> peaks; ///< ascending
    InkPrices prices;
    double closing; ///< largest gap between the ends of closed ink; an eighth of the length unless set
    std::vector<double> pace; ///< speed of the pen at each point, of its usual one; empty without times
};

/// Price of a corner that a description passes over with a bend of the given curvature.
double PriceOfHiddenCorner(const PricedPath& ink, const TurningPeak& peak, double curvature);

/// Points at which a chain may break, both ends of the path among them, ascending.
/// @param spacing  points between candidates where nothing turns: joints of arcs lie there.
std::vector<int> FindBreakCandidates(const PricedPath& ink, int spacing);

/// Points at either end of a piece of so many points that its fits leave out.
int TrimOf(int points);

/// Both kinds of piece fitted to a run of the path.
struct RunFits {
    LineFit line;
    CircleFit circle;
    bool hasArc = false;       ///< false for a run too straight to ask, or one that goes round
    double hiddenByLine = 0.0; ///< prices of corners that the run passes over
    double hiddenByArc = 0.0;
    double length = 0.0;    ///< along the ink
    double curvature = 0.0; ///< of the arc, counter-clockwise positive

    double BowOfLine() const; ///< sagitta of the arc over the length
};

/// @param straight  sum of squares of a line's distances up to which no arc is fitted.
RunFits FitRun(const PricedPath& ink, int first, int last, double straight);

struct PiecePrices {
    ChainPiece line;
    ChainPiece arc;
    bool hasArc = false; ///< false for a run so straight that no arc can pay, or one that goes round
};

/// A line and an arc over the points first to last (on across the start of the path for last < first).
PiecePrices PriceBoth(const PricedPath& ink, int first, int last);

/// The cheaper of the two.
ChainPiece PricePiece(const PricedPath& ink, int first, int last);

Chain SearchChain(const PricedPath& ink);

/// The chain for the hand that drew this ink: of the usual hand's and a careful hand's, the one that
/// describes the ink more briefly when the spread is taken from the ink itself. A careful hand that drew
/// nothing but lines sets the price of distances for what follows.
Chain SearchForHand(PricedPath& ink);

/// Chain over given breaks, ascending, both ends of the path among them.
Chain ChainOver(const PricedPath& ink, const std::vector<int>& breaks);

} // namespace Tessera::Geometry
