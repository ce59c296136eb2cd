// Which dimensions a drawing gets, and the places where each is tried.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "apps/cli/recognize/DimensionTrials.h"
#include "tessera/dimension/DimensionType.h"

namespace Tessera::Geometry {
class Arc;
class Line;
} // namespace Tessera::Geometry

namespace Tessera::Tool {

class DimensionAnnotator {
public:
    /// @param drawing  takes the dimensions, in the order in which they are added.
    explicit DimensionAnnotator(RecognizedDrawing& drawing);

    /// A dimension of this kind for everything that it measures. What is added first stands closest.
    void Add(Dimension::DimensionType_e kind);

private:
    /// A copy of a curve of the drawing.
    struct Measured {
        std::unique_ptr<Geometry::Curve> curve;
        std::array<int, 2> index; ///< stroke, curve

        Geometry::Line* AsLine() const;
        Geometry::Arc* AsArc() const;
    };
    struct Stroke {
        std::vector<Measured> curves;
        DimensionOutline outline;
    };

    void AddStroke(const RecognizedStroke& stroke, int index);
    void AddExtent(Dimension::DimensionType_e kind, const Stroke& stroke, const Measured& measured);
    void AddAngle(const Stroke& stroke, std::size_t i);
    void AddRadius(const Stroke& stroke, const Measured& measured);
    void AddDistance(const Stroke& stroke, std::size_t i);
    void Place(std::vector<std::array<int, 2>> curves);
    double FontFor(double extent) const;

    RecognizedDrawing& drawing_;
    DimensionFrame frame_;
    DimensionBoard board_;
    DimensionTrials trials_;
    std::vector<Stroke> strokes_;
    bool hasLengths_ = false;
};

} // namespace Tessera::Tool
