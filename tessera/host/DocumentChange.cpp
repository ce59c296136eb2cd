#include "tessera/host/internal/DocumentChange.h"

#include <algorithm>

#include "tessera/host/internal/Services.h"

// Room for a step is made before its service is called, so that nothing is done that could not be noted.
namespace Tessera::Host {

namespace {

std::int32_t CallCreate(HostDocument* document, const HostElement2d& e, HostElementId* made) {
    const HostServices& host = Services();
    const tagGPosition2d* p = e.points;
    switch (e.kind) {
    case kHostElementLine:
        return host.HCreateLine2d(host.context, document, &p[0], &p[1], made);
    case kHostElementArc:
        return host.HCreateArc2d(host.context, document, &p[0], &p[1], &p[2], made);
    case kHostElementCircle:
        return host.HCreateCircle2d(host.context, document, &p[0], e.radius, made);
    case kHostElementEllipse:
        return host.HCreateEllipse2d(host.context, document, &p[0], &p[1], &p[2], made);
    case kHostElementEllipticArc:
        return host.HCreateEllipArc2d(host.context, document, &p[0], &p[1], &p[2], &p[3], &p[4], made);
    case kHostElementBSpline:
        return host.HCreateBspCurve2dEx(host.context, document, &e, made);
    default:
        return kErrorInvalidArgument;
    }
}

} // namespace

DocumentChange::~DocumentChange() {
    for (std::size_t i = steps_.size(); i-- > 0;) {
        Undo(steps_[i]);
    }
}

void DocumentChange::MakeRoom() {
    constexpr std::size_t kMostPerService = 4;
    if (steps_.capacity() - steps_.size() < kMostPerService) {
        steps_.reserve(2 * steps_.size() + kMostPerService);
    }
}

// A step that cannot be undone is reported; the others are undone all the same.
void DocumentChange::Undo(const Step& step) const {
    constexpr const char* kName = "DocumentChange::Undo";
    const HostServices& host = Services();
    std::int32_t code = kOk;
    switch (step.kind) {
    case StepKind::Created:
        code = host.HRemoveElement2d(host.context, document_, step.id);
        break;
    case StepKind::Erased:
        code = host.HRestoreElement2d(host.context, document_, step.id);
        break;
    case StepKind::Modified: {
        const HostElement2d before = step.before.View();
        code = host.HModifyElement2d(host.context, document_, &before);
        break;
    }
    case StepKind::Constrained:
        constraints_.Remove(step.id);
        break;
    case StepKind::Retargeted:
        constraints_.Retarget(step.to, step.from);
        break;
    }
    if (code < 0) {
        TESSERA_REPORT(code, kName);
    }
}

std::int32_t DocumentChange::CreateElement(const HostElement2d& geometry, HostElementId& made) {
    constexpr const char* kName = "DocumentChange::CreateElement";
    MakeRoom();
    made = 0;
    const std::int32_t code = CallCreate(document_, geometry, &made);
    if (code < 0) {
        return TESSERA_REPORT(code, kName);
    }
    if (made == 0) {
        return TESSERA_REPORT(kErrorFail, kName);
    }
    steps_.emplace_back().id = made;
    return kOk;
}

std::int32_t DocumentChange::CreateRectangle(const tagGPosition2d corners[4], HostElementId made[4]) {
    constexpr const char* kName = "DocumentChange::CreateRectangle";
    MakeRoom();
    std::fill(made, made + 4, 0);
    const std::int32_t code = Services().HCreateRectangle2d(Services().context, document_, corners, made);
    if (code < 0) {
        return TESSERA_REPORT(code, kName);
    }
    bool isComplete = true;
    for (int i = 0; i < 4; ++i) {
        isComplete = isComplete && made[i] != 0;
        if (made[i] != 0) {
            steps_.emplace_back().id = made[i];
        }
    }
    return isComplete ? kOk : TESSERA_REPORT(kErrorFail, kName);
}

std::int32_t DocumentChange::Modify(const HostElement2d& geometry, const ElementGeometry& before) {
    Step step;
    step.kind = StepKind::Modified;
    step.before = before;
    step.before.SetId(geometry.id);
    MakeRoom();
    const std::int32_t code = Services().HModifyElement2d(Services().context, document_, &geometry);
    if (code < 0) {
        return TESSERA_REPORT(code, "DocumentChange::Modify");
    }
    steps_.push_back(std::move(step));
    return kOk;
}

std::int32_t DocumentChange::Erase(HostElementId element) {
    MakeRoom();
    const std::int32_t code = Services().HRemoveElement2d(Services().context, document_, element);
    if (code < 0) {
        return TESSERA_REPORT(code, "DocumentChange::Erase");
    }
    Step& step = steps_.emplace_back();
    step.kind = StepKind::Erased;
    step.id = element;
    return kOk;
}

std::int32_t DocumentChange::CreateConstraint(const HostConstraint2d& constraint, HostConstraintId& made) {
    MakeRoom();
    const std::int32_t code = constraints_.Create(constraint, made);
    if (code < 0) {
        return code;
    }
    Step& step = steps_.emplace_back();
    step.kind = StepKind::Constrained;
    step.id = made;
    return kOk;
}

std::int32_t DocumentChange::Retarget(const HostConstraintMember& from, const HostConstraintMember& to) {
    MakeRoom();
    const std::int32_t code = constraints_.Retarget(from, to);
    if (code < 0) {
        return code;
    }
    Step& step = steps_.emplace_back();
    step.kind = StepKind::Retargeted;
    step.from = from;
    step.to = to;
    return kOk;
}

std::int32_t DocumentChange::Commit() {
    const std::int32_t code = steps_.empty() ? kOk : constraints_.Commit();
    if (code >= 0) {
        steps_.clear();
    }
    return code;
}

} // namespace Tessera::Host
