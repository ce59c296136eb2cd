#include "tessera/recognition/ConstraintInference.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <numbers>

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Line.h"
#include "tessera/recognition/internal/ConstraintCandidates.h"
#include "tessera/recognition/internal/ConstraintDeviation.h"
#include "tessera/recognition/internal/DirectionClasses.h"
#include "tessera/recognition/internal/SketchSolver.h"

// Candidates are judged by the drawing, then taken greedily: each is tried on the sketch as the stronger ones
// have left it. There directions and sizes have to be within the limit once more. That is what keeps two
// groups of lines apart whose directions nearly meet by the error of a single line: once each group is
// parallel, the groups differ by the mean of their errors. And a line that was drawn clearly tilted does not
// become horizontal by way of another that is: axes have no error to share.
//
// In a large sketch a candidate may be refused since only a part of the sketch could give way at a time. At
// the end these come again, many at once: what is meant goes together, and one solution serves all.

namespace Tessera::Geometry {

namespace {

/// Constraints that are tried together: at first, and at least while there are more.
constexpr std::size_t kFirstBundle = 64;
constexpr std::size_t kLeastBundle = 8;
/// Bundles that may fail, and so many more for each that does not.
constexpr int kPatience = 32;
constexpr int kReward = 2;

void CheckInput(std::span<const Curve* const> curves, const ConstraintOptions& options) {
    for (const Curve* curve : curves) {
        if (curve == nullptr)
            Core::ThrowMessage("InferConstraints - curve cannot be NULL");
        if (curve->AskCurveData() == nullptr)
            Core::ThrowMessage("InferConstraints - CURVE cannot be NULL");
    }
    if (!(options.toleranceZone > 0.0))
        Core::ThrowMessage("InferConstraints - tolerance zone must be positive");
    if (!(options.directionSpreadDeg > 0.0 && options.tangentSpreadDeg > 0.0 && options.sizeSpread > 0.0))
        Core::ThrowMessage("InferConstraints - spreads must be positive");
    if (options.fixedCount < 0 || static_cast<std::size_t>(options.fixedCount) > curves.size())
        Core::ThrowMessage("InferConstraints - fixed count is out of range");
    if (!options.drawn.empty() && options.drawn.size() != curves.size())
        Core::ThrowMessage("InferConstraints - drawn curves do not match");
}

/// Whether the line's direction as drawn is within the limit of an axis.
bool IsAlongAxis(const SketchParameters& sketch, int line, const ConstraintOptions& options) {
    const double* drawn = sketch.StartValuesOf(line);
    const double dx = std::fabs(drawn[2] - drawn[0]);
    const double dy = std::fabs(drawn[3] - drawn[1]);
    const double offDeg = std::atan2(std::min(dx, dy), std::max(dx, dy)) * 180.0 / std::numbers::pi;
    return offDeg <= kDeviationLimit * options.directionSpreadDeg;
}

/// Whether the sketch as it is now leaves the constraint open, and near.
bool IsOpen(const InferredConstraint& c, const SketchParameters& sketch, const ConstraintOptions& options,
            DirectionClasses& directions) {
    if (directions.Implies(c) ||
        (IsKeptByOthers(c.kind) && !(DeviationOf(c, sketch, options) <= kDeviationLimit)))
        return false;
    const int newToAxes = directions.NewToAxes(c);
    return newToAxes < 0 || IsAlongAxis(sketch, newToAxes, options);
}

/// Returns what could not be taken although it was open.
std::vector<InferredConstraint> TakeStrongest(const std::vector<ConstraintCandidate>& candidates,
                                              const SketchParameters& sketch,
                                              const ConstraintOptions& options, DirectionClasses& directions,
                                              SketchSolver& solver) {
    std::vector<InferredConstraint> refused;
    for (const auto& [c, strength] : candidates) {
        if (!IsOpen(c, sketch, options, directions))
            continue;
        if (solver.TryAdd(c) != SketchSolver::Verdict::Refused)
            directions.Add(c);
        else if (IsKeptByOthers(c.kind))
            refused.push_back(c);
    }
    return refused;
}

/// Tries what the windows of a large sketch have refused on its whole, in bundles: larger ones when that
/// succeeds; else both halves come again, after all others.
void TakeTogether(std::span<const InferredConstraint> refused, const SketchParameters& sketch,
                  const ConstraintOptions& options, DirectionClasses& directions, SketchSolver& solver) {
    std::deque<std::span<const InferredConstraint>> bundles{refused};
    std::size_t size = kFirstBundle;
    int patience = kPatience;
    bool isAnyTaken = false;
    while (!bundles.empty() && patience > 0 && solver.CanTryTogether()) {
        const auto bundle = bundles.front().first(std::min(size, bundles.front().size()));
        bundles.front() = bundles.front().subspan(bundle.size());
        if (bundles.front().empty())
            bundles.pop_front();
        DirectionClasses withBundle = directions;
        std::vector<InferredConstraint> open;
        for (const InferredConstraint& c : bundle)
            if (IsOpen(c, sketch, options, withBundle)) {
                withBundle.Add(c);
                open.push_back(c);
            }
        if (open.empty())
            continue;
        if (solver.TryTogether(open)) {
            isAnyTaken = true;
            directions = withBundle;
            size = std::min(2 * size, refused.size());
            patience += kReward;
            continue;
        }
        size = std::max(size / 2, kLeastBundle);
        --patience;
        if (bundle.size() > 1) {
            bundles.push_back(bundle.first(bundle.size() / 2));
            bundles.push_back(bundle.subspan(bundle.size() / 2));
        }
    }
    if (isAnyTaken)
        solver.Settle();
}

// Tidy curves satisfy what they were made to satisfy: only the ink tells how sure that is.
void JudgeByInk(std::span<const Curve* const> curves, const ConstraintOptions& options,
                std::vector<InferredConstraint>& constraints) {
    std::vector<const Curve*> ink(curves.begin(), curves.end());
    for (std::size_t i = 0; i < options.drawn.size(); ++i) {
        const Curve* drawn = options.drawn[i];
        if (drawn != nullptr && drawn->AskCurveData() != nullptr && drawn->GetType() == ink[i]->GetType() &&
            drawn->IsClosed() == ink[i]->IsClosed())
            ink[i] = drawn;
    }
    const SketchParameters sketch(ink);
    for (InferredConstraint& c : constraints)
        c.confidence = ConfidenceOf(DeviationOf(c, sketch, options));
}

} // namespace

InferredConstraints InferConstraints(std::span<const Curve* const> curves, const ConstraintOptions& options) {
    CheckInput(curves, options);
    SketchParameters sketch(curves);
    const double mostTurnRad = kDeviationLimit * options.directionSpreadDeg * std::numbers::pi / 180.0;
    SketchSolver solver(sketch, options.toleranceZone, mostTurnRad, options.fixedCount);
    DirectionClasses directions(sketch.CurveCount());
    const std::vector<InferredConstraint> refused =
        TakeStrongest(FindCandidates(sketch, options), sketch, options, directions, solver);
    solver.Settle();
    if (!refused.empty() && solver.CanTryTogether())
        TakeTogether(refused, sketch, options, directions, solver);

    InferredConstraints result;
    result.constraints = solver.Accepted();
    if (!options.drawn.empty())
        JudgeByInk(curves, options, result.constraints);
    result.largestMotion = solver.LargestMotion();
    result.adjusted.reserve(curves.size());
    for (int i = 0; i < sketch.CurveCount(); ++i)
        result.adjusted.push_back(sketch.Write(i));
    return result;
}

void ApplyConstraints(const InferredConstraints& inferred, std::span<Curve* const> curves) {
    bool match = curves.size() == inferred.adjusted.size();
    for (std::size_t i = 0; match && i < curves.size(); ++i)
        match = curves[i] != nullptr && inferred.adjusted[i] != nullptr &&
                curves[i]->GetType() == inferred.adjusted[i]->GetType();
    if (!match)
        Core::ThrowMessage("ApplyConstraints - curves do not match");
    for (std::size_t i = 0; i < curves.size(); ++i) {
        curves[i]->CopyCurveData(inferred.adjusted[i].get());
        if (curves[i]->GetType() == CurveType_Line)
            static_cast<Line*>(curves[i])->UpdateCachedBasePoint();
    }
}

} // namespace Tessera::Geometry
