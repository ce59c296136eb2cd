// Dimensions and their curves over their lives: destruction in any order, finalizing, deep copies,
// transforms.
#include "tessera/core/NumericHelpers.h"
#include "tessera/dimension/internal/TempDecoration.h"
#include "tests/support/DimensionProbes.h"

using namespace Tessera::Testing;
using Tessera::Core::TaggedObject;
using CurvePtr = std::unique_ptr<Curve>;
using DimPtr = std::unique_ptr<DimensionBase>;

namespace {

/// Two curves and how a dimension over them is made; the same recipe again gives a fresh one.
struct Kind {
    const char* name;
    CurvePtr (*first)();
    CurvePtr (*second)();
    DimPtr (*make)(Curve& first, Curve& second, double heightOffset, double fontHeight);
};

template <int x0, int y0, int x1, int y1>
CurvePtr LineFrom() {
    return std::make_unique<Line>(Point(x0, y0), Point(x1, y1));
}
const auto kLine = LineFrom<1, 2, 53, 29>;
const auto kParallel = LineFrom<71, 44, -33, -10>;
const auto kCrossing = LineFrom<1, 2, -20, 41>;

CurvePtr MakeArc() {
    return std::make_unique<Arc>(Point(20, 60), Point(9, 49), Point(9, 60));
}
CurvePtr MakeCircle() {
    return std::make_unique<Arc>(Point(80, 31), 6.0);
}

template <class Dim, class Only>
DimPtr OfOne(Curve& a, Curve& /*b*/, double offset, double fontHeight) {
    return std::make_unique<Dim>(static_cast<Only*>(&a), offset, fontHeight);
}
template <class Dim, class First, class Second>
DimPtr OfTwo(Curve& a, Curve& b, double offset, double fontHeight) {
    return std::make_unique<Dim>(static_cast<First*>(&a), static_cast<Second*>(&b), offset, fontHeight);
}
DimPtr OfParallels(Curve& a, Curve& b, double offset, double fontHeight) {
    const Point pick = a.GetMidPoint();
    return std::make_unique<LinearDimension>(static_cast<Line*>(&a), static_cast<Line*>(&b), &pick, offset,
                                             fontHeight);
}
DimPtr OfCorner(Curve& a, Curve& b, double offset, double fontHeight) {
    return std::make_unique<AngularDimension>(static_cast<Line*>(&a), static_cast<Line*>(&b), a.GetMidPoint(),
                                              b.GetMidPoint(), offset, fontHeight);
}

const Kind kKinds[] = {{"length", kLine, MakeArc, OfOne<LengthDimension, Line>},
                       {"horizontal", kLine, MakeArc, OfOne<HorizontalDimension, Line>},
                       {"vertical, line and arc", kLine, MakeArc, OfTwo<VerticalDimension, Line, Arc>},
                       {"horizontal, arcs", MakeCircle, MakeArc, OfTwo<HorizontalDimension, Arc, Arc>},
                       {"linear, lines", kLine, kParallel, OfParallels},
                       {"linear, arcs", MakeCircle, MakeArc, OfTwo<LinearDimension, Arc, Arc>},
                       {"angular", kLine, kCrossing, OfCorner},
                       {"radial", MakeArc, kLine, OfOne<RadialDimension, Arc>}};

struct Scene {
    explicit Scene(const Kind& kind, double heightOffset = 9.0, double fontHeight = 3.0)
        : first(kind.first()), second(kind.second()),
          dim(kind.make(*first, *second, heightOffset, fontHeight)) {}
    CurvePtr first, second;
    DimPtr dim;
};

/// Every operation once, on whatever is left of the dimension.
void UseAll(DimensionBase& dim) {
    TypeValue(dim, 2, 33.0);
    dim.ComputeNewValue(Point(1, 1), 2);
    dim.ComputeUpdateSide(Point(1, 1));
    int part = 0;
    dim.GetDistanceToPoint(Point(1, 1), part);
    UpdateCurvesOf(dim, 1);
    UpdateCurvesOf(dim, 0);
    double xs[] = {0, 1, 1}, ys[] = {0, 0, 1};
    dim.IsInPolygon(3, xs, ys);
    dim.IsCrossPolygon(3, xs, ys);
    dim.Rotate(0.2);
    if (auto* length = dynamic_cast<LengthDimension*>(&dim)) {
        length->AdjustPoint1s();
        length->ComputeLengthDimensionDeco(1);
        const std::unique_ptr<Line> measured(length->ComputeTempDimensionLine());
    }
    if (auto* angular = dynamic_cast<AngularDimension*>(&dim)) {
        angular->AdjustPoint1s();
        angular->ComputeAngularDimensionDeco(2);
        angular->CenterAtLineEnds();
        const std::unique_ptr<Arc> arc(angular->ComputeDimensionArc(Point(3, 3), Point(1, 8), true));
    }
    if (auto* radial = dynamic_cast<RadialDimension*>(&dim)) {
        radial->ComputeRadialDimensionDeco();
        radial->ComputeAnnotationStringLength();
    }
    Drag(dim, {{0, 0}, {2, 2}});
    dim.SetIsFinalized(!dim.GetIsFinalized());
    const DimPtr copy(dim.Copy());
}

} // namespace

