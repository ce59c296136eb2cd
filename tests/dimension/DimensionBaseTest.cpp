// What all dimensions share: fields and their reports, text, selection.
#include "tessera/dimension/DimensionBase.h"

#include "tests/support/DimensionProbes.h"
#include "tests/support/SlotOf.h"

using namespace Tessera::Testing;

namespace {

/// A dimension that says to be of another type, for the rules that go by type.
class TypedDimension : public LengthDimension {
public:
    TypedDimension(DimensionType_e type, double value) : type_(type) { SetAnnotation(value); }
    DimensionType_e GetType() const override { return type_; }

private:
    DimensionType_e type_;
};

struct Field {
    DimensionBase& dim;
    std::function<void(double)> set;
    std::function<double()> get;
};

template <class Kind, class Setter, class Getter>
Field FieldOf(Kind& dim, Setter set, Getter get) {
    return {dim, [&dim, set](double v) { std::invoke(set, dim, static_cast<int>(v)); },
            [&dim, get] { return static_cast<double>(std::invoke(get, dim)); }};
}

} // namespace

TEST(DimensionBase, VirtualOperationsKeepTheirSlots) {
    using D = DimensionBase;
    const std::vector<std::ptrdiff_t> slots = SlotsOf(
        &D::SetIsFinalized, &D::UpdateDimension, &D::GetType, &D::GetParentCurves, &D::AddGeometry,
        &D::MoveDimDeco, &D::ComputeNewValue, &D::GetDistanceToPoint, &D::ComputeUpdateSide,
        &D::GetAnnotationMidPoint, &D::GetReferencePoint, &D::GetUpdateCurves, &D::CanUpdate, &D::IsValid,
        &D::GetTempDimDecoObjects, &D::GetOrientedTextBox, &D::Rotate, &D::GetRotateAngle, &D::SetRotateAngle,
        &D::GetCachedRotateAngle, &D::SetCachedRotateAngle, &D::FinalizeRotate);
    std::ptrdiff_t expected = SlotOf(&D::IsCrossPolygon);
    for (const std::ptrdiff_t slot : slots)
        EXPECT_EQ(slot, ++expected);
    EXPECT_EQ(SlotOf(&MoveDimDeco::BeginMove), 0);
    EXPECT_EQ(SlotOf(&MoveDimDeco::Move), 1);
    EXPECT_EQ(SlotOf(&MoveDimDeco::EndMove), 2);
}

TEST(DimensionBase, Defaults) {
    const LinearDimension dim;
    const std::vector<double> expected = {3, 5.29, 2.645, 1.98375, 3.9675, -1, 15, 15};
    EXPECT_THAT(
        (std::vector<double>{1.0 * dim.AskClass(), dim.GetFontHeight(), dim.GetFontWidth(),
                             dim.GetArrowheadWidth(), dim.GetArrowheadLength(), 1.0 * dim.GetUpdateSide(),
                             dim.GetTextHeightOffset(), dim.GetTextOffset()}),
        testing::Pointwise(testing::DoubleEq(), expected));
    EXPECT_EQ(dim.GetOrientation(), Vector(1, 0));
    EXPECT_FALSE(dim.GetIsFinalized());
    EXPECT_TRUE(dim.IsDisplayable());
}

TEST(DimensionBase, FactoriesByType) {
    for (int type : {-1, 0, 7, 99})
        EXPECT_EQ(DimensionBase::CreateDimensionByType(static_cast<DimensionType_e>(type)), nullptr) << type;
    Line line(Point(0, 0), Point(10, 0));
    for (const DimensionType_e type : {Length, Horizontal, Vertical, Linear, Angular}) {
        const std::unique_ptr<DimensionBase> made(DimensionBase::CreateDimensionByType(type));
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->GetType(), type);
        EXPECT_EQ(made->GetTextHeightOffset(), 15.0);
        const std::unique_ptr<DimensionBase> bound(
            DimensionBase::CreateDimensionByType(type, &line, 7.0, 2.0));
        ASSERT_EQ(bound == nullptr, type == Linear || type == Angular);
        if (bound != nullptr) {
            EXPECT_EQ(bound->GetType(), type);
            EXPECT_TRUE(line.HasDimension(bound.get()));
            EXPECT_EQ(bound->GetTextHeightOffset(), 7.0);
            EXPECT_EQ(bound->GetFontHeight(), 2.0);
        }
    }
    const std::unique_ptr<LengthDimension> dims[] = {
        std::unique_ptr<LengthDimension>(LengthDimension::MakeDimension(&line, 4.0)),
        std::make_unique<HorizontalDimension>(&line, 4.0), std::make_unique<VerticalDimension>(&line, 4.0)};
    for (const auto& dim : dims)
        EXPECT_EQ(dim->GetTextHeightOffset(), 3.0) << "unless given";
    EXPECT_EQ(LengthDimension::MakeDimension(&line, 9.0), dims[0].get());
    EXPECT_EQ(LengthDimension::MakeDimension(nullptr, 9.0), nullptr);
}

