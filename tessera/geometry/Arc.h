// Arc - a circular arc or full circle; its parameter is the angle in radians, counter-clockwise from +x.
//
// Frame      the record's axes stand unturned; transforms and records from elsewhere are brought into that
//            frame, so that centre, radius and angles rebuild the curve that is evaluated.
// Wrapped    an arc given with start > end evaluates over [end, start], while the relative parameters read it
//            from start to end + 2 pi. Only the constructor with angles makes one.
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
    bool WithinBounds(const Point& p) const override;
    int AskNumberOfSampledPoints(double tol) const override;
    bool IsZeroLength() const override;
    /// Counter-clockwise from the angle of a to that of b, radius and centre kept; coincident angles close an
    /// arc of at least half a turn.
    void SetLimits(const Point& a, const Point& b) override;
    bool IsClosed() const override { return IsPeriodic(); }
    CurveType_e GetType() const override { return CurveType_Arc; }
    /// Union with the concentric arcs of equal radius in the set; others are ignored.
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
    /// Fraction of the way from start to end; 0 or 1, whichever end is nearer, outside.
    double GetRelativeParam(double theta) const;
    /// Inverse of GetRelativeParam; 0 for u outside [0, 1].
    double GetParamFromRelativeParam(double u) const;
    bool IsMajorArc() const;

    void SetClosed();
    void SetRadius(double r);

    static double ComputeAngleFromPoint(const Point& p, const Point& centre);
    /// Throws "Cannot create an arc from colinear points" or "Arc::FindCenter: center could not be found".
    static Point FindCenter(const Point& a, const Point& b, const Point& c);
    /// Arc with ends a and c through b, running counter-clockwise; caller deletes.
    static Arc* FromThreePoints(const Point& a, const Point& b, const Point& c);
    /// Chords whose sagitta stays within tol; 0 when tol / radius <= 1e-7.
    static int ComputeNumberOfDisplaySegments(double radius, double sweep, double tol);

private:
    /// The two full circles.
    void IntersectCircle(const Arc& other, std::vector<Point>& out) const;
};

} // namespace Tessera::Geometry
