#include "tessera/recognition/internal/RecognitionTolerances.h"

#include <algorithm>

#include "tessera/kernel/EQ.h"

namespace Tessera::Geometry {

namespace {

constexpr double kSmallCurve = 20.0; // the longest piece is at least so many times longer

// Does not follow the speed factor.
double AdjustedMinimum(const SketchRecognizerPreferences& preferences) {
    double minimum = preferences.AskMinimumRecognitionTolerance();
    preferences.ContextAdjustTolerance(&minimum);
    return minimum * preferences.AskSpeedFactor();
}

// A tolerance from its adjusted absolute value, its share of the length and the adjusted minimum.
double ByScheme(int scheme, double absolute, double ofLength, double minimum) {
    if (scheme == SketchRecognizerPreferences::ToleranceScheme_Absolute)
        return absolute;
    if (scheme == SketchRecognizerPreferences::ToleranceScheme_Relative)
        return ofLength;
    return std::max(minimum, std::min(absolute, ofLength));
}

} // namespace

void RecognitionTolerances(const SketchRecognizerPreferences& preferences, double length, double tol[4]) {
    double absolute[4];
    double relative[4];
    preferences.AskAbsoluteRecognitionTolerances(absolute);
    preferences.AskRelativeRecognitionTolerances(relative);
    for (double& value : absolute)
        preferences.ContextAdjustTolerance(&value);
    absolute[3] *= preferences.AskSpeedFactor(); // the spline's does not follow the speed factor
    const double minimum = AdjustedMinimum(preferences);
    for (int i = 0; i < 4; ++i)
        tol[i] = ByScheme(preferences.AskToleranceScheme(), absolute[i], relative[i] * length, minimum);
}

double SmallCurveLength(double longest) {
    return longest / kSmallCurve + EQ_ask_length_tolerance();
}

double ClosedStrokeTolerance(const SketchRecognizerPreferences& preferences, double length) {
    double absolute = 0.0;
    double relative = 0.0;
    preferences.AskCloseStrokeTolerances(&absolute, &relative);
    preferences.ContextAdjustTolerance(&absolute);
    return ByScheme(preferences.AskToleranceScheme(), absolute, relative * length,
                    AdjustedMinimum(preferences));
}

} // namespace Tessera::Geometry
