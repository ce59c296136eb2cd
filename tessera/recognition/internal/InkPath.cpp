#include "tessera/recognition/internal/InkPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessera::Geometry {

namespace {

// Spacing of the points in units of the path's size: a square has a hundred of them, a line fifty.
constexpr double kStep = 0.07;
constexpr int kFewest = 48;       // enough for the shortest side of a simple shape
constexpr double kSlowest = 0.6;  // of its usual speed: a hand is slower somewhere, at least at the ends
constexpr int kPaceSmoothing = 2; // points to either side: smooths the clock of the device
constexpr int kMost = 1500;       // bounds the work for scribbles that wander on and on

// How a drawing of many pieces is seen: at the widest spacing of points at which its corners lie apart.
constexpr int kReach = 4;           // points to either side of one at which the ink bends
constexpr double kBent = 0.94;      // of the way along the ink between these: a chord that cuts a corner
constexpr double kMostHidden = 0.1; // of the points, in bends too long for one corner
constexpr double kRatio = 1.3;      // of the spacings tried
constexpr double kFinest = 0.75;    // of the mean distance of the samples: what lies closer is not in the ink
constexpr double kFreeTurn = 0.2;   // radians within so many points that tremor turns
constexpr double kTurnBack = 1.1;   // radians that tremor hardly turns one way in all
constexpr double kFirmShare = 0.6;  // of what pieces turn
constexpr double kTurnOfPiece = 0.5 * std::numbers::pi; // on average, of corners as of bends
constexpr int kManyPieces = 10;                         // of fewer the whole drawing is the unit
constexpr double kMeanPiece = 1.7;                      // units: a square's side is as long
constexpr double kFewPieces = 5.0; // whose length counts where the length of a simple shape is meant
constexpr int kMostFine = 4000;    // sums over runs of more lose their digits

// How a narrow outline is seen, sizes: so that corners at its ends lie apart. Rectangles of 5 to 14 times the
// breadth come back as such from careful and usual hands, 99 % of them; without it those of 8 times and more
// are triangles and wedges. With six points instead of eight 97 % come back. Rates on real ink stay.
constexpr double kBreadth = 0.56;      // eight points
constexpr double kLeastBreadth = 0.19; // of less both sides are one line
constexpr double kThereAndBack = 5.9;  // length of ink that covers its extent 1.7 times

// Two corners close together, one to the left and one to the right: of lines with a jog of a tenth to a fifth
// of their length 68 % of careful hands' come back, without a finer spacing 31 %.
constexpr int kJogReach = 2;     // points to either side over which the pen's turning is followed
constexpr double kJogTurn = 0.8; // radians that no tremor turns one way within a corner

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

// Distance of two long sides that the points lie on evenly: twice the root mean square distance from the
// centroid across the direction in which they extend most.
double BreadthOf(const InkPath& path) {
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (const Point& p : path.pts) {
        xx += p.x * p.x;
        xy += p.x * p.y;
        yy += p.y * p.y;
    }
    const double least = 0.5 * (xx + yy - std::hypot(xx - yy, 2.0 * xy));
    return 2.0 * std::sqrt(std::max(0.0, least) / path.Size());
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

struct Resampled {
    std::vector<Point> pts;
    std::vector<double> source;
};

// So many points evenly along the path.
Resampled Resample(const Centred& from, int n) {
    Resampled to;
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
        to.pts.push_back({a.x + f * (b.x - a.x), a.y + f * (b.y - a.y)});
        to.source.push_back(from.index[segment - 1] + f * (from.index[segment] - from.index[segment - 1]));
    }
    return to;
}

// The points of the path in units of the given length, about the origin that the path has already.
void LayOut(const Centred& distinct, double unit, double most, InkPath& path) {
    path.scale = unit;
    path.length = distinct.at.back() / unit;
    path.closingLength = path.length;
    const int n = static_cast<int>(std::clamp(path.length / kStep, static_cast<double>(kFewest), most));
    path.step = path.length / (n - 1);
    Resampled even = Resample(distinct, n);
    path.source = std::move(even.source);
    path.pts = std::move(even.pts);
    for (Point& p : path.pts)
        p = {(p.x - path.origin.x) / unit, (p.y - path.origin.y) / unit};
}

// Even chords of the length of two samples: they do not follow the steps of a grid.
Centred Thin(const Centred& path) {
    Centred thin;
    for (const Point& p : Resample(path, static_cast<int>(path.pts.size()) / 2 + 1).pts) {
        const double moved = thin.pts.empty() ? 0.0 : p.Distance(thin.pts.back());
        if (!thin.pts.empty() && moved <= 0.0)
            continue;
        thin.at.push_back(thin.pts.empty() ? 0.0 : thin.at.back() + moved);
        thin.pts.push_back(p);
        thin.index.push_back(0.0);
    }
    return thin;
}

// Share of the points that lie in bends too long for one corner: two corners or more, a tight arc.
double HiddenShare(const std::vector<Point>& pts, double step) {
    const int n = static_cast<int>(pts.size());
    const double least = kBent * 2.0 * kReach * step;
    int hidden = 0;
    int run = 0;
    for (int i = kReach; i <= n - kReach; ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (i < n - kReach && pts[at - kReach].Distance2(pts[at + kReach]) < least * least) {
            ++run;
            continue;
        }
        hidden += run > 2 * kReach ? run : 0;
        run = 0;
    }
    return static_cast<double>(hidden) / n;
}

// Whether the pen turns both ways in a bend too long for one corner: two corners that are not seen apart.
bool HasJog(const InkPath& path) {
    const auto at = [&](int i) { return path.pts[static_cast<std::size_t>(i)]; };
    const double least = kBent * 2.0 * kReach * path.step;
    int run = 0;
    double heading = 0.0;
    double lowest = 0.0;
    double highest = 0.0;
    double left = 0.0; // the most that the pen turned that way in the run
    double right = 0.0;
    for (int i = kReach; i < path.Size() - kReach; ++i) {
        if (at(i - kReach).Distance2(at(i + kReach)) >= least * least) {
            run = 0;
            heading = lowest = highest = left = right = 0.0;
            continue;
        }
        heading += SignedAngle(at(i) - at(i - kJogReach), at(i + kJogReach) - at(i)) / kJogReach;
        lowest = std::min(lowest, heading);
        highest = std::max(highest, heading);
        left = std::max(left, heading - lowest);
        right = std::max(right, highest - heading);
        if (++run > 2 * kReach && std::min(left, right) > kJogTurn)
            return true;
    }
    return false;
}

// Pieces of the drawing, by how much the pen turned; 0 when it mostly turned back at once, as tremor does.
int CountPieces(const std::vector<Point>& pts) {
    double turned = 0.0;
    double firmly = 0.0; // without what was turned back
    double heading = 0.0;
    double began = 0.0; // heading where the pen began to turn one way
    double most = 0.0;  // and as far as it has turned since
    for (std::size_t i = kReach; i + kReach < pts.size(); i += kReach) {
        const double turn = SignedAngle(pts[i] - pts[i - kReach], pts[i + kReach] - pts[i]);
        if (std::fabs(turn) <= kFreeTurn)
            continue;
        turned += std::fabs(turn);
        heading += turn;
        const double sense = most < began ? -1.0 : 1.0;
        if (sense * heading > sense * most) {
            most = heading;
        } else if (sense * (most - heading) > kTurnBack) {
            firmly += sense * (most - began);
            began = most;
            most = heading;
        }
    }
    firmly += std::fabs(most - began);
    return firmly < kFirmShare * turned ? 0 : static_cast<int>(turned / kTurnOfPiece) + 1;
}

struct PieceCount {
    int pieces = 0;
    int points = 0; // along the path, between which all of them are seen
};

// The same at the widest spacing at which all of them are seen, of n points and more; no pieces for ink so
// rough or so sparse that there is none.
PieceCount CountPieces(const Centred& distinct, int n) {
    const Centred thin = Thin(distinct);
    if (thin.pts.size() < 2)
        return {};
    const double finest = kFinest * thin.at.back() / static_cast<double>(distinct.pts.size());
    for (;; n = static_cast<int>(kRatio * n)) {
        const double step = thin.at.back() / (n - 1);
        if (n > kMostFine || step < finest)
            return {};
        const std::vector<Point> pts = Resample(thin, n).pts;
        if (HiddenShare(pts, step) <= kMostHidden)
            return {CountPieces(pts), n};
    }
}

// Points a unit of time over so many points to either side, of what is exceeded at a quarter of the points;
// empty where the clock stands still.
std::vector<double> PaceOver(const std::vector<double>& time, int reach) {
    const int n = static_cast<int>(time.size());
    std::vector<double> pace;
    pace.reserve(time.size());
    for (int i = 0; i < n; ++i) {
        const int from = std::max(0, i - reach);
        const int to = std::min(n - 1, i + reach);
        const double taken = time[static_cast<std::size_t>(to)] - time[static_cast<std::size_t>(from)];
        if (!(taken > 0.0))
            return {};
        pace.push_back((to - from) / taken);
    }
    std::vector<double> ordered = pace;
    const auto upper = ordered.begin() + 3 * n / 4;
    std::nth_element(ordered.begin(), upper, ordered.end());
    const double usual = *upper;
    if (!(usual > 0.0) || !std::isfinite(usual))
        return {};
    for (double& p : pace)
        p /= usual;
    return pace;
}

} // namespace

