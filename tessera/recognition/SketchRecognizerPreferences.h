// SketchRecognizerPreferences - every setting that steers recognition, as one plain value.
//
// Units    lengths are screen-independent model units before the context adjustment; angles are degrees.
// Errors   a setter that names a condition throws its message (as char*) and stores nothing when its
//          argument fails; NaN fails every condition. The other setters store what they are given.
// "The length tolerance" is EQ_ask_length_tolerance() at the time of the call.
#pragma once

#include "tessera/core/Export.h"

namespace Tessera::Geometry {

class TESSERA_API SketchRecognizerPreferences {
public:
    /// Tolerances are the absolute values, adjusted to the context.
    static constexpr int ToleranceScheme_Absolute = 0;
    /// Tolerances are the relative values times the length of the stroke piece.
    static constexpr int ToleranceScheme_Relative = 1;
    /// The relative tolerance, capped by the absolute one and floored by the minimum.
    static constexpr int ToleranceScheme_Mixed = 2;
    /// Breaks from turning and continuity only.
    static constexpr int SegmentationScheme_NoSpeed = 0;
    /// Adds breaks at speed minima below speed1Ratio of the average speed.
    static constexpr int SegmentationScheme_Speed1 = 1;
    /// Two-threshold speed segmentation with speed2Ratio.
    static constexpr int SegmentationScheme_Speed2 = 2;

    // --- Drawing context
    double GetZoomFactor() const { return zoomFactor_; }
    void SetZoomFactor(double factor) { zoomFactor_ = factor; }
    void SetPageScale(double scale) { pageScale_ = scale; }
    double AskSpeedFactor() const { return speedFactor_; }
    void SetSpeedFactor(double factor) { speedFactor_ = factor; }
    /// zoomFactor x pageScale x speedFactor: what adjusted lengths are divided by.
    double AskContextScale() const { return zoomFactor_ * pageScale_ * speedFactor_; }
    /// Divides *tol by AskContextScale().
    void ContextAdjustTolerance(double* tol) const;
    /// Divides *tol by the zoom factor alone.
    void AdjustToleranceByZoomFactor(double* tol) const;

    // --- Speed
    // These three are kept for the host; no formula of the recogniser reads them.
    bool AskUseSpeedFactor() const { return speedFactorEnabled_; }
    void SetUseSpeedFactor(bool enabled) { speedFactorEnabled_ = enabled; }
    double AskStandardSpeed() const { return standardSpeed_; }
    void SetStandardSpeed(double speed) { standardSpeed_ = speed; }
    double AskLinearFactorOfSpeedTol() const { return linearFactorOfSpeedTol_; }
    void SetLinearFactorOfSpeedTol(double factor) { linearFactorOfSpeedTol_ = factor; }

    // --- Segmentation
    int AskSegmentationScheme() const { return segmentationScheme_; }
    /// One of the SegmentationScheme constants; else "Invalid segmentation scheme specified".
    void SetSegmentationScheme(int scheme);
    double AskSpeed1Ratio() const { return speed1Ratio_; }
    /// In (0, 1]; else "Invalid speed 1 ratio specified".
    void SetSpeed1Ratio(double ratio);
    double AskSpeed2Ratio() const { return speed2Ratio_; }
    /// Above 0, without upper bound; else "Invalid speed 2 ratio specified".
    void SetSpeed2Ratio(double ratio);
    double AskTangentAngleThreshold() const { return tangentAngleThreshold_; }
    /// In (0, 180]; else "Invalid tangent angle threshold specified".
    void SetTangentAngleThreshold(double thresholdDeg);
    int AskTangentPointInterval() const { return tangentPointInterval_; }
    /// Above 0; else "Invalid tangent point interval specified".
    void SetTangentPointInterval(int interval);
    double AskPeriodicAngleThreshold() const { return periodicAngleThreshold_; }
    /// In (0, 180]; else the same text as the tangent threshold.
    void SetPeriodicAngleThreshold(double thresholdDeg);

