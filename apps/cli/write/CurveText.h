// Curves in words, for the summary and for the titles of pictures.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "apps/cli/recognize/RecognizedDrawing.h"

namespace Tessera::Tool {

/// The number with five significant digits: enough to read.
std::string ShortNumber(double value);

/// What the id of a drawing looks like in text: strings bare, numbers in figures.
std::string IdText(const nlohmann::json& id);

/// "start (1, 2), end (3, 4)", "center (1, 2), radius 5" ...; angles in degrees.
std::string DescribeShape(const CurveShape& shape);

/// "elliptic arc" of "elliptic_arc".
std::string Spaced(std::string name);

/// How many curves there are of each kind.
using KindCounts = std::array<int, kCurveKinds>;
void CountKinds(const RecognizedStroke& stroke, KindCounts& counts);

/// "3 lines, 1 elliptic arc"; "nothing" when all are 0.
std::string DescribeCounts(const KindCounts& counts);

/// "all together: 2 drawings, 5 strokes, 3 lines"
std::string DescribeTotals(std::size_t drawings, std::size_t strokes, const KindCounts& counts);

/// How many constraints there are of each kind.
using ConstraintCounts = std::array<int, Geometry::kConstraintKindCount>;

/// "2 horizontal, 1 equal length"; "none" when all are 0.
std::string DescribeConstraints(const ConstraintCounts& counts);

/// "1 cusp", "2 cusps".
std::string Plural(std::size_t count, const char* noun);

/// "stroke 2", "strokes 0, 2".
template <class Number>
std::string NumberList(const char* noun, const std::vector<Number>& numbers) {
    std::string text = noun + std::string(numbers.size() == 1 ? "" : "s");
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        text += (i > 0 ? ", " : " ") + std::to_string(numbers[i]);
    }
    return text;
}

} // namespace Tessera::Tool
