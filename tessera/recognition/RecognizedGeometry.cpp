#include "tessera/recognition/RecognizedGeometry.h"

#include <cmath>

#include "tessera/geometry/Curve.h"

namespace Tessera::Geometry {

namespace {

constexpr double kSameDeviation = 1e-8; // of two equal results

// First of the samples that lie farthest from p.
int FarthestIndex(const std::vector<StrokePoint>& points, int first, int last, const Point& p) {
    int farthest = first;
    double largestSq = 0.0;
    for (int i = first; i <= last; ++i) {
        const double distanceSq = points[static_cast<std::size_t>(i)].Distance2(p);
        if (distanceSq > largestSq) {
            largestSq = distanceSq;
            farthest = i;
        }
    }
    return farthest;
}

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
    startKeyIndex_ = FarthestIndex(*points, startIndex_, endIndex_, curve_->GetStart());
    endKeyIndex_ = curve_->IsClosed() ? startKeyIndex_
                                      : FarthestIndex(*points, startIndex_, endIndex_, curve_->GetEnd());
}

} // namespace Tessera::Geometry
