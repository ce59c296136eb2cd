#include "tessera/recognition/internal/InkSpeeds.h"

#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

std::vector<double> SpeedsOf(const InkStroke& ink, double scale) {
    const std::size_t n = ink.samples.size();
    std::vector<double> speeds(n, 0.0);
    if (!ink.hasTimes || n == 0)
        return speeds;
    std::vector<double> x(n);
    std::vector<double> y(n);
    std::vector<double> durations(n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = ink.samples[i].x;
        y[i] = ink.samples[i].y;
        durations[i] = i + 1 < n ? ink.samples[i + 1].t - ink.samples[i].t : 0.0;
    }
    Stroke::ComputeSpeed(static_cast<int>(n), x.data(), y.data(), durations.data(), scale, speeds.data());
    return speeds;
}

} // namespace Tessera::Geometry
