#include "tessera/recognition/internal/ConstraintEquations.h"

#include "tessera/recognition/internal/SketchGeometry.h"

// Tangency deserves care. Where the curves are joined, or a line ends on the circle, the distance of the
// circle's centre from the line is at its maximum, so "distance equals radius" has a vanishing gradient along
// the joint's own constraint; there the directions are compared instead. Elsewhere the signed distance is
// used, with the side kept as it was drawn: an unsigned one would let the solver flip the line to the other
// side.

// The analyzer loses that a curve's kind says how many parameters it has.
// NOLINTBEGIN(clang-analyzer-core.UndefinedBinaryOperatorResult,clang-analyzer-core.CallAndMessage)
namespace Tessera::Geometry {

namespace {

/// Components of a unit row below this are left out: far less than the drift that rows endure, and what a
/// line that is horizontal to the accuracy of trials leaves in its other direction, which would tie the two
/// directions of a drawing together.
constexpr double kNegligible = 1e-6;

/// The elements of a constraint with their curves' parameters as values of type T.
template <class T>
class Operands {
public:
    Operands(const InferredConstraint& c, const SketchParameters& sketch) : c_(c), sketch_(sketch) {
        int size = 0;
        for (int e = 0; e < c.elementCount; ++e) {
            first_[e] = FirstUse(e) == e ? size : first_[FirstUse(e)];
            if (FirstUse(e) == e)
                size += CurveAt(e).count;
        }
        for (int e = 0; e < c.elementCount; ++e)
            if (FirstUse(e) == e)
                Fill(e, size);
    }

    const SketchCurve& CurveAt(int e) const { return sketch_.At(c_.elements[e].curve); }
    const T* Params(int e) const { return params_ + first_[e]; }
    int First(int e) const { return first_[e]; }
    /// The first element with the same curve: two points of one curve share its parameters.
    int FirstUse(int e) const {
        for (int k = 0; k < e; ++k)
            if (c_.elements[k].curve == c_.elements[e].curve)
                return k;
        return e;
    }
    Pair<T> PointAt(int e) const { return SketchPointOf(CurveAt(e), Params(e), c_.elements[e].point); }
    Pair<T> TangentAt(int e) const { return SketchTangentOf(CurveAt(e), Params(e), c_.elements[e].point); }
    Pair<T> StartOf(int e) const { return {Params(e)[0], Params(e)[1]}; } ///< of a line
    Pair<T> EndOf(int e) const { return {Params(e)[2], Params(e)[3]}; }   ///< of a line
    Pair<T> AlongLine(int e) const { return EndOf(e) - StartOf(e); }
    Pair<T> CentreOf(int e) const { return {Params(e)[0], Params(e)[1]}; }
    const T& RadiusOf(int e) const { return Params(e)[2]; }

private:
    void Fill(int e, int size) {
        const double* values = sketch_.Of(c_.elements[e].curve);
        for (int k = 0; k < CurveAt(e).count; ++k) {
            if constexpr (std::is_same_v<T, double>)
                params_[first_[e] + k] = values[k];
            else
                params_[first_[e] + k] = T(values[k], size, first_[e] + k);
        }
    }

