#include "tessera/recognition/internal/EndJoin.h"

#include <algorithm>
#include <cmath>

namespace Tessera::Geometry {

namespace {

constexpr double kMeeting = 2.5; // steps between points that lie at one place
constexpr int kReach = 3;        // points by which the pen's direction is told
// Cosines of what a bend turns by within a few points, and of half of it: pieces meet in sharper corners.
constexpr double kSmooth = 0.5;
constexpr double kHalfSmooth = 0.7;

Point Unit(const Point& v) {
    return v / std::max(v.Length(), 1e-12);
}

// Direction in which the pen comes to a point.
Point DirectionTo(const InkPath& path, int at) {
    return Unit(path.At(at) - path.At(at - kReach));
}

// The end's last point beside the start, if the pen ran on along the first points from there.
std::optional<EndJoin> CutOverlap(const InkPath& path, const Point& ahead, int most) {
    const int last = path.Size() - 1;
    int nearest = last;
    for (int i = last; i > last - most; --i)
        if (path.At(i).Distance2(path.pts[0]) < path.At(nearest).Distance2(path.pts[0]))
            nearest = i;
    const int cut = last - nearest;
    const double meeting = kMeeting * path.step;
    if (path.At(nearest).Distance(path.pts[0]) > meeting || DirectionTo(path, nearest).Dot(ahead) < kSmooth)
        return std::nullopt;
    for (int i = 1; i <= cut; ++i)
        if (path.At(nearest + i).Distance(path.At(i)) > meeting)
            return std::nullopt;
    return EndJoin{cut, {}};
}

// A cubic that leaves the end and comes to the start as the pen did (C. Hermite).
std::optional<EndJoin> FillGap(const InkPath& path, const Point& back, const Point& ahead) {
    const Point& from = path.pts.back();
    const Point across = path.pts.front() - from;
    const double gap = across.Length();
    if (back.Dot(ahead) < kSmooth || across.Dot(back) < kHalfSmooth * gap ||
        across.Dot(ahead) < kHalfSmooth * gap)
        return std::nullopt;
    EndJoin join;
    const int parts = static_cast<int>(std::lround(gap / path.step));
    for (int i = 1; i < parts; ++i) {
        const double t = static_cast<double>(i) / parts;
        const double rest = 1.0 - t;
        join.fill.push_back(from + (t * t * (3.0 - 2.0 * t)) * across + (gap * t * rest * rest) * back -
                            (gap * t * t * rest) * ahead);
    }
    return join;
}

template <typename T>
void Begin(int start, std::vector<T>& values) {
    std::rotate(values.begin(), values.begin() + start, values.end());
    values.push_back(values.front());
}

} // namespace

double CosineAtEnds(const InkPath& path) {
    return DirectionTo(path, path.Size() - 1).Dot(DirectionTo(path, kReach));
}

std::optional<EndJoin> JoinEnds(const InkPath& path, double closing) {
    if (path.Gap() <= kMeeting * path.step)
        return EndJoin{};
    const int last = path.Size() - 1;
    const int most = static_cast<int>(std::min(closing / path.step, 0.25 * last));
    if (path.Gap() > closing || most < 1)
        return std::nullopt;
    const Point ahead = DirectionTo(path, kReach);
    const Point back = DirectionTo(path, last);
    const bool isOverlap = (path.pts.front() - path.pts.back()).Dot(back + ahead) < 0.0;
    return isOverlap ? CutOverlap(path, ahead, most) : FillGap(path, back, ahead);
}

InkPath BegunAt(const InkPath& path, const EndJoin& join, int start) {
    InkPath begun = path;
    begun.pts.resize(path.pts.size() - static_cast<std::size_t>(join.cut));
    begun.source.resize(begun.pts.size());
    begun.length -= path.step * join.cut;
    for (const Point& p : join.fill) {
        begun.pts.push_back(p);
        begun.source.push_back(path.source.back());
    }
    begun.length += path.step * static_cast<double>(join.fill.size()) + begun.Gap();
    Begin(start, begun.pts);
    Begin(start, begun.source);
    return begun;
}

std::vector<double> BegunAt(std::vector<double> values, const EndJoin& join, int start, double ofFill) {
    if (values.empty())
        return values;
    values.resize(values.size() - static_cast<std::size_t>(join.cut));
    values.resize(values.size() + join.fill.size(), ofFill);
    Begin(start, values);
    return values;
}

} // namespace Tessera::Geometry
