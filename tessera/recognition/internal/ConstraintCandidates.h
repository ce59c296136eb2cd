// The constraints that a sketch nearly satisfies, before they are checked against each other.
//
// Found by hashing of points, sorting of directions and sizes and a sweep over boxes: near-linear in the
// number of curves unless very many of them lie on top of each other.
#pragma once

#include <vector>

#include "tessera/recognition/ConstraintInference.h"
#include "tessera/recognition/internal/SketchParameters.h"

namespace Tessera::Geometry {

struct ConstraintCandidate {
    InferredConstraint constraint;
    double strength = 0.0; ///< decides who comes first
};

/// A point that constraints may name.
struct KeyPoint {
    SketchElement element;
    Point at;
};

/// Two ends within the tolerance zone of each other, of different curves.
struct Joint {
    SketchElement a;
    SketchElement b;
};

/// What the finders share: the sketch, its key points and joints, and the growing list.
class CandidateList {
public:
    CandidateList(const SketchParameters& sketch, const ConstraintOptions& options);

    /// Adds the constraint with its confidence unless its kind is off or the sketch is too far from it, and
    /// unless it would make one curve of two that run side by side from end to end: those of a wall.
    void Propose(ConstraintKind_e kind, std::initializer_list<SketchElement> elements, int side = 0,
                 double bonus = 0.0);
    /// How close a point must come to be joined: the zone, less at curves that the zone could swallow.
    double ReachOf(int curve) const;
    bool AreJoined(int curveA, int curveB) const;

    const SketchParameters& sketch;
    const ConstraintOptions& options;
    std::vector<KeyPoint> ends;
    std::vector<KeyPoint> centres;
    std::vector<int> lines;
    std::vector<Joint> joints; ///< filled by FindPointCandidates, which comes first
    std::vector<ConstraintCandidate> candidates;

private:
    mutable std::vector<std::pair<int, int>> joinedPairs_; ///< sorted; made on first use
};

/// Coincident, concentric. Fills list.joints.
void FindPointCandidates(CandidateList& list);
/// Horizontal, vertical, parallel, perpendicular, collinear, equal lengths.
void FindLineCandidates(CandidateList& list);
/// Tangent, equal radii, points on curves, middles.
void FindCurveCandidates(CandidateList& list);
/// Symmetric.
void FindSymmetryCandidates(CandidateList& list);

/// All candidates, strongest first.
std::vector<ConstraintCandidate> FindCandidates(const SketchParameters& sketch,
                                                const ConstraintOptions& options);

} // namespace Tessera::Geometry
