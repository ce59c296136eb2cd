#include "tessera/recognition/RecognizedGeometry.h"

#include <cmath>

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

namespace {

constexpr double kSameDeviation = 1e-8; // of two equal results

// First of the samples offered that lie farthest from a point.
class FarthestSample {
public:
    FarthestSample(const Point& from, int first) : from_(from), index_(first) {}

    void Offer(const StrokePoint& p, int index) {
        const double distanceSq = p.Distance2(from_);
        if (distanceSq > largestSq_) {
            largestSq_ = distanceSq;
            index_ = index;
        }
    }
    int Index() const { return index_; }

private:
    Point from_;
    double largestSq_ = 0.0;
    int index_;
};

} // namespace

RecognizedGeometry::RecognizedGeometry(Curve& curve, int strokeId, int start, int end, double maxDeviation,
                                       const std::vector<StrokePoint>* points)
    : curve_(&curve), strokeId_(strokeId), startIndex_(start), endIndex_(end), startKeyIndex_(start),
      endKeyIndex_(end), maxDeviation_(maxDeviation) {
    if (points != nullptr)
        ComputeClosestIndex(points);
}

bool RecognizedGeometry::operator==(const RecognizedGeometry& other) const {
    return curve_->GetId() == other.curve_->GetId() && strokeId_ == other.strokeId_ &&
           startIndex_ == other.startIndex_ && endIndex_ == other.endIndex_ &&
           std::fabs(maxDeviation_ - other.maxDeviation_) < kSameDeviation;
}

void RecognizedGeometry::ComputeClosestIndex(const std::vector<StrokePoint>* points) {
    FarthestSample fromStart(curve_->GetStart(), startIndex_);
    FarthestSample fromEnd(curve_->GetEnd(), startIndex_);
    for (int i = startIndex_; i <= endIndex_; ++i) {
        const StrokePoint& p = (*points)[static_cast<std::size_t>(i)];
        fromStart.Offer(p, i);
        fromEnd.Offer(p, i);
    }
    startKeyIndex_ = fromStart.Index();
    endKeyIndex_ = curve_->IsClosed() ? startKeyIndex_ : fromEnd.Index();
}

} // namespace Tessera::Geometry
