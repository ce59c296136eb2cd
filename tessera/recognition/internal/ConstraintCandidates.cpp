#include "tessera/recognition/internal/ConstraintCandidates.h"

#include <algorithm>
#include <cmath>

#include "tessera/recognition/internal/ConstraintDeviation.h"

// Strength: the logarithm of a prior for the kind, less half the squared deviation. The priors make tiers
// (the largest loss inside the limit is 4.5) that overlap a little: joints first, since every other
// constraint is read off joined curves; constraints with two equations before those with one, since half a
// constraint cannot enter; what people see at a glance before what they would have to measure.

namespace Tessera::Geometry {

namespace {

/// Of a curve's smallest extent: points farther apart than this are never joined on its account.
constexpr double kReach = 0.3;

double PriorOf(ConstraintKind_e kind) {
    switch (kind) {
    case ConstraintKind_Coincident:
        return 100.0;
    case ConstraintKind_Symmetric:
        return 27.0;
    case ConstraintKind_Concentric:
        return 24.0;
    case ConstraintKind_Collinear:
        return 23.0;
    case ConstraintKind_MidPoint:
        return 22.0;
    case ConstraintKind_PointOnCurve:
        return 20.0;
    case ConstraintKind_Tangent:
        return 18.0;
    case ConstraintKind_Horizontal:
    case ConstraintKind_Vertical:
        return 14.0;
    case ConstraintKind_Perpendicular:
    case ConstraintKind_Parallel:
        return 9.0;
    case ConstraintKind_EqualRadius:
        return 8.0;
    case ConstraintKind_EqualLength:
        return 4.0;
    }
    return 0.0;
}

/// Whether two lines, or two arcs, are parallel from end to end, as the sides of a wall.
bool AreSides(const SketchParameters& sketch, int a, int b, double zone) {
    constexpr double kSlack = 0.1; // zones
    const SketchShape shape = sketch.At(a).shape;
    if (a == b || shape != sketch.At(b).shape || (shape != SketchShape::Line && shape != SketchShape::Arc))
        return false;
    const double gap = sketch.Original(a).GetMidPoint().Distance(sketch.Original(b).GetMidPoint());
    if (gap > 2.0 * zone) // each gives way by half of it
        return false;
    const auto isGap = [&](SnapPointType_e end, SnapPointType_e other) {
        return std::fabs(sketch.At(a, end).Distance(sketch.At(b, other)) - gap) <= kSlack * zone;
    };
    return (isGap(SnapPointType_Start, SnapPointType_Start) && isGap(SnapPointType_End, SnapPointType_End)) ||
           (isGap(SnapPointType_Start, SnapPointType_End) && isGap(SnapPointType_End, SnapPointType_Start));
}

/// Whether a constraint would make two sides one curve. Ends that are one point stay so.
bool WouldMergeSides(const SketchParameters& sketch, const InferredConstraint& c, double zone) {
    constexpr double kSamePoint = 1e-9; // zones
    if (c.kind != ConstraintKind_Coincident && c.kind != ConstraintKind_Collinear &&
        c.kind != ConstraintKind_PointOnCurve)
        return false;
    const SketchElement& a = c.elements[0];
    const SketchElement& b = c.elements[1];
    return AreSides(sketch, a.curve, b.curve, zone) &&
           (c.kind != ConstraintKind_Coincident ||
            sketch.At(a.curve, a.point).Distance(sketch.At(b.curve, b.point)) > kSamePoint * zone);
}

} // namespace

CandidateList::CandidateList(const SketchParameters& s, const ConstraintOptions& o) : sketch(s), options(o) {
    for (int i = 0; i < sketch.CurveCount(); ++i) {
        const SketchCurve& c = sketch.At(i);
        if (c.HasEnds())
            for (SnapPointType_e end : {SnapPointType_Start, SnapPointType_End})
                ends.push_back({{i, end}, sketch.At(i, end)});
        if (c.HasCentre())
            centres.push_back({{i, SnapPointType_Center}, sketch.At(i, SnapPointType_Center)});
        if (c.shape == SketchShape::Line && sketch.Original(i).Length() > options.toleranceZone)
            lines.push_back(i);
    }
}

double CandidateList::ReachOf(int curve) const {
    const SketchCurve& c = sketch.At(curve);
    if (!c.HasEnds())
        return options.toleranceZone;
    return std::min(options.toleranceZone, kReach * sketch.Original(curve).Length());
}

bool CandidateList::AreJoined(int curveA, int curveB) const {
    if (joinedPairs_.empty() && !joints.empty()) {
        for (const Joint& joint : joints)
            joinedPairs_.push_back(std::minmax(joint.a.curve, joint.b.curve));
        std::sort(joinedPairs_.begin(), joinedPairs_.end());
    }
    const std::pair<int, int> pair = std::minmax(curveA, curveB);
    return std::binary_search(joinedPairs_.begin(), joinedPairs_.end(), pair);
}

void CandidateList::Propose(ConstraintKind_e kind, std::initializer_list<SketchElement> elements, int side,
                            double bonus) {
    if ((options.kinds & ConstraintKindBit(kind)) == 0)
        return;
    ConstraintCandidate candidate;
    InferredConstraint& c = candidate.constraint;
    c.kind = kind;
    c.side = side;
    c.elementCount = static_cast<int>(elements.size());
    std::copy(elements.begin(), elements.end(), c.elements.begin());
    const double deviation = DeviationOf(c, sketch, options);
    if (!(deviation <= kDeviationLimit) || WouldMergeSides(sketch, c, options.toleranceZone))
        return;
    c.confidence = ConfidenceOf(deviation);
    candidate.strength = PriorOf(kind) + bonus - 0.5 * deviation * deviation;
    candidates.push_back(candidate);
}

std::vector<ConstraintCandidate> FindCandidates(const SketchParameters& sketch,
                                                const ConstraintOptions& options) {
    CandidateList list(sketch, options);
    FindPointCandidates(list);
    FindLineCandidates(list);
    FindCurveCandidates(list);
    FindSymmetryCandidates(list);
    // Equal strengths keep the order in which they were found, which follows the curves.
    std::stable_sort(
        list.candidates.begin(), list.candidates.end(),
        [](const ConstraintCandidate& a, const ConstraintCandidate& b) { return a.strength > b.strength; });
    return std::move(list.candidates);
}

} // namespace Tessera::Geometry
