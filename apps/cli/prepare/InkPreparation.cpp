#include "apps/cli/prepare/InkPreparation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tessera::Tool {

namespace {

/// Diagonal of a shape's box, in working units, at which the default tolerances read hand-drawn shapes best:
/// of 25 to 200 measured on three collections of shapes drawn by many people, 25 to 35 read most of them
/// right, and the larger of these still tells a shallow arc from a line.
constexpr double kWorkingDiagonal = 35.0;
/// The strokes of a drawing share one scale, which brings the smallest to the working size, so that none
/// drowns in the smallest tolerance; strokes smaller than this part of the whole (dots, ticks) do not count
/// ...
constexpr double kSmallestPart = 0.04;
/// ... and the whole stays below the size at which the absolute tolerances get too tight for a hand.
constexpr double kLargestDiagonal = 1000.0;
/// Diagonal of a page: the preferences' distances (an end snaps from 10, a trim reaches for 40) are made for
/// drawings that fill a screen.
constexpr double kPageDiagonal = 1000.0;
/// Decimal digits of a drawing's size that are told of its points: far finer than any ink, and coarse enough
/// to hide the rounding of sums.
constexpr double kDigits = 11.0;
constexpr double kLargestGrid = 1e22; ///< the last power of ten that is a number without rounding
/// Steps along the diagonal of a stroke's box, measured likewise: fewer round the ends of ovals into corners,
/// more miss the rounded corners of squares.
constexpr double kStepsPerDiagonal = 120.0;
constexpr int kFewestPoints = 8;
/// A poly-line whose segments are on average this many steps long was not drawn by a pen.
constexpr double kSparseSteps = 8.0;
/// Prepared samples for each input sample at the most, so that a stroke that fills its box stays bounded.
constexpr double kMostPerSample = 16.0;
/// Clocks that stand still for nearly all of a stroke tell nothing about speed.
constexpr std::size_t kFewestTicks = 8;

struct Box {
    double minX = std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();

