// SketchParameters - the curves of a sketch as one vector of numbers that a solver may change.
//
// Layout of a curve's parameters, lengths in model units, angles in radians:
//   line          start x, y; end x, y
//   circle        centre x, y; radius
//   arc           centre x, y; radius; polar angles of start and end (descending when the record is mirrored)
//   ellipse       centre x, y; two radii; rotation; an elliptic arc also the eccentric angles of start and
//   end spline        first pole x, y; last pole x, y; then the second and the last but one (one for both
//   when they
//                 coincide, none in a spline of two poles). The poles between follow the ends.
//   fixed         none: closed or unclamped splines
//
// Metric: steps are measured by how far they move the points of the curve, not by how much they change its
// parameters: a shallow arc may shift its centre far at little cost. Whitened coordinates make that metric
// the identity: parameters = L^-T whitened with L L^T the curve's Gram matrix of point motions.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/recognition/SnapPoint.h"

namespace Tessera::Geometry {

enum class SketchShape : std::uint8_t { Line, Circle, Arc, Ellipse, EllipseArc, Spline, Fixed };

struct SketchCurve {
    SketchShape shape = SketchShape::Fixed;
    int first = 0;     ///< index of its first parameter
    int count = 0;     ///< number of parameters
    double turn = 1.0; ///< -1 for a mirrored arc or ellipse: its angles run clockwise

    bool IsCircular() const { return shape == SketchShape::Circle || shape == SketchShape::Arc; }
    bool IsElliptic() const { return shape == SketchShape::Ellipse || shape == SketchShape::EllipseArc; }
    bool HasCentre() const { return IsCircular() || IsElliptic(); }
    bool HasEnds() const {
        return shape != SketchShape::Circle && shape != SketchShape::Ellipse && shape != SketchShape::Fixed;
    }
};

class SketchParameters {
public:
    /// The curves have records; they are borrowed for this object's life.
    explicit SketchParameters(std::span<const Curve* const> curves);
    /// Without curves, until SetPart.
    SketchParameters() = default;
    /// Becomes a part of a sketch: the given curves as they are now. Motions count from where the whole
    /// began.
    void SetPart(const SketchParameters& whole, std::span<const int> curves);
    /// Gives curves the parameters that a part made of them has now.
    void TakeBack(const SketchParameters& part, std::span<const int> curves);

    int CurveCount() const { return static_cast<int>(curves_.size()); }
    int ParameterCount() const { return static_cast<int>(values_.size()); }
    const SketchCurve& At(int curve) const { return curves_[static_cast<std::size_t>(curve)]; }
    const Curve& Original(int curve) const { return *originals_[static_cast<std::size_t>(curve)]; }
    /// The curve's parameters.
    const double* Of(int curve) const { return values_.data() + At(curve).first; }
    double* Of(int curve) { return values_.data() + At(curve).first; }
    const double* StartValuesOf(int curve) const { return startValues_.data() + At(curve).first; }

    /// Where the point is now. The curve has such a point.
    Point At(int curve, SnapPointType_e point) const;
    /// Direction of travel at the start or end, not normalised.
    Point TangentAt(int curve, SnapPointType_e end) const;

    /// A gradient by the curve's parameters becomes one by whitened coordinates, in place (row := L^-1 row).
    void WhitenGradient(int curve, double* row) const;
    /// A step in whitened coordinates becomes one of the parameters, in place (step := L^-T step).
    void UnwhitenStep(int curve, double* step) const;
    /// The way back from UnwhitenStep (step := L^T step).
    void WhitenStep(int curve, double* step) const;

    /// Largest motion of a point of the curve since construction, model units; infinite when the curve has
    /// degenerated: lost most of its size, turned round or closed.
    double Motion(int curve) const;
    /// The curve as the parameters have it now, with the original's orientation and parameter sense; no
    /// display data.
    std::unique_ptr<Curve> Write(int curve) const;

private:
    void ReadCurve(const Curve& curve);
    void BuildMetric(int curve);
    const double* MetricOf(int curve) const;

    std::vector<const Curve*> originals_;
    std::vector<SketchCurve> curves_;
    std::vector<double> values_;
    std::vector<double> startValues_;
    std::vector<int> startSamplesAt_; ///< where a curve's begin
    std::vector<Point> startSamples_;
    std::vector<int> metricAt_;   ///< where a curve's factor begins in metrics_; -1: the identity
    std::vector<double> metrics_; ///< lower triangles L, count x count each
};

} // namespace Tessera::Geometry
