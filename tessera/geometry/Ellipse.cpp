#include "tessera/geometry/Ellipse.h"

#include <cmath>
#include <memory>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/internal/Angles.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/EQ.h"

// Lengths, distances and intersections come from the kernel; this class reads and writes the conic's data.

namespace Tessera::Geometry {
namespace {

void StoreAngles(KC_CURVE_struct_s& record, double start, double end) {
    ConicData(record).startAngle = start;
    ConicData(record).endAngle = end;
    SetAngularLimits(record, start, end);
}

/// Eccentric angle in [0, 2 pi] of the point of the whole ellipse that is nearest to p.
double AngleOnWhole(const KC_CURVE_struct_s& record, const Point& p) {
    EVC_conic_s conic = ConicData(record);
    KC_CURVE_struct_s whole = record;
    whole.data = &conic;
    StoreAngles(whole, 0.0, kTwoPi);
    const double position[3] = {p.x, p.y, 0.0};
    double t = 0.0;
    if (em015c(&whole, position, 0, &t, nullptr, nullptr) == kInversionFailed)
        Core::ThrowMessage("Ellipse::SetLimits - nearest point could not be found");
    while (t > kTwoPi)
        t -= kTwoPi;
    return t;
}

/// The minor axis lies a quarter turn clockwise of the major one, where rotation and radii do not tell it.
bool IsMirrored(const EVC_conic_s& conic) {
    const double turn = Vector(conic.majorAxis).Cross(Vector(conic.minorAxis));
    return turn * conic.radius1 * conic.radius2 < 0.0;
}

/// Unit direction at the angle of rotation. The vectors carry the radii, which may be negative or vanish.
Vector MajorDirection(const EVC_conic_s& conic) {
    Vector direction(conic.majorAxis[0], conic.majorAxis[1]);
    double radius = conic.radius1;
    if (radius == 0.0) {
        direction = Vector(conic.minorAxis[1], -conic.minorAxis[0]);
        radius = conic.radius2;
    }
    return radius != 0.0 ? direction / radius : Vector(1.0, 0.0);
}

} // namespace

Ellipse::Ellipse(double centre[2], double radii[2], double rotation, double start, double end) {
    const double position[3] = {centre[0], centre[1], 0.0};
    Install(ev06p0(position, radii[0], radii[1], rotation, start, end), "Ellipse::Ellipse - out of memory");
    UpdateBoundingBox();
}

Ellipse::Ellipse(KC_CURVE_struct_s* c) {
    Adopt(c);
    if (c != nullptr && c->form == kFormConic && IsMirrored(ConicData(*c)))
        evcrvNormalizeAxes(c);
}

Ellipse* Ellipse::Copy() const {
    return static_cast<Ellipse*>(Curve::Copy());
}

void Ellipse::Transform(double m[3][3]) {
    Curve::Transform(m);
    evcrvNormalizeAxes(curve_);
}

// --- Accessors

Point Ellipse::AskCenter() const {
    return Point(ConicData(Record("Ellipse::AskCenter: Invalid Ellipse object")).centre);
}

Vector Ellipse::AskDirection() const {
    const EVC_conic_s& conic = ConicData(Record("Ellipse::AskDirection: Invalid Ellipse object"));
    if (std::fabs(conic.radius1) <= EQ_ask_length_tolerance())
        return {};
    return Vector(conic.majorAxis) / conic.radius1;
}

void Ellipse::AskRadii(double& r1, double& r2) const {
    const EVC_conic_s& conic = ConicData(Record("Ellipse::AskRadii: Invalid Ellipse object"));
    r1 = conic.radius1;
    r2 = conic.radius2;
}

bool Ellipse::AskEllipseData(double centre[2], double radii[2], double* rotation, double* start,
                             double* end) const {
    const KC_CURVE_struct_s& record = Record("Ellipse::AskEllipseData: Invalid Ellipse object");
    const EVC_conic_s& conic = ConicData(record);
    centre[0] = conic.centre[0];
    centre[1] = conic.centre[1];
    radii[0] = conic.radius1;
    radii[1] = conic.radius2;
    // atan2 keeps all digits near 0 and pi, where the arc cosine loses half of them.
    const Vector direction = MajorDirection(conic);
    double phi = std::atan2(direction.y, direction.x);
    if (phi < 0.0)
        phi += kTwoPi;
    *rotation = phi < kTwoPi ? phi : 0.0;
    *start = conic.startAngle;
    *end = conic.endAngle;
    return record.closed == 1;
}

double Ellipse::GetRelativeParam(double theta) const {
    const EVC_conic_s& conic = ConicData(Record("Ellipse::AskEllipseData: Invalid Ellipse object"));
    return RelativeAngle(theta, conic.startAngle, conic.endAngle);
}

Point Ellipse::GetRotateHandleLocation() const {
    return GetMajorRadiusPoint(1.0);
}

// --- Measures

bool Ellipse::IsZeroLength() const {
    const EVC_conic_s& conic = ConicData(Record("Ellipse::AskRadii: Invalid Ellipse object"));
    const double t = EQ_ask_length_tolerance();
    if (std::fabs(conic.radius1) <= t && std::fabs(conic.radius2) <= t)
        return true;
    return std::fabs(conic.startAngle - conic.endAngle) <= t;
}

int Ellipse::AskNumberOfSampledPoints(double tol) const {
    // The affine image of an evenly sampled circle strays no farther from its chords than the circle of the
    // larger radius does from its own.
    const EVC_conic_s& conic = ConicData(Record("Ellipse::AskRadii: Invalid Ellipse object"));
    const double span = std::fabs(conic.endAngle - conic.startAngle);
    const double radius = std::fmax(std::fabs(conic.radius1), std::fabs(conic.radius2));
    return SamplesOfSweep(Arc::ComputeNumberOfDisplaySegments(radius, span, tol), span, IsClosed());
}

// --- Against other curves

bool Ellipse::IsSameCurve(const Curve* other) const {
    if (other == this)
        return true;
    if (other == nullptr || other->GetType() != CurveType_Ellipse)
        return false;
    const double t = EQ_ask_length_tolerance();
    double centre[2][2];
    double radii[2][2];
    double rotation[2];
    double start[2];
    double end[2];
    AskEllipseData(centre[0], radii[0], &rotation[0], &start[0], &end[0]);
    static_cast<const Ellipse*>(other)->AskEllipseData(centre[1], radii[1], &rotation[1], &start[1], &end[1]);
    return Point(centre[0]) == Point(centre[1]) && std::fabs(radii[0][0] - radii[1][0]) <= t &&
           std::fabs(radii[0][1] - radii[1][1]) <= t && std::fabs(rotation[0] - rotation[1]) <= kAngleTol &&
           std::fabs(start[0] - start[1]) <= kAngleTol && std::fabs(end[0] - end[1]) <= kAngleTol;
}

void Ellipse::Intersect(const Curve& other, std::vector<Point>& out) const {
    KernelIntersect(other, out, "Ellipse::Intersect: Unsupported yet");
}

// --- Changes

void Ellipse::SetClosed() {
    KC_CURVE_struct_s& record = Record("Ellipse::SetClosed - CURVE cannot be NULL");
    LogForChange();
    StoreAngles(record, 0.0, kTwoPi);
    FlagBoundingBoxForUpdate();
}

void Ellipse::SetLimits(const Point& a, const Point& b) {
    KC_CURVE_struct_s& record = Record("Ellipse::SetLimits - Curve data cannot be NULL");
    const double start = AngleOnWhole(record, a);
    double end = AngleOnWhole(record, b);
    if (end <= start + kAngleTol)
        end += kTwoPi;
    LogForChange();
    StoreAngles(record, start, end);
    FlagBoundingBoxForUpdate();
}

void Ellipse::SetRadii(double r1, double r2) {
    KC_CURVE_struct_s& record = Record("Ellipse::SetRadii - CURVE cannot be NULL");
    LogForChange();
    EVC_conic_s& conic = ConicData(record);
    const Vector direction = MajorDirection(conic);
    conic.majorAxis[0] = r1 * direction.x;
    conic.majorAxis[1] = r1 * direction.y;
    conic.minorAxis[0] = -r2 * direction.y;
    conic.minorAxis[1] = r2 * direction.x;
    conic.radius1 = r1;
    conic.radius2 = r2;
    FlagBoundingBoxForUpdate();
}

Ellipse* Ellipse::CreateExtensionCurve() const {
    if (IsClosed())
        return nullptr;
    double centre[2];
    double radii[2];
    double rotation;
    double start;
    double end;
    AskEllipseData(centre, radii, &rotation, &start, &end);
    auto rest = std::make_unique<Ellipse>(centre, radii, rotation, 0.0, kTwoPi);
    rest->SetLimits(GetEnd(), GetStart());
    rest->UpdateBoundingBox();
    return rest.release();
}

} // namespace Tessera::Geometry
