// RulesRuns - the rules' pieces as runs of the path, of which neighbours that are one curve are merged and
// curves become simpler ones that describe their ink as well.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tessera/recognition/internal/PricedPath.h"
#include "tessera/recognition/internal/RoundShape.h"

namespace Tessera::Geometry {

/// A piece of the rules, or several that became one.
struct RulesRun {
    int first = 0; ///< points of the path
    int last = 0;
    bool isArc = false;
    bool isKept = false; ///< stays as it is: neither line nor arc, or an arc that has no price
    const InterpretedCurve* own = nullptr;      ///< the rules' curve, as long as it stands, or the merged one
    std::unique_ptr<InterpretedCurve> merged{}; ///< the elliptic arc that several became
};

/// Crumbs that were swept leave gaps, which their neighbours share. Empty when some piece takes up less than
/// two steps of the path. The curves are borrowed.
std::vector<RulesRun> RunsOf(const PricedPath& ink, const std::vector<const InterpretedCurve*>& curves);

/// The runs as chains, one for each hand; what is kept counts as a line.
std::vector<Chain> ChainsOfRuns(const PricedPath& ink, const std::vector<RulesRun>& runs);

/// The chain of the hand that they fit best.
const Chain& BriefestOf(const PricedPath& ink, const std::vector<Chain>& chains);

/// One line, arc or elliptic arc in place of neighbours, within the tolerance (sizes) of their ink, where it
/// describes that as briefly as both and their joint do. Neighbours of two kinds become one only if kinds may
/// change; an elliptic arc comes only of one that the rules saw.
void MergeNeighbours(const PricedPath& ink, double tolerance, bool mayChangeKinds,
                     std::vector<RulesRun>& runs);

/// The full ellipse that all runs are together, by the same terms: where the ends of the ink meet
/// and one of the runs is an elliptic arc. Nothing otherwise.
///
/// @param samples  of the ink.
std::optional<RoundShape> MergeIntoRound(const PricedPath& ink, double tolerance, bool mayChangeKinds,
                                         const std::vector<RulesRun>& runs, int samples);

/// Lines in place of arcs whose ink they describe as briefly, within the tolerance.
void SimplifyKinds(const PricedPath& ink, double tolerance, std::vector<RulesRun>& runs);

} // namespace Tessera::Geometry
