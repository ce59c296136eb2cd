#include "tessera/geometry/internal/RecordFrame.h"

#include <cmath>

#include "tessera/geometry/Vector.h"
#include "tessera/geometry/internal/Angles.h"
#include "tessera/geometry/internal/RecordData.h"

// A mirror turns the sense of the parameter: the point at theta appears at -theta in the right-handed frame,
// so start and end change places to keep the parameter increasing along the curve.

namespace Tessera::Geometry {
namespace {

constexpr int kEllipseType = 2;                // conic type of ellipses
constexpr double kPerpendicularCosine = 1e-12; // axes more oblique than this are sheared; a cosine

/// Writes angles and header; the closed flag stays, whatever rounding did to the span.
template <class Data>
void StoreAngles(KC_CURVE_struct_s& record, Data& data, double start, double end) {
    data.startAngle = start;
    data.endAngle = end;
    record.start = start;
    record.span = end - start;
}

void Store(double axis[3], const Vector& v) {
    axis[0] = v.x;
    axis[1] = v.y;
    axis[2] = 0.0;
}

/// Parameter shift that makes two conjugate axes principal; at most an eighth of a turn, so that each axis
/// keeps its part.
double PrincipalShift(const Vector& major, const Vector& minor) {
    const double difference = major.LengthSq() - minor.LengthSq();
    const double shift = 0.5 * std::atan2(2.0 * major.Dot(minor), std::fabs(difference));
    return difference < 0.0 ? -shift : shift;
}

} // namespace

void RestoreArcFrame(KC_CURVE_struct_s& record) {
    EVC_arc_s& arc = ArcData(record);
    const Vector x(arc.xAxis);
    const Vector y(arc.yAxis);
    const double turn = std::atan2(x.y, x.x);
    const bool mirrored = x.Cross(y) < 0.0;
    if (turn == 0.0 && !mirrored)
        return;
    const double start = mirrored ? turn - arc.endAngle : arc.startAngle + turn;
    const double end = mirrored ? turn - arc.startAngle : arc.endAngle + turn;
    // Repeated turns must not wind the angles up.
    const double wound = std::trunc(start / kTwoPi) * kTwoPi;
    StoreAngles(record, arc, start - wound, end - wound);
    Store(arc.xAxis, Vector(arc.radius, 0.0));
    Store(arc.yAxis, Vector(0.0, arc.radius));
}

void RestoreConicFrame(KC_CURVE_struct_s& record) {
    if (record.form != kFormConic || ConicData(record).conicType != kEllipseType)
        return;
    EVC_conic_s& conic = ConicData(record);
    Vector major(conic.majorAxis);
    Vector minor(conic.minorAxis);
    double start = conic.startAngle;
    double end = conic.endAngle;
    const double oblique = std::fabs(major.Dot(minor));
    const bool sheared = oblique > kPerpendicularCosine * major.Length() * minor.Length();
    if (!sheared && !(major.Cross(minor) < 0.0))
        return;
    if (sheared) {
        const double shift = PrincipalShift(major, minor);
        const Vector principal = std::cos(shift) * major + std::sin(shift) * minor;
        minor = std::cos(shift) * minor - std::sin(shift) * major;
        major = principal;
        start -= shift;
        end -= shift;
    }
    if (major.Cross(minor) < 0.0) {
        minor = -1.0 * minor;
        const double mirroredStart = -end;
        end = -start;
        start = mirroredStart;
    }
    const double wound = std::floor(start / kTwoPi) * kTwoPi;
    StoreAngles(record, conic, start - wound, end - wound);
    conic.radius1 = major.Length();
    conic.radius2 = minor.Length();
    Store(conic.majorAxis, major);
    Store(conic.minorAxis, minor);
}

} // namespace Tessera::Geometry
