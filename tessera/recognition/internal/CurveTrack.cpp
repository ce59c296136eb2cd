#include "tessera/recognition/internal/CurveTrack.h"

#include <algorithm>
#include <cmath>

#include "tessera/geometry/Spline.h"

namespace Tessera::Geometry {

namespace {

constexpr int kArcPoints = 129; // sagittas of a ten thousandth of the radius
constexpr int kMostPoints = 2049;
constexpr double kReachSteps = 6.0; // on the inner side of a bend the foot runs faster than the pen

int PointsFor(const Curve& curve) {
    switch (curve.GetType()) {
    case CurveType_Line:
        return 2;
    case CurveType_Spline:
        return std::clamp(8 * static_cast<const Spline&>(curve).GetNumSegments(), kArcPoints, kMostPoints);
    default:
        return kArcPoints;
    }
}

// Steps over the segments of a track; a closed one goes on round.
class Segments {
public:
    explicit Segments(const CurveTrack& track)
        : track_(track), count_(static_cast<long>(track.pts.size()) - 1) {}

    long First() const { return 0; }
    long Count() const { return count_; }
    bool Has(long segment) const { return track_.isClosed || (segment >= 0 && segment < count_); }
    double StartOf(long segment) const { return Rounds(segment) + track_.at[Index(segment)]; }
    double EndOf(long segment) const { return Rounds(segment) + track_.at[Index(segment) + 1]; }

    TrackFoot FootOn(long segment, const Point& p) const {
        const std::size_t i = Index(segment);
        const Point side = track_.pts[i + 1] - track_.pts[i];
        const double lengthSq = side.Dot(side);
        const double share =
            lengthSq > 0.0 ? std::clamp((p - track_.pts[i]).Dot(side) / lengthSq, 0.0, 1.0) : 0.0;
        return {StartOf(segment) + share * (track_.at[i + 1] - track_.at[i]),
                std::sqrt(p.Distance2(track_.pts[i] + share * side))};
    }

private:
    std::size_t Index(long segment) const {
        const long rest = segment % count_;
        return static_cast<std::size_t>(rest < 0 ? rest + count_ : rest);
    }
    double Rounds(long segment) const {
        const long rounds = (segment - static_cast<long>(Index(segment))) / count_;
        return static_cast<double>(rounds) * track_.Length();
    }

    const CurveTrack& track_;
    long count_;
};

} // namespace

CurveTrack::CurveTrack(const Curve& curve) : isClosed(curve.IsClosed()) {
    curve.CreatePolylinePoints(PointsFor(curve), pts);
    if (isClosed)
        pts.back() = pts.front();
    at.reserve(pts.size());
    for (std::size_t i = 0; i < pts.size(); ++i)
        at.push_back(i > 0 ? at.back() + pts[i].Distance(pts[i - 1]) : 0.0);
}

Point CurveTrack::At(double along) const {
    double rest = along;
    if (isClosed)
        rest -= std::floor(along / Length()) * Length();
    const auto above = std::upper_bound(at.begin() + 1, at.end() - 1, rest);
    const auto i = static_cast<std::size_t>(above - at.begin());
    const double span = at[i] - at[i - 1];
    const double share = span > 0.0 ? std::clamp((rest - at[i - 1]) / span, 0.0, 1.0) : 0.0;
    return pts[i - 1] + share * (pts[i] - pts[i - 1]);
}

std::vector<TrackFoot> FollowTrack(const CurveTrack& track, std::span<const Point> ink, double step) {
    const Segments segments(track);
    const double reach = kReachSteps * step;
    std::vector<TrackFoot> feet;
    feet.reserve(ink.size());
    long at = 0;
    for (const Point& p : ink) {
        TrackFoot best;
        long segment = at;
        const auto offer = [&](long s) {
            const TrackFoot foot = segments.FootOn(s, p);
            if (foot.distance < best.distance) {
                best = foot;
                segment = s;
            }
        };
        best = segments.FootOn(at, p);
        if (feet.empty()) {
            for (long s = 1; s < segments.Count(); ++s)
                offer(s);
        } else {
            const double from = feet.back().along;
            long after = at + 1; // no segment twice: on a track shorter than the reach it lies on every round
            while (after < at + segments.Count() && segments.Has(after) &&
                   segments.StartOf(after) <= from + reach)
                offer(after++);
            for (long s = at - 1;
                 s > after - 1 - segments.Count() && segments.Has(s) && segments.EndOf(s) >= from - reach;
                 --s)
                offer(s);
        }
        at = segment;
        feet.push_back(best);
    }
    return feet;
}

} // namespace Tessera::Geometry
