// SMHELPER - the host's constraint and locate helpers, with the failures of their services reported.
//
// Every operation returns 0, or the code of the failure, which has been reported then.
#pragma once

#include <cstdint>
#include <vector>

#include "tessera/host/HostElement.h"

namespace Tessera::Host {

/// Makes, retargets, removes and commits constraints.
class JConstraintHelper2d {
public:
    explicit JConstraintHelper2d(HostDocument* document) : document_(document) {}

    std::int32_t Create(const HostConstraint2d& constraint, HostConstraintId& made) const;
    std::int32_t Retarget(const HostConstraintMember& from, const HostConstraintMember& to) const;
    std::int32_t Remove(HostConstraintId constraint) const;
    std::int32_t Commit() const;

private:
    HostDocument* document_;
};

/// Finds elements and reads their geometry. The host's target is cleared at the end of its life.
class JSMHelper2d {
public:
    explicit JSMHelper2d(HostDocument* document) : document_(document) {}
    ~JSMHelper2d();
    JSMHelper2d(const JSMHelper2d&) = delete;
    JSMHelper2d& operator=(const JSMHelper2d&) = delete;

    /// Elements whose box meets the one from lower to upper.
    std::int32_t Locate(const tagGPosition2d& lower, const tagGPosition2d& upper,
                        std::vector<HostElementId>& found) const;
    std::int32_t SetTarget(HostElementId element);
    /// The target's geometry, with an identifier; arrays borrowed until the next SetTarget or Clear.
    std::int32_t Evaluate(HostElement2d& geometry) const;
    std::int32_t Clear();

private:
    HostDocument* document_;
    HostElementId target_ = 0;
};

} // namespace Tessera::Host
