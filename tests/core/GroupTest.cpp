#include "tessera/core/Group.h"

#include "tessera/geometry/XYBox.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/DrawnStrokes.h"

namespace Tessera::Core {
namespace {

using Geometry::Point;
using Geometry::Stroke;
using Geometry::XYBox;
using namespace Testing;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

std::vector<TaggedObject*> MembersOf(const Group& group) {
    std::vector<TaggedObject*> members;
    group.AskMembers(members);
    return members;
}

TEST(DisplayableObject, EverySetterReportsBeforeItStores) {
    Group group;
    Stroke stroke;
    DisplayData red = stroke.GetDisplayData();
    red.SetColor(ColorType_Red);
    const std::function<void()> setters[] = {
        [&] { stroke.SetDisplayData(red); }, [&] { stroke.SetWidth(3.0); },
        [&] { stroke.SetHighlight(true); },  [&] { stroke.SetHidden(true); },
        [&] { stroke.SetGroup(&group); },
    };
    ChangeLog log;
    for (const auto& set : setters) {
        const DisplayData before = stroke.GetDisplayData();
        log.onChange = [&] { EXPECT_TRUE(stroke.GetDisplayData() == before && !stroke.IsGrouped()); };
        set();
        EXPECT_EQ(log.Take(stroke), 1);
        EXPECT_TRUE(stroke.GetDisplayData() != before || stroke.AskGroup() == &group);
    }
    EXPECT_TRUE(stroke.AskWidth() == 3.0 && stroke.AskHighlight() && stroke.IsHidden());
    EXPECT_EQ(stroke.GetDisplayData().GetRGBColor(), Color::Red());
}

TEST(DisplayableObject, MergedExtentTakesTheOriginForNull) {
    Stroke a = StrokeThrough({{5, 6}}), b = StrokeThrough({{9, 2}});
    const struct {
        std::vector<DisplayableObject*> objects;
        Point min, max;
    } rows[] = {
        {{&a}, {5, 6}, {5, 6}},          {{&a, &b}, {5, 2}, {9, 6}},
        {{&a, nullptr}, {0, 0}, {5, 6}}, {{nullptr, &a}, {-1, -1}, {5, 6}}, // the box keeps what it held
        {{nullptr}, {-1, -1}, {1, 1}},   {{}, {-1, -1}, {1, 1}},
    };
    for (auto row : rows) {
        XYBox box(Point(-1, -1), Point(1, 1));
        DisplayableObject::AskXYBox(static_cast<int>(row.objects.size()), row.objects.data(), box);
        EXPECT_EQ(box.min, row.min);
        EXPECT_EQ(box.max, row.max);
    }
}

TEST(Group, MembershipAndItsReports) {
    Stroke a, b;
    Group group;
    ChangeLog log;
    EXPECT_TRUE(group.AddObject(&a) && !group.AddObject(&a) && !group.RemoveObject(&b));
    EXPECT_EQ(log.Take(group), 3) << "failed changes of real objects report too";
    EXPECT_FALSE(group.AddObject(nullptr) || group.RemoveObject(nullptr) || group.FindObject(nullptr));
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

TEST(Group, CopyConstructionSharesWhereCopyAndReplaceDoNot) {
    Stroke a, b;
    Group group, other;
    const Group shared(group);
    const std::unique_ptr<Group> independent(group.Copy());
    group.AddObject(&a);
    other.AddObject(&b);
    EXPECT_TRUE(shared.AskCount() == 1 && independent->AskCount() == 0);
    EXPECT_FALSE(group.Replace(nullptr) || group.Replace(&a));
    EXPECT_TRUE(group.Replace(&group));
    EXPECT_THAT(MembersOf(group), ElementsAre(&a));
    EXPECT_TRUE(group.Replace(&other));
    other.Clear();
    EXPECT_THAT(MembersOf(group), ElementsAre(&b)) << "the sets stay apart";
}

TEST(Group, DeepCopyTakesTheSelectedMembersAlong) {
    Stroke taken, left;
    Group inner, outer;
    inner.AddObject(&taken);
    std::vector<TaggedObject*> members = {&taken, &left, &inner, &outer}; // contains itself
    outer.AddObjects(members);
    std::set<int> ids = {taken.GetId(), inner.GetId(), outer.GetId()};
    std::map<int, TaggedObject*> copies;
    Group* copy = outer.DeepCopy(ids, copies);
    ASSERT_EQ(copies.size(), 3U);
    auto* takenCopy = dynamic_cast<Stroke*>(copies.at(taken.GetId()));
    auto* innerCopy = dynamic_cast<Group*>(copies.at(inner.GetId()));
    EXPECT_THAT(MembersOf(*copy), UnorderedElementsAre(takenCopy, innerCopy, copy));
    EXPECT_THAT(MembersOf(*innerCopy), ElementsAre(takenCopy)) << "shared members stay shared";
    EXPECT_TRUE(takenCopy->AskGroup() == copy || takenCopy->AskGroup() == innerCopy);
    EXPECT_EQ(outer.AskCount(), 4) << "the source keeps its members";
    for (const auto& [id, object] : copies) {
        EXPECT_EQ(object->GetId(), id);
        delete object;
    }
}

TEST(Group, TransformMovesEveryLeafOnce) {
    Stroke shared = StrokeThrough({{1, 0}, {2, 0}});
    Group inner, outer;
    std::vector<TaggedObject*> members = {&shared, &inner, &outer}; // cycles
    inner.AddObjects(members);
    outer.AddObjects(members);
    double shift[3][3] = {{1, 0, 10}, {0, 1, 20}, {0, 0, 1}};
    outer.Transform(shift);
    EXPECT_EQ(shared.GetPoint(0), Point(11, 20));
}

} // namespace
} // namespace Tessera::Core
