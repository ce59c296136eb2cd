// Arc - a circular arc or full circle; its parameter is the angle in radians, counter-clockwise from +x.
//
// Frame    the record's axes stand unturned, (r, 0) and (0, r): records that arrive turned or mirrored and
//          transformed arcs are brought into that frame, so that angles and evaluation agree.
// Wrapped  an arc whose start angle exceeds its end angle (only the constructor with given angles makes it)
//          evaluates the stretch from end to start; the relative parameters speak of start to end + 2 pi.
// Errors   char* texts ("Arc::GetCenter - CURVE cannot be NULL" and the like) where there is no record.
// Change   every change is reported before it is stored; SetLimits that closes the circle reports twice.
#pragma once

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

class TESSERA_API Arc : public Curve {
public:
    /// Counter-clockwise from start to end; the radius is the distance from centre to start.
    Arc(const Point& start, const Point& end, const Point& centre);
    /// Full circle.
    Arc(const Point& centre, double radius);
    /// Angles as given.
    Arc(double centre[3], double radius, double start, double end);
    /// Owns c from then on; throws with c untouched when it is null or not an arc record.
    explicit Arc(KC_CURVE_struct_s* c);
    Arc(const Arc& other) = default;

    Arc* Copy() const override;
    void Transform(double m[3][3]) override;
    void Intersect(const Curve& other, std::vector<Point>& out) const override;
    double Length() const override;
    double Distance(const Point& p) const override;
    double DistanceBounded(const Point& p) const override;
    Point Project(const Point& p) const override;
    /// By the angle of p alone, ends included to 1e-10 rad; always true for a circle.
    bool WithinBounds(const Point& p) const override;
    int AskNumberOfSampledPoints(double tol) const override;
    bool IsZeroLength() const override; ///< radius or sweep (radians) within the length tolerance
    /// From the angle of a counter-clockwise to that of b. Equal angles close an arc of at least half a turn
    /// and leave nothing of a smaller one.
    void SetLimits(const Point& a, const Point& b) override;
    bool IsClosed() const override { return IsPeriodic(); }
    CurveType_e GetType() const override { return CurveType_Arc; }
    /// Union with the concentric arcs of equal radius in the set, gaps between them bridged except the
    /// largest; others are ignored. False when there is none. The given arcs are not changed.
    bool Merge(std::unordered_set<Curve*> curves) override;
    bool IsSameCurve(const Curve* other) const override;
    virtual void SetCenter(const Point& c);

    Point GetCenter() const;
    double GetRadius() const;
    double GetStartAngle() const;
    double GetEndAngle() const;
    double GetAngleFromPoint(const Point& p) const;
    Point GetPointFromAngle(double theta) const;
    Point GetPointFromArcDistance(double s) const;
    double GetMidParam() const;
    /// Fraction of the sweep at theta; 0 or 1, by the nearer end, outside. A wrapped arc lifts theta by 2 pi
    /// always, also where it is on the first stretch.
    double GetRelativeParam(double theta) const;
    /// Angle at the fraction u of the sweep; 0 for u outside [0, 1] by 1e-10 or more.
    double GetParamFromRelativeParam(double u) const;
    bool IsMajorArc() const; ///< more than half a turn

    void SetClosed();
    /// Centre and angles stay.
    void SetRadius(double r);

    static double ComputeAngleFromPoint(const Point& p, const Point& centre);
    /// Centre of the circle through three points. Throws "Cannot create an arc from colinear points" and
    /// "Arc::FindCenter: center could not be found".
    static Point FindCenter(const Point& a, const Point& b, const Point& c);
    /// Arc with ends a and c through b, running counter-clockwise; caller deletes.
    /// Throws as FindCenter.
    static Arc* FromThreePoints(const Point& a, const Point& b, const Point& c);
    /// Chords whose sagitta stays within tol; 0 when tol / radius <= 1e-7, 1 when tol exceeds the diameter.
    static int ComputeNumberOfDisplaySegments(double radius, double sweep, double tol);

private:
    /// The two full circles.
    void IntersectCircle(const Arc& other, std::vector<Point>& out) const;
};

} // namespace Tessera::Geometry
