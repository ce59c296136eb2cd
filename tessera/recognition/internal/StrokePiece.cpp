#include "tessera/recognition/internal/StrokePiece.h"

#include <algorithm>
#include <cmath>

#include "tessera/core/NumericHelpers.h"
#include "tessera/core/ThrowMessage.h"
#include "tessera/kernel/EQ.h"

namespace Tessera::Geometry {

using Vex::Math::Point2;

bool StrokePiece::Normalize(std::span<const StrokePoint> samples, std::vector<Point2>& buffer) {
    if (samples.size() < 2)
        return false;
    Point2 low{samples[0].x, samples[0].y};
    Point2 high = low;
    double poison = 0.0; // NaN as soon as one coordinate is not finite
    for (const StrokePoint& p : samples) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        poison += (p.x - p.x) + (p.y - p.y);
    }
    const double side = std::max(high.x - low.x, high.y - low.y);
    if (std::isnan(poison) || !std::isfinite(side))
        Core::ThrowMessage("SketchRecognizer::RecognizeCurve - points must be finite");
    if (side <= EQ_ask_length_tolerance())
        return false;

    origin = low;
    scale = side;
    buffer.clear();
    buffer.reserve(samples.size());
    for (const StrokePoint& p : samples)
        buffer.push_back({(p.x - low.x) / side, (p.y - low.y) / side});
    pts = buffer;
    return true;
}

void StrokePiece::MapBack(Curve& curve) const {
    // A transform divides by its last element, so the translation is given in units of the scale.
    double m[3][3];
    Core::ComposeIdentityTransform(m);
    m[0][2] = origin.x / scale;
    m[1][2] = origin.y / scale;
    m[2][2] = 1.0 / scale;
    curve.Transform(m);
}

} // namespace Tessera::Geometry
