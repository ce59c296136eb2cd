// What curves do with the dimensions attached to them.
#include <optional>

#include "tessera/dimension/LengthDimension.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Line.h"
#include "tests/support/ChangeLog.h"
#include "tests/support/Test.h"

using namespace Tessera::Geometry;
using namespace Tessera::Testing;
using Tessera::Core::TaggedObject;
using Tessera::Dimension::DimensionBase;
using Tessera::Dimension::DimensionType_e;
using Tessera::Dimension::LengthDimension;

namespace {

using List = std::vector<DimensionBase*>;

/// A dimension of any type over any curves, which only counts its updates.
class PlainDimension : public LengthDimension {
public:
    PlainDimension(DimensionType_e type, std::vector<Curve*> parents)
        : type_(type), parents_(std::move(parents)) {
        AttachToParents();
    }
    PlainDimension* Copy() const override { return new PlainDimension(*this); }
    void UpdateDimension() override {
        ++updates;
        if (onUpdate)
            onUpdate();
    }
    DimensionType_e GetType() const override { return type_; }
    void GetParentCurves(std::vector<Curve*>& curves) const override {
        curves.insert(curves.end(), parents_.begin(), parents_.end());
    }
    using DimensionBase::IsAttachedTo;

    int updates = 0;
    std::function<void()> onUpdate;

protected:
    void ExchangeCurve(const Curve* parent, Curve* replacement) override {
        std::replace(parents_.begin(), parents_.end(), const_cast<Curve*>(parent), replacement);
    }

private:
    DimensionType_e type_;
    std::vector<Curve*> parents_;
};

List DimensionsOf(const Curve& curve) {
    List list;
    curve.GetDimensions(list);
    return list;
}

} // namespace

TEST(CurveDimensions, OneEntryPerDimension) {
    Line line(Point(0, 0), Point(1, 0));
    PlainDimension a(Tessera::Dimension::Length, {&line});
    PlainDimension b(Tessera::Dimension::Horizontal, {});
    line.AddDimension(&a);
    line.AddDimension(nullptr);
    EXPECT_EQ(line.GetNumDimensions(), 1);
    List more = {&b, &a, &b};
    line.AddDimensions(more);
    EXPECT_EQ(DimensionsOf(line), (List{&a, &b}));
    EXPECT_TRUE(line.HasDimension(&b));
    EXPECT_TRUE(line.RemoveDimension(&a));
    EXPECT_FALSE(line.RemoveDimension(&a));
    EXPECT_FALSE(line.HasDimension(&a));
    line.ClearDimensions();
    EXPECT_EQ(line.GetNumDimensions(), 0);
}

// Whatever is not in the list any more is not led back to the curve either.
TEST(CurveDimensions, DimensionsForgetCurvesThatDoNotListThem) {
    std::optional<Line> line(std::in_place, Point(0, 0), Point(1, 0));
    PlainDimension dim(Tessera::Dimension::Length, {&*line}), other(Tessera::Dimension::Length, {});
    const Line* const place = &*line;
    const std::function<void()> ways[] = {[&] { line->RemoveDimension(&dim); },
                                          [&] { line->ClearDimensions(); },
                                          [&] { line->ReplaceDimension(0, &other); }, [&] { line.reset(); }};
    for (const auto& leave : ways) {
        line->ClearDimensions();
        line->AddDimension(&dim);
        EXPECT_TRUE(dim.IsAttachedTo(place));
        leave();
        EXPECT_FALSE(dim.IsAttachedTo(place)) << &leave - ways;
    }
    EXPECT_FALSE(other.IsAttachedTo(place));
}