    // --- Recognition tolerances; all arrays hold four values, the recogniser's four tolerances in order
    int AskToleranceScheme() const { return toleranceScheme_; }
    /// One of the ToleranceScheme constants; else "Invalid tolerance scheme specified".
    void SetToleranceScheme(int scheme);
    void AskAbsoluteRecognitionTolerances(double tolerances[4]) const;
    /// None below the length tolerance; else "Invalid absolute tolerance specified".
    void SetAbsoluteRecognitionTolerances(const double tolerances[4]);
    void AskRelativeRecognitionTolerances(double tolerances[4]) const;
    /// All in [1e-10, 0.9999999999]; else "Invalid relative tolerance specified".
    void SetRelativeRecognitionTolerances(const double tolerances[4]);
    void AskCloseStrokeTolerances(double* absolute, double* relative) const;
    /// absolute not below the length tolerance, else "Invalid absolute close stroke tolerance specified";
    /// relative in [1e-10, 0.9999999999], else "Invalid relative close stroke tolerance specified".
    void SetCloseStrokeTolerances(double absolute, double relative);
    double AskMinimumRecognitionTolerance() const { return minimumRecognitionTolerance_; }
    /// Not below minus the length tolerance; else "Invalid minimum tolerance specified". A value above
    /// the smallest absolute tolerance (close stroke included) is replaced by that one.
    void SetMinimumRecognitionTolerance(double tolerance);
    /// Multiplies every length-valued tolerance by s. Relative tolerances, angles, speeds, the drag
    /// settings and the font height keep their values.
    void ScaleLengthTolerances(double s);

    // --- Snapping. Angles in (0, 45), else "Invalid snap angle threshold specified"; distances not
    //     negative, else "Invalid snap distance threshold specified".
    bool AskSnapping() const { return snapping_; }
    void SetSnapping(bool enabled) { snapping_ = enabled; }
    double AskSnapAngleCreate() const { return snapAngleCreate_; }
    void SetSnapAngleCreate(double angleDeg);
    double AskSnapDistanceCreate() const { return snapDistanceCreate_; }
    void SetSnapDistanceCreate(double distance);
    double AskSnapAngleEdit() const { return snapAngleEdit_; }
    void SetSnapAngleEdit(double angleDeg);
    double AskSnapDistanceEdit() const { return snapDistanceEdit_; }
    void SetSnapDistanceEdit(double distance);
    int AskSnapCandidateCount() const { return snapCandidateCount_; }
    void SetSnapCandidateCount(int count) { snapCandidateCount_ = count; }

    // --- Clean-up of results
    bool GetCurveTidy() const { return curveTidy_; }
    void SetCurveTidy(bool enabled) { curveTidy_ = enabled; }
    bool GetReduceInkCurveDeviation() const { return reduceInkCurveDeviation_; }
    void SetReduceInkCurveDeviation(bool enabled) { reduceInkCurveDeviation_ = enabled; }
    bool GetChangeCurveType() const { return changeCurveType_; }
    void SetChangeCurveType(bool enabled) { changeCurveType_ = enabled; }

    // --- Dragging
    double AskDragScaleThreshold() const { return dragScaleThreshold_; }
    void SetDragScaleThreshold(double threshold) { dragScaleThreshold_ = threshold; }
    double AskDragSnapMaxSpeed() const { return dragSnapMaxSpeed_; }
    void SetDragSnapMaxSpeed(double speed) { dragSnapMaxSpeed_ = speed; }
    double AskDragShakeMinSpeed() const { return dragShakeMinSpeed_; }
    void SetDragShakeMinSpeed(double speed) { dragShakeMinSpeed_ = speed; }
    double AskDragShakeTime() const { return dragShakeTime_; }
    void SetDragShakeTime(double time) { dragShakeTime_ = time; }

