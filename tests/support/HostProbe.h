// A host over the reference host whose services can be made to fail or be left out, and documents to try it
// on.
#pragma once

#include <cstring>
#include <initializer_list>

#include "tessera/host/HostDocument.h"
#include "tessera/host/HostServices.h"
#include "tessera/host/internal/ReferenceHostServices.h"
#include "tests/support/ExpectNear.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

struct DocumentRelease {
    void operator()(HostDocument* document) const { TesseraHost_DeleteDocument(document); }
};
using Document = std::unique_ptr<HostDocument, DocumentRelease>;

inline Document NewDocument() {
    return Document(TesseraHost_CreateDocument());
}

inline HostElement2d Element(std::int32_t kind, std::initializer_list<tagGPosition2d> points,
                             double radius = 0.0) {
    HostElement2d e{};
    e.kind = kind;
    e.radius = radius;
    std::copy(points.begin(), points.end(), e.points);
    return e;
}
inline HostElement2d LineElement(tagGPosition2d a, tagGPosition2d b) {
    return Element(kHostElementLine, {a, b});
}
inline HostElement2d ArcElement(tagGPosition2d start, tagGPosition2d end, tagGPosition2d on) {
    return Element(kHostElementArc, {start, end, on});
}
inline HostElement2d CircleElement(tagGPosition2d centre, double radius) {
    return Element(kHostElementCircle, {centre}, radius);
}

inline HostElementId AddTo(const Document& document, const HostElement2d& element) {
    HostElementId made = 0;
    EXPECT_EQ(TesseraHost_CreateElement(document.get(), &element, &made), 0);
    return made;
}

/// Null code: made. Points of members: those of elements, or kHostPointNone for the whole element.
inline std::int32_t Constrain(const Document& document, std::int32_t kind,
                              const std::vector<HostConstraintMember>& members, std::int32_t side = 0,
                              HostConstraintId* made = nullptr) {
    HostConstraint2d c{};
    c.kind = kind;
    c.side = side;
    c.memberCount = static_cast<std::int32_t>(members.size());
    std::copy(members.begin(), members.end(), c.members);
    HostConstraintId id = 0;
    return Host::ReferenceHostServices().createConstraint(nullptr, document.get(), &c, made ? made : &id);
}

/// One report to HRerrEx.
struct HostReport {
    std::int32_t code;
    std::string file;
    std::int32_t line;
    std::string function;
};

/// In force while it lives. Every service that gives a result code counts its calls.
class HostProbe {
public:
    static constexpr int kServiceCount = 22;
    static constexpr std::int32_t kFailure = static_cast<std::int32_t>(0x80040111);

    HostServices table; ///< changes of it come into force with Install
    std::vector<HostReport> reports;
    int calls[kServiceCount] = {}; ///< of the services of the ink entry, in the table's order
    int failingService = -1;       ///< fails at its failingCall-th call
    int failingCall = 0;

    HostProbe() : table(Host::ReferenceHostServices()) {
        current = this;
        table.HRerrEx = [](void*, std::int32_t code, const char* file, std::int32_t line, const char* name) {
            current->reports.push_back({code, file, line, name});
        };
        WrapAll(table.HCreateLine2d, table.HCreateArc2d, table.HCreateCircle2d, table.HCreateEllipse2d,
                table.HCreateEllipArc2d, table.HCreateBspCurve2dEx, table.HCreateRectangle2d,
                table.HModifyElement2d, table.HRemoveElement2d, table.HRestoreElement2d, table.DCToModel,
                table.ModelToDC, table.GetShowRelationship, table.GetToleranceZone, table.createConstraint,
                table.retargetConstraint, table.removeConstraint, table.commitConstraints, table.Locate,
                table.SetTarget, table.Evaluate, table.Clear);
        Install();
    }
    ~HostProbe() {
        current = nullptr;
        TesseraHost_InstallServices(nullptr);
    }
    HostProbe(const HostProbe&) = delete;
    HostProbe& operator=(const HostProbe&) = delete;

    void Install() const { EXPECT_EQ(TesseraHost_InstallServices(&table), 0); }
    /// Installs the table without one service of the ink entry.
    void InstallWithout(int service) const {
        HostServices lacking = table;
        std::memset(reinterpret_cast<char*>(&lacking.HCreateLine2d) + service * sizeof(void*), 0,
                    sizeof(void*));
        EXPECT_EQ(TesseraHost_InstallServices(&lacking), 0);
    }
    void FailAt(int service, int call) {
        std::fill(std::begin(calls), std::end(calls), 0);
        reports.clear();
        failingService = service;
        failingCall = call;
    }

private:
    template <int Index, class... Args>
    struct Wrapped {
        static inline std::int32_t (*original)(Args...) = nullptr;
        static std::int32_t Call(Args... args) {
            const bool fails =
                ++current->calls[Index] == current->failingCall && current->failingService == Index;
            return fails ? kFailure : original(args...);
        }
    };
    template <int Index, class... Args>
    void Wrap(std::int32_t (*&entry)(Args...)) {
        Wrapped<Index, Args...>::original = entry;
        entry = Wrapped<Index, Args...>::Call;
    }

    template <class... Entries>
    void WrapAll(Entries&... entries) {
        static_assert(sizeof...(entries) == kServiceCount);
        [&]<int... Index>(std::integer_sequence<int, Index...>) {
            (Wrap<Index>(entries), ...);
        }
        (std::make_integer_sequence<int, kServiceCount>());
    }

    static inline HostProbe* current = nullptr;
};

} // namespace Tessera::Testing
