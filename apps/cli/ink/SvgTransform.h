// Affine transforms of SVG: the transform attribute as a matrix.
#pragma once

#include <string_view>

#include "apps/cli/ink/Ink.h"

namespace Tessera::Tool {

/// x' = a x + c y + e, y' = b x + d y + f, in the order of matrix(a b c d e f).
struct SvgTransform {
    double a = 1.0, b = 0.0, c = 0.0, d = 1.0, e = 0.0, f = 0.0;

    Position Apply(Position p) const { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }
    /// First `inner`, then this.
    SvgTransform operator*(const SvgTransform& inner) const;
};

/// Throws InkError for an unknown operation or a wrong number of arguments.
SvgTransform ParseSvgTransform(std::string_view text);

} // namespace Tessera::Tool
