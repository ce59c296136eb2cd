#include "tessera/core/Group.h"

#include <gmock/gmock.h>

#include "tessera/core/DisplayableObject.h"
#include "tessera/geometry/XYBox.h"
#include "tests/support/ChangeLog.h"

namespace Tessera::Core {
namespace {

using Geometry::Point;
using Geometry::XYBox;
using Testing::ChangeLog;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

// The smallest displayable: a point that counts how often it is moved.
class Dot : public DisplayableObject {
public:
    Dot(double x, double y) : at(x, y) {}
    Dot(const Dot&) = default;
    Dot& operator=(const Dot&) = default;

    int AskClass() const override { return 77; }
    Dot* Copy() const override { return new Dot(*this); }
    bool Replace(TaggedObject* /*other*/) override { return false; }
    void Transform(double m[3][3]) override {
        at.Transform(m);
        ++moves;
    }
    bool AskXYBox(XYBox& box) const override {
        box = XYBox(at, at);
        return true;
    }
    bool IsInPolygon(int /*count*/, double* /*xs*/, double* /*ys*/) override { return false; }
    bool IsCrossPolygon(int /*count*/, double* /*xs*/, double* /*ys*/) override { return false; }

    Point at;
    int moves = 0;
};

std::vector<TaggedObject*> MembersOf(const Group& group) {
    std::vector<TaggedObject*> members;
    group.AskMembers(members);
    return members;
}

TEST(DisplayableObject, CopiesGetAFreshIdentifierAndNoGroup) {
    Group group;
    Dot dot(1, 2);
    dot.SetWidth(5.0);
    dot.SetHidden(true);
    dot.SetGroup(&group);
    const Dot copy(dot);
    EXPECT_NE(copy.GetId(), dot.GetId());
    EXPECT_EQ(copy.GetDisplayData(), dot.GetDisplayData());
    EXPECT_TRUE(copy.IsHidden());
    EXPECT_FALSE(copy.IsGrouped());

    Group other;
    Dot assigned(0, 0);
    assigned.SetGroup(&other);
    assigned = dot;
    EXPECT_EQ(assigned.GetId(), dot.GetId());
    EXPECT_EQ(assigned.AskWidth(), 5.0);
    EXPECT_EQ(assigned.AskGroup(), &other) << "assignment leaves the group";
}

TEST(DisplayableObject, EverySetterReportsBeforeItStores) {
    Group group;
    Dot dot(0, 0);
    DisplayData stored = dot.GetDisplayData();
    stored.SetColor(ColorType_Red);
    const std::function<void()> setters[] = {
        [&] { dot.SetDisplayData(stored); }, [&] { dot.SetWidth(3.0); },    [&] { dot.SetHighlight(true); },
        [&] { dot.SetHidden(true); },        [&] { dot.SetGroup(&group); },
    };
    ChangeLog log;
    for (const auto& set : setters) {
        const DisplayData before = dot.GetDisplayData();
        log.onChange = [&] { EXPECT_TRUE(dot.GetDisplayData() == before && !dot.IsGrouped()); };
        set();
        EXPECT_EQ(log.Take(dot), 1);
        EXPECT_TRUE(dot.GetDisplayData() != before || dot.AskGroup() == &group);
    }
    EXPECT_TRUE(dot.AskWidth() == 3.0 && dot.AskHighlight() && dot.IsHidden());
    EXPECT_EQ(dot.GetDisplayData().GetRGBColor(), Color::Red());
}

TEST(DisplayableObject, MergedExtentTakesTheOriginForNull) {
    Dot a(5, 6), b(9, 2);
    const XYBox untouched(Point(-1, -1), Point(1, 1));
    struct Row {
        std::vector<DisplayableObject*> objects;
        Point min, max;
    };
    const Row rows[] = {
        {{&a}, {5, 6}, {5, 6}},          {{&a, &b}, {5, 2}, {9, 6}},
        {{&a, nullptr}, {0, 0}, {5, 6}}, {{nullptr, &a}, {-1, -1}, {5, 6}}, // the box keeps what it held
        {{nullptr}, {-1, -1}, {1, 1}},   {{}, {-1, -1}, {1, 1}},
    };
    for (Row row : rows) {
        XYBox box = untouched;
        DisplayableObject::AskXYBox(static_cast<int>(row.objects.size()), row.objects.data(), box);
        EXPECT_EQ(box.min, row.min);
        EXPECT_EQ(box.max, row.max);
    }
}

TEST(Group, MembershipAndItsReports) {
    Dot a(0, 0), b(1, 1);
    Group group;
    ChangeLog log;
    EXPECT_TRUE(group.AddObject(&a));
    EXPECT_FALSE(group.AddObject(&a));
    EXPECT_FALSE(group.RemoveObject(&b));
    EXPECT_EQ(log.Take(group), 3) << "failed changes of real objects report too";
    EXPECT_FALSE(group.AddObject(nullptr));
    EXPECT_FALSE(group.RemoveObject(nullptr));
    EXPECT_FALSE(group.FindObject(nullptr));
    EXPECT_EQ(log.Take(group), 0);
    std::vector<TaggedObject*> more = {&a, nullptr, &b};
    group.AddObjects(more);
    EXPECT_EQ(log.Take(group), 3);
    EXPECT_THAT(MembersOf(group), UnorderedElementsAre(&a, &b));
    EXPECT_FALSE(a.IsGrouped()) << "membership does not set the member's group";
    std::set<int> ids;
    group.AskAllMemberIds(ids);
    EXPECT_EQ(ids, (std::set<int>{a.GetId(), b.GetId()}));
    EXPECT_TRUE(group.RemoveObject(&a) && !group.FindObject(&a) && group.FindObject(&b));
    group.Clear();
    EXPECT_EQ(group.AskCount(), 0);
    EXPECT_EQ(log.Take(group), 2);
}

TEST(Group, CopyConstructionSharesWhereCopyDoesNot) {
    Dot a(0, 0);
    Group group;
    const Group shared(group);
    const std::unique_ptr<Group> independent(group.Copy());
    group.AddObject(&a);
    EXPECT_EQ(shared.AskCount(), 1);
    EXPECT_EQ(independent->AskCount(), 0);
}

TEST(Group, ReplaceTakesMembersOfGroupsOnly) {
    Dot a(0, 0), b(1, 1);
    Group group, other;
    group.AddObject(&a);
    other.AddObject(&b);
    EXPECT_FALSE(group.Replace(nullptr));
    EXPECT_FALSE(group.Replace(&a));
    EXPECT_TRUE(group.Replace(&group));
    EXPECT_THAT(MembersOf(group), ElementsAre(&a));
    EXPECT_TRUE(group.Replace(&other));
    EXPECT_THAT(MembersOf(group), ElementsAre(&b));
    other.Clear();
    EXPECT_EQ(group.AskCount(), 1) << "the sets stay apart";
}

TEST(Group, DeepCopyTakesTheSelectedMembersAlong) {
    Dot taken(1, 2), left(3, 4);
    Group inner, outer;
    inner.AddObject(&taken);
    std::vector<TaggedObject*> members = {&taken, &left, &inner, &outer}; // contains itself
    outer.AddObjects(members);
    std::set<int> ids = {taken.GetId(), inner.GetId(), outer.GetId()};
    std::map<int, TaggedObject*> copies;
    Group* copy = outer.DeepCopy(ids, copies);
    ASSERT_EQ(copies.size(), 3U);
    EXPECT_EQ(copy->GetId(), outer.GetId());
    auto* dotCopy = dynamic_cast<Dot*>(copies.at(taken.GetId()));
    auto* innerCopy = dynamic_cast<Group*>(copies.at(inner.GetId()));
    EXPECT_THAT(MembersOf(*copy), UnorderedElementsAre(dotCopy, innerCopy, copy));
    EXPECT_THAT(MembersOf(*innerCopy), ElementsAre(dotCopy)) << "shared members stay shared";
    EXPECT_TRUE(dotCopy->AskGroup() == copy || dotCopy->AskGroup() == innerCopy);
    EXPECT_EQ(outer.AskCount(), 4) << "the source keeps its members";
    for (const auto& [id, object] : copies) {
        EXPECT_EQ(object->GetId(), id);
        delete object;
    }
}

TEST(Group, TransformMovesEveryLeafOnce) {
    Dot shared(1, 0);
    Group inner, outer;
    inner.AddObject(&shared);
    inner.AddObject(&outer); // a cycle
    outer.AddObject(&shared);
    outer.AddObject(&inner);
    double shift[3][3] = {{1, 0, 10}, {0, 1, 20}, {0, 0, 1}};
    outer.Transform(shift);
    EXPECT_EQ(shared.moves, 1);
    EXPECT_EQ(shared.at, Point(11, 20));
}

} // namespace
} // namespace Tessera::Core