    // --- Over-sketching and features
    bool AskOversketch() const { return oversketch_; }
    void SetOversketch(bool enabled) { oversketch_ = enabled; }
    void AskOverSketchTolerances(double* first, double* second) const;
    /// Neither below the length tolerance; else "Invalid oversketch tolerances specified".
    void SetOverSketchTolerances(double first, double second);
    bool GetThinWallRecognition() const { return thinWallRecognition_; }
    void SetThinWallRecognition(bool enabled) { thinWallRecognition_ = enabled; }
    bool GetRegularPolygonRecognition() const { return regularPolygonRecognition_; }
    void SetRegularPolygonRecognition(bool enabled) { regularPolygonRecognition_ = enabled; }

    // --- Scribbles
    bool GetDoScribble() const { return doScribble_; }
    void SetDoScribble(bool enabled) { doScribble_ = enabled; }
    int GetMinNumCusps() const { return minNumCusps_; }
    void SetMinNumCusps(int count) { minNumCusps_ = count; }
    double GetReflectionAngle() const { return reflectionAngle_; }
    void SetReflectionAngle(double angleDeg) { reflectionAngle_ = angleDeg; }
    double GetScribbleTrimTolerance() const { return scribbleTrimTolerance_; }
    void SetScribbleTrimTolerance(double tolerance) { scribbleTrimTolerance_ = tolerance; }
    bool GetScribbleOverCurve() const { return scribbleOverCurve_; }
    void SetScribbleOverCurve(bool enabled) { scribbleOverCurve_ = enabled; }
    double GetScribbleMinRotationAngle() const { return scribbleMinRotationAngle_; }
    void SetScribbleMinRotationAngle(double angleDeg) { scribbleMinRotationAngle_ = angleDeg; }
    double GetCurrentDisplayFontHeight() const { return currentDisplayFontHeight_; }
    void SetCurrentDisplayFontHeight(double height) { currentDisplayFontHeight_ = height; }

private:
    struct TolerancePair {
        double absolute, relative;
    };

    double zoomFactor_ = 1.0;
    double pageScale_ = 1.0;
    double speedFactor_ = 1.0;
    bool speedFactorEnabled_ = false;
    double standardSpeed_ = 1.25;
    double linearFactorOfSpeedTol_ = 1.0;
    int segmentationScheme_ = SegmentationScheme_Speed2;
    double speed1Ratio_ = 1.0 / 15.0;
    double speed2Ratio_ = 0.3;
    double tangentAngleThreshold_ = 50.0;
    int tangentPointInterval_ = 8;
    double periodicAngleThreshold_ = 20.0;
    int toleranceScheme_ = ToleranceScheme_Mixed;
    TolerancePair recognition_[4] = {{20.0, 0.05}, {40.0, 0.04}, {40.0, 0.05}, {5.0, 0.025}};
    double closeStrokeAbsolute_ = 20.0;
    double closeStrokeRelative_ = 0.125;
    double minimumRecognitionTolerance_ = 2.5;
    bool snapping_ = true;
    double snapAngleCreate_ = 5.0;
    double snapDistanceCreate_ = 10.0;
    double snapAngleEdit_ = 3.0;
    double snapDistanceEdit_ = 6.25;
    int snapCandidateCount_ = 5;
    bool curveTidy_ = true;
    bool reduceInkCurveDeviation_ = true;
    bool changeCurveType_ = true;
    double dragScaleThreshold_ = 40.0;
    double dragSnapMaxSpeed_ = 8.0;
    double dragShakeMinSpeed_ = 3.2;
    double dragShakeTime_ = 0.5;
    bool oversketch_ = true;
    double oversketchFirst_ = 10.0;
    double oversketchSecond_ = 80.0;
    bool thinWallRecognition_ = false;
    bool regularPolygonRecognition_ = true;
    bool doScribble_ = true;
    int minNumCusps_ = 3;
    double reflectionAngle_ = 70.0;
    double scribbleTrimTolerance_ = 40.0;
    bool scribbleOverCurve_ = true;
    double scribbleMinRotationAngle_ = 720.0;
    double currentDisplayFontHeight_ = 4.0;
};

} // namespace Tessera::Geometry
