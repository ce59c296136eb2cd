// Stroke - one pen stroke: an ordered sequence of samples that can stand in for a curve.
//
// Ownership  new strokes and splines belong to the caller.
// Errors     thrown as char* texts; a failed call leaves the stroke as it was.
#pragma once

#include <memory>
#include <vector>

#include "tessera/core/DisplayableObject.h"
#include "tessera/geometry/BoundingBox.h"
#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

class Curve;
class SegmentTree;
class Spline;

class TESSERA_API Stroke : public Core::DisplayableObject {
public:
    Stroke();
    /// n >= 2 samples; a null speed array gives speed 0. Throws below two samples.
    Stroke(int n, double* x, double* y, double* speed);
    Stroke(const Stroke& other);
    Stroke& operator=(const Stroke& other);

    // Slot order is part of the binary interface.
    ~Stroke() override;
    int AskClass() const override { return Core::ClassID_Stroke; }
    /// New identifier, same group.
    Stroke* Copy() const override;
    void Transform(double m[3][3]) override;
    Stroke* DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const override;
    bool Replace(Core::TaggedObject* other) override;
    bool AskXYBox(XYBox& box) const override;
    /// True when every point lies inside the polygon.
    bool IsInPolygon(int n, double* xs, double* ys) override;
    /// True as soon as some point lies inside the polygon.
    bool IsCrossPolygon(int n, double* xs, double* ys) override;

    void AddPoint(const StrokePoint& p);
    /// Throws std::out_of_range for an index outside the array.
    void AssignPoint(const StrokePoint& p, int index);
    Point GetPoint(int index) const;
    const std::vector<StrokePoint>& GetPoints() const { return points_; }
    int AskNumberOfPoints() const { return static_cast<int>(points_.size()); }
    double AskAverageSpeed() const;

    bool AskBBoxOutdated() const { return bboxOutdated_; }
    BoundingBox AskBoundingBox() const { return boundingBox_; }
    void UpdateBoundingBox();

    /// Grows to n samples; never shrinks.
    void Resize(int n);
    void Reverse();
    void AppendPointsFromStroke(const Stroke& other);
    void PrependPointsFromStroke(const Stroke& other);

    Stroke* SubStroke(int first, int last) const;
    /// Sub-stroke between the index parameters params[0] < params[1] in [0, 1]; null when too short.
    Stroke* Extract(double* const params) const;
    /// Degree 1 spline through the samples first..last, parameter uniform in the index.
    Spline* CreateSpline(int first, int last) const;
    Spline* CreateSpline() const;
    double DistanceBounded(const Point& p) const;
    void Intersect(const Curve& curve, std::vector<Point>& out) const;
    void IntersectBounded(const Curve& curve, std::vector<Point>& out) const;

private:
    void PointsChanged();

    std::vector<StrokePoint> points_;
    BoundingBox boundingBox_;
    bool bboxOutdated_ = false;
    mutable std::unique_ptr<SegmentTree> tree_; ///< answers repeated queries; dropped by every change
    mutable bool queried_ = false;
};

} // namespace Tessera::Geometry
