#include "tessera/recognition/internal/SketchParameters.h"

#include <algorithm>
#include <limits>
#include <numbers>

#include "tessera/core/ThrowMessage.h"
#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/geometry/internal/RecordData.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/EQ.h"
#include "tessera/kernel/NR.h"
#include "tessera/kernel/internal/RecordPtr.h"
#include "tessera/recognition/internal/SketchGeometry.h"

// Motions are taken at material points: an arc's point at a fixed fraction of its sweep, an ellipse's at a
// fixed eccentric angle. The same points make the metric and judge how far a curve has moved.

namespace Tessera::Geometry {

namespace {

using std::numbers::pi;

/// Of a size that a curve must keep, relative: below it the sketch is no longer what was drawn.
constexpr double kLeastSize = 0.4;
/// Added to the diagonal of a metric, relative to each element: keeps the factor of a nearly straight arc
/// positive definite without being felt elsewhere.
constexpr double kMetricFloor = 1e-10;
/// Material points of an open arc or elliptic arc; more than half its parameters, so that the metric is
/// definite.
constexpr int kArcSamples = 5;
constexpr int kMostParameters = 8;

int SampleCount(const SketchCurve& c) {
    switch (c.shape) {
    case SketchShape::Circle:
        return 4;
    case SketchShape::Ellipse:
        return 8;
    case SketchShape::Arc:
    case SketchShape::EllipseArc:
        return kArcSamples;
    default:
        return c.count / 2;
    }
}

/// Sample i of the curve.
template <class T>
Pair<T> SampleOf(const SketchCurve& c, const T* p, int i) {
    const double along = i / (kArcSamples - 1.0);
    switch (c.shape) {
    case SketchShape::Circle:
        return ArcPoint(p, T(i * pi / 2.0));
    case SketchShape::Ellipse:
        return EllipsePoint(c, p, T(i * pi / 4.0));
    case SketchShape::Arc:
        return ArcPoint(p, p[3] + T(along) * (p[4] - p[3]));
    case SketchShape::EllipseArc:
        return EllipsePoint(c, p, p[5] + T(along) * (p[6] - p[5]));
    default:
        return {p[2 * i], p[2 * i + 1]};
    }
}

double Direction(const double* vector) {
    return std::atan2(vector[1], vector[0]);
}

/// Whether the y axis lies a quarter turn behind the x axis.
double TurnOf(const double* xAxis, const double* yAxis) {
    return xAxis[0] * yAxis[1] - xAxis[1] * yAxis[0] < 0.0 ? -1.0 : 1.0;
}

bool IsClamped(const Curve& curve, const BCURVE_DATA& d) {
    if (d.periodic != 0 || d.numPoles < 2)
        return false;
    const double* first = d.poles[0];
    const double* last = d.poles[d.numPoles - 1];
    const double tolSq = EQ_ask_length_squared_tolerance();
    return curve.GetStart().Distance2({first[0], first[1]}) <= tolSq &&
           curve.GetEnd().Distance2({last[0], last[1]}) <= tolSq;
}

bool KeepsSize(double now, double before) {
    return now >= kLeastSize * before;
}

/// Same way round, most of its sweep, less than a full turn.
bool KeepsSweep(double now, double before) {
    return now * before > 0.0 && KeepsSize(std::fabs(now), std::fabs(before)) && std::fabs(now) < 2.0 * pi;
}

/// A line or spline keeps its chord's length and sense.
bool KeepsChord(const double* now, const double* before) {
    const Pair<double> chord{now[2] - now[0], now[3] - now[1]};
    const Pair<double> old{before[2] - before[0], before[3] - before[1]};
    return DotOf(chord, old) >= kLeastSize * DotOf(old, old);
}

bool IsSound(const SketchCurve& c, const double* now, const double* before) {
    switch (c.shape) {
    case SketchShape::Line:
        return KeepsChord(now, before);
    case SketchShape::Circle:
        return KeepsSize(now[2], before[2]);
    case SketchShape::Arc:
        return KeepsSize(now[2], before[2]) && KeepsSweep(now[4] - now[3], before[4] - before[3]);
    case SketchShape::Ellipse:
    case SketchShape::EllipseArc:
        return KeepsSize(now[2], before[2]) && KeepsSize(now[3], before[3]) &&
               (c.shape == SketchShape::Ellipse || KeepsSweep(now[6] - now[5], before[6] - before[5]));
    default:
        return true;
    }
}

// --- Writing back ---------------------------------------------------------------------------------------

void WriteArc(KC_CURVE_struct_s& record, const SketchCurve& c, const double* p) {
    EVC_arc_s& arc = ArcData(record);
    const double zero = Direction(arc.xAxis);
    arc.centre[0] = p[0];
    arc.centre[1] = p[1];
    arc.radius = p[2];
    const double u[2] = {std::cos(zero), std::sin(zero)};
    for (int k = 0; k < 2; ++k) {
        arc.xAxis[k] = p[2] * u[k];
        arc.yAxis[k] = c.turn * p[2] * (k == 0 ? -u[1] : u[0]);
    }
    if (c.shape == SketchShape::Circle)
        return;
    const double low = c.turn * (p[3] - zero);
    const double high = c.turn * (p[4] - zero);
    const bool rising = record.span >= 0.0;
    record.start = rising ? low : high;
    record.span = rising ? high - low : low - high;
    arc.startAngle = record.start;
    arc.endAngle = record.start + record.span;
}

void WriteEllipse(KC_CURVE_struct_s& record, const SketchCurve& c, const double* p) {
    EVC_conic_s& conic = ConicData(record);
    conic.centre[0] = p[0];
    conic.centre[1] = p[1];
    conic.radius1 = p[2];
    conic.radius2 = p[3];
    const double u[2] = {std::cos(p[4]), std::sin(p[4])};
    for (int k = 0; k < 2; ++k) {
        conic.majorAxis[k] = p[2] * u[k];
        conic.minorAxis[k] = c.turn * p[3] * (k == 0 ? -u[1] : u[0]);
    }
    if (c.shape == SketchShape::Ellipse)
        return;
    const bool rising = record.span >= 0.0;
    record.start = rising ? p[5] : p[6];
    record.span = rising ? p[6] - p[5] : p[5] - p[6];
    conic.startAngle = record.start;
    conic.endAngle = record.start + record.span;
}

/// Ends and handles as given; the poles between move with the ends, in proportion.
void WriteSpline(KC_CURVE_struct_s& record, const SketchCurve& c, const double* p) {
    BCURVE_DATA& d = Definition(record);
    const int last = d.numPoles - 1;
    const double shift0[2] = {p[0] - d.poles[0][0], p[1] - d.poles[0][1]};
    const double shift1[2] = {p[2] - d.poles[last][0], p[3] - d.poles[last][1]};
    for (int i = 1; i < last; ++i) {
        const double u = static_cast<double>(i) / last;
        for (int k = 0; k < 2; ++k)
            d.poles[i][k] += (1.0 - u) * shift0[k] + u * shift1[k];
    }
    for (int k = 0; k < 2; ++k) {
        d.poles[0][k] = p[k];
        d.poles[last][k] = p[2 + k];
        if (c.count > 4)
            d.poles[1][k] = p[4 + k];
        if (c.count > 6)
            d.poles[last - 1][k] = p[6 + k];
    }
    BCEV_reset_all_bez_pointers(&BCurveData(record));
}

} // namespace

SketchParameters::SketchParameters(std::span<const Curve* const> curves)
    : originals_(curves.begin(), curves.end()) {
    curves_.reserve(curves.size());
    for (const Curve* curve : curves)
        ReadCurve(*curve);
    startValues_ = values_;
    for (int i = 0; i < CurveCount(); ++i) {
        startSamplesAt_.push_back(static_cast<int>(startSamples_.size()));
        for (int k = 0; k < SampleCount(At(i)); ++k) {
            const Pair<double> at = SampleOf(At(i), Of(i), k);
            startSamples_.emplace_back(at.x, at.y);
        }
    }
    metricAt_.assign(curves.size(), -1);
    for (int i = 0; i < CurveCount(); ++i)
        if (curves_[i].HasCentre())
            BuildMetric(i);
}

void SketchParameters::SetPart(const SketchParameters& whole, std::span<const int> curves) {
    originals_.clear();
    curves_.clear();
    values_.clear();
    startValues_.clear();
    startSamplesAt_.clear();
    startSamples_.clear();
    metricAt_.clear();
    metrics_.clear();
    for (int curve : curves) {
        SketchCurve c = whole.At(curve);
        originals_.push_back(whole.originals_[curve]);
        values_.insert(values_.end(), whole.Of(curve), whole.Of(curve) + c.count);
        startValues_.insert(startValues_.end(), whole.StartValuesOf(curve),
                            whole.StartValuesOf(curve) + c.count);
        const Point* samples = whole.startSamples_.data() + whole.startSamplesAt_[curve];
        startSamplesAt_.push_back(static_cast<int>(startSamples_.size()));
        startSamples_.insert(startSamples_.end(), samples, samples + SampleCount(c));
        const double* metric = whole.MetricOf(curve);
        metricAt_.push_back(metric == nullptr ? -1 : static_cast<int>(metrics_.size()));
        if (metric != nullptr)
            metrics_.insert(metrics_.end(), metric, metric + c.count * c.count);
        c.first = ParameterCount() - c.count;
        curves_.push_back(c);
    }
}

void SketchParameters::TakeBack(const SketchParameters& part, std::span<const int> curves) {
    for (int i = 0; i < part.CurveCount(); ++i)
        std::copy_n(part.Of(i), part.At(i).count, Of(curves[i]));
}

void SketchParameters::ReadCurve(const Curve& curve) {
    const KC_CURVE_struct_s& record = *curve.AskCurveData();
    SketchCurve c;
    c.first = ParameterCount();
    double limits[2];
    curve.AskRange(limits);
    if (record.form == kFormLine) {
        c.shape = SketchShape::Line;
        const Point a = curve.GetStart();
        const Point b = curve.GetEnd();
        values_.insert(values_.end(), {a.x, a.y, b.x, b.y});
    } else if (record.form == kFormArc) {
        const EVC_arc_s& arc = ArcData(record);
        c.shape = record.closed != 0 ? SketchShape::Circle : SketchShape::Arc;
        c.turn = TurnOf(arc.xAxis, arc.yAxis);
        values_.insert(values_.end(), {arc.centre[0], arc.centre[1], arc.radius});
        const double zero = Direction(arc.xAxis);
        if (c.shape == SketchShape::Arc)
            values_.insert(values_.end(), {zero + c.turn * limits[0], zero + c.turn * limits[1]});
    } else if (record.form == kFormConic) {
        const EVC_conic_s& conic = ConicData(record);
        c.shape = record.closed != 0 ? SketchShape::Ellipse : SketchShape::EllipseArc;
        c.turn = TurnOf(conic.majorAxis, conic.minorAxis);
        values_.insert(values_.end(), {conic.centre[0], conic.centre[1], conic.radius1, conic.radius2,
                                       Direction(conic.majorAxis)});
        if (c.shape == SketchShape::EllipseArc)
            values_.insert(values_.end(), {limits[0], limits[1]});
    } else if (record.form == kFormBCurve && IsClamped(curve, Definition(record))) {
        const BCURVE_DATA& d = Definition(record);
        const int last = d.numPoles - 1;
        c.shape = SketchShape::Spline;
        const int handles[] = {0, last, 1, last - 1};
        const int used = std::min(d.numPoles, 4);
        for (int i = 0; i < used; ++i)
            values_.insert(values_.end(), {d.poles[handles[i]][0], d.poles[handles[i]][1]});
    }
    c.count = ParameterCount() - c.first;
    curves_.push_back(c);
}

void SketchParameters::BuildMetric(int curve) {
    const SketchCurve& c = At(curve);
    const int n = c.count;
    Dual p[kMostParameters];
    for (int k = 0; k < n; ++k)
        p[k] = Dual(Of(curve)[k], n, k);
    double gram[kMostParameters * kMostParameters] = {};
    const int samples = SampleCount(c);
    // Two ends make a line's metric; other curves weigh as much as two points.
    const double weight = 2.0 / samples;
    for (int i = 0; i < samples; ++i) {
        const Pair<Dual> at = SampleOf(c, p, i);
        for (int r = 0; r < n; ++r)
            for (int s = 0; s <= r; ++s)
                gram[r * n + s] +=
                    weight * (at.x.gradient[r] * at.x.gradient[s] + at.y.gradient[r] * at.y.gradient[s]);
    }
    // The floor scales with each parameter's own element: radii and angles have different units.
    for (int r = 0; r < n; ++r)
        gram[r * n + r] *= 1.0 + kMetricFloor;
    if (NR_cholesky_decomp(n, gram) == 0)
        return; // a curve without extent: its parameters are their own metric
    metricAt_[static_cast<std::size_t>(curve)] = static_cast<int>(metrics_.size());
    metrics_.insert(metrics_.end(), gram, gram + n * n);
}

const double* SketchParameters::MetricOf(int curve) const {
    const int at = metricAt_[static_cast<std::size_t>(curve)];
    return at < 0 ? nullptr : metrics_.data() + at;
}

Point SketchParameters::At(int curve, SnapPointType_e point) const {
    const Pair<double> p = SketchPointOf(At(curve), Of(curve), point);
    return {p.x, p.y};
}

Point SketchParameters::TangentAt(int curve, SnapPointType_e end) const {
    const Pair<double> t = SketchTangentOf(At(curve), Of(curve), end);
    return {t.x, t.y};
}

void SketchParameters::WhitenGradient(int curve, double* row) const {
    const double* l = MetricOf(curve);
    const int n = At(curve).count;
    for (int i = 0; l != nullptr && i < n; ++i) {
        for (int k = 0; k < i; ++k)
            row[i] -= l[i * n + k] * row[k];
        row[i] /= l[i * n + i];
    }
}

void SketchParameters::UnwhitenStep(int curve, double* step) const {
    const double* l = MetricOf(curve);
    const int n = At(curve).count;
    for (int i = n - 1; l != nullptr && i >= 0; --i) {
        for (int k = i + 1; k < n; ++k)
            step[i] -= l[k * n + i] * step[k];
        step[i] /= l[i * n + i];
    }
}

void SketchParameters::WhitenStep(int curve, double* step) const {
    const double* l = MetricOf(curve);
    const int n = At(curve).count;
    for (int i = 0; l != nullptr && i < n; ++i) {
        step[i] *= l[i * n + i];
        for (int k = i + 1; k < n; ++k)
            step[i] += l[k * n + i] * step[k];
    }
}

double SketchParameters::Motion(int curve) const {
    const SketchCurve& c = At(curve);
    const double* now = Of(curve);
    const double* before = StartValuesOf(curve);
    if (!IsSound(c, now, before))
        return std::numeric_limits<double>::infinity();
    double largestSq = 0.0;
    const Point* start = startSamples_.data() + startSamplesAt_[static_cast<std::size_t>(curve)];
    const int samples = SampleCount(c);
    for (int i = 0; i < samples; ++i) {
        const Pair<double> at = SampleOf(c, now, i);
        largestSq = std::max(largestSq, start[i].Distance2({at.x, at.y}));
    }
    return std::sqrt(largestSq);
}

std::unique_ptr<Curve> SketchParameters::Write(int curve) const {
    const SketchCurve& c = At(curve);
    const double* p = Of(curve);
    if (c.shape == SketchShape::Line)
        return std::make_unique<Line>(Point(p), Point(p + 2));
    RecordPtr record(evcrvCopy(Original(curve).AskCurveData()));
    if (record == nullptr)
        Core::ThrowMessage("InferConstraints - curve cannot be copied");
    std::unique_ptr<Curve> written;
    switch (record->form) {
    case kFormArc:
        WriteArc(*record, c, p);
        written = std::make_unique<Arc>(record.get());
        break;
    case kFormConic:
        WriteEllipse(*record, c, p);
        written = std::make_unique<Ellipse>(record.get());
        break;
    default:
        if (c.shape == SketchShape::Spline)
            WriteSpline(*record, c, p);
        written = std::make_unique<Spline>(record.get());
        break;
    }
    static_cast<void>(record.release()); // the curve owns it now
    return written;
}

} // namespace Tessera::Geometry
