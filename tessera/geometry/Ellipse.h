// Ellipse - an elliptical arc or full ellipse; its parameter is the eccentric angle in radians.
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
    double Length() const override;
    double Distance(const Point& p) const override;
    double DistanceBounded(const Point& p) const override;
    Point Project(const Point& p) const override;
    bool WithinBounds(const Point& p) const override;
    int AskNumberOfSampledPoints(double tol) const override;
    bool IsZeroLength() const override;
    /// From the whole ellipse's point nearest to a, counter-clockwise to the one nearest to b; a full turn
    /// when they coincide.
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
    /// Fraction of the way from start to end, without wrapping; 0 or 1, whichever end is nearer, outside.
    double GetRelativeParam(double theta) const;
    /// End of the major axis, where a host shows its rotation handle.
    Point GetRotateHandleLocation() const;

    void SetClosed();
    /// Replaces both radii; centre, rotation and angles stay.
    void SetRadii(double r1, double r2);
};

} // namespace Tessera::Geometry
