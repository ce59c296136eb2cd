// Spline - a B-spline curve; its parameter runs from 0 to 1, whatever its knots.
//
// Poles   positions (x, y, z) with a separate weight; a periodic curve holds its wrapped poles too.
// Errors  char* texts ("Spline::GetDegree - CURVE cannot be NULL" and the like) where there is no record.
#pragma once

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

class TESSERA_API Spline : public Curve {
public:
    /// Copies numPoles + order knots and numPoles poles (x, y, z, weight). Throws for an order below 2, fewer
    /// poles than the order, and knots that descend or leave no interval.
    Spline(int numPoles, int order, int periodic, double* knots, double (*poles)[4]);
    /// Owns c from then on; throws with c untouched when it is null or not a B-curve record.
    explicit Spline(KC_CURVE_struct_s* c);
    Spline(const Spline& other) = default;

    Spline* Copy() const override;
    void Intersect(const Curve& other, std::vector<Point>& out) const override;
    double Length() const override { return KernelLength(); }
    double Distance(const Point& p) const override { return KernelDistance(p); }
    double DistanceBounded(const Point& p) const override { return KernelDistanceBounded(p); }
    Point Project(const Point& p) const override { return KernelProject(p); }
    bool WithinBounds(const Point& /*p*/) const override { return true; }
    /// Ignores the tolerance: AskNumberOfSampledPoints(20).
    int AskNumberOfSampledPoints(double tol) const override;
    void CreatePolylinePoints(int n, std::vector<Point>& pts) const override;
    /// Does nothing: end points do not limit a spline.
    void SetLimits(const Point& a, const Point& b) override;
    /// Periodic, or the ends coincide within the length tolerance.
    bool IsClosed() const override;
    CurveType_e GetType() const override { return CurveType_Spline; }
    bool IsSameCurve(const Curve* other) const override;
    /// Appends n Greville-based parameters, ascending from 0 to 1.
    virtual void AskSampledParameters(int n, std::vector<double>& params) const;

    /// The poles of a poly-line, else 2 x order x segments, at least the minimum; 0 without a record.
    int AskNumberOfSampledPoints(int minimum) const;
    int GetDegree() const;
    int GetNumPoles() const;
    int GetNumKnots() const;
    int GetNumSegments() const;
    /// Appends all knots and one new Point per pole (caller frees with Point::DeletePoints).
    void AskSplineData(int& numPoles, int& order, int& periodic, std::vector<double>& knots,
                       std::vector<Point*>& poles) const;
    /// Closed with the same tangent direction on both sides of the seam (a sine of 1e-7); lengths may differ.
    bool IsG1Closed() const;
    /// Overwrites x and y of the poles that moved by more than the length tolerance; null poles stay. Throws
    /// when the count differs. Reports the change even then.
    void SetPoles(const std::vector<Point*>& poles);
};

} // namespace Tessera::Geometry
