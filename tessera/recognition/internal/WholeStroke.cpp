#include "tessera/recognition/internal/WholeStroke.h"

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"

namespace Tessera::Geometry {

namespace {

constexpr double kWholeSweep = 4.71238898038469; // three quarters of a turn

double SweepOf(const Arc& arc) {
    return arc.GetEndAngle() - arc.GetStartAngle();
}

double SweepOf(const Ellipse& ellipse) {
    double centre[2];
    double radii[2];
    double rotation = 0.0;
    double start = 0.0;
    double end = 0.0;
    ellipse.AskEllipseData(centre, radii, &rotation, &start, &end);
    return end - start;
}

} // namespace

bool IsWholeStrokePreferred(const std::vector<RecognizedGeometry*>& pieces) {
    int lines = 0;
    int arcs = 0;
    int ellipses = 0;
    double arcSweep = 0.0;     // of the last arc
    double ellipseSweep = 0.0; // of the last ellipse
    for (const RecognizedGeometry* piece : pieces) {
        const Curve& curve = piece->GetResult();
        if (curve.GetType() == CurveType_Line) {
            ++lines;
        } else if (curve.GetType() == CurveType_Arc) {
            ++arcs;
            arcSweep = SweepOf(static_cast<const Arc&>(curve));
        } else if (curve.GetType() == CurveType_Ellipse) {
            ++ellipses;
            ellipseSweep = SweepOf(static_cast<const Ellipse&>(curve));
        }
    }
    const int total = static_cast<int>(pieces.size());
    if (lines < total - lines)
        return true;
    if (lines != 1 || total != 2 || (arcs != 1 && ellipses != 1))
        return false;
    return (arcs > 0 ? arcSweep : ellipseSweep) > kWholeSweep;
}

} // namespace Tessera::Geometry
