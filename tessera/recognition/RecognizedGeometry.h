// RecognizedGeometry - a fitted curve with the range of stroke points it stands for.
#pragma once

#include <vector>

#include "tessera/core/Export.h"
#include "tessera/strokes/StrokePoint.h"

namespace Tessera::Geometry {

class Curve;

/// Plain data: the curve is referred to; whoever owns the result deletes the curve, then the result.
class TESSERA_API RecognizedGeometry {
public:
    /// With `points`, the key indices are searched (ComputeClosestIndex); else they equal start and end.
    RecognizedGeometry(Curve& curve, int strokeId, int start, int end, double maxDeviation,
                       const std::vector<StrokePoint>* points);

    bool operator==(const RecognizedGeometry& other) const;

    Curve& GetResult() const { return *curve_; }
    int GetStrokeId() const { return strokeId_; }
    void SetStrokeId(int id) { strokeId_ = id; }
    int GetStartIndex() const { return startIndex_; }
    void SetStartIndex(int index) { startIndex_ = index; }
    int GetEndIndex() const { return endIndex_; }
    void SetEndIndex(int index) { endIndex_ = index; }
    int GetStartKeyIndex() const { return startKeyIndex_; }
    int GetEndKeyIndex() const { return endKeyIndex_; }
    /// As the fit measured it, in the unit box of the piece.
    double GetMaxDeviation() const { return maxDeviation_; }
    void SetMaxDeviation(double deviation) { maxDeviation_ = deviation; }

    /// Key indices: the samples of the piece that lie farthest from the curve's start and end.
    void ComputeClosestIndex(const std::vector<StrokePoint>* points);

private:
    Curve* curve_;
    int strokeId_;
    int startIndex_;
    int endIndex_;
    int startKeyIndex_;
    int endKeyIndex_;
    double maxDeviation_;
};

} // namespace Tessera::Geometry
