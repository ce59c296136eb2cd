#include "tessera/recognition/internal/InkPath.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

// Spacing of the points in units of the path's size: a square has a hundred of them, a line fifty.
constexpr double kStep = 0.07;
constexpr int kFewest = 48;   // enough for the shortest side of a simple shape
constexpr int kPaceReach = 2; // points to either side: smooths the clock of the device
constexpr int kMost = 1500;   // bounds the work for scribbles that wander on and on

struct Centred {
    std::vector<Point> pts;    // relative to the first sample, repeated positions left out
    std::vector<double> index; // of each in the ink
    std::vector<double> at;    // length along the path
};

Centred TakeDistinct(std::span<const InkSample> samples) {
    Centred path;
    path.pts.reserve(samples.size());
    path.index.reserve(samples.size());
    path.at.reserve(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Point p(samples[i].x - samples[0].x, samples[i].y - samples[0].y);
        const double moved = i > 0 ? std::sqrt(p.Distance2(path.pts.back())) : 0.0;
        if (i > 0 && moved <= 0.0)
            continue;
        path.at.push_back(i > 0 ? path.at.back() + moved : 0.0);
        path.pts.push_back(p);
        path.index.push_back(static_cast<double>(i));
    }
    return path;
}

// Root mean square distance from the centroid of the poly-line as a wire, and the centroid.
double SizeOf(const Centred& path, Point& centroid) {
    double length = 0.0;
    Point sum;
    for (std::size_t i = 1; i < path.pts.size(); ++i) {
        const double d = path.at[i] - path.at[i - 1];
        sum += 0.5 * d * (path.pts[i] + path.pts[i - 1]);
        length += d;
    }
    centroid = sum / length;
    double second = 0.0;
    for (std::size_t i = 1; i < path.pts.size(); ++i) {
        const Point a = path.pts[i - 1] - centroid;
        const Point b = path.pts[i] - centroid;
        second += (path.at[i] - path.at[i - 1]) * (a.Dot(a) + a.Dot(b) + b.Dot(b)) / 3.0;
    }
    return std::sqrt(second / length);
}

void Resample(const Centred& from, int n, InkPath& to) {
    to.pts.reserve(static_cast<std::size_t>(n));
    to.source.reserve(static_cast<std::size_t>(n));
    std::size_t segment = 1;
    const double total = from.at.back();
    for (int i = 0; i < n; ++i) {
        const double at = i + 1 < n ? total * i / (n - 1) : total;
        while (segment + 1 < from.at.size() && from.at[segment] < at)
            ++segment;
        const double f =
            std::clamp((at - from.at[segment - 1]) / (from.at[segment] - from.at[segment - 1]), 0.0, 1.0);
        const Point& a = from.pts[segment - 1];
        const Point& b = from.pts[segment];
        to.pts.push_back({(a.x + f * (b.x - a.x) - to.origin.x) / to.scale,
                          (a.y + f * (b.y - a.y) - to.origin.y) / to.scale});
        to.source.push_back(from.index[segment - 1] + f * (from.index[segment] - from.index[segment - 1]));
    }
}

} // namespace

InkPath MakeInkPath(std::span<const InkSample> samples) {
    InkPath path;
    if (samples.empty())
        return path;
    const Centred distinct = TakeDistinct(samples);
    if (distinct.pts.size() < 2)
        return path;
    path.scale = SizeOf(distinct, path.origin);
    if (!(path.scale > 0.0))
        return path;
    path.length = distinct.at.back() / path.scale;
    const int n = static_cast<int>(
        std::clamp(path.length / kStep, static_cast<double>(kFewest), static_cast<double>(kMost)));
    path.step = path.length / (n - 1);
    Resample(distinct, n, path);
    path.origin += Point(samples[0].x, samples[0].y);
    return path;
}

std::vector<double> PaceAlong(const InkPath& path, std::span<const InkSample> samples) {
    const int n = path.Size();
    std::vector<double> time;
    time.reserve(path.pts.size());
    for (const double source : path.source) {
        const auto k = static_cast<std::size_t>(source);
        const double f = source - static_cast<double>(k);
        time.push_back(f > 0.0 ? samples[k].t + f * (samples[k + 1].t - samples[k].t) : samples[k].t);
    }
    std::vector<double> pace;
    pace.reserve(path.pts.size());
    for (int i = 0; i < n; ++i) {
        const int from = std::max(0, i - kPaceReach);
        const int to = std::min(n - 1, i + kPaceReach);
        const double taken = time[static_cast<std::size_t>(to)] - time[static_cast<std::size_t>(from)];
        if (!(taken > 0.0))
            return {};
        pace.push_back((to - from) / taken);
    }
    std::vector<double> ordered = pace;
    const auto upper = ordered.begin() + 3 * n / 4;
    std::nth_element(ordered.begin(), upper, ordered.end());
    const double usual = *upper;
    for (double& p : pace)
        p /= usual;
    return pace;
}

} // namespace Tessera::Geometry
