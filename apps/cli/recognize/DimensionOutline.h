// The outline of a stroke, to tell its inside from its outside.
#pragma once

#include <vector>

#include "apps/cli/recognize/DimensionLayout.h"

namespace Tessera::Tool {

class DimensionOutline {
public:
    /// The pieces, none of them empty, joined in their order and closed. Arcs may run against the stroke.
    explicit DimensionOutline(const std::vector<std::vector<Segment>>& pieces);

    bool Contains(const Geometry::Point& p) const;

private:
    std::vector<Segment> sides_;
};

} // namespace Tessera::Tool
