// Recognised curves as exact SVG elements: line, circle, ellipse, path arcs and Bezier segments.
#pragma once

#include <string>
#include <vector>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

/// The number in as many digits as it takes to read it back exactly.
std::string ExactNumber(double value);

/// Text with the characters escaped that mean something in XML; control characters become blanks.
std::string EscapeXml(const std::string& text);

/// Poles of the Bezier segments of a spline that is not rational, degree * segments + 1 of them: neighbours
/// share their end.
std::vector<Position> BezierPoles(const SplineShape& spline);

/// The element without its closing, so that attributes can follow: `<line x1="0" ...`.
std::string SvgElement(const CurveShape& shape);

} // namespace Tessera::Tool
