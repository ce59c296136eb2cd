// A drawing while it is being recognised: its curves as the library's objects, in the units of the page.
//
// The page is the frame in which the distances of the preferences mean something: how near an end is to what
// it snaps to, how far a trim reaches. Joints and connections refer to curves, not to places in lists, so
// that scribbles may erase what they like in between.
#pragma once

#include <memory>
#include <vector>

#include "apps/cli/prepare/InkPreparation.h"
#include "apps/cli/recognize/RecognizedDrawing.h"
#include "tessera/geometry/Curve.h"
#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Tool {

struct SketchCurve {
    std::unique_ptr<Geometry::Curve> curve;
    int from = 0; ///< as RecognizedCurve, also the next three
    int to = 0;
    double deviation = 0.0; ///< ink units
    int retracedBy = -1;
    std::unique_ptr<Geometry::Curve> drawn; ///< as CurvesAsDrawn tells it; null where it does not
};

struct SketchEnd {
    const Geometry::Curve* curve = nullptr;
    Geometry::CurveEnd end = Geometry::CurveEnd::Start;
    bool operator==(const SketchEnd&) const = default;
};

struct SketchJoint {
    SketchEnd before, after;
    Geometry::JointKind kind = Geometry::JointKind::Corner;
};

struct SketchConnection {
    SketchEnd end;
    const Geometry::Curve* earlier = nullptr;
    Geometry::SnapPointType_e keyPoint = Geometry::SnapPointType_None;
};

struct SketchStroke {
    std::vector<SketchCurve> curves; ///< those that stand
    std::vector<SketchJoint> joints;
    std::vector<SketchConnection> connections;
    const Geometry::Curve* retraces = nullptr;
};

struct Sketch {
    WorkingFrame page;
    std::vector<SketchStroke> strokes; ///< one for each stroke of the ink so far

    /// All curves that stand, in drawing order.
    std::vector<Geometry::Curve*> Curves() const;
    SketchCurve* Find(const Geometry::Curve* curve);
    /// What has been said of an end of a curve is said of another curve's end from now on.
    void RenameEnd(SketchEnd old, SketchEnd now);
};

/// Largest distance of a curve from the ink that it stands for, ink units.
double MeasureDeviation(const SketchCurve& curve, const InkStroke& ink, const WorkingFrame& page);

RecognizedCurve DescribeCurve(const SketchCurve& curve, const WorkingFrame& page);

/// Tells the drawing what stands in the sketch. Joints and connections of which a part is gone are left out.
void DescribeSketch(const Sketch& sketch, RecognizedDrawing& drawing);

} // namespace Tessera::Tool
