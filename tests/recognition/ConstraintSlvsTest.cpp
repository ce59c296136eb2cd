// Inferred sets handed to an independent constraint solver, SolveSpace's library (Debian: libslvs1-dev). It
// refuses redundant and inconsistent sets by a rank test of its own. Built where the library is installed.
#include <cstring>

#include <slvs.h>

#include "tests/support/GeneratedSketches.h"

namespace {

using namespace Tessera::Geometry;
using namespace Tessera::Testing;

constexpr Slvs_hGroup kFixed = 1;
constexpr Slvs_hGroup kSketch = 2;

/// A sketch of lines, arcs and circles with constraints, in the solver's terms.
class SlvsSketch {
public:
    explicit SlvsSketch(const std::vector<std::unique_ptr<Curve>>& curves) {
        const Slvs_hEntity origin = NextEntity();
        entities_.push_back(
            Slvs_MakePoint3d(origin, kFixed, AddParam(0, kFixed), AddParam(0, kFixed), AddParam(0, kFixed)));
        double q[4];
        Slvs_MakeQuaternion(1, 0, 0, 0, 1, 0, &q[0], &q[1], &q[2], &q[3]);
        normal_ = NextEntity();
        entities_.push_back(Slvs_MakeNormal3d(normal_, kFixed, AddParam(q[0], kFixed), AddParam(q[1], kFixed),
                                              AddParam(q[2], kFixed), AddParam(q[3], kFixed)));
        plane_ = NextEntity();
        entities_.push_back(Slvs_MakeWorkplane(plane_, kFixed, origin, normal_));
        for (const auto& curve : curves)
            AddCurve(*curve);
    }

    void Add(const InferredConstraint& c) {
        static constexpr struct {
            Tessera::Geometry::ConstraintKind_e kind;
            int type, points; // of the elements the first are points, the others curves
        } kTypes[] = {{ConstraintKind_Coincident, SLVS_C_POINTS_COINCIDENT, 2},
                      {ConstraintKind_Concentric, SLVS_C_POINTS_COINCIDENT, 2},
                      {ConstraintKind_MidPoint, SLVS_C_AT_MIDPOINT, 1},
                      {ConstraintKind_Horizontal, SLVS_C_HORIZONTAL, 0},
                      {ConstraintKind_Vertical, SLVS_C_VERTICAL, 0},
                      {ConstraintKind_Parallel, SLVS_C_PARALLEL, 0},
                      {ConstraintKind_Perpendicular, SLVS_C_PERPENDICULAR, 0},
                      {ConstraintKind_EqualLength, SLVS_C_EQUAL_LENGTH_LINES, 0},
                      {ConstraintKind_EqualRadius, SLVS_C_EQUAL_RADIUS, 0},
                      {ConstraintKind_Symmetric, SLVS_C_SYMMETRIC_LINE, 2}};
        const Item items[] = {items_[c.elements[0].curve], items_[c.elements[1].curve],
                              items_[c.elements[2].curve]};
        if (c.kind == ConstraintKind_Tangent)
            return AddTangent(c, items[0], items[1]);
        if (c.kind == ConstraintKind_PointOnCurve)
            return Constrain(items[1].centre == 0 ? SLVS_C_PT_ON_LINE : SLVS_C_PT_ON_CIRCLE,
                             PointOf(items[0], c.elements[0].point), 0, items[1].entity, 0);
        if (c.kind == ConstraintKind_Collinear) {
            Constrain(SLVS_C_PT_ON_LINE, items[1].start, 0, items[0].entity, 0);
            return Constrain(SLVS_C_PT_ON_LINE, items[1].end, 0, items[0].entity, 0);
        }
        const auto& [kind, type, points] = *std::find_if(std::begin(kTypes), std::end(kTypes),
                                                         [&](const auto& t) { return t.kind == c.kind; });
        Slvs_hEntity handles[4] = {}; // two points, two curves
        for (int e = 0; e < c.elementCount; ++e)
            handles[e < points ? e : 2 + e - points] =
                e < points ? PointOf(items[e], c.elements[e].point) : items[e].entity;
        Constrain(type, handles[0], handles[1], handles[2], handles[3]);
    }

    int Solve() {
        Slvs_System sys;
        std::memset(&sys, 0, sizeof sys);
        sys.param = params_.data();
        sys.params = static_cast<int>(params_.size());
        sys.entity = entities_.data();
        sys.entities = static_cast<int>(entities_.size());
        sys.constraint = constraints_.data();
        sys.constraints = static_cast<int>(constraints_.size());
        Slvs_Solve(&sys, kSketch);
        return sys.result;
    }

private:
    struct Item {
        Slvs_hEntity entity = 0;
        Slvs_hEntity start = 0;
        Slvs_hEntity end = 0;
        Slvs_hEntity centre = 0;
    };