TEST(DimensionBase, DetachingFromOneCurveIsFromAll) {
    Line line(Point(0, 0), Point(10, 0));
    Arc arc(FromCentre(10, 0), FromCentre(10, 90), kCentre);
    LinearDimension dim(&line, &arc, 9.0, 4.0);
    EXPECT_FALSE(DimensionBase::RemoveDimensionOnCurve(nullptr, &dim));
    EXPECT_FALSE(DimensionBase::RemoveDimensionOnCurve(&line, nullptr));
    EXPECT_TRUE(DimensionBase::RemoveDimensionOnCurve(&arc, &dim));
    EXPECT_FALSE(line.HasDimension(&dim) || arc.HasDimension(&dim));
    EXPECT_FALSE(DimensionBase::RemoveDimensionOnCurve(&arc, &dim));
}

// --- Fields

TEST(DimensionBase, SettersReportOnceBeforeTheyStore) {
    Line line(Point(0, 0), Point(10, 0));
    Arc arc(FromCentre(10, 0), FromCentre(10, 90), kCentre);
    Corner corner(0, 50);
    LengthDimension length(&line, 4.0);
    HorizontalDimension turned(&line, 4.0);
    LinearDimension linear(&line, &arc, 9.0, 4.0);
    RadialDimension radial(&arc, 4.0);
    AngularDimension& angular = corner.dim;
    using L = LengthDimension;
    using A = AngularDimension;
    using R = RadialDimension;
    const Field fields[] = {
        FieldOf(length, &L::SetAnnotation, &L::GetAnnotation),
        FieldOf(length, &L::SetTextAngle, &L::GetTextAngle),
        FieldOf(length, &L::SetTextHeightOffset, &L::GetTextHeightOffset),
        FieldOf(length, &L::SetTextWidthOffset, &L::GetTextWidthOffset),
        FieldOf(length, &L::SetFontHeight, &L::GetFontHeight),
        FieldOf(length, &L::SetUpdateSide, &L::GetUpdateSide),
        FieldOf(length, &L::SetRelativeParam, &L::GetRelativeParam),
        FieldOf(length, &L::SetDecoEndDistance, &L::GetDecoEndDistance),
        {length, [&](double v) { length.SetOrigin(Point(v, v)); }, [&] { return length.GetOrigin().x; }},
        {length, [&](double v) { length.SetOrigin(0.0, v); }, [&] { return length.GetOrigin().y; }},
        {length, [&](double v) { length.SetOrientation(Vector(v, 0)); },
         [&] { return length.GetOrientation().x; }},
        FieldOf(turned, &L::SetRotateAngle, &L::GetRotateAngle),
        FieldOf(linear, &LinearDimension::SetPickPointParam, &LinearDimension::GetPickPointParam),
        FieldOf(radial, &R::SetTextOffset, &R::GetTextOffset),
        FieldOf(radial, &R::SetRelativeParam, &R::GetRelativeParam),
        FieldOf(angular, &A::SetParam, &A::GetParam),
        FieldOf(angular, &A::SetParamUsed, &A::GetParamUsed),
        FieldOf(angular, &A::SetAnnotCenterParamOffset, &A::GetAnnotCenterParamOffset),
        FieldOf(angular, &A::SetAnnotCenterDistOffset, &A::GetAnnotCenterDistOffset),
        FieldOf(angular, &A::SetDecoEndDistance, &A::GetDecoEndDistance),
        {angular, [&](double v) { angular.SetLineParam(1, v); }, [&] { return angular.GetLineParam(1); }},
        {angular, [&](double v) { angular.SetLineParam(7, v); }, [&] { return angular.GetLineParam(2); }},
    };
    ChangeLog log;
    double value = 100.0;
    for (const auto& field : fields) {
        SCOPED_TRACE(&field - fields);
        field.set(value += 1.0);
        EXPECT_TRUE(log.entries.empty()) << "under construction";
        field.dim.SetIsFinalized(true);
        log.Take(field.dim);
        double seen = 0.0;
        log.onChange = [&] { seen = field.get(); };
        field.set(value + 1.0);
        EXPECT_EQ(log.Take(field.dim), 1);
        EXPECT_EQ(seen, value);
        EXPECT_EQ(field.get(), ++value);
        log.onChange = nullptr;
        field.dim.SetIsFinalized(false);
        log.Take(field.dim);
    }
}

