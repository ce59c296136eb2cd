#include "tessera/recognition/internal/InkDeviations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tessera/geometry/Ellipse.h"
#include "tessera/kernel/internal/EllipseFit.h"
#include "tessera/strokes/internal/SegmentTree.h"

namespace Tessera::Geometry {

namespace {

constexpr std::size_t kExactEllipsePoints = 512; // measured to the last digit in one go

// The search looks at the ink in coarse steps; where a curve gives way to the next is the sample nearest to
// their joint, of those between the middles of the two.
void PlaceBreaks(std::span<const InkSample> samples, InkReading& reading) {
    const auto n = static_cast<int>(samples.size());
    for (const InkJoint& joint : reading.joints) {
        InterpretedCurve& before = reading.curves[static_cast<std::size_t>(joint.before)];
        InterpretedCurve& after = reading.curves[static_cast<std::size_t>(joint.after)];
        const int at = before.lastSample;
        if (after.firstSample != at || joint.before == joint.after)
            continue; // the ends of the stroke
        const int back = (at - before.firstSample + n) % n / 2;
        const int ahead = (after.lastSample - at + n) % n / 2;
        double leastSq = std::numeric_limits<double>::infinity();
        for (int step = -back; step <= ahead; ++step) {
            const int i = (at + step + n) % n;
            const InkSample& s = samples[static_cast<std::size_t>(i)];
            const double dx = s.x - joint.position.x;
            const double dy = s.y - joint.position.y;
            if (dx * dx + dy * dy < leastSq) {
                leastSq = dx * dx + dy * dy;
                before.lastSample = after.firstSample = i;
            }
        }
    }
}

struct Deviations {
    double largest = 0.0;
    double sumSq = 0.0;
    void Add(double distance) {
        largest = std::max(largest, distance);
        sumSq += distance * distance;
    }
};

// A whole ellipse: its feet are found by the block.
Deviations DeviationsFrom(const Ellipse& ellipse, std::span<const Vex::Math::Point2> pts) {
    double centre[2];
    double radii[2];
    double limits[2];
    EllipseShape shape{};
    ellipse.AskEllipseData(centre, radii, &shape.angle, &limits[0], &limits[1]);
    shape = {{centre[0], centre[1]}, radii[0], radii[1], shape.angle};
    if (shape.b > shape.a)
        shape = {shape.centre, shape.b, shape.a, shape.angle + 0.5 * std::numbers::pi};
    Deviations all;
    for (std::size_t from = 0; from < pts.size(); from += kExactEllipsePoints) {
        const std::size_t count = std::min(kExactEllipsePoints, pts.size() - from);
        double err[3];
        MeasureEllipseDeviations(pts.data() + from, static_cast<int>(count), shape, err);
        all.largest = std::max(all.largest, err[0]);
        all.sumSq += static_cast<double>(count) * err[1] * err[1];
    }
    return all;
}

Deviations DeviationsFrom(const Curve& curve, std::span<const Vex::Math::Point2> pts) {
    if (curve.GetType() == CurveType_Ellipse && curve.IsClosed())
        return DeviationsFrom(static_cast<const Ellipse&>(curve), pts);
    Deviations all;
    if (curve.GetType() == CurveType_Line) {
        const Point start = curve.GetStart();
        const Point end = curve.GetEnd();
        for (const auto& p : pts)
            all.Add(std::sqrt(SegmentDistanceSq(start, end, p.x, p.y)));
        return all;
    }
    for (const auto& p : pts)
        all.Add(curve.DistanceBounded({p.x, p.y}));
    return all;
}

// The samples that a curve stands for, of those from `first` to `last`.
void TakeInkAmong(std::span<const InkSample> samples, const InterpretedCurve& made, int first, int last,
                  std::vector<Vex::Math::Point2>& pts) {
    const int n = static_cast<int>(samples.size());
    const int count = made.lastSample >= made.firstSample ? made.lastSample - made.firstSample
                                                          : made.lastSample + n - made.firstSample;
    pts.clear();
    for (int k = 0; k <= count; ++k) {
        const int i = (made.firstSample + k) % n;
        if (i < first || i > last)
            continue;
        const InkSample& s = samples[static_cast<std::size_t>(i)];
        pts.push_back({s.x, s.y});
    }
}

} // namespace

void TakeInk(std::span<const InkSample> samples, const InterpretedCurve& made,
             std::vector<Vex::Math::Point2>& pts) {
    TakeInkAmong(samples, made, 0, static_cast<int>(samples.size()) - 1, pts);
}

double DeviationAmong(std::span<const InkSample> samples, const InterpretedCurve& made, int first, int last) {
    std::vector<Vex::Math::Point2> pts;
    TakeInkAmong(samples, made, first, last, pts);
    return pts.empty() ? 0.0 : DeviationsFrom(*made.curve, pts).largest;
}

void MeasureDeviations(std::span<const InkSample> samples, InkReading& reading) {
    PlaceBreaks(samples, reading);
    std::vector<Vex::Math::Point2> pts;
    pts.reserve(samples.size());
    double sumSq = 0.0;
    std::size_t measured = 0;
    for (InterpretedCurve& made : reading.curves) {
        TakeInk(samples, made, pts);
        const Deviations deviations = DeviationsFrom(*made.curve, pts);
        made.maxDeviation = deviations.largest;
        sumSq += deviations.sumSq;
        measured += pts.size();
    }
    reading.handSpread = measured > 0 ? std::sqrt(sumSq / static_cast<double>(measured)) : 0.0;
}

} // namespace Tessera::Geometry
