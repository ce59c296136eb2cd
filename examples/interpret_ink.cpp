// Reads two strokes as what a hand meant by them, a square and a line from its corner, and infers the
// constraints of the sketch.

#include <cmath>
#include <cstdio>

#include "tessera/Tessera.h"

using namespace Tessera::Geometry;

namespace {

/// A trembling hand along a poly-line, twenty samples a side.
InkStroke Draw(const std::vector<Point>& corners) {
    InkStroke ink;
    for (std::size_t i = 0; i + 1 < corners.size(); ++i) {
        for (int k = 0; k <= 20; ++k) {
            const Point p = corners[i] + (corners[i + 1] - corners[i]) * (k / 20.0);
            const double t = static_cast<double>(ink.samples.size());
            ink.samples.push_back({p.x + 0.4 * std::sin(1.3 * t), p.y + 0.4 * std::cos(0.9 * t)});
        }
    }
    return ink;
}

} // namespace

int main() {
    const std::vector<InkStroke> strokes = {Draw({{0, 0}, {100, 2}, {98, 101}, {-1, 99}, {0, 0}}),
                                            Draw({{97, 98}, {181, 139}})};
    const SketchRecognizerPreferences preferences;
    std::vector<std::unique_ptr<Curve>> owned;
    std::vector<Curve*> sketch;
    for (const InkStroke& ink : strokes) {
        InkReading reading = InterpretInk(ink, preferences, sketch); // ends meet what is there
        std::printf("%zu curves, %zu corners, %zu connections to earlier curves\n", reading.curves.size(),
                    reading.joints.size(), reading.connections.size());
        for (InterpretedCurve& read : reading.curves) {
            sketch.push_back(read.curve.get());
            owned.push_back(std::move(read.curve));
        }
    }

    ConstraintOptions options;
    options.toleranceZone = 5.0; // nothing moves as far
    const std::vector<const Curve*> curves(sketch.begin(), sketch.end());
    const InferredConstraints inferred = InferConstraints(curves, options);
    ApplyConstraints(inferred, sketch);
    std::printf("%zu constraints\n", inferred.constraints.size());
    for (const Curve* curve : curves) {
        std::printf("line from (%.2f, %.2f) to (%.2f, %.2f)\n", curve->GetStart().x, curve->GetStart().y,
                    curve->GetEnd().x, curve->GetEnd().y);
    }
    return sketch.size() == 5 ? 0 : 1;
}
