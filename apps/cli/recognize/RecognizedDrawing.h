// What the recogniser found in a drawing, in ink units, free of the library's objects.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "apps/cli/ink/Ink.h"

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
    int from = 0; ///< first and last sample of the input stroke that the curve stands for
    int to = 0;
    double deviation = 0.0; ///< largest distance of the samples from the curve, ink units

    const char* KindName() const { return kCurveKindNames[shape.index()]; }
};

struct ErasedCurve {
    RecognizedCurve curve; ///< the whole curve, or the piece of it that was under the scribble
    int by = 0;            ///< index of the scribble
};

struct RecognizedStroke {
    int index = 0;
    int points = 0;
    std::vector<RecognizedCurve> curves; ///< those that stand in the end
    std::vector<ErasedCurve> erased;
    bool isScribble = false;
    int cusps = 0;           ///< reversals of the pen, when it was asked about
    std::vector<int> erases; ///< indices of the strokes that the scribble erases something of, ascending
    std::string problem;     ///< why the stroke was not recognised; empty when it was
};

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

struct RecognizedDrawing { // NOLINT(bugprone-exception-escape): moving a JSON value does not throw
    Drawing ink;
    std::vector<RecognizedStroke> strokes;
    std::optional<std::vector<DrawnDimension>> dimensions; ///< nothing when they were not asked for
};

} // namespace Tessera::Tool
