#include "tessera/recognition/SketchRecognizerPreferences.h"

#include <algorithm>

#include "tessera/core/ThrowMessage.h"
#include "tessera/kernel/EQ.h"

// Conditions are written positively and negated as a whole: NaN satisfies none of them.

namespace Tessera::Geometry {

using Core::ThrowMessage;

namespace {

constexpr double kSmallestRelative = 1e-10;
constexpr double kLargestRelative = 0.9999999999;

bool IsAbsoluteTolerance(double value) {
    return value >= EQ_ask_length_tolerance();
}

bool IsRelativeTolerance(double value) {
    return value >= kSmallestRelative && value <= kLargestRelative;
}

bool IsScheme(int scheme) {
    return static_cast<unsigned>(scheme) <= 2U;
}

void CheckTangentThreshold(double thresholdDeg) {
    if (!(thresholdDeg > 0.0 && thresholdDeg <= 180.0)) {
        ThrowMessage("Invalid tangent angle threshold specified");
    }
}

void CheckSnapAngle(double angleDeg) {
    if (!(angleDeg > 0.0 && angleDeg < 45.0)) {
        ThrowMessage("Invalid snap angle threshold specified");
    }
}

void CheckSnapDistance(double distance) {
    if (!(distance >= 0.0)) {
        ThrowMessage("Invalid snap distance threshold specified");
    }
}

} // namespace

void SketchRecognizerPreferences::ContextAdjustTolerance(double* tol) const {
    *tol /= AskContextScale();
}

void SketchRecognizerPreferences::AdjustToleranceByZoomFactor(double* tol) const {
    *tol /= zoomFactor_;
}

void SketchRecognizerPreferences::SetSegmentationScheme(int scheme) {
    if (!IsScheme(scheme)) {
        ThrowMessage("Invalid segmentation scheme specified");
    }
    segmentationScheme_ = scheme;
}

void SketchRecognizerPreferences::SetSpeed1Ratio(double ratio) {
    if (!(ratio > 0.0 && ratio <= 1.0)) {
        ThrowMessage("Invalid speed 1 ratio specified");
    }
    speed1Ratio_ = ratio;
}

void SketchRecognizerPreferences::SetSpeed2Ratio(double ratio) {
    if (!(ratio > 0.0)) {
        ThrowMessage("Invalid speed 2 ratio specified");
    }
    speed2Ratio_ = ratio;
}

void SketchRecognizerPreferences::SetTangentAngleThreshold(double thresholdDeg) {
    CheckTangentThreshold(thresholdDeg);
    tangentAngleThreshold_ = thresholdDeg;
}

void SketchRecognizerPreferences::SetTangentPointInterval(int interval) {
    if (interval <= 0) {
        ThrowMessage("Invalid tangent point interval specified");
    }
    tangentPointInterval_ = interval;
}

void SketchRecognizerPreferences::SetPeriodicAngleThreshold(double thresholdDeg) {
    CheckTangentThreshold(thresholdDeg);
    periodicAngleThreshold_ = thresholdDeg;
}

void SketchRecognizerPreferences::SetToleranceScheme(int scheme) {
    if (!IsScheme(scheme)) {
        ThrowMessage("Invalid tolerance scheme specified");
    }
    toleranceScheme_ = scheme;
}

void SketchRecognizerPreferences::AskAbsoluteRecognitionTolerances(double tolerances[4]) const {
    for (int i = 0; i < 4; ++i) {
        tolerances[i] = recognition_[i].absolute;
    }
}

void SketchRecognizerPreferences::SetAbsoluteRecognitionTolerances(const double tolerances[4]) {
    if (!std::all_of(tolerances, tolerances + 4, IsAbsoluteTolerance)) {
        ThrowMessage("Invalid absolute tolerance specified");
    }
    for (int i = 0; i < 4; ++i) {
        recognition_[i].absolute = tolerances[i];
    }
}

void SketchRecognizerPreferences::AskRelativeRecognitionTolerances(double tolerances[4]) const {
    for (int i = 0; i < 4; ++i) {
        tolerances[i] = recognition_[i].relative;
    }
}

void SketchRecognizerPreferences::SetRelativeRecognitionTolerances(const double tolerances[4]) {
    if (!std::all_of(tolerances, tolerances + 4, IsRelativeTolerance)) {
        ThrowMessage("Invalid relative tolerance specified");
    }
    for (int i = 0; i < 4; ++i) {
        recognition_[i].relative = tolerances[i];
    }
}

void SketchRecognizerPreferences::AskCloseStrokeTolerances(double* absolute, double* relative) const {
    *absolute = closeStrokeAbsolute_;
    *relative = closeStrokeRelative_;
}

void SketchRecognizerPreferences::SetCloseStrokeTolerances(double absolute, double relative) {
    if (!IsAbsoluteTolerance(absolute)) {
        ThrowMessage("Invalid absolute close stroke tolerance specified");
    }
    if (!IsRelativeTolerance(relative)) {
        ThrowMessage("Invalid relative close stroke tolerance specified");
    }
    closeStrokeAbsolute_ = absolute;
    closeStrokeRelative_ = relative;
}

void SketchRecognizerPreferences::SetMinimumRecognitionTolerance(double tolerance) {
    const double lengthTol = EQ_ask_length_tolerance();
    if (!(tolerance >= -lengthTol)) {
        ThrowMessage("Invalid minimum tolerance specified");
    }
    double smallest = closeStrokeAbsolute_;
    for (const TolerancePair& pair : recognition_) {
        smallest = std::min(smallest, pair.absolute);
    }
    minimumRecognitionTolerance_ = tolerance > smallest + lengthTol ? smallest : tolerance;
}

void SketchRecognizerPreferences::ScaleLengthTolerances(double s) {
    for (TolerancePair& pair : recognition_) {
        pair.absolute *= s;
    }
    minimumRecognitionTolerance_ *= s;
    closeStrokeAbsolute_ *= s;
    snapDistanceCreate_ *= s;
    snapDistanceEdit_ *= s;
    oversketchFirst_ *= s;
    oversketchSecond_ *= s;
    scribbleTrimTolerance_ *= s;
}

void SketchRecognizerPreferences::SetSnapAngleCreate(double angleDeg) {
    CheckSnapAngle(angleDeg);
    snapAngleCreate_ = angleDeg;
}

void SketchRecognizerPreferences::SetSnapDistanceCreate(double distance) {
    CheckSnapDistance(distance);
    snapDistanceCreate_ = distance;
}

void SketchRecognizerPreferences::SetSnapAngleEdit(double angleDeg) {
    CheckSnapAngle(angleDeg);
    snapAngleEdit_ = angleDeg;
}

void SketchRecognizerPreferences::SetSnapDistanceEdit(double distance) {
    CheckSnapDistance(distance);
    snapDistanceEdit_ = distance;
}

void SketchRecognizerPreferences::AskOverSketchTolerances(double* first, double* second) const {
    *first = oversketchFirst_;
    *second = oversketchSecond_;
}

void SketchRecognizerPreferences::SetOverSketchTolerances(double first, double second) {
    if (!IsAbsoluteTolerance(first) || !IsAbsoluteTolerance(second)) {
        ThrowMessage("Invalid oversketch tolerances specified");
    }
    oversketchFirst_ = first;
    oversketchSecond_ = second;
}

} // namespace Tessera::Geometry
