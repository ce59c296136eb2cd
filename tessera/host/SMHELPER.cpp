#include "tessera/host/internal/SMHELPER.h"

#include <algorithm>

#include "tessera/host/internal/Services.h"

namespace Tessera::Host {

std::int32_t JConstraintHelper2d::Create(const HostConstraint2d& constraint, HostConstraintId& made) const {
    constexpr const char* kName = "JConstraintHelper2d::Create";
    made = 0;
    const std::int32_t code = Services().createConstraint(Services().context, document_, &constraint, &made);
    if (code < 0) {
        return TESSERA_REPORT(code, kName);
    }
    return made == 0 ? TESSERA_REPORT(kErrorFail, kName) : kOk;
}

std::int32_t JConstraintHelper2d::Retarget(const HostConstraintMember& from,
                                           const HostConstraintMember& to) const {
    const std::int32_t code = Services().retargetConstraint(Services().context, document_, &from, &to);
    return code < 0 ? TESSERA_REPORT(code, "JConstraintHelper2d::Retarget") : kOk;
}

std::int32_t JConstraintHelper2d::Remove(HostConstraintId constraint) const {
    const std::int32_t code = Services().removeConstraint(Services().context, document_, constraint);
    return code < 0 ? TESSERA_REPORT(code, "JConstraintHelper2d::Remove") : kOk;
}

std::int32_t JConstraintHelper2d::Commit() const {
    const std::int32_t code = Services().commitConstraints(Services().context, document_);
    return code < 0 ? TESSERA_REPORT(code, "JConstraintHelper2d::Commit") : kOk;
}

JSMHelper2d::~JSMHelper2d() {
    Clear();
}

std::int32_t JSMHelper2d::Locate(const tagGPosition2d& lower, const tagGPosition2d& upper,
                                 std::vector<HostElementId>& found) const {
    constexpr const char* kName = "JSMHelper2d::Locate";
    constexpr std::size_t kRoomAtFirst = 64;
    found.resize(kRoomAtFirst);
    for (;;) {
        std::int32_t count = 0;
        const auto room = static_cast<std::int32_t>(found.size());
        const std::int32_t code =
            Services().Locate(Services().context, document_, &lower, &upper, room, found.data(), &count);
        if (code < 0 || count < 0) {
            found.clear();
            return TESSERA_REPORT(code < 0 ? code : kErrorFail, kName);
        }
        found.resize(static_cast<std::size_t>(count));
        if (count <= room) {
            return kOk;
        }
    }
}

std::int32_t JSMHelper2d::SetTarget(HostElementId element) {
    const std::int32_t code = Services().SetTarget(Services().context, document_, element);
    if (code < 0) {
        return TESSERA_REPORT(code, "JSMHelper2d::SetTarget");
    }
    target_ = element;
    return kOk;
}

std::int32_t JSMHelper2d::Evaluate(HostElement2d& geometry) const {
    geometry = {};
    const std::int32_t code = Services().Evaluate(Services().context, document_, &geometry);
    if (code < 0) {
        return TESSERA_REPORT(code, "JSMHelper2d::Evaluate");
    }
    geometry.id = target_;
    return kOk;
}

std::int32_t JSMHelper2d::Clear() {
    if (target_ == 0) {
        return kOk;
    }
    target_ = 0;
    const std::int32_t code = Services().Clear(Services().context, document_);
    return code < 0 ? TESSERA_REPORT(code, "JSMHelper2d::Clear") : kOk;
}

} // namespace Tessera::Host
