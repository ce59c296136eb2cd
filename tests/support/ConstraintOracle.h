// Whether curves satisfy a constraint, from their points alone, and what a set of constraints implies.
#pragma once

#include <numeric>

#include "tessera/recognition/internal/ConstraintEquations.h"
#include "tests/support/GeneratedSketches.h"

namespace Tessera::Testing {

inline std::vector<const Curve*> Borrow(const CurveList& curves) {
    std::vector<const Curve*> list;
    for (const CurvePtr& c : curves)
        list.push_back(c.get());
    return list;
}

inline Point ElementPoint(const CurveList& curves, const SketchElement& e) {
    const Curve& c = *curves[e.curve];
    switch (e.point) {
    case Geometry::SnapPointType_Start:
        return c.GetStart();
    case Geometry::SnapPointType_End:
        return c.GetEnd();
    case Geometry::SnapPointType_Mid:
        return c.GetMidPoint();
    default:
        return c.GetType() == Geometry::CurveType_Arc ? static_cast<const Geometry::Arc&>(c).GetCenter()
                                                      : static_cast<const Geometry::Ellipse&>(c).AskCenter();
    }
}

/// Unit direction at a named end, by a difference over the curve's parameter.
inline Point ElementDirection(const CurveList& curves, const SketchElement& e) {
    const Curve& c = *curves[e.curve];
    double limits[2];
    c.AskRange(limits);
    const double h = 1e-6 * (limits[1] - limits[0]);
    const double t = e.point == Geometry::SnapPointType_Start ? limits[0] : limits[1];
    const Point d = c.GetPointAtParameter(t + h, true) - c.GetPointAtParameter(t - h, true);
    return d / d.Length();
}

/// Distance, or sine of an angle times the length, by which the curves miss the constraint: 0 when it holds.
inline double MissOf(const InferredConstraint& c, const CurveList& curves) {
    const auto curve = [&](int e) -> const Curve& { return *curves[c.elements[e].curve]; };
    const auto along = [&](int e) { return curve(e).GetEnd() - curve(e).GetStart(); };
    const auto radius = [&](int e) { return static_cast<const Geometry::Arc&>(curve(e)).GetRadius(); };
    const auto centre = [&](int e) { return static_cast<const Geometry::Arc&>(curve(e)).GetCenter(); };
    const auto point = [&](int e) { return ElementPoint(curves, c.elements[e]); };
    using namespace Geometry;
    switch (c.kind) {
    case ConstraintKind_Coincident:
    case ConstraintKind_Concentric:
    case ConstraintKind_MidPoint:
        return point(0).Distance(point(1));
    case ConstraintKind_Horizontal:
        return std::fabs(along(0).y);
    case ConstraintKind_Vertical:
        return std::fabs(along(0).x);
    case ConstraintKind_Parallel:
        return std::fabs(along(0).Cross(along(1))) / along(0).Length();
    case ConstraintKind_Perpendicular:
        return std::fabs(along(0).Dot(along(1))) / along(0).Length();
    case ConstraintKind_Collinear:
        return std::max(curve(0).Distance(curve(1).GetStart()), curve(0).Distance(curve(1).GetEnd()));
    case ConstraintKind_EqualLength:
        return std::fabs(along(0).Length() - along(1).Length());
    case ConstraintKind_EqualRadius:
        return std::fabs(radius(0) - radius(1));
    case ConstraintKind_PointOnCurve:
        return curve(1).Distance(point(0));
    case ConstraintKind_Symmetric: {
        const Point foot = curve(2).Project(point(0));
        return (foot + foot - point(0)).Distance(point(1));
    }
    case ConstraintKind_Tangent:
        break;
    }
    const bool named0 = c.elements[0].point != SnapPointType_None;
    const bool named1 = c.elements[1].point != SnapPointType_None;
    if (named0 && named1)
        return std::fabs(
            ElementDirection(curves, c.elements[0]).Cross(ElementDirection(curves, c.elements[1])));
    if (named0)
        return std::fabs((point(0) - centre(1)).Dot(along(0))) / along(0).Length();
    if (curve(0).GetType() == CurveType_Line)
        return std::fabs(c.side * along(0).Cross(centre(1) - curve(0).GetStart()) / along(0).Length() -
                         radius(1));
    return std::fabs(centre(0).Distance(centre(1)) - (radius(0) + c.side * radius(1)));
}

/// Dense unit rows of the constraints' equations at the curves.
inline std::vector<std::vector<double>> DenseRows(const std::vector<InferredConstraint>& constraints,
                                                  const CurveList& curves) {
    const Geometry::SketchParameters sketch(Borrow(curves));
    std::vector<std::vector<double>> dense;
    for (const InferredConstraint& c : constraints) {
        Geometry::EquationRow rows[Geometry::kMostEquations];
        Geometry::EvaluateRows(c, sketch, rows);
        for (int k = 0; k < Geometry::EquationCount(c); ++k) {
            std::vector<double> row(static_cast<std::size_t>(sketch.ParameterCount()), 0.0);
            double lengthSq = 0.0;
            for (int i = 0; i < rows[k].count; ++i) {
                row[rows[k].index[i]] = rows[k].value[i];
                lengthSq += rows[k].value[i] * rows[k].value[i];
            }
            for (double& v : row)
                v /= std::sqrt(lengthSq);
            dense.push_back(row);
        }
    }
    return dense;
}

/// Least sine of the angle between a unit row and the span of those before it: the diagonal of the Cholesky
/// factor of their products. 0 when the set is redundant.
inline double LeastSine(const std::vector<std::vector<double>>& rows) {
    const auto dot = [](const std::vector<double>& a, const std::vector<double>& b) {
        return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
    };
    std::vector<std::vector<double>> factor;
    double least = 1.0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::vector<double> mine;
        for (std::size_t j = 0; j < i; ++j)
            mine.push_back((dot(rows[i], rows[j]) - dot(mine, factor[j])) / factor[j][j]);
        mine.push_back(std::sqrt(std::max(1.0 - dot(mine, mine), 0.0)));
        least = std::min(least, mine.back());
        factor.push_back(mine);
    }
    return least;
}

} // namespace Tessera::Testing
