#include "tessera/recognition/internal/SmoothJoints.h"

#include <cmath>

#include "tessera/recognition/internal/CornerEvidence.h"

namespace Tessera::Geometry {

namespace {

constexpr double kTangentTurn =
    0.4; // radians between the fits of a line and an arc that a hand joins smoothly
constexpr double kPlainCorner = 0.75; // radians of turning within a few points that no bend makes
constexpr double kSeenShare = 0.6;    // of the fits' turn that the ink must make at once for a corner
constexpr double kWidestBend = 1.3;   // radians: a sharper turn is a corner, however round its tip

double TurnOfFits(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after) {
    const Point in = DirectionAt(ink, before, true);
    const Point out = DirectionAt(ink, after, false);
    return std::atan2(in.Cross(out), in.Dot(out));
}

} // namespace

JointSight LookAtJoint(const PricedPath& ink, const ChainPiece& before, const ChainPiece& after) {
    if (before.last != after.first)
        return JointSight::Corner; // a seam: judged by closing
    if (after.isJudged)
        return after.joint;
    const double turn = std::fabs(TurnOfFits(ink, before, after));
    const double seen = SharpestTurn(ink.path, after.first);
    if (turn < kTangentTurn && seen < kPlainCorner)
        return JointSight::Tangent;
    const bool isBend = turn < kWidestBend && seen < kPlainCorner && seen < kSeenShare * turn;
    return isBend ? JointSight::Bend : JointSight::Corner;
}

} // namespace Tessera::Geometry
