// Cusps of a stroke: samples where the pen turns sharply, without those that it passed in no time.
#include <algorithm>
#include <vector>

#include "tessera/kernel/EQ.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/internal/Segmentation.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

constexpr int kTraverseWindow = 2;
// A cusp passed in less than this part of the mean time is a flick of the pen.
constexpr double kShortTimeRatio = 0.15;
constexpr int kCuspGap = 1;

} // namespace

void Stroke::GetCuspIds(double angleDeg, int interval, std::vector<int>& cusps) const {
    cusps.clear();
    const SketchRecognizerPreferences usual;
    const int k = std::min(interval, PointInterval(points_.size(), usual.AskTangentPointInterval()));
    if (k < 1) {
        return;
    }
    std::vector<int> candidates;
    FindContinuityBreaks(points_, kCuspGap, angleDeg, static_cast<unsigned>(k), candidates);
    std::vector<double> times;
    GetCuspTraverseTime(candidates, kTraverseWindow, times);
    double sum = 0.0;
    for (const double time : times) {
        sum += time;
    }
    const std::size_t count = candidates.size();
    const double limit =
        count > 0 ? kShortTimeRatio * sum / static_cast<double>(count) - EQ_ask_length_tolerance() : 0.0;
    std::vector<bool> isDropped(count, false);
    for (std::size_t i = 0; i < count; ++i) {
        if (times[i] < limit) {
            // The stroke's last turn is kept; its neighbour goes instead.
            isDropped[i + 1 == count && i > 0 ? i - 1 : i] = true;
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!isDropped[i]) {
            cusps.push_back(candidates[i]);
        }
    }
}

void Stroke::GetCuspTraverseTime(const std::vector<int>& cusps, int window,
                                 std::vector<double>& times) const {
    times.clear();
    const std::vector<StrokePoint>& points = GetPoints();
    const int last = AskNumberOfPoints() - 1;
    const double meanSpeed = AskAverageSpeed();
    for (const int cusp : cusps) {
        const int from = std::max(cusp - window, 0);
        const int to = std::min(cusp + window, last);
        double distance = 0.0;
        for (int i = from; i < to; ++i) {
            distance += points[i].Distance(points[i + 1]);
        }
        double speed = to >= from ? 0.5 * (points[from].GetSpeed() + points[to].GetSpeed()) : 0.0;
        if (speed <= 0.0) {
            speed = meanSpeed;
        }
        times.push_back(speed > 0.0 ? distance / speed : distance);
    }
}

} // namespace Tessera::Geometry
