#include "tessera/recognition/internal/Segmentation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/core/NumericHelpers.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/VexMath.h"
#include "tessera/recognition/internal/PathLengths.h"

// The turning test needs the directions p[i] - p[i-k] and p[i+k] - p[i] of every sample; the second is the
// first of sample i + k, so each direction is computed once and waits k samples in a ring.

namespace Tessera::Geometry {

namespace {

constexpr double kIntervalShare = 0.08333333; // look-ahead of the turning tests, of the sample count
constexpr double kStraightAgain = 1.2;        // times the threshold's cosine
constexpr std::size_t kFetchAhead = 160;   // samples: past the end of a page, where the processor's own stops
constexpr int kEndMargin = 3;              // samples at each end without speed breaks
constexpr double kFastFactor = 10.0;       // times the slow threshold: where the search for a minimum starts
constexpr std::size_t kMinSlowSamples = 3; // of a run that is judged
constexpr int kMinSpeedBreakGap = 10;      // samples between two speed breaks
constexpr int kNearBreak = 4;              // samples within which a continuity break stands for a speed break
constexpr double kShortPiece = 20.0;       // the longest piece is at least so many times longer

// Unit vector from a to b. Samples in one place keep their (near) zero vector, whose cosines are about 0.
Vex::Math::Vector2 Direction(const Point& a, const Point& b, double lengthTol) {
    Vex::Math::Vector2 d{b.x - a.x, b.y - a.y};
    const double length = std::sqrt(d.x * d.x + d.y * d.y);
    if (length >= lengthTol) {
        d.x /= length;
        d.y /= length;
    }
    return d;
}

// The sharpest turn seen and not yet reported.
struct Turn {
    static constexpr double kNone = 2.0; // above every cosine
    double cosine = kNone;
    int index = -1;
};

double MeanSpeed(std::span<const StrokePoint> pts) {
    double sum = 0.0;
    for (const StrokePoint& p : pts)
        sum += p.GetSpeed();
    return sum / static_cast<double>(pts.size());
}

} // namespace

int PointInterval(std::size_t n, int most) {
    const int share = static_cast<int>(static_cast<double>(n) * kIntervalShare);
    return std::max(1, std::min(most, share));
}

void FindContinuityBreaks(std::span<const StrokePoint> pts, int minGap, double angleDeg, unsigned int k,
                          std::vector<int>& breaks) {
    const std::size_t n = pts.size();
    const std::size_t reach = k;
    if (reach == 0 || n < 2 * reach + 1)
        return;
    const double threshold = std::cos(angleDeg * std::numbers::pi / 180.0);
    const double straight = kStraightAgain * threshold;
    const double lengthTol = EQ_ask_length_tolerance();

    std::vector<Vex::Math::Vector2> ring(reach);
    for (std::size_t i = 0; i < reach; ++i)
        ring[i] = Direction(pts[i], pts[i + reach], lengthTol);
    std::size_t slot = 0; // of the direction that ends at sample i
    Turn turn;
    for (std::size_t i = reach; i + reach < n; ++i) {
        __builtin_prefetch(&pts[std::min(i + kFetchAhead, n - 1)]);
        const Vex::Math::Vector2 ahead = Direction(pts[i], pts[i + reach], lengthTol);
        const double cosine = ring[slot].x * ahead.x + ring[slot].y * ahead.y;
        ring[slot] = ahead;
        slot = slot + 1 == reach ? 0 : slot + 1;
        if (cosine < threshold) {
            if (cosine < turn.cosine)
                turn = {cosine, static_cast<int>(i)};
        } else if (turn.cosine < threshold && cosine > straight) {
            if (turn.index - (breaks.empty() ? 0 : breaks.back()) >= minGap) {
                breaks.push_back(turn.index);
                turn.cosine = Turn::kNone;
            }
        }
    }
}

void FindSlowBreaks(std::span<const StrokePoint> pts, double ratio, std::vector<int>& breaks) {
    const int n = static_cast<int>(pts.size());
    if (n == 0)
        return;
    const double slow = ratio * MeanSpeed(pts);
    const double start = kFastFactor * slow;
    double slowest = start;
    int candidate = -1;
    for (int i = kEndMargin; i < n - kEndMargin; ++i) {
        const double speed = pts[static_cast<std::size_t>(i)].GetSpeed();
        if (speed < slow) {
            if (speed < slowest) {
                slowest = speed;
                candidate = i;
            }
        } else if (slowest < slow) {
            breaks.push_back(candidate);
            slowest = start;
        }
    }
}

void FindVaryingSpeedBreaks(std::span<const StrokePoint> pts, double ratio, std::vector<int>& breaks) {
    const int n = static_cast<int>(pts.size());
    if (n == 0)
        return;
    const double mean = MeanSpeed(pts);
    double slowest = mean;
    int candidate = -1;
    std::vector<double> window;
    for (int i = kEndMargin; i < n - kEndMargin; ++i) {
        const double speed = pts[static_cast<std::size_t>(i)].GetSpeed();
        if (speed < mean) {
            window.push_back(speed);
            if (speed < slowest) {
                slowest = speed;
                candidate = i;
            }
        } else if (window.size() >= kMinSlowSamples) {
            const int last = breaks.empty() ? 0 : breaks.back();
            double windowMean = 0.0;
            double deviation = 0.0;
            Core::FindMeanAndStdDev(window, &windowMean, &deviation);
            // A window of zeros gives NaN, which is no break.
            if (deviation / windowMean > ratio && candidate - last >= kMinSpeedBreakGap) {
                breaks.push_back(candidate);
                slowest = mean;
            }
            window.clear();
        }
    }
}

void JoinBreaks(int n, const std::vector<int>& speedBreaks, std::vector<int>& breaks) {
    std::vector<int> kept;
    kept.reserve(speedBreaks.size());
    std::size_t c = 0; // first continuity break that is not too far before s
    for (const int s : speedBreaks) {
        while (c < breaks.size() && breaks[c] <= s - kNearBreak)
            ++c;
        const bool near = c < breaks.size() && breaks[c] < s + kNearBreak;
        if (s >= kEndMargin && s < n - kEndMargin && !near)
            kept.push_back(s);
    }
    const auto middle = static_cast<std::ptrdiff_t>(breaks.size());
    breaks.insert(breaks.end(), kept.begin(), kept.end());
    std::inplace_merge(breaks.begin(), breaks.begin() + middle, breaks.end());
}

void MergeShortPieces(std::span<const double> lengthTo, std::vector<int>& breaks) {
    if (breaks.empty())
        return;
    const std::size_t m = breaks.size();
    const int lastSample = static_cast<int>(lengthTo.size()) - 1;
    double longest = PieceLength(lengthTo, breaks.back(), lastSample);
    for (std::size_t j = 0; j < m; ++j)
        longest = std::max(longest, PieceLength(lengthTo, j > 0 ? breaks[j - 1] : 0, breaks[j]));
    const double limit = longest / kShortPiece + EQ_ask_length_tolerance();

    // One walk from the end. Before step j the list reads breaks[0..j) followed by breaks[tail..m); the
    // lengths are those of the pieces as they were.
    std::size_t tail = m;
    int to = lastSample;
    for (std::size_t j = m + 1; j-- > 0 && (j > 0 || tail < m);) {
        const int from = j > 0 ? breaks[j - 1] : 0;
        bool keep = j > 0; // the break in front of piece j
        if (PieceLength(lengthTo, from, to) < limit) {
            if (tail == m)
                keep = false;
            else if (j == 0)
                ++tail;
            else
                breaks[j - 1] = (breaks[j - 1] + breaks[tail++]) / 2;
        }
        if (keep)
            breaks[--tail] = breaks[j - 1];
        to = from;
    }
    breaks.erase(breaks.begin(), breaks.begin() + static_cast<std::ptrdiff_t>(tail));
}

} // namespace Tessera::Geometry