    const InferredConstraint& c_;
    const SketchParameters& sketch_;
    int first_[3] = {};
    T params_[kMaxDualSize];
};

template <class T>
T OnCurve(const Operands<T>& in) {
    const Pair<T> p = in.PointAt(0);
    const SketchCurve& carrier = in.CurveAt(1);
    const T* q = in.Params(1);
    if (carrier.shape == SketchShape::Line)
        return CrossOf(in.AlongLine(1), p - in.StartOf(1));
    const Pair<T> away = p - in.CentreOf(1);
    if (carrier.IsCircular())
        return LengthOf(away) - q[2];
    using std::cos;
    using std::sin;
    const Pair<T> u{cos(q[4]), sin(q[4])};
    const Pair<T> unit{DotOf(away, u) / q[2], CrossOf(u, away) / q[3]};
    return LengthOf(unit) - T(1.0);
}

template <class T>
T Touching(const InferredConstraint& c, const Operands<T>& in) {
    const bool named0 = c.elements[0].point != SnapPointType_None;
    const bool named1 = c.elements[1].point != SnapPointType_None;
    if (named0 && named1)
        return CrossOf(in.TangentAt(0), in.TangentAt(1));
    if (named0) // a line's end on the circle
        return DotOf(in.PointAt(0) - in.CentreOf(1), in.AlongLine(0));
    const T side(static_cast<double>(c.side));
    if (in.CurveAt(0).shape == SketchShape::Line) {
        const Pair<T> along = in.AlongLine(0);
        return side * CrossOf(along, in.CentreOf(1) - in.StartOf(0)) / LengthOf(along) - in.RadiusOf(1);
    }
    return LengthOf(in.CentreOf(1) - in.CentreOf(0)) - (in.RadiusOf(0) + side * in.RadiusOf(1));
}

template <class T>
void Equations(const InferredConstraint& c, const Operands<T>& in, T* f) {
    const auto store = [&](const Pair<T>& both) {
        f[0] = both.x;
        f[1] = both.y;
    };
    switch (c.kind) {
    case ConstraintKind_Coincident:
    case ConstraintKind_Concentric:
    case ConstraintKind_MidPoint:
        return store(in.PointAt(0) - in.PointAt(1));
    case ConstraintKind_Horizontal:
        f[0] = in.AlongLine(0).y;
        return;
    case ConstraintKind_Vertical:
        f[0] = in.AlongLine(0).x;
        return;
    case ConstraintKind_Parallel:
        f[0] = CrossOf(in.AlongLine(0), in.AlongLine(1));
        return;
    case ConstraintKind_Perpendicular:
        f[0] = DotOf(in.AlongLine(0), in.AlongLine(1));
        return;
    case ConstraintKind_Collinear:
        return store({CrossOf(in.AlongLine(0), in.StartOf(1) - in.StartOf(0)),
                      CrossOf(in.AlongLine(0), in.EndOf(1) - in.StartOf(0))});
    case ConstraintKind_Tangent:
        f[0] = Touching(c, in);
        return;
    case ConstraintKind_EqualLength:
        f[0] = LengthOf(in.AlongLine(0)) - LengthOf(in.AlongLine(1));
        return;
    case ConstraintKind_EqualRadius:
        f[0] = in.RadiusOf(0) - in.RadiusOf(1);
        return;
    case ConstraintKind_PointOnCurve:
        f[0] = OnCurve(in);
        return;
    case ConstraintKind_Symmetric: {
        const Pair<T> a = in.PointAt(0);
        const Pair<T> b = in.PointAt(1);
        const Pair<T> axis = in.AlongLine(2);
        return store({DotOf(axis, a - b), CrossOf(axis, 0.5 * (a + b) - in.StartOf(2))});
    }
    }
}

} // namespace

int EquationCount(const InferredConstraint& c) {
    switch (c.kind) {
    case ConstraintKind_Coincident:
    case ConstraintKind_Concentric:
    case ConstraintKind_MidPoint:
    case ConstraintKind_Collinear:
    case ConstraintKind_Symmetric:
        return 2;
    default:
        return 1;
    }
}

void EvaluateResiduals(const InferredConstraint& c, const SketchParameters& sketch, double* residuals) {
    Equations(c, Operands<double>(c, sketch), residuals);
}

void EvaluateRows(const InferredConstraint& c, const SketchParameters& sketch, EquationRow* rows) {
    const Operands<Dual> in(c, sketch);
    Dual f[kMostEquations];
    Equations(c, in, f);
    for (int k = 0; k < EquationCount(c); ++k) {
        EquationRow& row = rows[k];
        row.residual = f[k].value;
        row.count = f[k].size;
        for (int e = 0; e < c.elementCount; ++e) {
            if (in.FirstUse(e) != e)
                continue;
            const int at = in.First(e);
            const SketchCurve& curve = in.CurveAt(e);
            sketch.WhitenGradient(c.elements[e].curve, f[k].gradient + at);
            for (int i = 0; i < curve.count; ++i) {
                row.index[at + i] = curve.first + i;
                row.value[at + i] = f[k].gradient[at + i];
            }
        }
    }
}

int EvaluateUnitRows(const InferredConstraint& c, const SketchParameters& sketch, int movable,
                     UnitRow* unit) {
    EquationRow rows[kMostEquations];
    EvaluateRows(c, sketch, rows);
    for (int part = 0; part < EquationCount(c); ++part) {
        const EquationRow& row = rows[part];
        double lengthSq = 0.0;
        for (int i = 0; i < row.count; ++i)
            lengthSq += row.index[i] < movable ? 0.0 : row.value[i] * row.value[i];
        const double length = std::sqrt(lengthSq);
        unit[part].count = 0;
        for (int i = 0; i < row.count; ++i)
            if (row.index[i] >= movable && std::fabs(row.value[i]) > kNegligible * length)
                unit[part].entries[unit[part].count++] = {row.index[i], row.value[i] / length};
        unit[part].scale = 1.0 / length;
        unit[part].residual = row.residual / length;
    }
    return EquationCount(c);
}

} // namespace Tessera::Geometry
// NOLINTEND(clang-analyzer-core.UndefinedBinaryOperatorResult,clang-analyzer-core.CallAndMessage)
