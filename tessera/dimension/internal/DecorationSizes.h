// DecorationSizes - the parts of a decoration in font heights, and the numbers of its points that all kinds
// with two ends share.
#pragma once

namespace Tessera::Dimension {

inline constexpr double kArrowLength = 0.75;
inline constexpr double kArrowHalfWidth = 0.1875;
inline constexpr double kOuterLine = 1.5;     // dimension line of a flipped arrowhead
inline constexpr double kExtensionGap = 0.25; // between geometry and extension line
/// Air beside the text, overshoot of the extension line beyond the tip, and distance of the inner mark from
/// the tip.
inline constexpr double kHalfLetter = 0.5;

/// Indices into the points of a LengthDimDeco or AngularDimDeco.
enum EndPoint_e : int {
    kLineEnd = 0,
    kTip = 1,
    kExtensionStart = 2,
    kExtensionEnd = 3,
    kArrowTip = 4,
    kArrowLow = 5,
    kArrowHigh = 6,
    kArrowClose = 7,
    kInnerMark = 8,
    kEndPointCount = 9
};

} // namespace Tessera::Dimension
