// Line - a bounded straight segment; parameter 0 at the start, 1 at the end.
#pragma once

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

class Arc;

class TESSERA_API Line : public Curve {
public:
    Line(const Point& start, const Point& end);
    /// angle in radians, counter-clockwise from +x.
    Line(const Point& start, double length, double angle);
    /// Owns c from then on; throws with c untouched when it is null or not a line record.
    explicit Line(KC_CURVE_struct_s* c);
    Line(const Line& other) = default;

    Line* Copy() const override;
    void Transform(double m[3][3]) override;
    bool Replace(Core::TaggedObject* other) override;
    void Intersect(const Curve& other, std::vector<Point>& out) const override;
    double Length() const override;
    double Distance(const Point& p) const override;
    double DistanceBounded(const Point& p) const override;
    Point Project(const Point& p) const override;
    bool WithinBounds(const Point& p) const override;
    int AskNumberOfSampledPoints(double tol) const override;
    bool IsZeroLength() const override;
    /// Ends at the feet of a and b on the infinite line, ordered so that the direction stays.
    void SetLimits(const Point& a, const Point& b) override;
    bool IsClosed() const override { return false; }
    CurveType_e GetType() const override { return CurveType_Line; }
    /// Stretches this line over the end points of all given curves and its own, projected onto it.
    bool Merge(std::unordered_set<Curve*> curves) override;
    void GetInvalidDimensions(std::vector<Dimension::DimensionBase*>& invalid) const override;
    bool IsSameCurve(const Curve* other) const override;
    /// Signed angle to the other line's direction, radians.
    virtual double AngleBetween(const Line& other) const;

    /// End minus start, not normalised.
    Vector GetDirection() const;
    bool IsHorizontal() const;
    bool IsVertical() const;
    bool IsParallel(const Line* other) const;
    Point Bisect() const;
    /// New line from p, turned a quarter counter-clockwise, of the same length; caller deletes.
    Line* Perpendicular(const Point& p) const;
    /// On the infinite line by direction (angular tolerance); the start point itself is not.
    bool OnLine(const Point& p) const;
    bool IsReflectCenterLine() const { return reflectCenterLine_; }
    void SetIsReflectCenterLine(bool value);
    /// Midpoint as it was at construction, the last transform, replacement or UpdateCachedBasePoint; changes
    /// of the limits leave it.
    Point GetCachedBasePoint() const { return cachedBasePoint_; }
    void UpdateCachedBasePoint();

    static bool Colinear(const std::vector<Point>& pts, double tol);
    /// Intersection of the infinite lines p0 p1 and q0 q1; false when parallel or degenerate.
    static bool LineLineIntersect(Point& p0, Point& p1, Point& q0, Point& q1, Point& out);
    /// Squared distance to the infinite line a b; *where -1 degenerate, 0 before a, 2 beyond b, else 1.
    static double PointToLineDistance2(const Point& p, const Point& a, const Point& b, int* where);

private:
    /// The infinite line against the arc's full circle.
    void IntersectCircle(const Arc& arc, std::vector<Point>& out) const;

    bool reflectCenterLine_ = false;
    Point cachedBasePoint_;
};

} // namespace Tessera::Geometry
