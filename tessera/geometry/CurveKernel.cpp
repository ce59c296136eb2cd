#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/kernel/BoxCurve.h"
#include "tessera/kernel/CRV_PROPS.h"
#include "tessera/kernel/CRV_TOPOL.h"
#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/kernel/internal/SmArray.h"

// What the kernel answers on the record: extent, sub-ranges, conversion, lengths, distances, and how curves
// lie to each other. Each operation unpacks the kernel's arrays and turns its status into the class's answer.

namespace Tessera::Geometry {
namespace {

constexpr double kMinRange = 1e-7; // shortest parameter range that counts as one; parameter units
constexpr double kOnCurveTol =
    1e-7; // distance at which an intersection still lies on a bounded curve: wide
          // enough for the ends of tangent arcs, far below a drawn gap; model units

bool IsRange(const double range[2]) {
    return range[0] <= range[1] - kMinRange;
}

/// The sub-range as a record of its own.
RecordPtr ExtractRecord(KC_CURVE_struct_s* record, const double range[2]) {
    if (record == nullptr)
        Core::ThrowMessage("Curve::Extract - CURVE cannot be NULL");
    if (!IsRange(range))
        Core::ThrowMessage("Curve::Extract - input range is invalid");
    RecordPtr piece(em0941(record, range));
    if (!piece)
        Core::ThrowMessage("Curve::Extract - input range is invalid");
    return piece;
}

/// New curve of the kind that the record's form asks for.
std::unique_ptr<Curve> MakeCurve(RecordPtr record) {
    std::unique_ptr<Curve> curve;
    switch (record->form) {
    case kFormLine:
        curve = std::make_unique<Line>(record.get());
        break;
    case kFormArc:
        curve = std::make_unique<Arc>(record.get());
        break;
    case kFormConic:
        curve = std::make_unique<Ellipse>(record.get());
        break;
    case kFormBCurve:
        curve = std::make_unique<Spline>(record.get());
        break;
    default:
        return curve;
    }
    static_cast<void>(record.release()); // only now does the curve own it
    return curve;
}

struct Hits {
    SmArray<CRV_TOPOL_hit_t> list;
    int count = 0;
};

/// False when the kernel fails.
bool FindHits(KC_CURVE_struct_s* a, KC_CURVE_struct_s* b, CRV_TOPOL_extent_t extent, double tol, Hits& hits) {
    CRV_TOPOL_hit_t* list = nullptr;
    const int status = CRV_TOPOL_intersect(a, extent, b, extent, tol, &hits.count, &list);
    hits.list.reset(list);
    if (status != 0)
        hits.count = 0;
    return status == 0;
}

bool IsOfKnownKind(const Curve& curve) {
    switch (curve.GetType()) {
    case CurveType_Line:
    case CurveType_Arc:
    case CurveType_Ellipse:
    case CurveType_Spline:
        return true;
    }
    return false;
}

/// Nothing of the curve's carrier lies outside its limits.
bool CoversItsCarrier(const Curve& curve) {
    return curve.GetType() == CurveType_Spline || curve.IsPeriodic();
}

bool HasClosedForms(const Curve& curve) {
    return curve.GetType() == CurveType_Line || curve.GetType() == CurveType_Arc;
}

/// Where a line and a circle, or two circles, touch to within tol: rounding decides whether their formulas
/// find two points there, one or none.
bool FindTouch(const Curve& a, const Curve& b, double tol, Point& touch) {
    if (a.GetType() != CurveType_Arc)
        return b.GetType() == CurveType_Arc && FindTouch(b, a, tol, touch);
    const auto& arc = static_cast<const Arc&>(a);
    const Point centre = arc.GetCenter();
    const double radius = arc.GetRadius();
    if (b.GetType() == CurveType_Line) {
        touch = b.Project(centre);
        return std::fabs(touch.Distance(centre) - radius) <= tol;
    }
    if (b.GetType() != CurveType_Arc)
        return false;
    const auto& other = static_cast<const Arc&>(b);
    const Point apart = other.GetCenter() - centre;
    const double distance = apart.Length();
    const double difference = radius - other.GetRadius();
    const bool isOutside = std::fabs(distance - (radius + other.GetRadius())) <= tol;
    if (distance <= tol || !(isOutside || std::fabs(distance - std::fabs(difference)) <= tol))
        return false;
    touch = centre + (isOutside || difference > 0.0 ? radius : -radius) / distance * apart;
    return true;
}

bool BoxesMeet(const Curve& a, const Curve& b) {
    a.UpdateBoundingBox();
    b.UpdateBoundingBox();
    const BoundingBox boxA = a.AskBoundingBox();
    const BoundingBox boxB = b.AskBoundingBox();
    // Solid boxes belong to curves out of the plane, for which boxes have no intersection test.
    if (boxA.AskDimension() == 3 || boxB.AskDimension() == 3)
        return true;
    return boxA.IsIntersecting(&boxB, kOnCurveTol);
}

} // namespace

// --- Extent and sub-ranges

bool Curve::AskXYBox(XYBox& box) const {
    if (curve_ == nullptr)
        return false;
    double limits[2];
    evcrvp(curve_, limits);
    double low[2];
    double high[2];
    if (BoxCurveXY(curve_, limits, low, high) != 0)
        return false;
    box = XYBox(Point(low), Point(high));
    return true;
}

BoundingBox Curve::AskBoundingBoxOfRange(double range[2]) const {
    if (!IsRange(range))
        Core::ThrowMessage("Curve::Extract - input range is invalid");
    double limits[2] = {};
    AskRange(limits);
    if (curve_ != nullptr && std::fabs(range[0] - limits[0]) <= kMinRange &&
        std::fabs(range[1] - limits[1]) <= kMinRange) {
        UpdateBoundingBox();
        return box_;
    }
    return BoundingBox(ExtractRecord(curve_, range).get());
}

Curve* Curve::Extract(double range[2]) const {
    std::unique_ptr<Curve> piece = MakeCurve(ExtractRecord(curve_, range));
    piece->CopyDisplayState(*this, false);
    return piece.release();
}

bool Curve::Trim(double range[2]) {
    if (curve_ == nullptr || !IsRange(range))
        return false;
    KC_CURVE_struct_s* piece = em0941(curve_, range);
    if (piece == nullptr)
        return false;
    Install(piece, "Curve::Trim - CURVE cannot be NULL");
    return true;
}

Spline* Curve::ConvertToSpline() const {
    if (curve_ == nullptr)
        return nullptr;
    BcurveDataPtr definition(em0960(curve_));
    if (!definition)
        return nullptr;
    RecordPtr record(ev09p1(definition.get()));
    if (!record)
        return nullptr;
    static_cast<void>(definition.release()); // the record owns it now
    auto spline = std::make_unique<Spline>(record.get());
    static_cast<void>(record.release());
    return spline.release();
}

// --- Measures

double Curve::CurveLength(double range[2]) const {
    KC_CURVE_struct_s& record = Record("Curve::CurveLength - CURVE cannot be NULL");
    const double ascending[2] = {std::fmin(range[0], range[1]), std::fmax(range[0], range[1])};
    double length = 0.0;
    if (CRV_PROPS_arc_length(&record, ascending, &length) != 0)
        Core::ThrowMessage("Curve::CurveLength - length could not be found");
    return length;
}

bool Curve::ComputeCurvature(double t, double* k) const {
    return curve_ != nullptr && k != nullptr && CRV_PROPS_curvature(curve_, t, k) == 0;
}

double Curve::KernelLength() const {
    double limits[2] = {};
    AskRange(limits);
    return CurveLength(limits);
}

Point Curve::KernelProject(const Point& p) const {
    const double position[3] = {p.x, p.y, 0.0};
    double t = 0.0;
    double foot[3] = {};
    if (em015c(&Record("Curve::Project - CURVE cannot be NULL"), position, 0, &t, foot, nullptr) ==
        kInversionFailed)
        Core::ThrowMessage("Curve::Project - nearest point could not be found");
    return Point(foot);
}

double Curve::KernelDistance(const Point& p) const {
    return p.Distance(KernelProject(p));
}

Point Curve::GetClosestPoint(const Point& p) const {
    const double position[3] = {p.x, p.y, 0.0};
    double t = 0.0;
    double foot[3] = {};
    if (em015cBounded(&Record("Curve::GetClosestPoint - CURVE cannot be NULL"), position, &t, foot,
                      nullptr) == kInversionFailed)
        Core::ThrowMessage("Curve::GetClosestPoint - nearest point could not be found");
    return Point(foot);
}

double Curve::KernelDistanceBounded(const Point& p) const {
    return p.Distance(GetClosestPoint(p));
}

bool Curve::IsPointOnObject(const Point& p, double tol) const {
    UpdateBoundingBox();
    const double position[3] = {p.x, p.y, 0.0};
    return box_.IsPointInBBox(position, tol) && DistanceBounded(p) <= tol;
}

bool Curve::IsConnected(Curve* other) const {
    if (other == nullptr || IsPeriodic() || other->IsPeriodic())
        return false;
    const Point start = GetStart();
    const Point end = GetEnd();
    const Point otherStart = other->GetStart();
    const Point otherEnd = other->GetEnd();
    return start == otherStart || start == otherEnd || end == otherStart || end == otherEnd;
}

// --- Against another curve

void Curve::KernelIntersect(const Curve& other, std::vector<Point>& out, Core::StaticText ifUnknown) const {
    if (!IsOfKnownKind(other))
        Core::ThrowMessage(ifUnknown);
    Hits hits;
    if (!FindHits(&Record("Curve::Intersect - CURVE cannot be NULL"),
                  &other.Record("Curve::Intersect - CURVE cannot be NULL"), CRV_TOPOL_CARRIER,
                  EQ_ask_length_tolerance(), hits))
        Core::ThrowMessage("Curve::Intersect - intersections could not be found");
    for (int i = 0; i < hits.count; ++i)
        out.emplace_back(hits.list[i].point);
}

void Curve::IntersectBounded(const Curve& other, std::vector<Point>& out) const {
    // Two curves with closed formulas meet faster than their boxes are compared.
    if (!(HasClosedForms(*this) && HasClosedForms(other)) && !BoxesMeet(*this, other))
        return;
    const bool checkThis = !CoversItsCarrier(*this);
    const bool checkOther = !CoversItsCarrier(other);
    const auto isOutside = [&](const Point& p) {
        return (checkThis && !(DistanceBounded(p) <= kOnCurveTol)) ||
               (checkOther && !(other.DistanceBounded(p) <= kOnCurveTol));
    };
    const auto before = static_cast<std::ptrdiff_t>(out.size());
    Intersect(other, out);
    out.erase(std::remove_if(out.begin() + before, out.end(), isOutside), out.end());
    Point touch;
    if (static_cast<std::ptrdiff_t>(out.size()) != before + 1 &&
        FindTouch(*this, other, EQ_ask_length_tolerance(), touch) && !isOutside(touch)) {
        out.erase(out.begin() + before, out.end());
        out.push_back(touch);
    }
}

bool Curve::IntersectCurve(const Curve& other, int* n, std::vector<double>& params1,
                           std::vector<double>& params2, std::vector<Point>& points, double tol) const {
    params1.clear();
    params2.clear();
    points.clear();
    if (n != nullptr)
        *n = 0;
    if (curve_ == nullptr || other.curve_ == nullptr)
        return false;
    Hits hits;
    if (!FindHits(curve_, other.curve_, CRV_TOPOL_BOUNDED, tol > 0.0 ? tol : EQ_ask_length_tolerance(), hits))
        return false;
    for (int i = 0; i < hits.count; ++i) {
        params1.push_back(hits.list[i].t1);
        params2.push_back(hits.list[i].t2);
        points.emplace_back(hits.list[i].point);
    }
    if (n != nullptr)
        *n = hits.count;
    return true;
}

bool Curve::IsOverlapping(Curve* other, double distTol, double angTolRad, double paramTol,
                          CRV_TOPOL_state_t* state, double range[], Curve** common) const {
    CRV_TOPOL_state_t found = CRV_TOPOL_SEPARATE;
    double stretch[2] = {};
    if (common != nullptr)
        *common = nullptr;
    if (curve_ != nullptr && other != nullptr && other->curve_ != nullptr &&
        CRV_TOPOL_overlap(curve_, other->curve_, distTol, angTolRad, paramTol, &found, stretch, nullptr) != 0)
        found = CRV_TOPOL_SEPARATE;
    if (state != nullptr)
        *state = found;
    if (found == CRV_TOPOL_SEPARATE)
        return false;
    if (range != nullptr) {
        range[0] = stretch[0];
        range[1] = stretch[1];
    }
    if (common != nullptr && IsRange(stretch))
        *common = Extract(stretch);
    return true;
}

} // namespace Tessera::Geometry
