// Finds a place for a dimension: the best of several trials, as the board sees them.
#pragma once

#include <memory>
#include <optional>

#include "apps/cli/recognize/DimensionBoard.h"
#include "apps/cli/recognize/DimensionFrame.h"
#include "apps/cli/recognize/DimensionOutline.h"

namespace Tessera::Tool {

class DimensionTrials {
public:
    /// What speaks against a place, on the board's measure.
    struct Place {
        double cost = 0.0;
        double inside = 0.0; ///< more, for text inside of the stroke
    };

    DimensionTrials(const DimensionFrame& frame, DimensionBoard& board) : frame_(frame), board_(board) {}

    /// The new dimension that `make` returns at one of its places; kept when it stands better than those
    /// before. Not even made for a place that cannot win any more.
    template <class Make>
    void Try(const Place& place, const DimensionOutline& outline, Make make) {
        if (best_ == nullptr || place.cost - kMostForMiddle < bestCost_) {
            Judge(place, outline, make());
        }
    }
    /// Puts the best trial onto the board and forgets the others; nothing when none was possible.
    std::optional<DrawnDimension> Take();

private:
    static constexpr double kTowardsMiddle = 0.4; ///< at a whole size of the drawing from its middle
    static constexpr double kMostForMiddle = 1.5 * kTowardsMiddle; ///< text stays near the drawing

    void Judge(const Place& place, const DimensionOutline& outline,
               std::unique_ptr<Dimension::DimensionBase> dimension);

    const DimensionFrame& frame_;
    DimensionBoard& board_;
    std::unique_ptr<Dimension::DimensionBase> best_;
    std::unique_ptr<DimensionLayout> layout_; ///< of the best one
    double bestCost_ = 0.0;
};

} // namespace Tessera::Tool
