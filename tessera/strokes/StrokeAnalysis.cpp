// Measurements on strokes: lengths, turning, speeds, hull, polygon tests, and denser sampling.
#include "tessera/strokes/Stroke.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "tessera/core/NumericHelpers.h"
#include "tessera/core/internal/Statistics.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/SmArray.h"
#include "tessera/strokes/internal/ConvexHull.h"

namespace Tessera::Geometry {

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
// On cosine and sine of a turn, well above the rounding of unit vectors. A cosine this near to 1 is a turn of
// 1.4e-6 rad: two rounds keep their turning up to some nine million samples.
constexpr double kTurnTol = 1e-12;
constexpr double kPi = 3.141592653589793;

struct UnitVector {
    double x = 0.0, y = 0.0;
};

// The zero vector stays zero.
UnitVector UnitBetween(const Point& p, const Point& q) {
    const double dx = q.x - p.x;
    const double dy = q.y - p.y;
    const double length = std::sqrt(dx * dx + dy * dy);
    return length > 0.0 ? UnitVector{dx / length, dy / length} : UnitVector{};
}

double SignedTurn(const UnitVector& u, const UnitVector& v) {
    const double x = u.x * v.x + u.y * v.y;
    const double s = u.x * v.y - u.y * v.x;
    if (std::fabs(x - 1.0) <= kTurnTol || std::fabs(s) <= kTurnTol) {
        return 0.0;
    }
    const double turn = std::fabs(x + 1.0) <= kTurnTol ? kPi : std::acos(x);
    return s > 0.0 ? turn : -turn;
}

// --- ComputeSpeed

constexpr int kSpikeWindow = 3;
constexpr double kSpikeRatio = 1.2;

double SegmentLength(const double* x, const double* y, int i) {
    return std::hypot(x[i + 1] - x[i], y[i + 1] - y[i]);
}

// Speeds over the two neighbouring segments; negative where there is none: no duration, or one too short for
// a finite speed, or a position that is not a number.
void RawSpeeds(int n, const double* x, const double* y, const double* t, double* speed) {
    for (int i = 0; i < n; ++i) {
        double distance = 0.0;
        double duration = 0.0;
        for (int segment = std::max(i - 1, 0); segment <= std::min(i, n - 2); ++segment) {
            distance += SegmentLength(x, y, segment);
            duration += t[segment];
        }
        const double raw = duration > 0.0 ? distance / duration : -1.0;
        speed[i] = std::isfinite(raw) ? raw : -1.0;
    }
}

// A sample without a duration moves like the nearest samples that have one: their mean.
void FillUntimed(int n, double* speed) {
    int i = 0;
    double before = -1.0;
    while (i < n) {
        if (speed[i] >= 0.0) {
            before = speed[i++];
            continue;
        }
        int next = i;
        while (next < n && speed[next] < 0.0) {
            ++next;
        }
        double fill = next < n ? speed[next] : before;
        if (before >= 0.0 && next < n) {
            fill = 0.5 * (before + fill);
        }
        std::fill(speed + i, speed + next, std::max(fill, 0.0));
        i = next;
    }
}

// Whether an inner sample is faster than those around it (itself left out), and its neighbours are not.
bool IsSpike(int n, const double* speed, int i) {
    double around[2 * kSpikeWindow];
    std::size_t count = 0;
    for (int j = std::max(i - kSpikeWindow, 0); j <= std::min(i + kSpikeWindow, n - 1); ++j) {
        if (j != i) {
            around[count++] = speed[j];
        }
    }
    double mean = 0.0;
    if (!Core::MeanAndStdDevWithOutlierRejection({around, count}, &mean, nullptr)) {
        return false;
    }
    const double limit = kSpikeRatio * mean;
    return speed[i] > limit && !(speed[i - 1] > limit) && !(speed[i + 1] > limit);
}

void SmoothSpikes(int n, double* speed) {
    struct Replacement {
        int index;
        double speed;
    };
    std::vector<Replacement> replacements; // applied afterwards, so that none influences the next test
    for (int i = 1; i + 1 < n; ++i) {
        if (IsSpike(n, speed, i)) {
            replacements.push_back({i, 0.5 * (speed[i - 1] + speed[i + 1])});
        }
    }
    for (const Replacement& r : replacements) {
        speed[r.index] = r.speed;
    }
}

} // namespace

