// Curves in words, for the summary and for the titles of pictures.
#pragma once

#include <array>
#include <string>

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

/// "2 horizontal, 1 equal length"; "none" without any.
std::string DescribeConstraints(const std::vector<RecognizedConstraint>& constraints);

} // namespace Tessera::Tool
