#include "tessera/host/internal/FFMGEOM.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/Line.h"
#include "tessera/geometry/Spline.h"
#include "tessera/host/internal/Services.h"

namespace Tessera::Host {

using Geometry::Point;

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
// How far the axes of an ellipse may be from a right angle, as a sine.
constexpr double kRightAngle = 1e-6;
// Degrees of B-splines that the kernel's evaluation is made for.
constexpr int kHighestDegree = 30;

Point ToPoint(const tagGPosition2d& p) {
    return {p.x, p.y};
}

bool IsFinite(const tagGPosition2d& p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

bool AreApart(const tagGPosition2d& a, const tagGPosition2d& b) {
    return a.x != b.x || a.y != b.y;
}

/// Positive when a, b, c turn counter-clockwise.
double TurnOf(const tagGPosition2d& a, const tagGPosition2d& b, const tagGPosition2d& c) {
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

int PointCountOf(std::int32_t kind) {
    switch (kind) {
    case kHostElementLine:
        return 2;
    case kHostElementArc:
    case kHostElementEllipse:
        return 3;
    case kHostElementCircle:
        return 1;
    case kHostElementEllipticArc:
        return 5;
    default:
        return 0;
    }
}

bool HasRightAxes(const HostElement2d& e) {
    const double ax = e.points[1].x - e.points[0].x;
    const double ay = e.points[1].y - e.points[0].y;
    const double bx = e.points[2].x - e.points[0].x;
    const double by = e.points[2].y - e.points[0].y;
    const double size = std::hypot(ax, ay) * std::hypot(bx, by);
    return size > 0.0 && std::fabs(ax * bx + ay * by) <= kRightAngle * size;
}

bool IsSoundSpline(const HostElement2d& e) {
    if (e.degree < 1 || e.degree > kHighestDegree || e.poleCount <= e.degree || e.poles == nullptr ||
        e.knots == nullptr) {
        return false;
    }
    const int knotCount = e.poleCount + e.degree + 1;
    return std::all_of(e.poles, e.poles + e.poleCount, IsFinite) &&
           std::all_of(e.knots, e.knots + knotCount, [](double k) { return std::isfinite(k); }) &&
           std::is_sorted(e.knots, e.knots + knotCount) && e.knots[e.degree] < e.knots[e.poleCount] &&
           (e.weights == nullptr ||
            std::all_of(e.weights, e.weights + e.poleCount, [](double w) { return w > 0.0; }));
}

/// Eccentric angle of p in the frame of the axes.
double EccentricAngle(const tagGPosition2d& centre, const tagGPosition2d& a, const tagGPosition2d& b,
                      const tagGPosition2d& p) {
    const double dx = p.x - centre.x;
    const double dy = p.y - centre.y;
    return std::atan2((dx * b.x + dy * b.y) / (b.x * b.x + b.y * b.y),
                      (dx * a.x + dy * a.y) / (a.x * a.x + a.y * a.y));
}

// The library's ellipses run counter-clockwise: a clockwise one is entered from its other end.
void MakeEllipse(const HostElement2d& e, ElementCurve& made) {
    const tagGPosition2d& c = e.points[0];
    const tagGPosition2d a{e.points[1].x - c.x, e.points[1].y - c.y};
    const tagGPosition2d b{e.points[2].x - c.x, e.points[2].y - c.y};
    double centre[2] = {c.x, c.y};
    double radii[2] = {std::hypot(a.x, a.y), std::hypot(b.x, b.y)};
    const double rotation = std::atan2(a.y, a.x);
    const bool isClockwise = a.x * b.y - a.y * b.x < 0.0;
    double start = 0.0;
    double end = kTwoPi;
    if (e.kind == kHostElementEllipticArc) {
        made.endsExchanged = isClockwise;
        const tagGPosition2d left = isClockwise ? tagGPosition2d{-b.x, -b.y} : b;
        start = EccentricAngle(c, a, left, e.points[isClockwise ? 4 : 3]);
        end = EccentricAngle(c, a, left, e.points[isClockwise ? 3 : 4]);
        end += end <= start ? kTwoPi : 0.0;
    }
    made.curve = std::make_unique<Geometry::Ellipse>(centre, radii, rotation, start, end);
}

std::unique_ptr<Geometry::Curve> MakeSpline(const HostElement2d& e) {
    std::vector<double> knots(e.knots, e.knots + e.poleCount + e.degree + 1);
    const auto poles = std::make_unique<double[][4]>(static_cast<std::size_t>(e.poleCount));
    for (int i = 0; i < e.poleCount; ++i) {
        poles[i][0] = e.poles[i].x;
        poles[i][1] = e.poles[i].y;
        poles[i][2] = 0.0;
        poles[i][3] = e.weights == nullptr ? 1.0 : e.weights[i];
    }
    return std::make_unique<Geometry::Spline>(e.poleCount, e.degree + 1, e.periodic, knots.data(),
                                              poles.get());
}

} // namespace

ElementGeometry::ElementGeometry(const HostElement2d& element) : element_(element) {
    if (element.kind == kHostElementBSpline) {
        poles_.assign(element.poles, element.poles + element.poleCount);
        knots_.assign(element.knots, element.knots + element.poleCount + element.degree + 1);
        if (element.weights != nullptr) {
            weights_.assign(element.weights, element.weights + element.poleCount);
        }
    }
}

ElementGeometry::ElementGeometry(const ConstructEntry& entry) {
    element_.kind = entry.kind;
    const auto take = [this](std::initializer_list<tagGPosition2d> points) {
        std::copy(points.begin(), points.end(), element_.points);
    };
    switch (entry.kind) {
    case ConstructKind_Line:
        take({entry.p0, entry.p1});
        break;
    case ConstructKind_OpenArc:
        take({entry.p0, entry.p2, entry.p1});
        break;
    case ConstructKind_Circle:
        take({entry.p0});
        element_.radius = entry.p1.x;
        break;
    case ConstructKind_Ellipse:
        take({entry.p0, entry.p1, entry.p2});
        break;
    case ConstructKind_EllipticArc:
        take({entry.p3, entry.axes[0], entry.axes[1], entry.p0, entry.p1});
        break;
    case ConstructKind_BSpline:
        element_.degree = entry.degree;
        element_.periodic = entry.periodic == 1 ? 1 : 0;
        element_.poleCount = static_cast<std::int32_t>(entry.poles.size());
        for (const InputPoint& pole : entry.poles) {
            poles_.push_back({pole.x, pole.y});
        }
        knots_ = entry.knots;
        weights_ = entry.weights;
        break;
    default:
        break;
    }
}

HostElement2d ElementGeometry::View() const {
    HostElement2d view = element_;
    view.poles = poles_.empty() ? nullptr : poles_.data();
    view.knots = knots_.empty() ? nullptr : knots_.data();
    view.weights = weights_.empty() ? nullptr : weights_.data();
    return view;
}

void ElementGeometry::ExchangeEnds() {
    if (element_.kind == kHostElementArc) {
        std::swap(element_.points[0], element_.points[1]);
    } else if (element_.kind == kHostElementEllipticArc) {
        std::swap(element_.points[3], element_.points[4]);
        element_.points[2] = {2.0 * element_.points[0].x - element_.points[2].x,
                              2.0 * element_.points[0].y - element_.points[2].y};
    }
}

bool IsSound(const HostElement2d& element) {
    const tagGPosition2d* p = element.points;
    if (!std::all_of(p, p + PointCountOf(element.kind), IsFinite)) {
        return false;
    }
    switch (element.kind) {
    case kHostElementLine:
        return AreApart(p[0], p[1]);
    case kHostElementArc:
        return AreApart(p[0], p[1]) && TurnOf(p[0], p[2], p[1]) != 0.0;
    case kHostElementCircle:
        return std::isfinite(element.radius) && element.radius > 0.0;
    case kHostElementEllipse:
    case kHostElementEllipticArc:
        return HasRightAxes(element);
    case kHostElementBSpline:
        return IsSoundSpline(element);
    default:
        return false;
    }
}

ElementCurve CurveOf(const HostElement2d& element) {
    const tagGPosition2d* p = element.points;
    ElementCurve made;
    made.id = element.id;
    switch (element.kind) {
    case kHostElementLine:
        made.curve = std::make_unique<Geometry::Line>(ToPoint(p[0]), ToPoint(p[1]));
        break;
    case kHostElementArc:
        made.curve.reset(Geometry::Arc::FromThreePoints(ToPoint(p[0]), ToPoint(p[2]), ToPoint(p[1])));
        made.endsExchanged = TurnOf(p[0], p[2], p[1]) < 0.0;
        break;
    case kHostElementCircle:
        made.curve = std::make_unique<Geometry::Arc>(ToPoint(p[0]), element.radius);
        break;
    case kHostElementBSpline:
        made.curve = MakeSpline(element);
        break;
    default:
        MakeEllipse(element, made);
        break;
    }
    return made;
}

std::int32_t InkToModel(const HostInkStroke& ink, HostDocument* document, Geometry::InkStroke& stroke) {
    constexpr const char* kName = "FFMGEOM::InkToModel";
    stroke.hasTimes = ink.times != nullptr;
    stroke.samples.reserve(static_cast<std::size_t>(ink.pointCount));
    for (int i = 0; i < ink.pointCount; ++i) {
        const double time = ink.times != nullptr ? ink.times[i] : 0.0;
        const bool isLate = i == 0 || time >= stroke.samples.back().t;
        if (!IsFinite(ink.points[i]) || !std::isfinite(time) || !isLate) {
            return TESSERA_REPORT(kErrorInvalidArgument, kName);
        }
        tagGPosition2d model = kUnsetPosition;
        const std::int32_t code = Services().DCToModel(Services().context, document, &ink.points[i], &model);
        if (code < 0) {
            return TESSERA_REPORT(code, kName);
        }
        if (!IsFinite(model)) {
            return TESSERA_REPORT(kErrorFail, kName);
        }
        stroke.samples.push_back({model.x, model.y, time});
    }
    return kOk;
}

std::int32_t AskViewScale(HostDocument* document, const tagGPosition2d& at, double step, double* scale) {
    constexpr const char* kName = "FFMGEOM::AskViewScale";
    const tagGPosition2d model[2] = {at, {at.x + step, at.y}};
    tagGPosition2d device[2] = {kUnsetPosition, kUnsetPosition};
    for (int i = 0; i < 2; ++i) {
        const std::int32_t code = Services().ModelToDC(Services().context, document, &model[i], &device[i]);
        if (code < 0) {
            return TESSERA_REPORT(code, kName);
        }
    }
    *scale = std::hypot(device[1].x - device[0].x, device[1].y - device[0].y) / (model[1].x - model[0].x);
    if (!(*scale > 0.0) || !std::isfinite(*scale)) {
        return TESSERA_REPORT(kErrorFail, kName);
    }
    return kOk;
}

} // namespace Tessera::Host