TEST(DimensionBase, RecordsChangeHandsOnceReported) {
    Arc arc(FromCentre(10, 0), FromCentre(10, 90), kCentre);
    Line line(Point(0, 0), Point(1, 1));
    RadialDimension radial(&arc, 4.0);
    Corner corner(0, 50);
    AngularDimension& angular = corner.dim;
    for (DimensionBase* dim : {static_cast<DimensionBase*>(&radial), static_cast<DimensionBase*>(&angular)})
        dim->SetIsFinalized(true);
    ChangeLog log;
    const auto reports = [&] {
        int count = 0;
        for (const auto& entry : std::exchange(log.entries, {}))
            count += entry.object == &radial || entry.object == &angular ? 1 : 0;
        return count;
    };
    const std::function<void()> changes[] = {
        [&] { radial.SetRadialDimDeco(radial.GetRadialDimDeco()); }, // its own record
        [&] { radial.SetRadialDimDeco(new RadialDimDeco); },
        [&] { radial.SetArc(nullptr); },
        [&] { radial.AddGeometry(&arc); },
        [&] { angular.SetAngularDimDeco(1, angular.GetAngularDimDeco(1)); },
        [&] { angular.SetAngularDimDeco(1, new AngularDimDeco); },
        [&] { angular.SetDimensionArc(angular.GetDimensionArc()); },
        [&] { angular.SetDimensionArc(new Arc(kCentre, 3.0)); }};
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        changes[i]();
        EXPECT_EQ(reports(), 1) << i;
    }
    radial.AddGeometry(&line);
    radial.AddGeometry(&arc);   // measured already
    angular.AddGeometry(&line); // no free place
    angular.SetAngularDimDeco(0, nullptr);
    angular.AdjustPoint1s();
    EXPECT_EQ(reports(), 0);
    EXPECT_EQ(radial.ComputeUpdateSide(Point(0, 0)), -1) << "an incomplete record is nothing drawn";
}

TEST(DimensionBase, AssignmentTakesTheIdentifierAndNoCurve) {
    Line line(Point(0, 0), Point(100, 0)), other(Point(0, 50), Point(30, 50));
    const LengthDimension dim(&line, 10.0, 4.0);
    HorizontalDimension horizontal(&other, 4.0);
    static_cast<DimensionBase&>(horizontal) = dim;
    EXPECT_EQ(horizontal.GetId(), dim.GetId());
    EXPECT_EQ(horizontal.GetAnnotation(), 100.0);
    EXPECT_EQ(horizontal.GetLine(), &other);
    EXPECT_TRUE(other.HasDimension(&horizontal));
}

// --- Text

TEST(DimensionBase, DigitsAndStringLength) {
    const struct {
        DimensionType_e type;
        double value;
        int digits, characters; // at two digits
    } rows[] = {{Length, 25.0, 0, 2},         {Length, 12.5, 1, 4},   {Length, 12.34, 2, 5},
                {Length, 0.1 + 0.2, 1, 3},    {Length, 99.999, 0, 3}, {Length, -2.5, 1, 4},
                {Length, 3e9, 0, 10},         {Length, 1e19, 0, 20},  {Length, 12.0 + 9e-11, 0, 2},
                {Length, 12.0 + 2e-10, 0, 2}, {Length, 0.004, 0, 1},  {Length, 100.1, 1, 5},
                {Angular, 90.0, 0, 3},        {Angular, 99.55, 0, 4}, {Angular, 9.4, 0, 2},
                {Length, 1e300, 0, 49}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        const TypedDimension dim(row.type, row.value);
        EXPECT_EQ(dim.GetNumDigitsRequired(), row.type == Angular ? 0 : 2);
        EXPECT_EQ(dim.GetNumDigitsAfterDecimalPoint(dim.GetNumDigitsRequired()), row.digits);
        EXPECT_DOUBLE_EQ(dim.ComputeAnnotationStringLength(), row.characters * 0.5 * 5.29);
    }
    EXPECT_EQ(TypedDimension(Length, 0.5).GetNumDigitsAfterDecimalPoint(10), 9) << "prints 0";
    EXPECT_EQ(TypedDimension(Length, 100.5).GetNumDigitsAfterDecimalPoint(12), 10) << "prints 100";
    EXPECT_EQ(TypedDimension(Length, 0.5).GetNumDigitsAfterDecimalPoint(9), 1);
    EXPECT_EQ(TypedDimension(Length, 0.5).GetNumDigitsAfterDecimalPoint(-4), -4);
    EXPECT_EQ(TypedDimension(Length, 12.25).GetAnnotationText(), "12.250000");
    ChangeLog host;
    for (const int unitCode : {-1, 0, 1, 2, 7}) {
        host.unitCode = unitCode;
        EXPECT_EQ(TypedDimension(Length, 1.0).GetNumDigitsRequired(), unitCode == 0 || unitCode == 1 ? 2 : 3);
        EXPECT_EQ(TypedDimension(Angular, 1.0).GetNumDigitsRequired(), 0);
    }
}

