// What lies under a scribble. The region is a union of convex polygons (the hull of each pair of consecutive
// legs, or of each full turn, grown by half the minimum spacing); a curve is cut where it crosses their
// borders, and the middle of each stretch tells whether the stretch lies under the region.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/geometry/Line.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/internal/SmArray.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/internal/ScribbleRecord.h"
#include "tessera/strokes/Stroke.h"
#include "tessera/strokes/internal/ConvexHull.h"

namespace Tessera::Geometry {

namespace {

using Polygon = std::vector<Point>;

// --- Region

constexpr int kGrowDirections = 8;
constexpr double kFullTurn = 2.0 * std::numbers::pi;

Polygon GrownHull(const Stroke& stroke, int from, int to, double distance) {
    const std::vector<StrokePoint>& points = stroke.GetPoints();
    const Polygon core = ConvexHull(Polygon(points.begin() + from, points.begin() + to + 1));
    Polygon grown;
    grown.reserve(core.size() * kGrowDirections);
    for (const Point& p : core) {
        for (int k = 0; k < kGrowDirections; ++k) {
            const double angle = kFullTurn * k / kGrowDirections;
            grown.emplace_back(p.x + distance * std::cos(angle), p.y + distance * std::sin(angle));
        }
    }
    return ConvexHull(std::move(grown));
}

// Where a round scribble has completed a turn, in order, from its first to its last sample.
std::vector<int> TurnEnds(const Stroke& stroke) {
    std::vector<int> ends{0};
    const int last = stroke.AskNumberOfPoints() - 1;
    double turned = 0.0;
    for (int i = 1; i < last; ++i) {
        const std::vector<StrokePoint>& p = stroke.GetPoints();
        turned += Vector(p[i - 1], p[i]).AngleBetween(Vector(p[i], p[i + 1]));
        if (std::fabs(turned) >= kFullTurn) {
            ends.push_back(i);
            turned = 0.0;
        }
    }
    ends.push_back(last);
    return ends;
}

// --- A curve under the region

struct Stretch {
    double from, to;
};

struct CurveUnderRegion {
    std::vector<Stretch> stretches; ///< under the region, ascending and apart
    double coveredPart = 0.0;       ///< of the curve's length
};

class Region {
public:
    explicit Region(std::vector<Polygon> polygons) : polygons_(std::move(polygons)) {
        for (const Polygon& polygon : polygons_) {
            boxes_.emplace_back(polygon);
        }
    }

    CurveUnderRegion Covers(const Curve& curve) const {
        CurveUnderRegion result;
        double limits[2];
        curve.AskRange(limits);
        std::vector<double> cuts = BorderCrossings(curve);
        cuts.push_back(limits[0]);
        cuts.push_back(limits[1]);
        std::sort(cuts.begin(), cuts.end());
        double covered = 0.0;
        for (std::size_t i = 1; i < cuts.size(); ++i) {
            double range[2] = {std::max(cuts[i - 1], limits[0]), std::min(cuts[i], limits[1])};
            const double middle = 0.5 * (range[0] + range[1]);
            if (range[1] <= range[0] || !Contains(curve.GetPointAtParameter(middle, true))) {
                continue;
            }
            covered += curve.CurveLength(range);
            if (!result.stretches.empty() && result.stretches.back().to == range[0]) {
                result.stretches.back().to = range[1];
            } else {
                result.stretches.push_back({range[0], range[1]});
            }
        }
        const double length = curve.Length();
        result.coveredPart = length > 0.0 ? covered / length : 0.0;
        JoinAcrossSeam(curve, limits, result.stretches);
        return result;
    }

    bool Contains(const Point& p) const {
        for (std::size_t i = 0; i < polygons_.size(); ++i) {
            if (boxes_[i].ContainPoint(p) && IsInConvexHull(p, polygons_[i])) {
                return true;
            }
        }
        return false;
    }

private:
    std::vector<double> BorderCrossings(const Curve& curve) const {
        std::vector<double> crossings;
        XYBox curveBox;
        curve.AskXYBox(curveBox);
        for (std::size_t i = 0; i < polygons_.size(); ++i) {
            if (!boxes_[i].HasIntersect(curveBox)) {
                continue;
            }
            for (std::size_t k = 0; k < polygons_[i].size(); ++k) {
                const Line edge(polygons_[i][k], polygons_[i][(k + 1) % polygons_[i].size()]);
                int count = 0;
                std::vector<double> onCurve, onEdge;
                std::vector<Point> points;
                curve.IntersectCurve(edge, &count, onCurve, onEdge, points, EQ_ask_length_tolerance());
                crossings.insert(crossings.end(), onCurve.begin(), onCurve.end());
            }
        }
        return crossings;
    }

