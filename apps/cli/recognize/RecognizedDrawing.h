// What the recogniser found in a drawing, in ink units, free of the library's objects.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "apps/cli/ink/Ink.h"
#include "tessera/recognition/ConstraintInference.h"
#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Tool {

// Angles are in radians, counter-clockwise from +x towards +y of the ink's own axes.

struct LineShape {
    Position start, end;
};

/// Runs counter-clockwise from startAngle to endAngle (endAngle > startAngle).
struct ArcShape {
    Position center;
    double radius;
    double startAngle, endAngle;
    Position start, end;
};

struct CircleShape {
    Position center;
    double radius;
};

/// radii[0] lies along (cos rotation, sin rotation).
struct EllipseShape {
    Position center;
    double radii[2];
    double rotation;
};

/// The angles are the eccentric ones: center + radii[0] cos t major + radii[1] sin t minor.
struct EllipticArcShape {
    EllipseShape ellipse;
    double startAngle, endAngle;
    Position start, end;
};

/// poles.size() + degree + 1 knots. weights is empty unless the curve is rational.
struct SplineShape {
    int degree;
    bool isClosed;
    std::vector<double> knots;
    std::vector<Position> poles;
    std::vector<double> weights;
};

/// The order is that of kCurveKindNames.
using CurveShape =
    std::variant<LineShape, ArcShape, CircleShape, EllipseShape, EllipticArcShape, SplineShape>;
inline constexpr const char* kCurveKindNames[] = {"line",    "arc",          "circle",
                                                  "ellipse", "elliptic_arc", "spline"};
inline constexpr int kCurveKinds = 6;

struct RecognizedCurve {
    CurveShape shape;
    int from = 0; ///< first and last sample of the input stroke that the curve stands for; the side of a
    int to = 0;   ///< closed stroke that runs across its start has from > to
    double deviation = 0.0; ///< largest distance of the samples from the curve, ink units
    int retracedBy = -1;    ///< index of the stroke that gave it a new form, whose samples then count, or -1

    const char* KindName() const { return kCurveKindNames[shape.index()]; }
};

struct ErasedCurve {
    RecognizedCurve curve; ///< the whole curve, or the piece of it that was under the scribble
    int by = 0;            ///< index of the scribble
};

struct CurvePlace {
    int stroke = 0;
    int curve = 0; ///< in the stroke
};

/// A curve of the drawing or one of its points.
struct DrawingElement {
    CurvePlace place;
    Geometry::SnapPointType_e point = Geometry::SnapPointType_None;
};

/// Where an end of one curve of a stroke is an end of another; the pen leaves `before` and enters `after`.
struct RecognizedJoint {
    int before = 0;
    int after = 0;
    bool isBeforeEnd = true; ///< whether it is the end of `before`, else its start
    bool isAfterEnd = false;
    bool isTangent = false;
    Position position;
    double turn = 0.0; ///< change of direction, in (-pi, pi]
};

/// An end of a curve of the stroke that was put onto a key point of an earlier curve.
struct RecognizedConnection {
    int curve = 0;
    bool isEnd = false;
    DrawingElement onto;
    Position position;
};

struct RecognizedStroke {
    int index = 0;
    int points = 0;
    std::vector<RecognizedCurve> curves; ///< those that stand in the end
    std::vector<ErasedCurve> erased;
    std::optional<Geometry::InkShape> shape; ///< what the stroke as a whole was read as; nothing by rules
    std::vector<RecognizedJoint> joints;     ///< in drawing order
    std::vector<RecognizedConnection> connections;
    std::optional<CurvePlace> retraces; ///< the earlier curve that the stroke is drawn over
    bool isScribble = false;
    int cusps = 0;           ///< reversals of the pen, when it was asked about
    std::vector<int> erases; ///< indices of the strokes that the scribble erases something of, ascending
    std::string problem;     ///< why the stroke was not recognised; empty when it was
};

/// In the order of InkShape.
inline constexpr const char* kShapeNames[] = {
    "nothing",       "scribble",      "retrace",         "thin_wall", "line",     "arc",       "elliptic_arc",
    "circle",        "ellipse",       "spline",          "triangle",  "square",   "rectangle", "rhombus",
    "parallelogram", "quadrilateral", "regular_polygon", "polygon",   "polyline", "chain",     "pieces"};
/// In the order of ConstraintKind_e.
inline constexpr const char* kConstraintNames[Geometry::kConstraintKindCount] = {
    "coincident", "horizontal",   "vertical",     "parallel",       "perpendicular", "collinear", "tangent",
    "concentric", "equal_length", "equal_radius", "point_on_curve", "mid_point",     "symmetric"};
/// In the order of SnapPointType_e.
inline constexpr const char* kPointNames[] = {"curve", "start", "end", "mid", "center"};

/// A dimension as it is drawn. The text is centred on its position and reads along `textAngle`.
struct DrawnDimension {
    std::string kind;
    double value = 0.0; ///< ink units; degrees for angles; a diameter where the text shows one
    std::string text;   ///< UTF-8: "12.5", "R4"; with the degree or diameter sign
    Position position;
    double textAngle = 0.0;
    double fontHeight = 0.0;                         ///< ink units
    std::vector<std::array<int, 2>> curves;          ///< what it measures: stroke, and curve in the stroke
    std::vector<CurveShape> lines;                   ///< extension lines, dimension lines or arc, leader
    std::vector<std::array<Position, 3>> arrowheads; ///< filled; the tip first
};

struct RecognizedConstraint {
    Geometry::ConstraintKind_e kind = Geometry::ConstraintKind_Coincident;
    std::vector<DrawingElement> elements; ///< 1 to 3, in the kind's order
    int side = 0;                         ///< of tangents without named ends, as InferredConstraint::side
    double confidence = 0.0;              ///< 1 where the ink was exact
};

struct RecognizedDrawing { // NOLINT(bugprone-exception-escape): moving a JSON value does not throw
    Drawing ink;
    std::vector<RecognizedStroke> strokes;
    std::optional<std::vector<RecognizedConstraint>> constraints; ///< strongest first; nothing when not asked
    std::optional<std::vector<DrawnDimension>> dimensions;        ///< nothing when they were not asked for
};

} // namespace Tessera::Tool
