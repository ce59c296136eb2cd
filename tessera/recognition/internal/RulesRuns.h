// RulesRuns - the rules' pieces as runs of the path, of which neighbours that are one curve are merged and
// curves become simpler ones that describe their ink as well.
#pragma once

#include <vector>

#include "tessera/recognition/internal/PricedPath.h"

namespace Tessera::Geometry {

/// A piece of the rules, or several that became one.
struct RulesRun {
    int first = 0; ///< points of the path
    int last = 0;
    bool isArc = false;
    bool isKept = false; ///< stays as it is: neither line nor arc, or an arc that has no price
    const InterpretedCurve* own = nullptr; ///< the rules' curve, as long as it stands
};

/// Crumbs that were swept leave gaps, which their neighbours share. Empty when some piece takes up less than
/// two steps of the path. The curves are borrowed.
std::vector<RulesRun> RunsOf(const PricedPath& ink, const std::vector<InterpretedCurve>& curves);

/// The runs as chains, one for each hand; what is kept counts as a line.
std::vector<Chain> ChainsOfRuns(const PricedPath& ink, const std::vector<RulesRun>& runs);

/// The chain of the hand that they fit best.
const Chain& BriefestOf(const PricedPath& ink, const std::vector<Chain>& chains);

/// One line or arc in place of neighbours, within the tolerance (sizes) of their ink, where it describes that
/// as briefly as both and their joint do. A line and an arc become one only if kinds may change.
void MergeNeighbours(const PricedPath& ink, double tolerance, bool mayChangeKinds,
                     std::vector<RulesRun>& runs);

/// Lines in place of arcs whose ink they describe as briefly, within the tolerance.
void SimplifyKinds(const PricedPath& ink, double tolerance, std::vector<RulesRun>& runs);

} // namespace Tessera::Geometry