    Slvs_hEntity NextEntity() const { return static_cast<Slvs_hEntity>(entities_.size()) + 1; }
    Slvs_hParam AddParam(double value, Slvs_hGroup group = kSketch) {
        const auto h = static_cast<Slvs_hParam>(params_.size()) + 1;
        params_.push_back(Slvs_MakeParam(h, group, value));
        return h;
    }
    Slvs_hEntity AddPoint(const Point& p) {
        const Slvs_hParam u = AddParam(p.x);
        const Slvs_hParam v = AddParam(p.y);
        entities_.push_back(Slvs_MakePoint2d(NextEntity(), kSketch, plane_, u, v));
        return entities_.back().h;
    }
    Slvs_hEntity AddSegment(Slvs_hEntity a, Slvs_hEntity b) {
        entities_.push_back(Slvs_MakeLineSegment(NextEntity(), kSketch, plane_, a, b));
        return entities_.back().h;
    }
    void AddCurve(const Curve& curve) {
        Item item;
        if (curve.GetType() == CurveType_Line) {
            item.start = AddPoint(curve.GetStart());
            item.end = AddPoint(curve.GetEnd());
            item.entity = AddSegment(item.start, item.end);
        } else {
            const auto& arc = static_cast<const Arc&>(curve);
            item.centre = AddPoint(arc.GetCenter());
            if (arc.IsClosed()) {
                const Slvs_hParam r = AddParam(arc.GetRadius());
                entities_.push_back(Slvs_MakeDistance(NextEntity(), kSketch, plane_, r));
                const Slvs_hEntity radius = entities_.back().h;
                entities_.push_back(
                    Slvs_MakeCircle(NextEntity(), kSketch, plane_, item.centre, normal_, radius));
            } else {
                item.start = AddPoint(arc.GetStart());
                item.end = AddPoint(arc.GetEnd());
                entities_.push_back(Slvs_MakeArcOfCircle(NextEntity(), kSketch, plane_, normal_, item.centre,
                                                         item.start, item.end));
            }
            item.entity = entities_.back().h;
        }
        items_.push_back(item);
    }
    static Slvs_hEntity PointOf(const Item& item, SnapPointType_e which) {
        return which == SnapPointType_Start ? item.start
               : which == SnapPointType_End ? item.end
                                            : item.centre;
    }
    void Constrain(int type, Slvs_hEntity ptA, Slvs_hEntity ptB, Slvs_hEntity entityA, Slvs_hEntity entityB,
                   bool otherEnd = false, bool otherEnd2 = false) {
        const auto h = static_cast<Slvs_hConstraint>(constraints_.size()) + 1;
        constraints_.push_back(
            Slvs_MakeConstraint(h, kSketch, type, plane_, 0.0, ptA, ptB, entityA, entityB));
        constraints_.back().other = otherEnd ? 1 : 0;
        constraints_.back().other2 = otherEnd2 ? 1 : 0;
    }
    void AddTangent(const InferredConstraint& c, const Item& a, const Item& b) {
        const bool endA = c.elements[0].point == SnapPointType_End;
        const bool endB = c.elements[1].point == SnapPointType_End;
        if (c.elements[1].point == SnapPointType_None) { // of a line's end: square to the radius there
            const Slvs_hEntity radius = AddSegment(b.centre, PointOf(a, c.elements[0].point));
            return Constrain(SLVS_C_PERPENDICULAR, 0, 0, radius, a.entity);
        }
        if (a.centre != 0 && b.centre != 0)
            return Constrain(SLVS_C_CURVE_CURVE_TANGENT, 0, 0, a.entity, b.entity, endA, endB);
        if (a.centre != 0)
            return Constrain(SLVS_C_ARC_LINE_TANGENT, 0, 0, a.entity, b.entity, endA);
        return Constrain(SLVS_C_ARC_LINE_TANGENT, 0, 0, b.entity, a.entity, endB);
    }

    std::vector<Slvs_Param> params_;
    std::vector<Slvs_Entity> entities_;
    std::vector<Slvs_Constraint> constraints_;
    std::vector<Item> items_;
    Slvs_hEntity plane_ = 0;
    Slvs_hEntity normal_ = 0;
};

// One constraint too many is refused: the check can fail.
TEST(ConstraintSets, AreAcceptedByAnIndependentSolver) {
    std::mt19937 rng(20240805);
    SketchMaker maker(rng);
    ConstraintOptions options;
    options.toleranceZone = kSketchZone;
    for (int k = 0; k < 10 * SketchMaker::kFamilyCount; ++k) {
        const GeneratedSketch drawing = maker.Make(k, {});
        SCOPED_TRACE(std::string(drawing.name) + " " + std::to_string(k));
        const InferredConstraints inferred = InferConstraints(drawing.Drawn(), options);
        SlvsSketch sketch(inferred.adjusted);
        for (const InferredConstraint& c : inferred.constraints)
            sketch.Add(c);
        ASSERT_EQ(sketch.Solve(), SLVS_RESULT_OKAY);
        if (k == 0) { // a rectangle
            sketch.Add(
                MakeConstraint(ConstraintKind_Parallel, {{0, SnapPointType_None}, {2, SnapPointType_None}}));
            EXPECT_NE(sketch.Solve(), SLVS_RESULT_OKAY);
        }
    }
}

} // namespace