    // On a closed arc or ellipse the first and the last stretch are one when both touch the seam.
    static void JoinAcrossSeam(const Curve& curve, const double limits[2], std::vector<Stretch>& stretches) {
        const bool hasAngles = curve.GetType() == CurveType_Arc || curve.GetType() == CurveType_Ellipse;
        if (hasAngles && curve.IsClosed() && stretches.size() > 1 && stretches.front().from == limits[0] &&
            stretches.back().to == limits[1]) {
            stretches.back().to = stretches.front().to + (limits[1] - limits[0]);
            stretches.erase(stretches.begin());
        }
    }

    std::vector<Polygon> polygons_;
    std::vector<XYBox> boxes_;
};

// --- Trimming

// Parameters at which other curves cross this one.
std::vector<double> CrossingsWithOthers(const Curve& curve, int curveCount, Curve** curves) {
    std::vector<double> crossings;
    for (int i = 0; i < curveCount; ++i) {
        if (curves[i] == nullptr || curves[i] == &curve) {
            continue;
        }
        int count = 0;
        std::vector<double> onCurve, onOther;
        std::vector<Point> points;
        curve.IntersectCurve(*curves[i], &count, onCurve, onOther, points, EQ_ask_length_tolerance());
        crossings.insert(crossings.end(), onCurve.begin(), onCurve.end());
    }
    return crossings;
}

// The nearest crossing within the tolerance along the curve; the parameter itself when there is none, or when
// it is an end of the curve, which bounds the piece as well as any crossing.
double PulledToCrossing(const Curve& curve, double t, const std::vector<double>& crossings,
                        double tolerance) {
    double limits[2];
    curve.AskRange(limits);
    if (!curve.IsClosed() && (t == limits[0] || t == limits[1])) {
        return t;
    }
    const double turn = t > limits[1] ? limits[1] - limits[0] : 0.0; // beyond the seam
    double best = t;
    double bestDistance = tolerance;
    for (const double crossing : crossings) {
        const double candidate = crossing + turn;
        double range[2] = {std::min(t, candidate), std::max(t, candidate)};
        const double distance = curve.CurveLength(range);
        if (distance <= bestDistance) {
            bestDistance = distance;
            best = candidate;
        }
    }
    return best;
}

std::vector<Stretch> TrimmedStretches(const Curve& curve, const std::vector<Stretch>& covered,
                                      const std::vector<double>& crossings, double tolerance) {
    std::vector<Stretch> trimmed;
    for (const Stretch& stretch : covered) {
        Stretch pulled{PulledToCrossing(curve, stretch.from, crossings, tolerance),
                       PulledToCrossing(curve, stretch.to, crossings, tolerance)};
        if (pulled.to <= pulled.from) { // both ends would meet at one crossing and nothing be trimmed
            pulled = stretch;
        }
        if (!trimmed.empty() && pulled.from <= trimmed.back().to) {
            trimmed.back().to = std::max(trimmed.back().to, pulled.to);
        } else {
            trimmed.push_back(pulled);
        }
    }
    return trimmed;
}

// --- The verdict over all curves

struct Verdict {
    std::vector<int> hitIds, erasedIds, trimIds;
    std::vector<double> trimRanges;
};

Verdict Judge(const Stroke& stroke, const ScribbleRecord& record, bool mayTrim, int curveCount,
              Curve** curves) {
    const Region region(ScribbleRegion(stroke, record));
    Verdict verdict;
    for (int i = 0; i < curveCount; ++i) {
        if (curves[i] == nullptr) {
            continue;
        }
        const Curve& curve = *curves[i];
        const CurveUnderRegion under = region.Covers(curve);
        const bool isPointUnder = curve.IsZeroLength() && region.Contains(curve.GetStart());
        if (under.stretches.empty() && !isPointUnder) {
            continue;
        }
        verdict.hitIds.push_back(curve.GetId());
        if (isPointUnder || under.coveredPart >= record.eraseRatio) {
            verdict.erasedIds.push_back(curve.GetId());
        } else if (mayTrim && under.coveredPart >= record.trimRatio) {
            const std::vector<double> crossings = CrossingsWithOthers(curve, curveCount, curves);
            for (const Stretch& s :
                 TrimmedStretches(curve, under.stretches, crossings, record.trimTolerance)) {
                verdict.trimIds.push_back(curve.GetId());
                verdict.trimRanges.push_back(s.from);
                verdict.trimRanges.push_back(s.to);
            }
        }
    }
    return verdict;
}

// False for an output that the caller did not provide.
template <class T>
bool SetOutput(T* output, T value) {
    if (output == nullptr) {
        return false;
    }
    *output = value;
    return true;
}

// False when memory runs out; null for an empty list.
template <class T>
bool CopyOut(const std::vector<T>& values, SmArray<T>& out, const char* tag) {
    if (values.empty()) {
        return true;
    }
    out = MakeSmArray<T>(values.size(), tag);
    if (!out) {
        return false;
    }
    std::copy(values.begin(), values.end(), out.get());
    return true;
}

} // namespace

std::vector<Polygon> ScribbleRegion(const Stroke& stroke, const ScribbleRecord& record) {
    std::vector<int> ends;
    if (record.isZigzag) {
        ends.push_back(0);
        ends.insert(ends.end(), record.cusps.begin(), record.cusps.end());
        ends.push_back(stroke.AskNumberOfPoints() - 1);
    } else {
        ends = TurnEnds(stroke);
    }
    // A band between two legs reaches over both; a turn stands for itself.
    const std::size_t reach = record.isZigzag && ends.size() > 2 ? 2 : 1;
    std::vector<Polygon> region;
    for (std::size_t i = 0; i + reach < ends.size(); ++i) {
        if (ends[i] < ends[i + reach]) {
            Polygon band = GrownHull(stroke, ends[i], ends[i + reach], 0.5 * record.minSpacing);
            if (band.size() > 2) { // less is left when no sample is finite
                region.push_back(std::move(band));
            }
        }
    }
    return region;
}

} // namespace Tessera::Geometry