TEST(DimensionLife, DestructionInAnyOrder) {
    for (const Kind& kind : kKinds) {
        int order[] = {0, 1, 2};
        do {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(order[0]) + std::to_string(order[1]));
            auto [first, second, dim] = Scene(kind);
            dim->SetIsFinalized(true);
            const CurvePtr sharing(first->Copy()); // lists the dimension without being its parent
            ASSERT_EQ(sharing->GetNumDimensions(), 1);
            std::size_t parentCount = ParentsOf(*dim).size();
            for (const int next : order) {
                if (next == 0)
                    first.reset();
                else if (next == 1)
                    second.reset();
                else
                    dim.reset();
                if (dim != nullptr) {
                    const bool hasLost = ParentsOf(*dim).size() < parentCount;
                    const TempDecoration drawn(*dim);
                    EXPECT_TRUE(drawn.arrowPoints.empty() || !hasLost)
                        << "nothing to see until the next update";
                    UseAll(*dim);
                    parentCount = ParentsOf(*dim).size();
                    for (const Curve* parent : ParentsOf(*dim))
                        EXPECT_TRUE(parent == first.get() || parent == second.get());
                } else {
                    EXPECT_EQ(sharing->GetNumDimensions(), 0);
                    EXPECT_TRUE(first == nullptr || first->GetNumDimensions() == 0);
                }
            }
        } while (std::next_permutation(order, order + 3));
    }
}

TEST(DimensionLife, BareDimensionsAreHarmless) {
    const struct {
        const char* name;
        DimPtr dim;
    } rows[] = {{"length", std::make_unique<LengthDimension>(nullptr, 3.0)},
                {"horizontal", std::make_unique<HorizontalDimension>()},
                {"vertical", std::make_unique<VerticalDimension>(static_cast<Line*>(nullptr), 1.0, 2.0)},
                {"linear", std::make_unique<LinearDimension>()},
                {"angular", std::make_unique<AngularDimension>(nullptr, nullptr, Point(), Point(), 1.0, 2.0)},
                {"radial", std::make_unique<RadialDimension>(nullptr, Point(3, 3), 2.0)}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        UseAll(*row.dim);
        row.dim->SetAnnotation(12.0);
        EXPECT_EQ(row.dim->ComputeNewValue(Point(5, 5), 2), 12.0);
        XYBox box;
        EXPECT_FALSE(row.dim->AskXYBox(box));
        CurveList curves;
        Points arrows;
        row.dim->GetTempDimDecoObjects(curves, arrows, false);
        EXPECT_TRUE(curves.empty() && arrows.empty());
        int part = 5;
        EXPECT_EQ(row.dim->GetDistanceToPoint(Point(1, 1), part), std::numeric_limits<double>::max());
        EXPECT_EQ(part, -1);
    }
}

TEST(DimensionLife, NothingIsReportedBeforeItIsFinalized) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const CurvePtr first = kind.first(), second = kind.second();
        ChangeLog log;
        DimPtr dim = kind.make(*first, *second, 9.0, 3.0);
        dim->SetTextHeightOffset(-4.0);
        dim->UpdateDimension();
        EXPECT_EQ(log.Take(*dim), 0);
        const CurveList parents = ParentsOf(*dim);
        for (const bool finalized : {true, true, false}) {
            const bool changes = finalized != dim->GetIsFinalized();
            bool wasFinalized = finalized;
            log.onChange = [&] { wasFinalized = dim->GetIsFinalized(); };
            dim->SetIsFinalized(finalized);
            log.onChange = nullptr;
            EXPECT_EQ(log.entries.size(), changes ? parents.size() : 0U) << "each parent once";
            EXPECT_EQ(wasFinalized == finalized, !changes) << "told before the flag is stored";
            log.Take(*dim);
        }
        dim->SetIsFinalized(true);
        log.onChange = [&] { EXPECT_EQ(ParentsOf(*dim), parents) << "also during an update"; };
        dim->UpdateDimension();
        const DragData standing;
        EXPECT_TRUE(dim->MoveDimDeco(&standing));
        EXPECT_FALSE(dim->MoveDimDeco(nullptr));
        EXPECT_GT(log.Take(*dim), 0);
        const DimensionType_e type = dim->GetType();
        log.onChange = [&] {
            std::vector<DimensionBase*> dying;
            parents.back()->GetDimensions(dying);
            ASSERT_EQ(dying.size(), 1U);
            EXPECT_EQ(dying.front()->GetType(), type) << "of its kind to the last";
        };
        dim.reset();
        EXPECT_EQ(log.entries.size(), parents.size()) << "each parent loses a finalized dimension";
    }
}

