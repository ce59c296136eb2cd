// Spline - a B-spline curve; its parameter runs from 0 to 1.
#pragma once

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

class TESSERA_API Spline : public Curve {
public:
    /// Copies numPoles + order knots and numPoles poles (x, y, z, weight).
    Spline(int numPoles, int order, int periodic, double* knots, double (*poles)[4]);
    /// Owns c from then on; throws with c untouched when it is null or not a B-curve record.
    explicit Spline(KC_CURVE_struct_s* c);
    Spline(const Spline& other) = default;

    Spline* Copy() const override;
    void Intersect(const Curve& other, std::vector<Point>& out) const override;
    double Length() const override;
    double Distance(const Point& p) const override;
    double DistanceBounded(const Point& p) const override;
    Point Project(const Point& p) const override;
    bool WithinBounds(const Point& p) const override;
    /// Ignores the tolerance: AskNumberOfSampledPoints(20).
    int AskNumberOfSampledPoints(double tol) const override;
    void CreatePolylinePoints(int n, std::vector<Point>& pts) const override;
    void SetLimits(const Point& a, const Point& b) override;
    bool IsClosed() const override;
    CurveType_e GetType() const override { return CurveType_Spline; }
    bool IsSameCurve(const Curve* other) const override;
    /// Appends n Greville-based parameters, ascending from 0 to 1.
    virtual void AskSampledParameters(int n, std::vector<double>& params) const;

    int AskNumberOfSampledPoints(int minimum) const;
    int GetDegree() const;
    int GetNumPoles() const;
    int GetNumKnots() const;
    int GetNumSegments() const;
    /// Appends all knots and one new Point per pole (caller frees with Point::DeletePoints).
    void AskSplineData(int& numPoles, int& order, int& periodic, std::vector<double>& knots,
                       std::vector<Point*>& poles) const;
    bool IsG1Closed() const;
    /// Overwrites x and y of the poles that moved; the count must match.
    void SetPoles(const std::vector<Point*>& poles);
};

} // namespace Tessera::Geometry
