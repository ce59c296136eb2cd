// DocumentChange - one change of the host's document, whole or not at all: what has been done is undone
// again, last step first, unless Commit succeeds.
//
// Every operation returns 0, or the code of the failure, which has been reported then. Throws std::bad_alloc
// before anything of the step is done.
#pragma once

#include <cstdint>
#include <vector>

#include "tessera/host/internal/FFMGEOM.h"
#include "tessera/host/internal/SMHELPER.h"

namespace Tessera::Host {

class DocumentChange {
public:
    explicit DocumentChange(HostDocument* document) : document_(document), constraints_(document) {}
    ~DocumentChange();
    DocumentChange(const DocumentChange&) = delete;
    DocumentChange& operator=(const DocumentChange&) = delete;

    std::int32_t CreateElement(const HostElement2d& geometry, HostElementId& made);
    std::int32_t CreateRectangle(const tagGPosition2d corners[4], HostElementId made[4]);
    /// Gives the element its new geometry; `before` is what it has now.
    std::int32_t Modify(const HostElement2d& geometry, const ElementGeometry& before);
    std::int32_t Erase(HostElementId element);
    std::int32_t CreateConstraint(const HostConstraint2d& constraint, HostConstraintId& made);
    /// No constraint names `to` yet.
    std::int32_t Retarget(const HostConstraintMember& from, const HostConstraintMember& to);
    std::int32_t Commit();

private:
    enum class StepKind { Created, Modified, Erased, Constrained, Retargeted };
    struct Step {
        StepKind kind = StepKind::Created;
        std::int64_t id = 0;
        ElementGeometry before;
        HostConstraintMember from{};
        HostConstraintMember to{};
    };
    void MakeRoom();
    void Undo(const Step& step) const;

    HostDocument* document_;
    JConstraintHelper2d constraints_;
    std::vector<Step> steps_;
};

} // namespace Tessera::Host
