// Recognises one stroke: a horizontal line that runs into a quarter circle, as a pen would sample it.

#include <cmath>
#include <cstdio>
#include <numbers>

#include "tessera/Tessera.h"

using namespace Tessera::Geometry;

namespace {

void Print(const RecognizedGeometry& result) {
    const Curve& curve = result.GetResult();
    const Point start = curve.GetStart();
    const Point end = curve.GetEnd();
    std::printf("samples %3d to %3d: ", result.GetStartIndex(), result.GetEndIndex());
    if (curve.GetType() == CurveType_Arc) {
        const Arc& arc = static_cast<const Arc&>(curve);
        std::printf("arc, centre (%.2f, %.2f), radius %.2f\n", arc.GetCenter().x, arc.GetCenter().y,
                    arc.GetRadius());
    } else {
        const char* kind = curve.GetType() == CurveType_Line ? "line" : "other curve";
        std::printf("%s from (%.2f, %.2f) to (%.2f, %.2f)\n", kind, start.x, start.y, end.x, end.y);
    }
}

} // namespace

int main() {
    // Samples two units apart; the last number is the pen's speed, lower where it turns the corner.
    Stroke stroke;
    for (int x = 0; x <= 100; x += 2) {
        stroke.AddPoint({static_cast<double>(x), 0.0, x > 90 ? 40.0 : 200.0});
    }
    for (int i = 1; i <= 50; ++i) {
        const double angle = 0.5 * std::numbers::pi * i / 50.0;
        stroke.AddPoint(
            {100.0 + 60.0 * (std::cos(angle) - 1.0), 60.0 * std::sin(angle), i < 5 ? 40.0 : 200.0});
    }

    SketchRecognizer recognizer;
    recognizer.Recognize(stroke, true, CurveType_Line);
    CloseRoundStroke(recognizer); // full circles and ellipses, had the stroke been a closed one

    // The results are ours: the curve first, then the result.
    const std::size_t count = recognizer.GetResults().size();
    for (RecognizedGeometry* result : recognizer.GetResults()) {
        Print(*result);
        delete &result->GetResult();
        delete result;
    }
    return count == 2 ? 0 : 1;
}