TEST(CurveDimensions, OnlyFinalizedOnesAreReported) {
    Line line(Point(0, 0), Point(1, 0));
    PlainDimension preview(Tessera::Dimension::Length, {&line});
    PlainDimension committed(Tessera::Dimension::Length, {&line});
    ChangeLog log;
    committed.SetIsFinalized(true);
    EXPECT_EQ(log.Take(line), 1);
    line.RemoveDimension(&preview);
    line.AddDimension(&preview);
    EXPECT_EQ(log.Take(line), 0);
    line.AddDimension(&committed); // already listed
    EXPECT_EQ(log.Take(line), 0);
    int listed = 0;
    log.onChange = [&] { listed = line.GetNumDimensions(); };
    line.RemoveDimension(&committed);
    EXPECT_EQ(log.Take(line), 1);
    EXPECT_EQ(listed, 2) << "reported before it is taken out";
    line.AddDimension(&committed);
    EXPECT_EQ(log.Take(line), 1);
    EXPECT_EQ(listed, 1);
    PlainDimension another(Tessera::Dimension::Length, {&line});
    another.SetIsFinalized(true);
    log.Take(line);
    line.ClearDimensions();
    EXPECT_EQ(log.Take(line), 1);
    line.ClearDimensions();
    another.SetIsFinalized(false); // no longer listed
    EXPECT_EQ(log.Take(line), 0);
    PlainDimension third(Tessera::Dimension::Length, {});
    for (const auto& [next, reports] :
         {std::pair{&preview, 0}, {&committed, 1}, {&third, 1}, {&preview, 0}}) {
        line.GetNumDimensions() == 0 ? line.AddDimension(next) : line.ReplaceDimension(0, next);
        EXPECT_EQ(log.Take(line), reports) << "when either of the two is finalized";
    }
}

TEST(CurveDimensions, ReplaceKeepsThePlace) {
    Line line(Point(0, 0), Point(1, 0));
    PlainDimension a(Tessera::Dimension::Length, {&line});
    PlainDimension b(Tessera::Dimension::Horizontal, {&line});
    PlainDimension c(Tessera::Dimension::Vertical, {});
    line.ReplaceDimension(0, &c);
    EXPECT_EQ(DimensionsOf(line), (List{&c, &b}));
    line.ReplaceDimension(0, &b);
    EXPECT_EQ(DimensionsOf(line), (List{&b}));
    line.ReplaceDimension(1, &a);
    line.ReplaceDimension(-1, &a);
    line.ReplaceDimension(0, nullptr);
    EXPECT_EQ(DimensionsOf(line), (List{&b}));
}

TEST(CurveDimensions, SearchByTypeAndPartner) {
    Line line(Point(0, 0), Point(1, 0)), partner(Point(0, 1), Point(1, 1));
    PlainDimension linear(Tessera::Dimension::Linear, {&line, &partner});
    PlainDimension alone(Tessera::Dimension::Horizontal, {&line});
    PlainDimension shared(Tessera::Dimension::Horizontal, {&line, &partner});
    List found, withNone, withPartner;
    line.FindDimensions(Tessera::Dimension::Horizontal, found);
    line.GetDimensionsOfType(nullptr, Tessera::Dimension::Horizontal, withNone);
    line.GetDimensionsOfType(&partner, Tessera::Dimension::Horizontal, withPartner);
    EXPECT_EQ(found, (List{&alone, &shared}));
    EXPECT_EQ(withNone, List{&alone});
    EXPECT_EQ(withPartner, List{&shared});
}

TEST(CurveDimensions, UpdatesMayChangeTheList) {
    Line line(Point(0, 0), Point(1, 0));
    PlainDimension a(Tessera::Dimension::Length, {&line});
    PlainDimension b(Tessera::Dimension::Horizontal, {&line});
    a.onUpdate = [&] { line.RemoveDimension(&b); };
    line.UpdateDimensions();
    EXPECT_EQ(a.updates, 1);
    EXPECT_EQ(b.updates, 0);
    EXPECT_EQ(line.CreateUpdateDimension(Tessera::Dimension::Length, true, 1, 1), &a);
    EXPECT_EQ(a.updates, 2);
    EXPECT_EQ(line.CreateUpdateDimension(Tessera::Dimension::Vertical, false, 1, 1), nullptr);
}

