// Stroke - one pen stroke: an ordered sequence of samples that can stand in for a curve.
//
// Units      model units; speeds in length units per time unit of the input. Indices count samples from 0;
//            index parameters are index / (n - 1), whatever the distances between the samples.
// Ownership  new strokes and splines belong to the caller.
// Errors     thrown as char* texts; a failed call leaves the stroke as it was. What needs a poly-line throws
//            "Stroke::CreateSpline:  Incorrect point index" below two samples.
// Box        cached; mutators mark it outdated, only UpdateBoundingBox refreshes it.
// Reports    every mutator but Resize, Reverse, UpdateBoundingBox and the assignment tells the host first.
//            Strokes under construction (SubStroke, Extract) report nothing.
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
    /// Of samples at hand; the box stays outdated.
    explicit Stroke(std::vector<StrokePoint> points);
    /// New identifier, no group.
    Stroke(const Stroke& other);
    /// Takes the identifier and display data as well; the group stays.
    Stroke& operator=(const Stroke& other);

    // Slot order is part of the binary interface.
    ~Stroke() override;
    int AskClass() const override { return Core::ClassID_Stroke; }
    /// New identifier, same group; the box is copied as it stands.
    Stroke* Copy() const override;
    /// Moves the samples and the cached box alike; speeds stay.
    void Transform(double m[3][3]) override;
    /// When the stroke's group is in `copies`, the copy takes the stroke's place in the group's copy.
    Stroke* DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const override;
    /// Takes another stroke's samples, box, display data and group; keeps the identifier. False and unchanged
    /// for anything but a stroke.
    bool Replace(Core::TaggedObject* other) override;
    /// From the samples, not from the cached box; always true.
    bool AskXYBox(XYBox& box) const override;
    /// True when every point lies inside the polygon.
    bool IsInPolygon(int n, double* xs, double* ys) override;
    /// True as soon as some point lies inside the polygon.
    bool IsCrossPolygon(int n, double* xs, double* ys) override;

    void AddPoint(const StrokePoint& p);
    /// Throws std::out_of_range for an index outside the array.
    void AssignPoint(const StrokePoint& p, int index);
    /// Throws "Stroke::GetPoint - input index is out of bounds".
    Point GetPoint(int index) const;
    const std::vector<StrokePoint>& GetPoints() const { return points_; }
    int AskNumberOfPoints() const { return static_cast<int>(points_.size()); }
    /// Mean of the samples' speeds; 0 for an empty stroke.
    double AskAverageSpeed() const;

    bool AskBBoxOutdated() const { return bboxOutdated_; }
    /// As it stands, outdated or not.
    BoundingBox AskBoundingBox() const { return boundingBox_; }
    /// O(n) when outdated, else nothing.
    void UpdateBoundingBox();

    /// Grows to n samples (new ones at the origin, speed 0); never shrinks. The box is not marked.
    void Resize(int n);
    /// The box is not marked: it holds for either order.
    void Reverse();
    /// Reports once for the call and once for each sample. The other stroke may be this one.
    void AppendPointsFromStroke(const Stroke& other);
    void PrependPointsFromStroke(const Stroke& other);

    /// Samples first..last with this stroke's display data; indices outside are brought in. Throws
    /// "Stroke::SubStroke:  Incorrect point index" when no two samples are left.
    Stroke* SubStroke(int first, int last) const;
    /// Sub-stroke between the index parameters params[0] < params[1] in [0, 1], its ends interpolated. Null
    /// when an end lies beyond the last sample or fewer than three samples lie from the first one not before
    /// params[0] to the first one not before params[1].
    Stroke* Extract(double* const params) const;
    /// Degree 1 spline through the samples first..last, parameter uniform in the index; indices outside
    /// are brought in. Throws as stated above when no two samples are left.
    Spline* CreateSpline(int first, int last) const;
    Spline* CreateSpline() const;
    /// Distance to the poly-line: a scan the first time, a box tree over the segments afterwards.
    double DistanceBounded(const Point& p) const;
    /// Appends the intersections of CreateSpline() with the curve's carrier.
    void Intersect(const Curve& curve, std::vector<Point>& out) const;
    /// Appends the intersections of each segment with the bounded curve, segment by segment; one at a
    /// sample is found by both of its segments. An outdated box rejects nothing.
    void IntersectBounded(const Curve& curve, std::vector<Point>& out) const;

    // --- Analysis; none of these but Simplify changes the stroke
    /// Summed length of the segments longer than the threshold; *total receives the whole length.
    double GetSegLengthOverThreshold(double threshold, double* total) const;
    /// New stroke with f samples inserted evenly between each pair of neighbours; caller deletes.
    Stroke* UpSampleStroke(int f) const;
    /// Signed total turning, degrees.
    double ComputeCummulativeAngle() const;
    /// Samples at which the pen turns by more than angleDeg, judged over at most `interval` samples on
    /// either side, without those passed in far less time than the mean. Replaces the list; ascending.
    void GetCuspIds(double angleDeg, int interval, std::vector<int>& cusps) const;
    /// Time over +-window samples round each cusp: distance by the mean of the speeds at both ends (the
    /// stroke's mean speed where that is zero, speed 1 where that is zero too). Replaces the list.
    void GetCuspTraverseTime(const std::vector<int>& cusps, int window, std::vector<double>& times) const;
    /// Speeds from n positions and n - 1 durations t (from sample i to i + 1), without single spikes, times
    /// scale. A sample whose durations are zero takes the mean of its neighbours; one sample has speed 0.
    static void ComputeSpeed(int n, double* x, double* y, double* t, double scale, double* speed);
    /// Drops samples that lie within tol of the poly-line of those kept; false below three samples.
    /// Reports the change. Source: D. Douglas, T. Peucker, Cartographica 10 (1973) 112-122.
    bool Simplify(double tol);
    /// Corners of the convex hull, counter-clockwise, none collinear. *x and *y come from SM_alloc and are
    /// freed by the caller with SM_free; null with *n = 0 for an empty stroke or when memory runs out.
    void ComputeConvexHull(int* n, double** x, double** y) const;

private:
    void TakeSamples(const Stroke& other);
    void PointsChanged();
    void ForgetSearch();
    const SegmentTree* TreeOnceRepeated() const;

    std::vector<StrokePoint> points_;
    BoundingBox boundingBox_;
    bool bboxOutdated_ = false;
    mutable std::unique_ptr<SegmentTree> tree_; ///< answers repeated queries; dropped by every change
    mutable bool queried_ = false;              ///< the samples were searched since the last change
};

} // namespace Tessera::Geometry
