// Ellipse - an elliptical arc or full ellipse; its parameter is the eccentric angle in radians: the point at
// theta is centre + cos theta major axis + sin theta minor axis.
//
// Frame   the minor axis stands a quarter turn ahead of the major one; mirrored records are turned into it.
// Errors  char* texts ("Ellipse::AskCenter: Invalid Ellipse object" and the like) where there is no record.
// Change  every change is reported before it is stored.
#pragma once

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

class TESSERA_API Ellipse : public Curve {
public:
    /// radii[0] along (cos rotation, sin rotation); angles as given.
    Ellipse(double centre[2], double radii[2], double rotation, double start, double end);
    /// Owns c, which must be a conic record: the form is not checked.
    explicit Ellipse(KC_CURVE_struct_s* c);
    Ellipse(const Ellipse& other) = default;

    Ellipse* Copy() const override;
    void Transform(double m[3][3]) override;
    void Intersect(const Curve& other, std::vector<Point>& out) const override;
    double Length() const override { return KernelLength(); }
    double Distance(const Point& p) const override { return KernelDistance(p); }
    double DistanceBounded(const Point& p) const override { return KernelDistanceBounded(p); }
    Point Project(const Point& p) const override { return KernelProject(p); }
    bool WithinBounds(const Point& /*p*/) const override { return true; }
    int AskNumberOfSampledPoints(double tol) const override;
    /// Both radii, or the sweep in radians, within the length tolerance.
    bool IsZeroLength() const override;
    /// From the angle nearest to a to that nearest to b, on the whole ellipse; end angle above start angle,
    /// so that equal ones make a full turn.
    void SetLimits(const Point& a, const Point& b) override;
    bool IsClosed() const override { return IsPeriodic(); }
    CurveType_e GetType() const override { return CurveType_Ellipse; }
    /// The complementary piece that continues this arc back to its start; null for a closed ellipse.
    Ellipse* CreateExtensionCurve() const override;
    bool IsSameCurve(const Curve* other) const override;

    Point AskCenter() const;
    /// Unit major direction; (0, 0) when the first radius vanishes.
    Vector AskDirection() const;
    void AskRadii(double& r1, double& r2) const;
    /// Fills all five (rotation in [0, 2 pi)); returns whether the ellipse is closed.
    bool AskEllipseData(double centre[2], double radii[2], double* rotation, double* start,
                        double* end) const;
    /// Fraction of the sweep at theta; 0 or 1, by the nearer end, outside. Full turns are not taken off.
    double GetRelativeParam(double theta) const;
    /// End of the major axis, where a host shows its rotation handle.
    Point GetRotateHandleLocation() const;

    void SetClosed();
    /// Replaces both radii; centre, rotation and angles stay.
    void SetRadii(double r1, double r2);
};

} // namespace Tessera::Geometry
