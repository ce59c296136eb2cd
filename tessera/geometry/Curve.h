// Curve - abstract base of Line, Arc, Ellipse and Spline: owns one curve record, caches its box, lists the
// dimensions attached to it, and answers everything the kernel can answer without knowing the form.
//
// Units      model units; parameters as the record has them (angles in radians, else 0 to 1).
// Errors     thrown as char* texts (see ThrowMessage); a failed call leaves the curve as it was.
// Ownership  functions that return a new curve hand it to the caller, who deletes it. Dimensions are
//            referred to, never owned; curves and their dimensions may be destroyed in any order.
#pragma once

#include <unordered_set>
#include <vector>

#include "tessera/core/DisplayableObject.h"
#include "tessera/core/Export.h"
#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/BoundingBox.h"
#include "tessera/geometry/CurveType.h"
#include "tessera/geometry/Point.h"
#include "tessera/geometry/Vector.h"
#include "tessera/geometry/XYBox.h"
#include "tessera/kernel/CRV_TOPOL.h"
#include "tessera/kernel/CurveRecord.h"

namespace Tessera::Dimension {
class DimensionBase;
}

namespace Tessera::Geometry {

class Spline;
class Stroke;

class TESSERA_API Curve : public Core::DisplayableObject {
public:
    Curve();
    /// Own record, new identifier, empty dimension list, no group.
    Curve(const Curve& other);
    Curve& operator=(const Curve&) = delete;

    // Slot order is part of the binary interface.
    ~Curve() override;
    int AskClass() const override { return Core::ClassID_Curve; }
    /// CopyCurveOnly plus the finalized dimensions, shared.
    Curve* Copy() const override;
    void Transform(double m[3][3]) override;
    Curve* DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const override;
    /// Takes a copy of another curve's record and state; false when null or of another kind. The list of
    /// dimensions stays: they go on measuring this curve.
    bool Replace(Core::TaggedObject* other) override;
    bool AskXYBox(XYBox& box) const override;
    bool IsInPolygon(int n, double* xs, double* ys) override;
    /// Crosses or touches the polygon's border; a curve wholly inside does not.
    bool IsCrossPolygon(int n, double* xs, double* ys) override;

    /// Appends the intersections of the carriers (infinite lines, full circles and ellipses).
    virtual void Intersect(const Curve& other, std::vector<Point>& out) const = 0;
    virtual double Length() const = 0;
    virtual double Distance(const Point& p) const = 0;        ///< to the carrier
    virtual double DistanceBounded(const Point& p) const = 0; ///< to the bounded curve
    virtual Point Project(const Point& p) const = 0;          ///< onto the carrier
    virtual bool WithinBounds(const Point& p) const = 0;
    virtual Point GetClosestPoint(const Point& p) const; ///< on the bounded curve
    virtual int AskNumberOfSampledPoints(double tol) const = 0;
    virtual bool IsZeroLength() const;
    /// Appends n >= 2 positions at evenly spaced parameters.
    virtual void CreatePolylinePoints(int n, std::vector<Point>& pts) const;
    /// Appends the intersections within both curves' limits; a touch, shared tangent ends included, once.
    virtual void IntersectBounded(const Curve& other, std::vector<Point>& out) const;
    virtual void SetLimits(const Point& a, const Point& b) = 0;
    virtual Point GetStart() const;
    virtual Point GetEnd() const;
    virtual Point GetMidPoint() const;
    /// Centre + f x major (minor) axis vector; of an arc the axes along +x and +y. Throws for other kinds.
    virtual Point GetMajorRadiusPoint(double f) const;
    virtual Point GetMinorRadiusPoint(double f) const;
    virtual Point GetPointAtParameter(double t, bool unchecked) const;
    virtual bool EvaluateAtParameter(double t, Point& point, Vector& slope) const;
    virtual bool GetParametersAtPoint(const Point& p, int flag, double& t, Point& foot,
                                      Vector& tangent) const;
    virtual bool IsPeriodic() const;
    virtual bool IsClosed() const = 0;
    virtual CurveType_e GetType() const = 0;
    virtual bool Merge(std::unordered_set<Curve*> curves);
    virtual void GetInvalidDimensions(std::vector<Dimension::DimensionBase*>& invalid) const;
    virtual Curve* CreateExtensionCurve() const;
    virtual bool IsSameCurve(const Curve* other) const = 0;

    // --- Record and box
    /// Reports the change, frees the old record and takes ownership of c.
    void SetCurveData(KC_CURVE_struct_s* c);
    KC_CURVE_struct_s* AskCurveData() const { return curve_; }
    void AskRange(double limits[2]) const;
    BoundingBox AskBoundingBox() const { return box_; }
    void UpdateBoundingBox() const;
    void FlagBoundingBoxForUpdate() { boxStale_ = true; }
    BoundingBox AskBoundingBoxOfRange(double range[2]) const;