TEST(DimensionLife, DeepCopiesTakeTheirParentsAlong) {
    for (const Kind& kind : kKinds) {
        const bool rows[][2] = {{true, true}, {false, true}, {false, false}};
        for (const auto& [fromCurve, finalized] : rows) {
            SCOPED_TRACE(kind.name);
            auto [first, second, dim] = Scene(kind);
            dim->SetIsFinalized(finalized);
            std::set<int> ids;
            std::map<int, TaggedObject*> copies;
            const TaggedObject& root = fromCurve ? static_cast<TaggedObject&>(*first) : *dim;
            root.DeepCopy(ids, copies);
            const CurveList parents = ParentsOf(*dim);
            ASSERT_EQ(copies.size(), parents.size() + 1);
            auto* copy = dynamic_cast<DimensionBase*>(copies.at(dim->GetId()));
            ASSERT_NE(copy, nullptr);
            const CurveList copied = ParentsOf(*copy);
            ASSERT_EQ(copied.size(), parents.size());
            for (std::size_t i = 0; i < parents.size(); ++i) {
                EXPECT_EQ(copied[i], copies.at(parents[i]->GetId()));
                EXPECT_NE(copied[i], parents[i]);
                EXPECT_EQ(copied[i]->GetNumDimensions(), 1);
                EXPECT_TRUE(copied[i]->HasDimension(copy));
                EXPECT_EQ(parents[i]->GetNumDimensions(), 1);
            }
            ExpectSamePlacement(*copy, *dim, 0.0);
            for (const auto& entry : copies)
                delete entry.second;
        }
    }
}

TEST(DimensionLife, CopiesAndReplacing) {
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const CurvePtr curves[] = {kind.first(), kind.second(), kind.first(), kind.second()};
        const DimPtr dim = kind.make(*curves[0], *curves[1], 9.0, 3.0);
        const DimPtr source = kind.make(*curves[2], *curves[3], -5.0, 2.0);
        const CurveList former = ParentsOf(*dim);
        for (DimensionBase* each : {dim.get(), source.get()})
            each->SetIsFinalized(true);
        Drag(*source, {Point(0, 0), Point(1, 2)});
        source->SetUpdateSide(1);
        source->SetWidth(7.5);
        ChangeLog log;
        const DimPtr copy(source->Copy());
        EXPECT_EQ(log.Take(*copy), 0);
        EXPECT_TRUE(copy->Replace(copy.get()));
        const DimPtr unattached(dim->Copy());
        EXPECT_TRUE(unattached->Replace(source.get()));
        dim->SetAnnotation(77.0);
        log.entries.clear();
        EXPECT_TRUE(dim->Replace(source.get()));
        for (DimensionBase* taken : {copy.get(), unattached.get(), dim.get()}) {
            EXPECT_TRUE(taken->GetIsFinalized());
            EXPECT_EQ(taken->GetUpdateSide(), 1);
            EXPECT_EQ(taken->AskWidth(), 7.5);
            EXPECT_NE(taken->GetId(), source->GetId());
            EXPECT_EQ(ParentsOf(*taken), ParentsOf(*source));
            ExpectSamePlacement(*taken, *source, 0.0);
            for (const Curve* parent : ParentsOf(*taken))
                EXPECT_EQ(parent->HasDimension(taken), taken == dim.get()) << "attached stays attached";
        }
        for (const Curve* parent : former) {
            EXPECT_EQ(parent->GetNumDimensions(), 0);
            EXPECT_TRUE(std::any_of(log.entries.begin(), log.entries.end(), [&](const auto& entry) {
                return entry.object == parent;
            })) << "it loses a finalized dimension";
        }
        for (DimensionBase* each : {source.get(), copy.get(), unattached.get()}) {
            each->UpdateDimension();
            ExpectSamePlacement(*each, *source, 1e-9);
        }
        double m[3][3] = {{0.9, -0.2, 1.0}, {0.2, 0.9, 2.0}, {0.0, 0.0, 0.8}};
        curves[2]->Transform(m);
        const Point end = curves[2]->GetEnd();
        dim->UpdateDimension();
        ExpectNear(curves[2]->GetEnd(), end, 1e-12, "what was typed is forgotten");
        source->SetIsFinalized(false);
        for (const Kind& other : kKinds) {
            auto [first, second, stranger] = Scene(other);
            EXPECT_EQ(dim->Replace(stranger.get()), stranger->GetType() == dim->GetType()) << other.name;
            dim->Replace(source.get());
            EXPECT_FALSE(dim->GetIsFinalized());
        }
        EXPECT_FALSE(dim->Replace(curves[0].get()));
        EXPECT_FALSE(dim->Replace(nullptr));
    }
}

