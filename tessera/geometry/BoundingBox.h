// BoundingBox - oriented box of dimension 0 (point) to 3 (solid) around a curve record.
//
// Tolerances are lengths in model units; every comparison with a grown side is strict. A half-size below the
// length tolerance gives a zero axis: along it the box accepts everything.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

namespace Tessera::Geometry {

class TESSERA_API BoundingBox {
public:
    BoundingBox();
    /// Axis-aligned rectangle centred at (cx, cy, 0).
    BoundingBox(double cx, double cy, double width, double height);
    /// From a centre and as many half-size vectors as the dimension (0 to 3); the others are not read.
    BoundingBox(int dimension, const double centre[3], const double halfSizes[3][3]);
    /// As GetBBoxFromCurve; the record stays the caller's.
    explicit BoundingBox(KC_CURVE_struct_s* curve);

    /// Fits the box around the record's whole range; a range of at most 1e-10 gives a point. Throws
    /// "BoundingBox::GetBBoxFromCurve - CURVE cannot be NULL" or "... - CURVE cannot be boxed" (unknown
    /// form, no memory) with the box unchanged.
    void GetBBoxFromCurve(KC_CURVE_struct_s* curve);

    int AskDimension() const { return dimension_; }
    /// Writes the corner count (1, 2, 4 or 6) and that many corners; room for eight is enough.
    void AskCorners(int* count, double corners[][3]) const;

    /// Strictly inside the box grown by tol on all three axes: with tol 0 never true for flat boxes.
    bool IsPointInBBox(const double p[3], double tol) const;
    /// The segment p0 p1 meets the box grown by tol (slab clipping).
    bool IsLineThruBBox(const double p0[3], const double p1[3], double tol) const;
    /// Every corner of other lies between this box's sides along its second and third axes.
    bool IsAlignedInX(const BoundingBox* other, double tol) const;
    /// Corners or edges of the box of lower dimension meet the other one. Solid boxes throw
    /// "BoundingBox::IsIntersecting: 3 dimension bbox intersection is not supported yet".
    bool IsIntersecting(const BoundingBox* other, double tol) const;
    /// Moves the corners (z is kept) and rebuilds the box from them. A solid takes the mean of its first six
    /// corners as centre.
    void Transform(double m[3][3]);

private:
    void Build(int dimension, const double centre[3], const double halfSizes[3][3]);
    void ToLocal(const double p[3], double local[3]) const;

    int dimension_ = 0;
    double localMin_[3] = {};
    double localMax_[3] = {};
    double corners_[8][3] = {};
    double axes_[3][3] = {};
    double offset_[3] = {};
};

} // namespace Tessera::Geometry
