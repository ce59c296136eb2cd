#include "tessera/geometry/Spline.h"

#include <algorithm>
#include <cmath>

#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/RecordPtr.h"

// Lengths, distances and intersections come from the kernel; this class reads and writes the definition.

namespace Tessera::Geometry {
namespace {

constexpr double kKnotTol = 1e-10;    // between equal knots and equal weights; no length
constexpr double kTangentSine = 1e-7; // angle across the seam that still counts as smooth; a sine
constexpr int kDefaultSamples = 20;   // fewest samples of a curved spline

KC_CURVE_struct_s* CheckedRecord(KC_CURVE_struct_s* c) {
    if (c == nullptr || c->form != kFormBCurve)
        Core::ThrowMessage("Input CURVE data structure is not of B-curve type");
    return c;
}

/// Poles and knots that describe a curve: ascending knots with an interval to run over.
bool IsDefinition(int numPoles, int order, const double* knots, const double (*poles)[4]) {
    if (order < 2 || numPoles < order || knots == nullptr || poles == nullptr)
        return false;
    for (int i = 1; i < numPoles + order; ++i)
        if (!(knots[i - 1] <= knots[i]))
            return false;
    return knots[order - 1] < knots[numPoles];
}

KC_CURVE_struct_s* MakeRecord(int numPoles, int order, int periodic, double* knots, double (*poles)[4]) {
    int sizes[3] = {numPoles, order, periodic};
    BcurveDataPtr definition(ev091p(sizes, knots, poles));
    KC_CURVE_struct_s* record = definition ? ev09p1(definition.get()) : nullptr;
    if (record != nullptr)
        static_cast<void>(definition.release()); // the record owns it now
    return record;
}

double SquaredDistance(const double p[3], const double q[3]) {
    return (p[0] - q[0]) * (p[0] - q[0]) + (p[1] - q[1]) * (p[1] - q[1]) + (p[2] - q[2]) * (p[2] - q[2]);
}

bool EndsMeet(KC_CURVE_struct_s& record) {
    double limits[2];
    double first[3] = {};
    double last[3] = {};
    evcrvp(&record, limits);
    evcrve(&record, 0, limits[0], first);
    evcrve(&record, 0, limits[1], last);
    return SquaredDistance(first, last) <= EQ_ask_length_squared_tolerance();
}

/// From pole `from` to the next pole in steps of `step` that lies apart from it: the end tangent of a clamped
/// B-curve, also where its derivative vanishes. Zero when all poles coincide.
Vector LegDirection(const BCURVE_DATA& d, int from, int step) {
    for (int i = from + step; i >= 0 && i < d.numPoles; i += step) {
        Vector leg(d.poles[i][0] - d.poles[from][0], d.poles[i][1] - d.poles[from][1]);
        if (leg.Normalize())
            return leg;
    }
    return {};
}

} // namespace

Spline::Spline(int numPoles, int order, int periodic, double* knots, double (*poles)[4]) {
    if (!IsDefinition(numPoles, order, knots, poles))
        Core::ThrowMessage("Spline::Spline - poles, order and knots do not define a B-curve");
    Install(MakeRecord(numPoles, order, periodic, knots, poles), "Spline::Spline - out of memory");
    UpdateBoundingBox();
}

Spline::Spline(KC_CURVE_struct_s* c) {
    Adopt(CheckedRecord(c));
}

Spline* Spline::Copy() const {
    return static_cast<Spline*>(Curve::Copy());
}

// --- Accessors

int Spline::GetDegree() const {
    return Definition(Record("Spline::GetDegree - CURVE cannot be NULL")).order - 1;
}

int Spline::GetNumPoles() const {
    return Definition(Record("Spline::GetNumPoles - CURVE cannot be NULL")).numPoles;
}

int Spline::GetNumKnots() const {
    // Hosts match on this text, which names another operation.
    const BCURVE_DATA& d = Definition(Record("Spline::GetNumPoles - CURVE cannot be NULL"));
    return d.numPoles + d.order;
}

int Spline::GetNumSegments() const {
    const BCURVE_DATA& d = Definition(Record("Spline::GetNumSegments - CURVE cannot be NULL"));
    return d.numPoles - d.order + 1;
}

void Spline::AskSplineData(int& numPoles, int& order, int& periodic, std::vector<double>& knots,
                           std::vector<Point*>& poles) const {
    const BCURVE_DATA& d = Definition(Record("Spline::AskSplineData - CURVE cannot be NULL"));
    numPoles = d.numPoles;
    order = d.order;
    periodic = d.periodic;
    knots.insert(knots.end(), d.knots, d.knots + d.numPoles + d.order);
    poles.reserve(poles.size() + static_cast<std::size_t>(d.numPoles)); // growing must not lose a new point
    for (int i = 0; i < d.numPoles; ++i)
        poles.push_back(new Point(d.poles[i]));
}

bool Spline::IsClosed() const {
    KC_CURVE_struct_s& record = Record("Spline::IsClosed - CURVE cannot be NULL");
    return IsPeriodic() || EndsMeet(record);
}

bool Spline::IsG1Closed() const {
    KC_CURVE_struct_s& record = Record("Spline::IsG1Closed - CURVE cannot be NULL");
    if (!IsClosed())
        return false;
    // The whole range comes back clamped at both ends, so that the outer legs of the poles are the tangents.
    const double whole[2] = {0.0, 1.0};
    const RecordPtr clamped(em0941(&record, whole));
    if (!clamped)
        Core::ThrowMessage("Spline::IsG1Closed - out of memory");
    const BCURVE_DATA& d = Definition(*clamped);
    const Vector leaving = LegDirection(d, 0, 1);
    const Vector arriving = -1.0 * LegDirection(d, d.numPoles - 1, -1);
    return EndsMeet(*clamped) && leaving.Dot(arriving) > 0.0 &&
           std::fabs(leaving.Cross(arriving)) <= kTangentSine;
}

// --- Sampling

int Spline::AskNumberOfSampledPoints(int minimum) const {
    if (curve_ == nullptr)
        return 0;
    const BCURVE_DATA& d = Definition(*curve_);
    if (d.order == 2)
        return d.numPoles;
    return std::max(2 * d.order * (d.numPoles - d.order + 1), minimum);
}

int Spline::AskNumberOfSampledPoints(double /*tol*/) const {
    return AskNumberOfSampledPoints(kDefaultSamples);
}

void Spline::AskSampledParameters(int n, std::vector<double>& params) const {
    if (curve_ == nullptr || n <= 0)
        return;
    const BCURVE_DATA& d = Definition(*curve_);
    const std::size_t before = params.size();
    params.resize(before + static_cast<std::size_t>(n));
    BCEV_sample_Greville_parameters(d.numPoles, d.order, d.knots, n, params.data() + before);
}

void Spline::CreatePolylinePoints(int n, std::vector<Point>& pts) const {
    std::vector<double> params;
    AskSampledParameters(n, params);
    for (const double t : params)
        pts.push_back(PointAt(t));
}

// --- Against other curves

bool Spline::IsSameCurve(const Curve* other) const {
    if (other == this)
        return true;
    if (other == nullptr || other->GetType() != CurveType_Spline)
        return false;
    const BCURVE_DATA& d = Definition(Record("Spline::IsSameCurve - CURVE cannot be NULL"));
    const BCURVE_DATA& e =
        Definition(static_cast<const Spline*>(other)->Record("Spline::IsSameCurve - CURVE cannot be NULL"));
    if (d.numPoles != e.numPoles || d.order != e.order || d.periodic != e.periodic)
        return false;
    for (int i = 0; i < d.numPoles; ++i)
        if (!(SquaredDistance(d.poles[i], e.poles[i]) <= EQ_ask_length_squared_tolerance() &&
              std::fabs(d.poles[i][3] - e.poles[i][3]) <= kKnotTol))
            return false;
    return std::equal(d.knots, d.knots + d.numPoles + d.order, e.knots,
                      [](double s, double t) { return std::fabs(s - t) <= kKnotTol; });
}

void Spline::Intersect(const Curve& other, std::vector<Point>& out) const {
    KernelIntersect(other, out, "Spline::Intersect: Unsupported yet");
}

// --- Changes

void Spline::SetLimits(const Point& /*a*/, const Point& /*b*/) {}

void Spline::SetPoles(const std::vector<Point*>& poles) {
    LogForChange();
    KC_CURVE_struct_s& record = Record("Spline::SetPoles - CURVE data cannot be NULL");
    BCURVE_DATA& d = Definition(record);
    if (poles.size() != static_cast<std::size_t>(d.numPoles))
        Core::ThrowMessage("Spline::SetPoles - cannot change the number of poles");
    for (int i = 0; i < d.numPoles; ++i) {
        const Point* pole = poles[i];
        if (pole == nullptr || pole->Distance2(Point(d.poles[i])) <= EQ_ask_length_squared_tolerance())
            continue;
        d.poles[i][0] = pole->x;
        d.poles[i][1] = pole->y;
    }
    BCEV_reset_all_bez_pointers(&BCurveData(record));
    FlagBoundingBoxForUpdate();
}

} // namespace Tessera::Geometry
