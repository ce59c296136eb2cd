#include <algorithm>
#include <cmath>
#include <memory>

#include "tessera/core/TaggedObject.h"
#include "tessera/geometry/Vector.h"
#include "tessera/kernel/EQ.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/recognition/internal/ReportErrors.h"
#include "tessera/recognition/internal/ScribbleRecord.h"
#include "tessera/strokes/Stroke.h"

namespace Tessera::Geometry {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kAngleTol = 1e-10;
constexpr int kFewPoints = 30;
constexpr double kSparseShare = 0.4; // of the length in long segments
constexpr int kUpSampling = 4;

// Unit codes of the document.
constexpr int kUnitCode0 = 0;
constexpr int kUnitCode1 = 1;
constexpr int kUnitCode2 = 2;

double UnitMinSpacing(int unitCode) {
    return unitCode == kUnitCode2 ? 0.003937007874015749 : 0.1;
}

double UnitSegmentThreshold(int unitCode) {
    switch (unitCode) {
    case kUnitCode0:
        return 81.25;
    case kUnitCode1:
        return 0.5118110236220472;
    default:
        return 13.0;
    }
}

// Few samples, or most of the length in long segments: cusps need more samples to be judged.
bool IsSparselySampled(const Stroke& stroke, double segmentThreshold) {
    if (stroke.AskNumberOfPoints() <= kFewPoints || std::isinf(segmentThreshold)) {
        return stroke.AskNumberOfPoints() <= kFewPoints;
    }
    double total = 0.0;
    const double longLength = stroke.GetSegLengthOverThreshold(segmentThreshold, &total);
    return longLength > kSparseShare * total + EQ_ask_length_tolerance();
}

int NearestOriginalIndex(int upSampled) {
    return (upSampled + (kUpSampling + 1) / 2) / (kUpSampling + 1);
}

// The zero vector stays zero.
Vector UnitLeg(const Point& from, const Point& to) {
    Vector leg(from, to);
    const double length = leg.Length();
    if (length > 0.0) {
        leg /= length;
    }
    return leg;
}

} // namespace

ScribbleRecord::ScribbleRecord(const SketchRecognizerPreferences& preferences)
    : cuspAngleDeg(180.0 - preferences.GetReflectionAngle()),
      pointInterval(preferences.AskTangentPointInterval()), minNumCusps(preferences.GetMinNumCusps()),
      minRotationAngleDeg(preferences.GetScribbleMinRotationAngle()) {
    const double D = preferences.AskContextScale();
    const double speedFactor = preferences.AskSpeedFactor();
    const int unitCode = Core::AskLengthUnitCode();
    trimTolerance = preferences.GetScribbleTrimTolerance() / D * speedFactor;
    minSpacing = UnitMinSpacing(unitCode) / D * speedFactor;
    segmentThreshold = UnitSegmentThreshold(unitCode) / D;
}

bool ScribbleRecord::Test(const Stroke& stroke) {
    std::unique_ptr<Stroke> upSampled;
    if (IsSparselySampled(stroke, segmentThreshold)) {
        upSampled.reset(stroke.UpSampleStroke(kUpSampling));
    }
    const Stroke& used = upSampled ? *upSampled : stroke;
    used.GetCuspIds(cuspAngleDeg, pointInterval, cusps);
    if (upSampled) {
        for (int& cusp : cusps) {
            cusp = NearestOriginalIndex(cusp);
        }
    }
    if (static_cast<int>(cusps.size()) >= minNumCusps) {
        std::vector<int> legEnds{0};
        legEnds.insert(legEnds.end(), cusps.begin(), cusps.end());
        legEnds.push_back(stroke.AskNumberOfPoints() - 1);
        isZigzag = IsZigzag(stroke, legEnds, *this);
    }
    isRound = !isZigzag && std::fabs(used.ComputeCummulativeAngle()) > minRotationAngleDeg + kAngleTol;
    return isZigzag || isRound;
}

bool IsZigzag(const Stroke& stroke, const std::vector<int>& cusps, const ScribbleRecord& record) {
    if (cusps.size() < 3) {
        return false;
    }
    const double c = std::cos(record.cuspAngleDeg * kPi / 180.0);
    const std::vector<StrokePoint>& points = stroke.GetPoints();
    Vector direction = UnitLeg(points[cusps[0]], points[cusps[1]]);
    int run = 0;
    for (std::size_t j = 2; j < cusps.size(); ++j) {
        const Vector next = UnitLeg(points[cusps[j - 1]], points[cusps[j]]);
        run = direction.Dot(next) < c + kAngleTol ? run + 1 : 0;
        if (run >= record.minNumCusps) {
            return true;
        }
        direction = next;
    }
    return false;
}

} // namespace Tessera::Geometry

bool Tessera::Geometry::StrokeIsScribbleShape(Stroke* stroke, SketchRecognizerPreferences* prefs,
                                              int* cuspCount) {
    int count = 0;
    bool isScribble = false;
    if (stroke != nullptr && prefs != nullptr) {
        ReportErrors([&] {
            ScribbleRecord record(*prefs);
            isScribble = record.Test(*stroke);
            count = static_cast<int>(record.cusps.size());
        });
    }
    if (cuspCount != nullptr) {
        *cuspCount = count;
    }
    return isScribble;
}