TEST(CurveDimensions, CopiesShareAndDeepCopiesCopyTheFinalizedOnes) {
    Line line(Point(0, 0), Point(1, 0));
    PlainDimension preview(Tessera::Dimension::Length, {&line});
    PlainDimension committed(Tessera::Dimension::Horizontal, {&line});
    committed.SetIsFinalized(true);
    const std::unique_ptr<Line> copy(line.Copy());
    EXPECT_EQ(DimensionsOf(*copy), (List{&committed}));
    const std::unique_ptr<Curve> bare(line.CopyCurveOnly());
    EXPECT_EQ(bare->GetNumDimensions(), 0);

    std::set<int> ids;
    std::map<int, TaggedObject*> copies;
    const std::unique_ptr<Curve> deep(line.DeepCopy(ids, copies));
    EXPECT_EQ(deep->GetId(), line.GetId());
    const List taken = DimensionsOf(*deep);
    ASSERT_EQ(taken.size(), 1U);
    const std::unique_ptr<DimensionBase> owner(taken.front());
    EXPECT_NE(taken.front(), &committed);
    EXPECT_EQ(taken.front()->GetId(), committed.GetId());
    EXPECT_EQ(copies.at(committed.GetId()), taken.front());
    EXPECT_EQ(line.DeepCopy(ids, copies), deep.get());
}

TEST(CurveDimensions, DeepCopiesKeepTheOrderOfTheList) {
    Line line(Point(0, 0), Point(1, 0)), partner(Point(0, 1), Point(1, 1));
    PlainDimension linear(Tessera::Dimension::Linear, {&partner, &line});
    PlainDimension vertical(Tessera::Dimension::Vertical, {&line, &partner});
    PlainDimension length(Tessera::Dimension::Length, {&partner});
    for (DimensionBase* dim : {&linear, &vertical, &length})
        dim->SetIsFinalized(true);
    for (TaggedObject* root : {static_cast<TaggedObject*>(&line), static_cast<TaggedObject*>(&vertical)}) {
        std::set<int> ids;
        std::map<int, TaggedObject*> copies;
        root->DeepCopy(ids, copies);
        for (const Curve* curve : {&line, &partner}) {
            List expected;
            for (const DimensionBase* dim : DimensionsOf(*curve))
                expected.push_back(static_cast<DimensionBase*>(copies.at(dim->GetId())));
            EXPECT_EQ(DimensionsOf(*static_cast<Curve*>(copies.at(curve->GetId()))), expected);
        }
        for (const auto& entry : copies)
            delete entry.second;
    }
}

TEST(CurveDimensions, SameDimensionsAreMadeOnce) {
    Line model(Point(0, 0), Point(10, 0)), line(Point(0, 5), Point(4, 8));
    Arc arc(Point(0, 0), 3.0);
    const std::unique_ptr<DimensionBase> length(model.CreateUpdateDimension(1, true, 7.0, 2.0));
    const std::unique_ptr<DimensionBase> vertical(model.CreateUpdateDimension(3, true, -7.0, 2.0));
    ASSERT_TRUE(length != nullptr && vertical != nullptr);
    vertical->Rotate(0.5);
    vertical->SetIsFinalized(true);
    vertical->SetWidth(9.0);
    for (const int round : {1, 2}) {
        SCOPED_TRACE(round);
        line.CreateSameDimensions(&model);
        line.CreateSameDimensions(&line);
        line.CreateSameDimensions(nullptr);
        arc.CreateSameDimensions(&model); // measures nothing of an arc
        ASSERT_EQ(line.GetNumDimensions(), 2);
        EXPECT_EQ(arc.GetNumDimensions(), 0);
    }
    const List made = DimensionsOf(line);
    const std::unique_ptr<DimensionBase> owners[] = {std::unique_ptr<DimensionBase>(made[0]),
                                                     std::unique_ptr<DimensionBase>(made[1])};
    EXPECT_EQ(made[0]->GetAnnotation(), 5.0);
    EXPECT_EQ(made[0]->GetTextHeightOffset(), 7.0);
    EXPECT_FALSE(made[0]->GetIsFinalized());
    EXPECT_EQ(made[1]->GetType(), 3);
    EXPECT_EQ(made[1]->GetCachedRotateAngle(), 0.5);
    EXPECT_EQ(made[1]->AskWidth(), 9.0);
    EXPECT_TRUE(made[1]->GetIsFinalized());
    for (const int type : {0, 4, 5, 6, 7, 99})
        EXPECT_EQ(line.CreateUpdateDimension(type, true, 1.0, 1.0), nullptr) << type;
}
