#include "apps/cli/recognize/DimensionTrials.h"

#include <limits>

namespace Tessera::Tool {

void DimensionTrials::Judge(const Place& place, const DimensionOutline& outline,
                            std::unique_ptr<Dimension::DimensionBase> dimension) {
    if (dimension == nullptr || !dimension->IsValid()) {
        return;
    }
    dimension->UpdateDimension();
    std::unique_ptr<DimensionLayout> layout = LayOut(*dimension);
    if (layout == nullptr) {
        return;
    }
    const Geometry::Point& text = layout->text.center;
    double cost = place.cost - kTowardsMiddle * text.Distance(frame_.Middle()) / frame_.Size();
    cost += place.inside > 0.0 && outline.Contains(text) ? place.inside : 0.0;
    const double most = best_ == nullptr ? std::numeric_limits<double>::infinity() : bestCost_;
    if (cost < most) {
        cost += board_.Cost(*layout, most - cost);
    }
    if (cost < most) {
        bestCost_ = cost;
        best_ = std::move(dimension);
        layout_ = std::move(layout);
    }
}

std::optional<DrawnDimension> DimensionTrials::Take() {
    if (best_ == nullptr) {
        return std::nullopt;
    }
    board_.Add(*layout_);
    DrawnDimension drawn = frame_.Draw(*best_, *layout_);
    best_.reset();
    return drawn;
}

} // namespace Tessera::Tool
