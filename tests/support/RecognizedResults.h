// Strokes for a recogniser, and its results held the way their owner must.
#pragma once

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/SketchRecognizer.h"
#include "tessera/strokes/Stroke.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/Test.h"

namespace Tessera::Testing {

/// Results with their curves, as the caller of GetResults owns them.
class Results {
public:
    explicit Results(Geometry::SketchRecognizer& recognizer) {
        for (Geometry::RecognizedGeometry* result : recognizer.GetResults()) {
            all_.emplace_back(result);
            curves_.emplace_back(&result->GetResult());
        }
    }
    std::size_t Count() const { return all_.size(); }
    const Geometry::RecognizedGeometry& operator[](std::size_t i) const { return *all_[i]; }
    const Geometry::Curve& CurveOf(std::size_t i) const { return *curves_[i]; }
    std::vector<int> Kinds() const {
        std::vector<int> kinds;
        for (const auto& curve : curves_)
            kinds.push_back(curve->GetType());
        return kinds;
    }
    std::vector<int> Cuts() const {
        std::vector<int> cuts;
        for (std::size_t i = 0; i + 1 < all_.size(); ++i)
            cuts.push_back(all_[i]->GetEndIndex());
        return cuts;
    }

private:
    std::vector<std::unique_ptr<Geometry::RecognizedGeometry>> all_;
    std::vector<std::unique_ptr<Geometry::Curve>> curves_;
};

inline std::unique_ptr<Geometry::Stroke> StrokeOf(const Samples& samples) {
    auto stroke = std::make_unique<Geometry::Stroke>();
    for (const Geometry::StrokePoint& p : samples)
        stroke->AddPoint(p);
    return stroke;
}

} // namespace Tessera::Testing