TEST(DimensionLife, ADragDropsATypedValue) {
    for (const Kind& kind : kKinds) {
        auto [first, second, dim] = Scene(kind);
        if (dim->GetType() != Angular && dim->GetType() != Radial)
            continue; // a drag does not measure
        dim->SetUpdateSide(1);
        dim->SetAnnotation(dim->GetAnnotation() + 5.0);
        Drag(*dim, {TextMiddle(*dim), TextMiddle(*dim) + Point(4, 3)});
        double m[3][3] = {{0.9, -0.2, 1.0}, {0.2, 0.9, 2.0}, {0.0, 0.0, 0.8}};
        first->Transform(m);
        const Point ends[] = {first->GetEnd(), second->GetEnd()};
        dim->UpdateDimension();
        ExpectNear(first->GetEnd(), ends[0], 1e-12, std::string(kind.name) + ": measured, nothing moved");
        ExpectNear(second->GetEnd(), ends[1], 1e-12, kind.name);
    }
}

TEST(DimensionLife, TransformedAndFreshlyMadeAgree) {
    std::mt19937 rng(90125);
    std::uniform_real_distribution<double> at(-40.0, 40.0);
    for (int trial = 0; trial < 48; ++trial) {
        const double angle = trial % 3 == 0 ? 0.0 : at(rng);
        const double scale = trial % 2 == 0 ? 1.0 : std::exp(at(rng) / 20.0), c = std::cos(angle);
        const double s = std::sin(angle);
        double m[3][3] = {{c, -s, at(rng)}, {s, c, at(rng)}, {0.0, 0.0, 1.0 / scale}};
        const double offset = trial % 4 < 2 ? 9.0 : -9.0;
        for (const Kind& kind : kKinds) {
            SCOPED_TRACE(std::string(kind.name) + " trial " + std::to_string(trial));
            auto [first, second, dim] = Scene(kind, offset);
            Points carried = DecorationOf(*dim, 1);
            Point anchor = dim->GetOrigin();
            const double leader = dim->GetTextOffset(), width = dim->GetTextWidthOffset();
            auto* length = dynamic_cast<LengthDimension*>(dim.get());
            if (length != nullptr)
                length->SetDecoEndDistance(6.0);
            for (TaggedObject* object :
                 {static_cast<TaggedObject*>(first.get()), static_cast<TaggedObject*>(second.get()),
                  static_cast<TaggedObject*>(dim.get())})
                object->Transform(m);
            anchor.Transform(m);
            ExpectNear(dim->GetOrigin(), anchor);
            EXPECT_NEAR(dim->GetTextWidthOffset(), width * scale, 1e-12 * scale);
            if (length != nullptr) {
                EXPECT_DOUBLE_EQ(length->GetDecoEndDistance(), 6.0 * scale);
            }
            dim->UpdateDimension();
            const DimPtr fresh = kind.make(*first, *second, offset * scale, 3.0 * scale);
            // A new leader is as long as the new number asks for; a leader that is there stays as it was.
            if (auto* radial = dynamic_cast<RadialDimension*>(fresh.get())) {
                radial->SetTextOffset(leader * scale);
                radial->UpdateDimension();
            }
            ExpectSamePlacement(*dim, *fresh, 1e-8 * (1.0 + scale));
            if (angle == 0.0 && scale == 1.0) {
                for (Point& p : carried)
                    p.Transform(m);
                ExpectSamePoints(DecorationOf(*dim, 1), carried, 1e-9, "carried along");
            }
        }
    }
}
