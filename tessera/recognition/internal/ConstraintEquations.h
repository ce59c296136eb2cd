// The equations of the constraints: residuals and Jacobian rows over the parameters of a sketch.
//
// Each equation is zero exactly when its part of the constraint holds, and regular there: its gradient does
// not vanish. Residuals have no fixed unit; divided by the gradient's length they are distances that the
// sketch is away from the constraint.
#pragma once

#include "tessera/recognition/ConstraintInference.h"
#include "tessera/recognition/internal/Dual.h"
#include "tessera/recognition/internal/RowSpace.h"
#include "tessera/recognition/internal/SketchParameters.h"

namespace Tessera::Geometry {

inline constexpr int kMostEquations = 2;

/// 1 or 2.
int EquationCount(const InferredConstraint& c);

/// Calls visit for each curve that the constraint names, once.
template <class Visit>
void ForCurvesOf(const InferredConstraint& c, Visit visit) {
    for (int e = 0; e < c.elementCount; ++e) {
        bool isFirst = true;
        for (int k = 0; k < e; ++k)
            isFirst = isFirst && c.elements[k].curve != c.elements[e].curve;
        if (isFirst)
            visit(c.elements[e].curve);
    }
}

/// Writes the EquationCount(c) residuals at the present parameters.
void EvaluateResiduals(const InferredConstraint& c, const SketchParameters& sketch, double* residuals);

/// A sparse gradient in whitened coordinates.
struct EquationRow {
    int count = 0;
    int index[kMaxDualSize];
    double value[kMaxDualSize];
    double residual = 0.0;
};
/// Writes residuals and gradients of the EquationCount(c) equations.
void EvaluateRows(const InferredConstraint& c, const SketchParameters& sketch, EquationRow* rows);

/// A row of unit length over the parameters that may change.
struct UnitRow {
    int count = 0; ///< of entries; 0: nothing that the equation speaks of can move
    SparseEntry entries[kMaxDualSize];
    double residual = 0.0; ///< a distance
    double scale =
        0.0; ///< 1 / length of the gradient: what EvaluateResiduals gives, times this, is a distance
};
/// Writes the unit rows over the parameters from `movable` on. Returns their number.
int EvaluateUnitRows(const InferredConstraint& c, const SketchParameters& sketch, int movable, UnitRow* rows);

} // namespace Tessera::Geometry
