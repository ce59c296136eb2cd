#include "tessera/geometry/Curve.h"

#include <cmath>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/RecordPtr.h"

// Life of a curve, its record and cached box, evaluation, and moving it about. Services that compare the
// curve with others stand in CurveKernel.cpp, the polygon tests in CurvePolygon.cpp.

namespace Tessera::Geometry {
namespace {

constexpr double kParamTol = 1e-10; // how far beyond its limits a parameter may lie; parameter units
constexpr double kMinScale = 1e-10; // smallest 1 / m[2][2] that is applied as a scale; a ratio

bool WithinLimits(KC_CURVE_struct_s& c, double t) {
    double limits[2];
    evcrvp(&c, limits);
    return t >= limits[0] - kParamTol && t <= limits[1] + kParamTol;
}

} // namespace

Curve::Curve() = default;

Curve::Curve(const Curve& other) : DisplayableObject(other) {
    if (other.curve_ == nullptr)
        return;
    Install(evcrvCopy(other.curve_), "Curve::Curve - out of memory");
    box_ = other.box_;
    boxStale_ = other.boxStale_;
}

Curve::~Curve() {
    ReleaseDimensions();
    evcrvf(curve_);
}

// --- Record and box

void Curve::SetCurveData(KC_CURVE_struct_s* c) {
    LogForChange();
    if (curve_ != c)
        evcrvf(curve_);
    boxStale_ = true;
    curve_ = c;
}

void Curve::Install(KC_CURVE_struct_s* made, Core::StaticText ifNull) {
    RecordPtr record(made);
    if (!record)
        Core::ThrowMessage(ifNull);
    // The record changes hands only when the report of the change has come back.
    SetCurveData(record.get());
    static_cast<void>(record.release());
}

void Curve::Adopt(KC_CURVE_struct_s* given) {
    // The box first: once the record is taken over nothing may throw, or giver and curve would both free it.
    BoundingBox box;
    if (given != nullptr)
        box.GetBBoxFromCurve(given);
    SetCurveData(given);
    box_ = box;
    boxStale_ = given == nullptr;
}

void Curve::AskRange(double limits[2]) const {
    if (curve_ != nullptr)
        evcrvp(curve_, limits);
}

void Curve::UpdateBoundingBox() const {
    if (!boxStale_ || curve_ == nullptr)
        return;
    box_.GetBBoxFromCurve(curve_);
    boxStale_ = false;
}

// --- Evaluation

Point Curve::PointAt(double t) const {
    double position[3] = {};
    evcrve(curve_, 0, t, position);
    return Point(position);
}

Point Curve::GetStart() const {
    double limits[2];
    evcrvp(&Record("Curve::GetStart - CURVE cannot be NULL"), limits);
    return PointAt(limits[0]);
}

Point Curve::GetEnd() const {
    double limits[2];
    evcrvp(&Record("Curve::GetEnd - CURVE cannot be NULL"), limits);
    return PointAt(limits[1]);
}

Point Curve::GetMidPoint() const {
    double limits[2];
    evcrvp(&Record("Curve::GetMidPoint - CURVE cannot be NULL"), limits);
    return PointAt((limits[0] + limits[1]) * 0.5);
}

Point Curve::GetMajorRadiusPoint(double f) const {
    switch (GetType()) {
    case CurveType_Arc: {
        const EVC_arc_s& arc = ArcData(Record("Curve::GetMajorRadiusPoint - CURVE cannot be NULL"));
        return {arc.centre[0] + f * arc.radius, arc.centre[1]};
    }
    case CurveType_Ellipse: {
        const EVC_conic_s& conic = ConicData(Record("Curve::GetMajorRadiusPoint - CURVE cannot be NULL"));
        return Point(conic.centre).AffineCombine(f, Vector(conic.majorAxis));
    }
    default:
        Core::ThrowMessage(
            "Curve::GetMajorRadiusPoint - cannot find major radius point for curve other than arc or "
            "ellipse");
    }
}

Point Curve::GetMinorRadiusPoint(double f) const {
    switch (GetType()) {
    case CurveType_Arc: {
        const EVC_arc_s& arc = ArcData(Record("Curve::GetMinorRadiusPoint - CURVE cannot be NULL"));
        return {arc.centre[0], arc.centre[1] + f * arc.radius};
    }
    case CurveType_Ellipse: {
        const EVC_conic_s& conic = ConicData(Record("Curve::GetMinorRadiusPoint - CURVE cannot be NULL"));
        return Point(conic.centre).AffineCombine(f, Vector(conic.minorAxis));
    }
    default:
        Core::ThrowMessage(
            "Curve::GetMinorRadiusPoint - cannot find minor radius point for curve other than arc or "
            "ellipse");
    }
}

Point Curve::GetPointAtParameter(double t, bool unchecked) const {
    KC_CURVE_struct_s& record = Record("Curve::GetPointAtParameter - CURVE cannot be NULL");
    if (!unchecked && !IsPeriodic() && !WithinLimits(record, t))
        Core::ThrowMessage("Curve::GetPointAtParameter - given parameter is out of range");
    return PointAt(t);
}

bool Curve::EvaluateAtParameter(double t, Point& point, Vector& slope) const {
    // Hosts match on this text, which names another operation.
    KC_CURVE_struct_s& record = Record("Curve::GetSlopeAtParameter - CURVE cannot be NULL");
    point = Point();
    slope = Vector();
    if (!IsPeriodic() && !WithinLimits(record, t))
        return false;
    double values[6] = {};
    evcrve(&record, 1, t, values);
    point = Point(values);
    slope = Vector(values + 3);
    return true;
}

bool Curve::GetParametersAtPoint(const Point& p, int flag, double& t, Point& foot, Vector& tangent) const {
    // Hosts match on this text, which names another operation.
    KC_CURVE_struct_s& record = Record("Curve::GetParameterAtPoint - CURVE cannot be NULL");
    foot = Point();
    tangent = Vector();
    t = 0.0;
    // An inversion may treat the record as a full turn while it works.
    const int closed = record.closed;
    const double position[3] = {p.x, p.y, 0.0};
    double parameter = 0.0;
    double at[3] = {};
    double slope[3] = {};
    const int state = em015c(&record, position, flag, &parameter, at, slope);
    if (GetType() == CurveType_Arc || GetType() == CurveType_Ellipse)
        record.closed = closed;
    if (state == kInversionFailed)
        return false;
    t = parameter;
    foot = Point(at);
    tangent = Vector(slope);
    return true;
}

void Curve::CreatePolylinePoints(int n, std::vector<Point>& pts) const {
    if (curve_ == nullptr || n <= 0)
        return;
    double limits[2];
    evcrvp(curve_, limits);
    const double range = limits[1] - limits[0];
    pts.push_back(PointAt(limits[0]));
    for (int i = 1; i < n; ++i)
        pts.push_back(PointAt(limits[0] + i / (n - 1.0) * range));
}

bool Curve::IsPeriodic() const {
    return Record("Curve::IsPeriodic - CURVE cannot be NULL").closed == 1;
}

bool Curve::IsZeroLength() const {
    return Length() <= EQ_ask_length_tolerance();
}

// --- Moving and copying

void Curve::Transform(double m[3][3]) {
    KC_CURVE_struct_s& record = Record("Curve::Transform - CURVE cannot be NULL");
    const double scale = 1.0 / m[2][2];
    if (std::isinf(scale))
        Core::ThrowMessage("Curve::Transform - scale must be finite");
    double turn[3][3] = {{m[0][0], m[0][1], 0.0}, {m[1][0], m[1][1], 0.0}, {0.0, 0.0, 1.0}};
    double shift[3] = {m[0][2], m[1][2], 0.0};
    LogForChange();
    RecordPtr moved(evcrvx(&record, turn, shift));
    if (!moved || (scale > kMinScale && evcrvxScale(moved.get(), scale) != 0))
        Core::ThrowMessage("Curve::Transform - out of memory");
    evcrvf(curve_);
    curve_ = moved.release();
    box_.Transform(m);
}

Curve* Curve::CopyCurveOnly() const {
    switch (GetType()) {
    case CurveType_Line:
        return new Line(static_cast<const Line&>(*this));
    case CurveType_Arc:
        return new Arc(static_cast<const Arc&>(*this));
    case CurveType_Ellipse:
        return new Ellipse(static_cast<const Ellipse&>(*this));
    case CurveType_Spline:
        return new Spline(static_cast<const Spline&>(*this));
    }
    return nullptr;
}

bool Curve::CopyCurveData(Curve* other) {
    if (other == nullptr || other->GetType() != GetType())
        return false;
    KC_CURVE_struct_s* copy = evcrvCopy(other->curve_);
    if (copy == nullptr)
        return false;
    Install(copy, "Curve::CopyCurveData - CURVE cannot be NULL");
    box_ = other->box_;
    boxStale_ = other->boxStale_;
    return true;
}

bool Curve::Replace(Core::TaggedObject* other) {
    if (other == nullptr || other->AskClass() != AskClass())
        return false;
    auto* curve = static_cast<Curve*>(other);
    if (!CopyCurveData(curve))
        return false;
    CopyDisplayState(*curve, false);
    return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the set is consumed
bool Curve::Merge(std::unordered_set<Curve*> /*curves*/) {
    return false;
}

void Curve::GetInvalidDimensions(std::vector<Dimension::DimensionBase*>& /*invalid*/) const {}

Curve* Curve::CreateExtensionCurve() const {
    return nullptr;
}

} // namespace Tessera::Geometry
