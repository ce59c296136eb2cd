#include "tessera/host/internal/InkingCnstrHelper.h"

#include <cmath>

#include "tessera/host/internal/Services.h"

namespace Tessera::Host {

using Geometry::Curve;

// A constraint's kinds and points cross the border by value.
static_assert(static_cast<int>(kHostConstraintSymmetric) == Geometry::ConstraintKind_Symmetric &&
              static_cast<int>(kHostConstraintTangent) == Geometry::ConstraintKind_Tangent &&
              static_cast<int>(kHostPointCentre) == Geometry::SnapPointType_Center &&
              static_cast<int>(kHostPointMid) == Geometry::SnapPointType_Mid);

std::int32_t SkPrefsRelator::GetShowRelationship(bool& isShown) const {
    std::int32_t shown = 0;
    const std::int32_t code = Services().GetShowRelationship(Services().context, document_, &shown);
    if (code < 0) {
        return TESSERA_REPORT(code, "SkPrefsRelator::GetShowRelationship");
    }
    isShown = shown != 0;
    return kOk;
}

std::int32_t SkPrefsRelator::GetToleranceZone(double& zone) const {
    constexpr const char* kName = "SkPrefsRelator::GetToleranceZone";
    const std::int32_t code = Services().GetToleranceZone(Services().context, document_, &zone);
    if (code < 0) {
        return TESSERA_REPORT(code, kName);
    }
    return zone > 0.0 && std::isfinite(zone) ? kOk : TESSERA_REPORT(kErrorFail, kName);
}

HostConstraintMember SkConstraintHelper::MemberOf(const Geometry::SketchElement& element) const {
    const SketchMember& member = members_[static_cast<std::size_t>(element.curve)];
    HostConstraintMember named{member.element, element.point, 0};
    if (member.endsExchanged && element.point == Geometry::SnapPointType_Start) {
        named.point = kHostPointEnd;
    } else if (member.endsExchanged && element.point == Geometry::SnapPointType_End) {
        named.point = kHostPointStart;
    }
    return named;
}

HostConstraint2d SkConstraintHelper::ToHost(const Geometry::InferredConstraint& inferred) const {
    HostConstraint2d constraint{};
    constraint.kind = inferred.kind;
    constraint.memberCount = inferred.elementCount;
    for (int i = 0; i < inferred.elementCount; ++i) {
        constraint.members[i] = MemberOf(inferred.elements[static_cast<std::size_t>(i)]);
    }
    constraint.side = inferred.side;
    constraint.confidence = inferred.confidence;
    return constraint;
}

void SkInkingCnstrHelper::Infer(std::span<Geometry::InterpretedCurve> curves,
                                std::span<const std::unique_ptr<Curve>> drawn) {
    std::vector<const Curve*> sketch;
    std::vector<const Curve*> ink(neighbours_.size(), nullptr);
    for (const ElementCurve& neighbour : neighbours_) {
        sketch.push_back(neighbour.curve.get());
    }
    for (const Geometry::InterpretedCurve& curve : curves) {
        sketch.push_back(curve.curve.get());
    }
    for (const std::unique_ptr<Curve>& curve : drawn) {
        ink.push_back(curve.get());
    }
    Geometry::ConstraintOptions options;
    options.drawn = ink;
    options.toleranceZone = zone_;
    options.kinds &= kinds_;
    options.fixedCount = static_cast<int>(neighbours_.size());
    Geometry::InferredConstraints inferred = Geometry::InferConstraints(sketch, options);
    for (std::size_t i = 0; i < curves.size(); ++i) {
        curves[i].curve = std::move(inferred.adjusted[neighbours_.size() + i]);
    }
    inferred_ = std::move(inferred.constraints);
}

std::int32_t SkInkingCnstrHelper::CreateConstraints(std::span<const SketchMember> members,
                                                    DocumentChange& change,
                                                    std::vector<HostConstraintId>& made) const {
    if (!inferred_.empty() && members.empty()) {
        return TESSERA_REPORT(kErrorInvalidArgument, "SkInkingCnstrHelper::CreateConstraints");
    }
    std::vector<SketchMember> sketch;
    for (const ElementCurve& neighbour : neighbours_) {
        sketch.push_back({neighbour.id, neighbour.endsExchanged});
    }
    sketch.insert(sketch.end(), members.begin(), members.end());
    const SkConstraintHelper helper(sketch);
    for (const Geometry::InferredConstraint& inferred : inferred_) {
        HostConstraintId id = 0;
        const std::int32_t code = change.CreateConstraint(helper.ToHost(inferred), id);
        if (code < 0) {
            return code;
        }
        made.push_back(id);
    }
    return kOk;
}

} // namespace Tessera::Host
