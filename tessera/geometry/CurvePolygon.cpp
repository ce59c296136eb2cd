#include <algorithm>
#include <cmath>

#include "tessera/core/NumericHelpers.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/CRV_TOPOL.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/SmArray.h"

// Curves against polygons, exactly: every polygon edge is intersected with the bounded curve, so a bulge that
// leaves the polygon between two samples, or a needle of the polygon that pierces the curve, is found. A
// curve that meets no edge lies wholly on one side, and any of its points tells on which.

namespace Tessera::Geometry {
namespace {

constexpr double kMinOverlap = 1e-9;   // shortest stretch along an edge, as a fraction of the edge
constexpr double kEdgeAngleTol = 1e-9; // between an edge and a curve that runs along it; radians

struct Edge {
    Point a, b;
};

bool IsPolygon(int n, const double* xs, const double* ys) {
    return n >= 3 && xs != nullptr && ys != nullptr;
}

double EdgeDistance(const Edge& edge, const Point& p) {
    const Point d = edge.b - edge.a;
    const double lengthSq = d.Dot(d);
    const double s = lengthSq > 0.0 ? std::clamp((p - edge.a).Dot(d) / lengthSq, 0.0, 1.0) : 0.0;
    return p.Distance(edge.a + s * d);
}

bool BoxesApart(const Edge& edge, const XYBox& box, double tol) {
    return std::fmax(edge.a.x, edge.b.x) < box.min.x - tol ||
           std::fmin(edge.a.x, edge.b.x) > box.max.x + tol ||
           std::fmax(edge.a.y, edge.b.y) < box.min.y - tol || std::fmin(edge.a.y, edge.b.y) > box.max.y + tol;
}

bool MeetsSegment(const Edge& edge, const Edge& other, double tol) {
    const Point d = edge.b - edge.a;
    const Point e = other.b - other.a;
    const bool edgeSplits = (d.Cross(other.a - edge.a) > 0.0) != (d.Cross(other.b - edge.a) > 0.0);
    const bool otherSplits = (e.Cross(edge.a - other.a) > 0.0) != (e.Cross(edge.b - other.a) > 0.0);
    if (edgeSplits && otherSplits)
        return true;
    return EdgeDistance(edge, other.a) <= tol || EdgeDistance(edge, other.b) <= tol ||
           EdgeDistance(other, edge.a) <= tol || EdgeDistance(other, edge.b) <= tol;
}

/// Both crossings of the edge with the full circle, the edge's point nearest to the centre (a touch) and the
/// edge's ends are the only places where the edge can come within tol of the arc, besides the arc's ends.
bool MeetsArc(const Edge& edge, const Arc& arc, double tol) {
    const Point centre = arc.GetCenter();
    const double radius = arc.GetRadius();
    const Point d = edge.b - edge.a;
    const double lengthSq = d.Dot(d);
    const double nearest = lengthSq > 0.0 ? (centre - edge.a).Dot(d) / lengthSq : 0.0;
    const double height = (edge.a + nearest * d).Distance(centre);
    const double halfChordSq = (radius - height) * (radius + height);
    const double reach = lengthSq > 0.0 && halfChordSq > 0.0 ? std::sqrt(halfChordSq / lengthSq) : 0.0;
    for (const double s : {nearest - reach, nearest, nearest + reach, 0.0, 1.0}) {
        const Point p = edge.a + std::clamp(s, 0.0, 1.0) * d;
        if (std::fabs(p.Distance(centre) - radius) <= tol && arc.DistanceBounded(p) <= tol)
            return true;
    }
    return EdgeDistance(edge, arc.GetStart()) <= tol || EdgeDistance(edge, arc.GetEnd()) <= tol;
}

bool MeetsRecord(const Edge& edge, const Curve& curve, double tol) {
    EVC_line_s data = {{edge.a.x, edge.a.y, 0.0}, {edge.b.x - edge.a.x, edge.b.y - edge.a.y, 0.0}};
    KC_CURVE_struct_s line = {&data, kFormLine, 0.0, 1.0, 0};
    int count = 0;
    CRV_TOPOL_hit_t* hits = nullptr;
    const int status = CRV_TOPOL_intersect(&line, CRV_TOPOL_BOUNDED, curve.AskCurveData(), CRV_TOPOL_BOUNDED,
                                           tol, &count, &hits);
    const SmArray<CRV_TOPOL_hit_t> owner(hits);
    if (status != 0)
        Core::ThrowMessage("Curve::IsCrossPolygon - intersections could not be found");
    if (count > 0)
        return true;
    if (curve.GetType() != CurveType_Spline)
        return false;
    // A straight stretch of a spline along the edge gives no single points.
    CRV_TOPOL_state_t state = CRV_TOPOL_SEPARATE;
    return CRV_TOPOL_overlap(&line, curve.AskCurveData(), tol, kEdgeAngleTol, kMinOverlap, &state, nullptr,
                             nullptr) == 0 &&
           state != CRV_TOPOL_SEPARATE;
}

bool MeetsEdge(const Edge& edge, const Curve& curve, double tol) {
    switch (curve.GetType()) {
    case CurveType_Line:
        return MeetsSegment(edge, {curve.GetStart(), curve.GetEnd()}, tol);
    case CurveType_Arc:
        return MeetsArc(edge, static_cast<const Arc&>(curve), tol);
    default:
        return MeetsRecord(edge, curve, tol);
    }
}

bool MeetsBorder(const Curve& curve, int n, const double* xs, const double* ys) {
    XYBox box;
    if (!curve.AskXYBox(box))
        return false;
    const double tol = EQ_ask_length_tolerance();
    for (int i = 0, j = n - 1; i < n; j = i++) {
        const Edge edge = {Point(xs[j], ys[j]), Point(xs[i], ys[i])};
        // Repeated vertices make empty edges, whose point belongs to the neighbours too.
        if (edge.a.Distance2(edge.b) > 0.0 && !BoxesApart(edge, box, tol) && MeetsEdge(edge, curve, tol))
            return true;
    }
    return false;
}

} // namespace

bool Curve::IsInPolygon(int n, double* xs, double* ys) {
    if (curve_ == nullptr || !IsPolygon(n, xs, ys) || MeetsBorder(*this, n, xs, ys))
        return false;
    const Point start = GetStart();
    return Core::PointInPolygon(start.x, start.y, n, xs, ys);
}

bool Curve::IsCrossPolygon(int n, double* xs, double* ys) {
    return curve_ != nullptr && IsPolygon(n, xs, ys) && MeetsBorder(*this, n, xs, ys);
}

} // namespace Tessera::Geometry