    // --- Kernel services
    /// New curve of the same kind over range[0] < range[1], with this curve's display data.
    Curve* Extract(double range[2]) const;
    /// Null without a record or when the conversion fails.
    Spline* ConvertToSpline() const;
    Curve* CopyCurveOnly() const;
    /// Takes a copy of another curve's geometry; false when null or of another kind.
    bool CopyCurveData(Curve* other);
    double CurveLength(double range[2]) const;
    /// Signed curvature, 1 / model unit; false where it does not exist.
    bool ComputeCurvature(double t, double* k) const;
    /// Extract in place: identifier kept. False when the range is invalid.
    bool Trim(double range[2]);
    /// Intersections of the bounded curves: *n parameters on each and the points; the lists are emptied
    /// first. True when the search went through, also with *n = 0. tol <= 0 means the length tolerance.
    bool IntersectCurve(const Curve& other, int* n, std::vector<double>& params1,
                        std::vector<double>& params2, std::vector<Point>& points, double tol) const;
    /// Common stretch with another curve (see CRV_TOPOL_overlap for tolerances and states); range[0..1] in
    /// this curve's parameters; *common (may be null) receives the stretch as a new curve or null.
    bool IsOverlapping(Curve* other, double distTol, double angTolRad, double paramTol,
                       CRV_TOPOL_state_t* state, double range[], Curve** common) const;
    bool IsPointOnObject(const Point& p, double tol) const;
    bool IsConnected(Curve* other) const;
    /// Stroke of n samples between the parameters t0 and t1, evenly by arc length when byLength, else by
    /// parameter; caller deletes.
    Stroke* CreateStroke(double t0, double t1, int n, bool byLength) const;

    // --- Dimensions (bodies that need the dimension model stand in tessera/dimension/CurveDimensions.cpp)
    void AddDimension(Dimension::DimensionBase* d);
    bool RemoveDimension(Dimension::DimensionBase* d);
    void ClearDimensions();
    bool HasDimension(Dimension::DimensionBase* d) const;
    int GetNumDimensions() const;
    void GetDimensions(std::vector<Dimension::DimensionBase*>& list) const;
    void FindDimensions(int type, std::vector<Dimension::DimensionBase*>& list) const;
    void GetDimensionsOfType(Curve* other, int type, std::vector<Dimension::DimensionBase*>& list) const;
    void AddDimensions(std::vector<Dimension::DimensionBase*>& list);
    void ReplaceDimension(int index, Dimension::DimensionBase* d);
    /// Updates every listed dimension that is still listed when its turn comes.
    void UpdateDimensions();
    /// The dimension of the type that measures this curve alone, brought up to date. Without one a new one is
    /// made and attached if `create` is set and the type measures a curve of this kind (caller deletes); else
    /// null. The numbers serve a new one only.
    Dimension::DimensionBase* CreateUpdateDimension(int type, bool create, double textHeightOffset,
                                                    double fontHeight);
    /// Gives this curve the dimensions that measure another one alone, with their text offset, font height,
    /// display data, frame and finalized flag; types that it has already are only updated.
    void CreateSameDimensions(Curve* other);
    void CreateSameDimensionOfType(Curve* other, int type);
    /// Reports a change of this curve when d is listed here; called before d's flag is stored.
    void LogDimensionFinalize(Dimension::DimensionBase* d, bool finalized);

protected:
    /// The record; throws the text without one.
    KC_CURVE_struct_s& Record(Core::StaticText ifMissing) const {
        if (curve_ == nullptr)
            Core::ThrowMessage(ifMissing);
        return *curve_;
    }
    /// Takes over a record just made for this curve; throws the text when it is null. The record is freed
    /// should the report of the change throw.
    void Install(KC_CURVE_struct_s* made, Core::StaticText ifNull);
    /// Takes over a record that the caller handed to a constructor, with its box; on a throw it stays theirs.
    void Adopt(KC_CURVE_struct_s* given);
    Point PointAt(double t) const;
    /// The kernel's answers for forms without closed formulas.
    double KernelLength() const;
    double KernelDistance(const Point& p) const;
    double KernelDistanceBounded(const Point& p) const;
    Point KernelProject(const Point& p) const;
    /// Throws the text when the other curve is of none of the four kinds.
    void KernelIntersect(const Curve& other, std::vector<Point>& out, Core::StaticText ifUnknown) const;

    KC_CURVE_struct_s* curve_ = nullptr;

private:
    friend class Dimension::DimensionBase; // drops its entry when it is destroyed
    /// Erases the entry without a report.
    void DropDimension(const Dimension::DimensionBase* d);
    /// Tells the listed dimensions that this curve is no more.
    void ReleaseDimensions();

    mutable BoundingBox box_;
    mutable bool boxStale_ = true;
    std::vector<Dimension::DimensionBase*> dimensions_;
};

} // namespace Tessera::Geometry
