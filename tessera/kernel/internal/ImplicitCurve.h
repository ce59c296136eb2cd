// Zeros of an implicit line or conic along a planar rational Bezier piece.
#pragma once

#include "tessera/kernel/internal/BernsteinRoots.h"
#include "tessera/kernel/internal/ConicFrame.h"
#include "tessera/kernel/internal/CurveHits.h"

/// Homogeneous planar Bezier piece: (x w, y w, w), degree + 1 coefficients each.
struct PlanarBezier {
    int degree;
    double x[Bernstein::kMaxSpanDegree + 1];
    double y[Bernstein::kMaxSpanDegree + 1];
    double w[Bernstein::kMaxSpanDegree + 1];
};

/// From order x 4 homogeneous coefficients.
PlanarBezier MakePlanarBezier(const double* bezier, int degree);

/// A line or conic as the zero set of a polynomial in (x, y).
class ImplicitCurve {
public:
    /// The carrier of a line (not of zero length) or conic record.
    explicit ImplicitCurve(const TopolCurve& c);

    struct Zero {
        double s; ///< parameter of the piece
        HitKind kind;
    };
    /// Parameters at which the piece crosses the carrier or may come within tol of it: every crossing
    /// once; extrema of the implicit function near zero as touches and both ends of the piece as ends, to be
    /// confirmed by distance. None for a piece that coincides with the carrier.
    /// @return how many were written to out (room for 2 kMaxCoefficients).
    int FindZeros(const PlanarBezier& piece, double tol, Zero* out) const;

    /// Parameter on the carrier's record of its point nearest to (x, y).
    double Parameter(double x, double y) const;
    /// False when the convex hull of n points (x, y, ...), `stride` doubles apart, misses the carrier by tol.
    bool MayMeetHull(const double* points, int n, int stride, double tol) const;

private:
    int MakePolynomial(const PlanarBezier& piece, double* f) const;

    bool isLine_;
    double normal_[2] = {}; // line: unit normal
    double base_[2] = {}, direction_[2] = {}, lengthSq_ = 0.0;
    ConicFrame frame_{};
};
