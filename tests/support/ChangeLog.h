// A host that lists the changes reported to it while it lives.
#pragma once

#include <functional>
#include <vector>

#include "tessera/core/TaggedObject.h"

namespace Tessera::Testing {

class ChangeLog {
public:
    struct Entry {
        std::int64_t context;
        const Core::TaggedObject* object;
        std::int32_t kind;
    };
    static constexpr std::int64_t kContext = 0x123456789ABCDEF0; // must not be narrowed on the way

    ChangeLog() {
        Core::CRKCoreCallbacks callbacks;
        callbacks.getOwner = [this]() -> void* { return this; };
        callbacks.getContext = [](void*) { return kContext; };
        callbacks.logChange = [this](std::int64_t context, Core::TaggedObject* object, std::int32_t kind) {
            entries.push_back({context, object, kind});
            if (onChange)
                onChange();
        };
        callbacks.askDigits = [this](std::int64_t context) { return context == kContext ? unitCode : -1; };
        Core::TesseraCore_InitCallbacks(&callbacks);
    }
    ~ChangeLog() {
        Core::CRKCoreCallbacks none;
        Core::TesseraCore_InitCallbacks(&none);
    }
    ChangeLog(const ChangeLog&) = delete;
    ChangeLog& operator=(const ChangeLog&) = delete;

    /// Number of reports about the object since the last call, all of which are then forgotten.
    int Take(const Core::TaggedObject& object) {
        int count = 0;
        for (const Entry& entry : entries)
            count += entry.object == &object ? 1 : 0;
        entries.clear();
        return count;
    }

    std::int32_t unitCode = 7;
    std::vector<Entry> entries;
    std::function<void()> onChange; ///< runs inside the report: the object must still be in its old state
};

} // namespace Tessera::Testing