int Tessera::Geometry::StrokeRecognizeScribble(Stroke* stroke, SketchRecognizerPreferences* prefs,
                                               int curveCount, Curve** curves, int* hitCount, int** hitIds,
                                               int* erasedCount, int** erasedIds, int* trimCount,
                                               int** trimIds, double** trimRanges, int* cuspCount,
                                               int** cusps, int* status) {
    int* const counts[] = {hitCount, erasedCount, trimCount, cuspCount};
    int** const idLists[] = {hitIds, erasedIds, trimIds, cusps};
    bool isComplete = SetOutput(status, 1);
    isComplete = SetOutput<double*>(trimRanges, nullptr) && isComplete;
    for (int i = 0; i < 4; ++i) {
        isComplete = SetOutput(counts[i], 0) && isComplete;
        isComplete = SetOutput<int*>(idLists[i], nullptr) && isComplete;
    }
    if (!isComplete || stroke == nullptr || prefs == nullptr || (curves == nullptr && curveCount > 0)) {
        return 0;
    }
    try {
        ScribbleRecord record(*prefs);
        const bool isScribble = prefs->GetDoScribble() && record.Test(*stroke);
        Verdict verdict;
        if (isScribble) {
            verdict = Judge(*stroke, record, prefs->GetScribbleOverCurve(), curveCount, curves);
        }
        SmArray<int> ids[4];
        SmArray<double> ranges;
        const std::vector<int>* const lists[] = {&verdict.hitIds, &verdict.erasedIds, &verdict.trimIds,
                                                 &record.cusps};
        bool isCopied = CopyOut(verdict.trimRanges, ranges, "StrokeRecognizeScribble:4");
        for (int i = 0; i < 4; ++i) {
            isCopied = isCopied && CopyOut(*lists[i], ids[i], "StrokeRecognizeScribble:0");
        }
        if (!isCopied) {
            return 0;
        }
        for (int i = 0; i < 4; ++i) {
            *counts[i] = static_cast<int>(lists[i]->size());
            *idLists[i] = ids[i].release();
        }
        *trimRanges = ranges.release();
        *status = 0;
        return isScribble ? 1 : 0;
    } catch (...) {
        return 0;
    }
}