InkPath MakeInkPath(std::span<const InkSample> samples) {
    InkPath path;
    if (samples.empty())
        return path;
    const Centred distinct = TakeDistinct(samples);
    if (distinct.pts.size() < 2)
        return path;
    const double size = SizeOf(distinct, path.origin);
    if (!(size > 0.0) || !std::isfinite(size))
        return path;
    LayOut(distinct, size, kMost, path);
    path.origin += Point(samples[0].x, samples[0].y);
    return path;
}

InkPath FitToPieces(std::span<const InkSample> samples, InkPath path) {
    if (path.pts.empty())
        return path;
    const Centred distinct = TakeDistinct(samples);
    const Point first(samples[0].x, samples[0].y);
    const auto layOut = [&](double unit) {
        path.origin -= first;
        LayOut(distinct, unit * path.scale, kMostFine, path);
        path.origin += first;
    };
    const auto [pieces, points] = CountPieces(distinct, path.Size());
    if (pieces >= kManyPieces && path.length < kMeanPiece * pieces) {
        layOut(path.length * std::max(1.0 / (kMeanPiece * pieces), kStep / kMostFine));
        path.closingLength = kFewPieces * kMeanPiece;
    } else if (const double breadth = BreadthOf(path);
               path.length > kThereAndBack && breadth > kLeastBreadth && breadth < kBreadth) {
        layOut(breadth / kBreadth);
    } else if (pieces > 0 && points > path.Size() && HasJog(path)) {
        layOut(static_cast<double>(path.Size()) / points);
    }
    return path;
}

int PointAt(const InkPath& path, int sample) {
    const auto at = std::lower_bound(path.source.begin(), path.source.end(), static_cast<double>(sample));
    return std::min(static_cast<int>(at - path.source.begin()), path.Size() - 1);
}

PenPace PaceAlong(const InkPath& path, std::span<const InkSample> samples) {
    std::vector<double> time;
    time.reserve(path.pts.size());
    for (const double source : path.source) {
        const auto k = static_cast<std::size_t>(source);
        const double f = source - static_cast<double>(k);
        time.push_back(f > 0.0 ? samples[k].t + f * (samples[k + 1].t - samples[k].t) : samples[k].t);
    }
    PenPace pace{PaceOver(time, kPaceSmoothing), PaceOver(time, 1)};
    if (pace.wide.empty() || *std::min_element(pace.wide.begin(), pace.wide.end()) > kSlowest)
        return {};
    if (pace.close.empty())
        pace.close = pace.wide;
    return pace;
}

} // namespace Tessera::Geometry