    template <class P>
    void Add(const P& p) {
        minX = std::min(minX, p.x);
        minY = std::min(minY, p.y);
        maxX = std::max(maxX, p.x);
        maxY = std::max(maxY, p.y);
    }
    double Diagonal() const { return std::hypot(maxX - minX, maxY - minY); }
    Position Middle() const { return {0.5 * (minX + maxX), 0.5 * (minY + maxY)}; }
};

template <class P>
Box BoxOf(const std::vector<P>& points) {
    Box box;
    for (const P& p : points) {
        box.Add(p);
    }
    return box;
}

Box BoxOf(const Drawing& drawing) {
    Box whole;
    for (const InkStroke& stroke : drawing.strokes) {
        if (stroke.problem.empty()) {
            for (const Sample& sample : stroke.samples) {
                whole.Add(sample);
            }
        }
    }
    return whole;
}

double Distance(const PreparedSample& a, const PreparedSample& b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

PreparedSample Mix(const PreparedSample& a, const PreparedSample& b, double f) {
    const auto mix = [f](double u, double v) { return u + f * (v - u); };
    return {mix(a.x, b.x), mix(a.y, b.y), mix(a.speed, b.speed), mix(a.timeMs, b.timeMs),
            mix(a.source, b.source)};
}

std::vector<PreparedSample> PlaceSamples(const InkStroke& stroke, const WorkingFrame& frame) {
    std::vector<PreparedSample> samples;
    samples.reserve(stroke.samples.size());
    for (const Sample& sample : stroke.samples) {
        const Position p = frame.ToWorking({sample.x, sample.y});
        samples.push_back({p.x, p.y, 0.0, sample.timeMs, static_cast<double>(samples.size())});
    }
    return samples;
}

/// Drops samples in the place of the one before. The time stays that of the arrival, so a resting pen shows
/// as a slow next segment.
std::vector<PreparedSample> WithoutRepeats(const std::vector<PreparedSample>& samples) {
    std::vector<PreparedSample> kept;
    kept.reserve(samples.size());
    for (const PreparedSample& sample : samples) {
        if (kept.empty() || sample.x != kept.back().x || sample.y != kept.back().y) {
            kept.push_back(sample);
        }
    }
    return kept;
}

/// Drops samples whose clock has not moved on; the last place of the stroke is never given up.
std::vector<PreparedSample> WithoutEqualTimes(const std::vector<PreparedSample>& samples) {
    std::vector<PreparedSample> kept;
    kept.reserve(samples.size());
    for (const PreparedSample& sample : samples) {
        if (kept.empty() || sample.timeMs > kept.back().timeMs) {
            kept.push_back(sample);
        }
    }
    if (kept.back().source != samples.back().source && kept.size() > 1) {
        const double timeMs = kept.back().timeMs;
        kept.back() = samples.back();
        kept.back().timeMs = timeMs;
    }
    return kept;
}

/// Speed over the two segments that meet at a sample, the one segment at an end.
void ComputeSpeeds(std::vector<PreparedSample>& samples) {
    const std::size_t n = samples.size();
    for (std::size_t i = 0; i < n; ++i) {
        const PreparedSample& before = samples[i == 0 ? 0 : i - 1];
        const PreparedSample& after = samples[i + 1 == n ? i : i + 1];
        const double seconds = (after.timeMs - before.timeMs) / 1000.0;
        const double way = Distance(before, samples[i]) + Distance(samples[i], after);
        samples[i].speed = seconds > 0.0 ? way / seconds : 0.0;
    }
}

/// Length of the stroke measured with a divider opened to `step`, which jitter below that size does not
/// lengthen.
double DividerLength(const std::vector<PreparedSample>& samples, double step) {
    double length = 0.0;
    const PreparedSample* last = &samples.front();
    for (const PreparedSample& sample : samples) {
        const double gap = Distance(*last, sample);
        if (gap >= step) {
            length += gap;
            last = &sample;
        }
    }
    return length + Distance(*last, samples.back());
}

/// Moving average over 2 * half + 1 samples, narrower towards the ends, which stay where they are.
void Smooth(std::vector<PreparedSample>& samples, std::size_t half) {
    const std::vector<PreparedSample> raw = samples;
    const std::size_t n = raw.size();
    PreparedSample sum = raw[0];
    std::size_t first = 0;
    std::size_t last = 0;
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const std::size_t reach = std::min({half, i, n - 1 - i});
        for (; last < i + reach; ++last) {
            sum.x += raw[last + 1].x;
            sum.y += raw[last + 1].y;
            sum.speed += raw[last + 1].speed;
        }
        for (; first < i - reach; ++first) {
            sum.x -= raw[first].x;
            sum.y -= raw[first].y;
            sum.speed -= raw[first].speed;
        }
        const auto count = static_cast<double>(last - first + 1);
        samples[i].x = sum.x / count;
        samples[i].y = sum.y / count;
        samples[i].speed = sum.speed / count;
    }
}

/// Appends `intervals` samples evenly by arc length behind the first of the range, ending in its last.
void ResampleRange(const std::vector<PreparedSample>& samples, const std::vector<double>& arc,
                   std::size_t first, std::size_t last, int intervals, std::vector<PreparedSample>& out) {
    std::size_t segment = first;
    for (int i = 1; i < intervals; ++i) {
        const double target = arc[first] + (arc[last] - arc[first]) * i / intervals;
        while (segment + 1 < last && arc[segment + 1] < target) {
            ++segment;
        }
        const double length = arc[segment + 1] - arc[segment];
        const double f = length > 0.0 ? (target - arc[segment]) / length : 0.0;
        out.push_back(Mix(samples[segment], samples[segment + 1], std::clamp(f, 0.0, 1.0)));
    }
    out.push_back(samples[last]);
}

int Intervals(double length, double step, int fewest) {
    return std::max(fewest, static_cast<int>(std::lround(length / step)));
}

/// Even samples; where single segments are long their ends stay samples, so that corners stay sharp.
std::vector<PreparedSample> Resample(const std::vector<PreparedSample>& samples, double step) {
    const std::size_t n = samples.size();
    std::vector<double> arc(n, 0.0);
    for (std::size_t i = 1; i < n; ++i) {
        arc[i] = arc[i - 1] + Distance(samples[i - 1], samples[i]);
    }
    step = std::max(step, arc[n - 1] / (kMostPerSample * static_cast<double>(n)));
    const double longSegment = kSparseSteps * step;
    const bool isSparse = arc[n - 1] >= longSegment * static_cast<double>(n - 1);
    std::vector<PreparedSample> out = {samples.front()};
    for (std::size_t first = 0; first + 1 < n;) {
        std::size_t last = first + 1;
        if (!isSparse && arc[last] - arc[first] < longSegment) {
            while (last + 1 < n && arc[last + 1] - arc[last] < longSegment) {
                ++last;
            }
        }
        const bool isWhole = first == 0 && last + 1 == n;
        const int fewest = isSparse ? kFewestPoints : isWhole ? kFewestPoints - 1 : 1;
        ResampleRange(samples, arc, first, last, Intervals(arc[last] - arc[first], step, fewest), out);
        first = last;
    }
    return out;
}

} // namespace

