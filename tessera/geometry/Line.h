// Line - a bounded straight segment; parameter 0 at the start, 1 at the end.
//
// Units   model units and radians. t below is the length tolerance.
// Errors  char* texts where there is no record ("Line::GetDirection - CURVE is NULL" and the like); lines
//         without length never throw: they are parallel to nothing and meet nothing, their Distance is 0.
// Change  SetLimits, Merge, Transform and SetIsReflectCenterLine report before they store.
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
    /// Not before the start, and no farther from it than the length (1e-10 to spare); says nothing of how far
    /// p lies beside the line.
    bool WithinBounds(const Point& p) const override;
    int AskNumberOfSampledPoints(double tol) const override;
    bool IsZeroLength() const override; ///< both components of the direction within t
    /// Ends at the feet of a and b, in the order that keeps the direction. The cached base point stays.
    void SetLimits(const Point& a, const Point& b) override;
    bool IsClosed() const override { return false; }
    CurveType_e GetType() const override { return CurveType_Line; }
    /// Stretches this line over the end points of all given curves and its own, projected onto it; false when
    /// they all coincide. The given curves are not changed; nulls are passed over.
    bool Merge(std::unordered_set<Curve*> curves) override;
    void GetInvalidDimensions(std::vector<Dimension::DimensionBase*>& invalid) const override;
    bool IsSameCurve(const Curve* other) const override;
    /// Signed angle to the other line's direction, radians.
    virtual double AngleBetween(const Line& other) const;

    /// End minus start, not normalised.
    Vector GetDirection() const;
    bool IsHorizontal() const; ///< ends' y within t
    bool IsVertical() const;   ///< ends' x within t
    /// Either way round, to a sine of 1e-7.
    bool IsParallel(const Line* other) const;
    Point Bisect() const;
    /// New line from p, turned a quarter counter-clockwise, of the same length; caller deletes.
    Line* Perpendicular(const Point& p) const;
    /// On the infinite line, either side: the cosine of the angle at the start is 1 within 1e-10. The start
    /// itself is not on the line; test end points apart.
    bool OnLine(const Point& p) const;
    bool IsReflectCenterLine() const { return reflectCenterLine_; }
    void SetIsReflectCenterLine(bool value);
    /// The midpoint as it was at construction, the last Transform, Replace or UpdateCachedBasePoint.
    Point GetCachedBasePoint() const { return cachedBasePoint_; }
    void UpdateCachedBasePoint();

    /// No inner point lies farther than tol from the line through the first and the last; true below 3
    /// points.
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
