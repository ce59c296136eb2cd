// ChainGeometry - a chain made exact: pieces that meet in the same points, some of them tangentially.
#pragma once

#include <optional>
#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

enum class PieceKind { Line, Arc, Spline, Kept };

struct ExactPiece {
    PieceKind kind = PieceKind::Line;
    Point from;
    Point to;
    Point through; ///< of arcs: a point between the ends
    int first = 0; ///< points of the path that it stands for, as in ChainPiece
    int last = 0;
    const InterpretedCurve* kept = nullptr; ///< moved as a whole so that its ends are these
};

/// Centre of an arc; false for one that is a line.
bool FindCentre(const ExactPiece& arc, Point& centre);

struct ExactChain {
    std::vector<ExactPiece> pieces; ///< each begins where the one before ends, if they are joined
    bool isClosed = false;
    bool isJoined = true;

    bool AreLines() const;
    bool IsPolygon() const { return isClosed && AreLines(); }
};

/// Nearest point of a piece's carrier.
Point OnPiece(const ChainPiece& piece, const Point& p);

/// Signed distance of a point from a piece's carrier: outwards from an arc's circle positive, to the right of
/// a line's direction.
double DistanceFrom(const ChainPiece& piece, const Point& p);

/// Mean squared distance of the ink from the carriers of a chain: what is lost by cutting corners off counts.
double MeanSqFrom(const PricedPath& ink, const Chain& chain);

/// Whether the chain is one line or arc within the tolerance (sizes) of the ink.
bool IsLoneCurve(const PricedPath& ink, const Chain& chain, double tolerance);

/// The middle of an arc's ink on its circle, shifted along with the ends.
Point MiddleOfArc(const PricedPath& ink, const ChainPiece& piece, const Point& from, const Point& to);

/// Where the carriers of two pieces meet, nearest to `near`; false when they do not, and for lines that run
/// too nearly alike to make a corner.
bool IntersectPieces(const ChainPiece& a, const ChainPiece& b, const Point& near, Point& meet);

/// Whether a corner where a piece meets the next leaves something of both: of lines a tenth at least.
bool LeavesBoth(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after,
                const Point& corner);

/// Whether the ends of a line lie apart, by a tenth of its ink at least: ink that ran past its start may lead
/// back to where it came from.
bool EndsApart(const PricedPath& ink, const ChainPiece& line);

/// Neighbours are extended or trimmed to where their carriers meet, if that is near the ink's own corner;
/// else they meet in the ink's corner. Where the ink runs on smoothly from a line into an arc, or from arc to
/// arc, they become tangent. Pieces between which the ink only bends become one free-form piece.
ExactChain MakeExact(const PricedPath& ink, const Chain& chain);

/// The pieces as the ink alone has them: each for itself, from the first of its points to the last.
ExactChain MakeLoose(const PricedPath& ink, const Chain& chain);

/// The similarity that takes one chord to another, as a complex number; nothing where it would throw far off
/// what hangs on the chord, as with ends that lie close together.
std::optional<Point> SimilarityBetween(const Point& chord, const Point& wanted);

/// Turns a line within an angle of an axis onto it, about the end that belongs somewhere or else about its
/// middle; one with two such ends lies as these do.
void SnapToAxis(double angleRad, const std::optional<Point>& start, const std::optional<Point>& end,
                ExactPiece& line);

} // namespace Tessera::Geometry