bool WorkingFrame::IsUsable() const {
    return std::isfinite(1.0 / scale) && std::isfinite(scale) && std::isfinite(origin.x) &&
           std::isfinite(origin.y);
}

WorkingFrame PageFrame(const Drawing& drawing) {
    const Box whole = BoxOf(drawing);
    const double grid = std::pow(10.0, kDigits - std::ceil(std::log10(whole.Diagonal())));
    const bool isExact = grid >= 1.0 && grid <= kLargestGrid; // and its inverse needs no rounding of its own
    return {whole.Middle(), kPageDiagonal / whole.Diagonal(), isExact ? grid : 0.0};
}

WorkingFrame AutomaticFrame(const Drawing& drawing) {
    const Box whole = BoxOf(drawing);
    double smallest = whole.Diagonal();
    for (const InkStroke& stroke : drawing.strokes) {
        const double diagonal = stroke.problem.empty() ? BoxOf(stroke.samples).Diagonal() : 0.0;
        if (diagonal >= kSmallestPart * whole.Diagonal()) {
            smallest = std::min(smallest, diagonal);
        }
    }
    const double scale = std::min(kWorkingDiagonal / smallest, kLargestDiagonal / whole.Diagonal());
    return {whole.Middle(), scale, 0.0};
}

WorkingFrame FixedFrame(double scale) {
    return {{0.0, 0.0}, scale, 0.0};
}

WorkingFrame ChosenFrame(const Drawing& drawing, const std::optional<double>& inkScale) {
    return inkScale ? FixedFrame(*inkScale) : PageFrame(drawing);
}

std::vector<PreparedSample> TakeSamples(const InkStroke& stroke, const WorkingFrame& frame) {
    std::vector<PreparedSample> samples = PlaceSamples(stroke, frame);
    if (stroke.isTimed) {
        ComputeSpeeds(samples);
    }
    return samples;
}

std::vector<PreparedSample> PrepareStroke(const InkStroke& stroke, const WorkingFrame& frame) {
    std::vector<PreparedSample> samples = WithoutRepeats(PlaceSamples(stroke, frame));
    if (stroke.isTimed) {
        std::vector<PreparedSample> ticks = WithoutEqualTimes(samples);
        if (ticks.size() >= std::min(kFewestTicks, samples.size())) {
            samples = std::move(ticks);
            ComputeSpeeds(samples);
        }
    }
    if (samples.size() < 2) {
        return samples;
    }
    const double step = BoxOf(samples).Diagonal() / kStepsPerDiagonal;
    const double perStep = static_cast<double>(samples.size()) * step / DividerLength(samples, step);
    if (perStep >= 2.0) {
        Smooth(samples, static_cast<std::size_t>(perStep / 2.0));
    }
    return Resample(samples, step);
}

} // namespace Tessera::Tool
