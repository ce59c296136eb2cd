#include "apps/cli/recognize/Constraints.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace Tessera::Tool {

namespace {

using Geometry::Curve;
using Geometry::Point;

/// The tolerance zone: this part of the usual stroke's diagonal, which is how far a hand misses in drawings
/// of many small shapes as in one large shape drawn side by side ...
constexpr double kZonePerStroke = 0.05;
/// ... but never more than this part of the whole drawing's.
constexpr double kLargestZone = 0.035;

double Diagonal(const Geometry::XYBox& box) {
    return box.min.Distance(box.max);
}

/// 0 when no curve has an extent.
double ToleranceZone(const Sketch& sketch) {
    std::vector<double> diagonals;
    std::vector<Point> corners;
    for (const SketchStroke& stroke : sketch.strokes) {
        std::vector<Point> ofStroke;
        for (const SketchCurve& curve : stroke.curves) {
            Geometry::XYBox box;
            if (curve.curve->AskXYBox(box)) {
                ofStroke.insert(ofStroke.end(), {box.min, box.max});
            }
        }
        if (!ofStroke.empty()) {
            diagonals.push_back(Diagonal(Geometry::XYBox(ofStroke)));
            corners.insert(corners.end(), ofStroke.begin(), ofStroke.end());
        }
    }
    if (diagonals.empty()) {
        return 0.0;
    }
    const auto middle = diagonals.begin() + static_cast<std::ptrdiff_t>(diagonals.size() / 2);
    std::nth_element(diagonals.begin(), middle, diagonals.end());
    return std::min(kZonePerStroke * *middle, kLargestZone * Diagonal(Geometry::XYBox(corners)));
}

/// The curves take the geometry that satisfies the constraints, and what changes is measured anew.
void Adjust(const Geometry::InferredConstraints& inferred, Sketch& sketch, const Drawing& ink) {
    std::vector<Curve*> curves = sketch.Curves();
    std::vector<bool> isSame;
    for (std::size_t i = 0; i < curves.size(); ++i) {
        isSame.push_back(curves[i]->IsSameCurve(inferred.adjusted[i].get()));
    }
    Geometry::ApplyConstraints(inferred, curves);
    auto same = isSame.begin();
    for (std::size_t s = 0; s < sketch.strokes.size(); ++s) {
        for (SketchCurve& curve : sketch.strokes[s].curves) {
            if (!*same++) {
                const std::size_t drawn = curve.retracedBy < 0 ? s : curve.retracedBy;
                curve.deviation = MeasureDeviation(curve, ink.strokes[drawn], sketch.page);
            }
        }
    }
}

std::vector<CurvePlace> PlacesOf(const Sketch& sketch) {
    std::vector<CurvePlace> places;
    for (std::size_t s = 0; s < sketch.strokes.size(); ++s) {
        for (std::size_t c = 0; c < sketch.strokes[s].curves.size(); ++c) {
            places.push_back({static_cast<int>(s), static_cast<int>(c)});
        }
    }
    return places;
}

} // namespace

std::uint32_t ParseConstraintKinds(const std::string& names) {
    std::uint32_t kinds = 0;
    std::istringstream list(names + ","); // an empty name is refused too
    for (std::string name; std::getline(list, name, ',');) {
        const auto* const found = std::find(std::begin(kConstraintNames), std::end(kConstraintNames), name);
        if (name == "all") {
            kinds = Geometry::ConstraintOptions().kinds;
        } else if (found != std::end(kConstraintNames)) {
            kinds |= std::uint32_t{1} << (found - std::begin(kConstraintNames));
        } else {
            throw std::invalid_argument("--constraints takes " + ListConstraintKinds() +
                                        " or all, separated by commas, not \"" + name + "\"");
        }
    }
    return kinds;
}

std::string ListConstraintKinds() {
    std::string list;
    for (const char* name : kConstraintNames) {
        list += (list.empty() ? "" : ", ") + std::string(name);
    }
    return list;
}

void ConstrainSketch(std::uint32_t kinds, Sketch& sketch, RecognizedDrawing& drawing) {
    drawing.constraints.emplace();
    Geometry::ConstraintOptions options;
    options.kinds = kinds | ConstraintKindBit(Geometry::ConstraintKind_Coincident);
    options.toleranceZone = ToleranceZone(sketch);
    if (!(options.toleranceZone > 0.0)) {
        return;
    }
    const std::vector<Curve*> curves = sketch.Curves();
    const std::vector<const Curve*> given(curves.begin(), curves.end());
    std::vector<const Curve*> drawn;
    for (const SketchStroke& stroke : sketch.strokes) {
        for (const SketchCurve& curve : stroke.curves) {
            drawn.push_back(curve.drawn.get());
        }
    }
    options.drawn = drawn;
    const Geometry::InferredConstraints inferred = Geometry::InferConstraints(given, options);
    Adjust(inferred, sketch, drawing.ink);
    const std::vector<CurvePlace> places = PlacesOf(sketch);
    for (const Geometry::InferredConstraint& constraint : inferred.constraints) {
        if ((kinds & ConstraintKindBit(constraint.kind)) == 0) {
            continue;
        }
        RecognizedConstraint& told = drawing.constraints->emplace_back();
        told.kind = constraint.kind;
        told.side = constraint.side;
        told.confidence = constraint.confidence;
        for (int i = 0; i < constraint.elementCount; ++i) {
            const Geometry::SketchElement& element = constraint.elements[static_cast<std::size_t>(i)];
            told.elements.push_back({places[static_cast<std::size_t>(element.curve)], element.point});
        }
    }
}

} // namespace Tessera::Tool
