// InkingCnstrHelper - from recognised curves to constraints of the host.
//
// Operations that return an int32 return 0, or the code of the failure, which has been reported then.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tessera/host/HostInk.h"
#include "tessera/host/internal/DocumentChange.h"
#include "tessera/host/internal/FFMGEOM.h"
#include "tessera/recognition/ConstraintInference.h"

namespace Tessera::Host {

/// What the host's user prefers.
class SkPrefsRelator {
public:
    explicit SkPrefsRelator(HostDocument* document) : document_(document) {}

    std::int32_t GetShowRelationship(bool& isShown) const;
    /// Device units, above 0.
    std::int32_t GetToleranceZone(double& zone) const;

private:
    HostDocument* document_;
};

/// A curve of the sketch as the host knows it.
struct SketchMember {
    HostElementId element = 0;
    bool endsExchanged = false; ///< the curve's start is the element's end
};

/// Names the host's elements in constraints that speak of curves.
class SkConstraintHelper {
public:
    /// One member for each curve of the inference; borrowed.
    explicit SkConstraintHelper(std::span<const SketchMember> members) : members_(members) {}

    HostConstraint2d ToHost(const Geometry::InferredConstraint& inferred) const;

private:
    HostConstraintMember MemberOf(const Geometry::SketchElement& element) const;

    std::span<const SketchMember> members_;
};

/// Infers the constraints of new curves among themselves and with their neighbours, and creates them once the
/// new curves are elements.
class SkInkingCnstrHelper {
public:
    /// @param neighbours stay where they are.
    /// @param zone       model units; nothing moves as far.
    /// @param kinds      bits of ConstraintKind_e that are wanted.
    SkInkingCnstrHelper(std::span<const ElementCurve> neighbours, double zone, std::uint32_t kinds)
        : neighbours_(neighbours), zone_(zone), kinds_(kinds) {}

    /// Gives the curves the geometry that satisfies what was inferred. Throws as InferConstraints.
    /// @param drawn as CurvesAsDrawn tells them.
    void Infer(std::span<Geometry::InterpretedCurve> curves,
               std::span<const std::unique_ptr<Geometry::Curve>> drawn);
    /// @param members the elements made of the curves given to Infer, in that order.
    std::int32_t CreateConstraints(std::span<const SketchMember> members, DocumentChange& change,
                                   std::vector<HostConstraintId>& made) const;

private:
    std::span<const ElementCurve> neighbours_;
    double zone_;
    std::uint32_t kinds_;
    std::vector<Geometry::InferredConstraint> inferred_;
};

} // namespace Tessera::Host