TEST(DimensionBase, ReadableTextAngles) {
    const double s = 89.9999999999; // slivers between the bands
    const double t = 90.0000000001;
    // angle, text angle, whether the text is turned
    const double rows[][3] = {{0, 0, 0},     {1e-10, 0, 0}, {1.1e-10, 1.1e-10, 1},
                              {45, 45, 1},   {90, 90, 1},   {89.99999999995, 90, 1},
                              {s, s, 0},     {t, t, 0},     {135, 315, 1},
                              {180, 0, 0},   {225, 45, 1},  {270, 90, 1},
                              {300, 300, 0}, {-30, -30, 0}, {360, 360, 0}};
    for (const auto& row : rows) {
        double textAngle = -1.0, offset = 10.0;
        DimensionBase::ComputeTextAngleAndHeightOffset(Radial, row[0], 4.0, &textAngle, &offset);
        EXPECT_DOUBLE_EQ(textAngle, row[1]) << row[0];
        EXPECT_EQ(offset, row[2] != 0.0 ? 14.0 : 10.0) << row[0];
    }
}

TEST(DimensionBase, OrientationAngleAndOffsetSide) {
    const struct {
        Vector v;
        double angleDeg;
        Vector offset;
    } rows[] = {{{1, 0}, 0, {0, 1}},
                {{-3, 0}, 180, {0, 1}},
                {{0, 2}, 90, {1, 0}},
                {{0, -2}, 270, {1, 0}},
                {{5, 5}, 45, {std::sqrt(0.5), -std::sqrt(0.5)}},
                {{5, -5}, 315, {std::sqrt(0.5), std::sqrt(0.5)}},
                {{-3, 4}, 126.86989764584402, {0.8, 0.6}},
                {{0, 0}, 90, {0, 0}},
                {{1, 1e-9}, 1e-9 * 180 / std::numbers::pi, {1e-9, -1}},
                {{1, 1e-11}, 0, {0, 1}}};
    LengthDimension dim;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.angleDeg);
        dim.SetOrientation(row.v);
        EXPECT_NEAR(dim.ComputeAnnotationOrientationAngle(), row.angleDeg, 1e-12);
        EXPECT_NEAR(dim.GetOrientation().Length(), row.v.LengthSq() > 0.0 ? 1.0 : 0.0, 1e-15);
        ExpectNear(dim.ComputeOffsetVector(row.v), row.offset, 1e-11);
    }
    dim.SetOrientation({1, -2e-10});
    EXPECT_LT(dim.ComputeAnnotationOrientationAngle(), 360.0);
    EXPECT_GT(dim.ComputeAnnotationOrientationAngle(), 359.9999);
}

// --- Selection

TEST(DimensionBase, LassoAndCurve) {
    auto [line, dim] = Level(); // drawn from (0, 1) to (100, 14)
    const struct {
        const char* name;
        double x0, y0, x1, y1;
        bool isInside, isCrossed;
    } rows[] = {{"all of it", -1, 0.5, 101, 15, true, true},
                {"not the extension lines", -1, 11, 101, 13, false, true},
                {"a corner of the text", 46, 9, 48, 10.5, false, true},
                {"the middle of the text only", 49, 11.5, 51, 12.5, false, false},
                {"a corner of an arrowhead", 2.9, 12.6, 3.1, 12.9, false, true},
                {"elsewhere", 40, 20, 60, 30, false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        double xs[] = {row.x0, row.x1, row.x1, row.x0}, ys[] = {row.y0, row.y0, row.y1, row.y1};
        EXPECT_EQ(dim.IsInPolygon(4, xs, ys), row.isInside);
        EXPECT_EQ(dim.IsCrossPolygon(4, xs, ys), row.isCrossed);
    }
    // All of it but for the upper corner of an arrowhead, at (3, 12.75).
    double xs[] = {-1, 101, 101, 4, 3, 2, -1}, ys[] = {0.5, 0.5, 15, 15, 12.5, 15, 15};
    EXPECT_FALSE(dim.IsInPolygon(7, xs, ys));
    const Line throughLine(Point(20, 0), Point(20, 30)), throughText(Point(50, 9), Point(50, 13));
    const Line shortOfText(Point(50, 20), Point(50, 14.1));
    EXPECT_TRUE(dim.IntersectCurve(&throughLine, 1e-6, false));
    EXPECT_TRUE(dim.IntersectCurve(&throughText, 1e-6, true));
    EXPECT_FALSE(dim.IntersectCurve(&shortOfText, 1e-6, true));
    EXPECT_FALSE(dim.IntersectCurve(nullptr, 1e-6, true));
}
