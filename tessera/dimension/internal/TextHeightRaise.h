// TextHeightRaise - what brings the lower edge of length-like text onto its own side of the dimension line.
#pragma once

namespace Tessera::Dimension {

/// To be added to the text height offset for text that reads along angleDeg (degrees in [0, 360)): minus the
/// font height for level or falling text below the measured line, plus the font height for rising or upright
/// text above it, else 0. Offsets within the tolerance count as neither.
double TextHeightRaise(double angleDeg, double heightOffset, double fontHeight, double tolerance);

} // namespace Tessera::Dimension
