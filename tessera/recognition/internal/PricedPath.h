// PricedPath - a path with what its descriptions are told by: moments of any run, where the ink turns, how
// fast the pen was; and the chains of lines and circular arcs that describe it.
//
// The ink next to a break is left out of the fits: there the pen rounds its corners.
#pragma once

#include <vector>

#include "tessera/recognition/internal/Description.h"
#include "tessera/recognition/internal/InkPath.h"
#include "tessera/recognition/internal/PathMoments.h"

namespace Tessera::Geometry {

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
    double price = 0.0;                    ///< of its numbers and of what is odd about it
    double sumSq = 0.0;                    ///< squared distances that nothing explains
    LineFit line{};                        ///< always
    CircleFit circle{};                    ///< of arcs
    JointSight joint = JointSight::Corner; ///< with the piece before
    double jointPrice = 0.0;
    bool isTouching = false; ///< made to touch, or as a kept one to meet, the piece before in `meet`
    Point meet{};
    const InterpretedCurve* kept = nullptr; ///< model units: stays as it is, whatever the fits say
};

struct Chain {
    std::vector<ChainPiece> pieces;
    double price = 0.0; ///< of pieces and joints
    double sumSq = 0.0;
    double squared = 0.0; ///< what squares weigh for the hand that it was found for
    bool isClosed = false;
};

/// Whether all pieces of a chain are lines; whether all are arcs.
bool AreLines(const Chain& chain);
bool AreArcs(const Chain& chain);

/// Whether the chain is closed within its first piece: the joint between the last piece and that one is a
/// joint as any other, not the seam where the ends of the ink meet.
bool IsRing(const Chain& chain);

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
    double haste;   ///< 0 for a hand that takes its time, 1 for one that dashes the stroke off
    double closing; ///< largest gap between the ends of closed ink; an eighth of the length unless set
    PenPace pace;   ///< empty without times
    int seam = -1;  ///< point at which the pen touched down, if not an end: its pace there tells nothing
};

/// Points of the path from the first to the last of a piece.
int PointsIn(const PricedPath& ink, const ChainPiece& piece);

/// Sums over the points first to last; what lies beyond the end of the path are its first points.
Moments MomentsOf(const PricedPath& ink, int first, int last);

/// Sum of the points before a point; beyond the end of the path its first points follow.
Point SumBefore(const PricedPath& ink, int point);

/// Price of a corner that a description passes over with a bend of the given curvature.
double PriceOfHiddenCorner(const PricedPath& ink, const TurningPeak& peak, double curvature);

/// The same of all corners of the ink, but for those so near its ends that they are the pen touching down or
/// leaving.
/// @param curvatureAt  of what describes the ink, at a TurningPeak.
template <class Curvature>
double PriceOfHiddenCorners(const PricedPath& ink, Curvature curvatureAt) {
    constexpr double kHookShare = 0.12; // of the path at either end
    const int hook = static_cast<int>(kHookShare * ink.path.Size());
    double price = 0.0;
    for (const TurningPeak& peak : ink.peaks)
        if (peak.at >= hook && peak.at < ink.path.Size() - hook)
            price += PriceOfHiddenCorner(ink, peak, curvatureAt(peak));
    return price;
}

/// Points at which a chain may break, both ends of the path among them, ascending.
/// @param spacing  points between candidates where nothing turns: joints of arcs lie there. More along a long
///                 straight stretch, where none do.
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

} // namespace Tessera::Geometry