bool Stroke::IsInPolygon(int n, double* xs, double* ys) {
    return std::all_of(points_.begin(), points_.end(), [&](const StrokePoint& point) {
        return Core::PointInPolygon(point.x, point.y, n, xs, ys);
    });
}

bool Stroke::IsCrossPolygon(int n, double* xs, double* ys) {
    return std::any_of(points_.begin(), points_.end(), [&](const StrokePoint& point) {
        return Core::PointInPolygon(point.x, point.y, n, xs, ys);
    });
}

double Stroke::GetSegLengthOverThreshold(double threshold, double* total) const {
    const double limit = threshold - EQ_ask_length_tolerance();
    double longLength = 0.0;
    *total = 0.0;
    for (std::size_t i = 1; i < GetPoints().size(); ++i) {
        const double d = GetPoints()[i - 1].Distance(GetPoints()[i]);
        *total += d;
        if (d > limit) {
            longLength += d;
        }
    }
    return longLength;
}

Stroke* Stroke::UpSampleStroke(int f) const {
    auto dense = std::make_unique<Stroke>();
    const std::size_t n = points_.size();
    const int inserted = std::max(f, 0);
    dense->points_.reserve(n + (n > 0 ? n - 1 : 0) * static_cast<std::size_t>(inserted));
    for (std::size_t i = 0; i < n; ++i) {
        const StrokePoint& p = points_[i];
        dense->points_.push_back(p);
        for (int j = 1; i + 1 < n && j <= inserted; ++j) {
            const double s = static_cast<double>(j) / (inserted + 1.0);
            const StrokePoint& q = points_[i + 1];
            dense->points_.emplace_back(p.x + s * (q.x - p.x), p.y + s * (q.y - p.y),
                                        p.GetSpeed() + s * (q.GetSpeed() - p.GetSpeed()));
        }
    }
    dense->PointsChanged();
    return dense.release();
}

double Stroke::ComputeCummulativeAngle() const {
    const std::vector<StrokePoint>& points = GetPoints();
    if (points.size() < 3) {
        return 0.0;
    }
    double sum = 0.0;
    UnitVector in = UnitBetween(points[0], points[1]);
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const UnitVector out = UnitBetween(points[i], points[i + 1]);
        sum += SignedTurn(in, out);
        in = out;
    }
    return sum * kDegreesPerRadian;
}

void Stroke::ComputeSpeed(int n, double* x, double* y, double* t, double scale, double* speed) {
    if (n < 1) {
        return;
    }
    RawSpeeds(n, x, y, t, speed);
    FillUntimed(n, speed);
    SmoothSpikes(n, speed);
    for (int i = 0; i < n; ++i) {
        speed[i] *= scale;
    }
}

void Stroke::ComputeConvexHull(int* n, double** x, double** y) const {
    *n = 0;
    *x = nullptr;
    *y = nullptr;
    const std::vector<Point> hull = ConvexHull(std::vector<Point>(GetPoints().begin(), GetPoints().end()));
    SmArray<double> xs = MakeSmArray<double>(hull.size(), "ComputeConvexHull:0");
    SmArray<double> ys = MakeSmArray<double>(hull.size(), "ComputeConvexHull:1");
    if (hull.empty() || !xs || !ys) {
        return;
    }
    for (std::size_t i = 0; i < hull.size(); ++i) {
        xs[i] = hull[i].x;
        ys[i] = hull[i].y;
    }
    *n = static_cast<int>(hull.size());
    *x = xs.release();
    *y = ys.release();
}

} // namespace Tessera::Geometry
