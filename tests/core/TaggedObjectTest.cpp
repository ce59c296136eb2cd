#include "tessera/core/TaggedObject.h"

#include "tessera/core/DisplayableObject.h"
#include "tessera/core/Group.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/SlotOf.h"
#include "tests/support/Test.h"

namespace Tessera::Core {
namespace {

using namespace Testing;

TEST(TaggedObject, VirtualOperationsKeepTheirSlots) {
    using D = DisplayableObject;
    bool (D::*const askXYBox)(Geometry::XYBox&) const = &D::AskXYBox;
    const auto slots = SlotsOf(&D::AskClass, &D::Copy, &D::IsDisplayable, &D::Transform, &D::DeepCopy,
                               &D::Replace, &D::LogForChange, askXYBox, &D::IsInPolygon, &D::IsCrossPolygon);
    EXPECT_THAT(slots, ::testing::ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11));
}

TEST(TaggedObject, CounterStartsAtOneThousandAndWraps) {
    SetIdCounter(1000);
    EXPECT_TRUE(IsPartEmpty());
    const Group group;
    EXPECT_EQ(group.GetId(), 1001);
    EXPECT_FALSE(IsPartEmpty());
    EXPECT_TRUE(GetNextId() == 1002 && GetIdCounter() == 1002);
    SetIdCounter(std::numeric_limits<int>::max());
    EXPECT_EQ(GetNextId(), std::numeric_limits<int>::min());
    SetIdCounter(1000);
    EXPECT_TRUE(IsPartEmpty()) << "the test is on the counter, not on objects";
}

// Copy() may fail: nothing is recorded then.
class Uncopyable : public TaggedObject {
public:
    int AskClass() const override { return 99; }
    TaggedObject* Copy() const override { return nullptr; }
    bool Replace(TaggedObject* /*other*/) override { return false; }
};

TEST(TaggedObject, IdentifiersOfCopies) {
    const Group group;
    Group plain(group);
    EXPECT_EQ(plain.GetId(), group.GetId());
    plain.ResetId();
    EXPECT_TRUE(plain.GetId() == GetIdCounter() && plain.GetId() != group.GetId());
    plain = group;
    EXPECT_EQ(plain.GetId(), group.GetId());
    const std::unique_ptr<Group> independent(group.Copy());
    EXPECT_NE(independent->GetId(), group.GetId());
    std::set<int> ids;
    std::map<int, TaggedObject*> copies;
    const std::unique_ptr<TaggedObject> deep(group.DeepCopy(ids, copies));
    EXPECT_EQ(deep->GetId(), group.GetId());
    EXPECT_EQ(group.DeepCopy(ids, copies), deep.get()) << "made once";
    EXPECT_EQ(Uncopyable().DeepCopy(ids, copies), nullptr);
    EXPECT_EQ(copies, (std::map<int, TaggedObject*>{{group.GetId(), deep.get()}}));
}

TEST(TaggedObject, ChangesReachTheHost) {
    Group group;
    group.LogForChange(); // no host yet
    EXPECT_EQ(AskLengthUnitCode(), 0);
    ChangeLog log;
    TesseraCore_InitCallbacks(nullptr); // changes nothing
    group.LogForChange();
    ASSERT_EQ(log.entries.size(), 1U);
    const ChangeLog::Entry& entry = log.entries[0];
    EXPECT_TRUE(entry.context == ChangeLog::kContext && entry.object == &group && entry.kind == 2);
    EXPECT_EQ(AskLengthUnitCode(), 7);
}

TEST(TaggedObject, HostsMayLackServices) {
    Group group;
    int owner = 0, ownersAsked = 0, changes = 0;
    CRKCoreCallbacks callbacks;
    const auto report = [&] {
        TesseraCore_InitCallbacks(&callbacks);
        group.LogForChange();
        return AskLengthUnitCode();
    };
    callbacks.getOwner = [&]() -> void* { return ++ownersAsked, nullptr; };
    callbacks.logChange = [&](std::int64_t, TaggedObject*, std::int32_t) { ++changes; };
    callbacks.askDigits = [&](std::int64_t) { return ++changes; };
    EXPECT_TRUE(report() == 0 && ownersAsked == 0) << "the owner is of no use without a context service";
    callbacks.getContext = [&](void* asked) -> std::int64_t { return asked == &owner ? 0 : 5; };
    EXPECT_TRUE(report() == 0 && ownersAsked == 2) << "no owner, no context";
    callbacks.getOwner = [&]() -> void* { return &owner; };
    EXPECT_TRUE(report() == 0 && changes == 0) << "context 0";
    callbacks = {callbacks.getOwner, [](void*) -> std::int64_t { return 5; }, nullptr, nullptr};
    EXPECT_EQ(report(), 0);
    callbacks.getOwner = nullptr;
    EXPECT_THROW(report(), std::bad_function_call);
    callbacks = {};
    TesseraCore_InitCallbacks(&callbacks);
}

} // namespace
} // namespace Tessera::Core
