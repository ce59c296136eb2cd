// The equations of the constraints: residuals and Jacobian rows over the parameters of a sketch.
//
// Each equation is zero exactly when its part of the constraint holds, and regular there: its gradient does
// not vanish. Residuals have no fixed unit; divided by the gradient's length they are distances that the
// sketch is away from the constraint.
#pragma once

#include "tessera/recognition/ConstraintInference.h"
#include "tessera/recognition/internal/Dual.h"
#include "tessera/recognition/internal/SketchParameters.h"

namespace Tessera::Geometry {

inline constexpr int kMostEquations = 2;

/// 1 or 2.
int EquationCount(const InferredConstraint& c);

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

} // namespace Tessera::Geometry
