#include "apps/cli/recognize/Dimensions.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "apps/cli/recognize/DimensionAnnotator.h"

namespace Tessera::Tool {

namespace {

struct KindName {
    const char* name;
    Dimension::DimensionType_e kind;
};

/// In the order of placement: what stands closest to the geometry first.
constexpr KindName kKinds[] = {{"angular", Dimension::Angular},       {"radial", Dimension::Radial},
                               {"length", Dimension::Length},         {"linear", Dimension::Linear},
                               {"horizontal", Dimension::Horizontal}, {"vertical", Dimension::Vertical}};

} // namespace

DimensionKinds ParseDimensionKinds(const std::string& names) {
    DimensionKinds kinds;
    std::istringstream list(names + ","); // an empty name is refused too
    for (std::string name; std::getline(list, name, ',');) {
        bool isKnown = false;
        for (const KindName& named : kKinds) {
            if (name == named.name || name == "all") {
                kinds.push_back(named.kind);
                isKnown = true;
            }
        }
        if (!isKnown) {
            throw std::invalid_argument(
                "--dimension takes length, horizontal, vertical, linear, angular, radial "
                "or all, separated by commas, not \"" +
                name + "\"");
        }
    }
    return kinds;
}

const char* NameOf(Dimension::DimensionType_e kind) {
    return std::find_if(std::begin(kKinds), std::end(kKinds),
                        [kind](const KindName& named) { return named.kind == kind; })
        ->name;
}

void AddDimensions(RecognizedDrawing& drawing, const DimensionKinds& kinds) {
    drawing.dimensions.emplace();
    DimensionAnnotator annotator(drawing);
    for (const KindName& named : kKinds) {
        if (std::find(kinds.begin(), kinds.end(), named.kind) != kinds.end()) {
            annotator.Add(named.kind);
        }
    }
}

} // namespace Tessera::Tool
