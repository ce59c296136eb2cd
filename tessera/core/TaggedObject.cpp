#include "tessera/core/TaggedObject.h"

#include <memory>

namespace Tessera::Core {

namespace {

constexpr std::int32_t kFirstIdCounter = 1000;
constexpr std::int32_t kChangeModified = 2; // the only change kind that the library reports

std::int32_t idCounter = kFirstIdCounter;

// Made on first use, because objects of other files may log while the program starts, and never destroyed:
// they may log while it ends, and the code of the host's functions may be gone by then.
CRKCoreCallbacks& Callbacks() {
    static auto* const callbacks = new CRKCoreCallbacks;
    return *callbacks;
}

// 0 without a context service or without an owner. The owner is asked for only when there is a service to
// hand it to; an installed context service without an owner service is the host's error and throws as
// every call of an empty function object does.
std::int64_t FindChangeContext() {
    const CRKCoreCallbacks& callbacks = Callbacks();
    if (!callbacks.getContext) {
        return 0;
    }
    void* owner = callbacks.getOwner();
    return owner == nullptr ? 0 : callbacks.getContext(owner);
}

} // namespace

void TesseraCore_InitCallbacks(CRKCoreCallbacks* callbacks) {
    if (callbacks != nullptr) {
        Callbacks() = *callbacks;
    }
}

std::int32_t AskLengthUnitCode() {
    const std::int64_t context = FindChangeContext();
    const auto& askDigits = Callbacks().askDigits;
    return context == 0 || !askDigits ? 0 : askDigits(context);
}

int GetNextId() {
    // Unsigned, so that a counter set to the largest value wraps instead of overflowing.
    idCounter = static_cast<std::int32_t>(static_cast<std::uint32_t>(idCounter) + 1U);
    return idCounter;
}

int GetIdCounter() {
    return idCounter;
}

void SetIdCounter(int value) {
    idCounter = value;
}

bool IsPartEmpty() {
    return idCounter == kFirstIdCounter;
}

TaggedObject::TaggedObject() : id_(GetNextId()) {}

void TaggedObject::Transform(double /*m*/[3][3]) {}

TaggedObject* TaggedObject::DeepCopy(std::set<int>& /*ids*/, std::map<int, TaggedObject*>& copies) const {
    const auto found = copies.find(id_);
    if (found != copies.end()) {
        return found->second;
    }
    std::unique_ptr<TaggedObject> copy(Copy());
    if (copy) {
        copy->id_ = id_;
        copies[id_] = copy.get();
    }
    return copy.release();
}

void TaggedObject::LogForChange() {
    const std::int64_t context = FindChangeContext();
    const auto& logChange = Callbacks().logChange;
    if (context != 0 && logChange) {
        logChange(context, this, kChangeModified);
    }
}

void TaggedObject::ResetId() {
    id_ = GetNextId();
}

} // namespace Tessera::Core
