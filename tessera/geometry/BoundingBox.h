// BoundingBox - oriented box of dimension 0 (point) to 3 (solid) around a curve record.
#pragma once

#include "tessera/core/Export.h"
#include "tessera/kernel/CurveRecord.h"

namespace Tessera::Geometry {

class TESSERA_API BoundingBox {
public:
    BoundingBox();
    /// Axis-aligned rectangle centred at (cx, cy, 0).
    BoundingBox(double cx, double cy, double width, double height);
    explicit BoundingBox(KC_CURVE_struct_s* curve);

    /// Fits the box around the record's whole range.
    void GetBBoxFromCurve(KC_CURVE_struct_s* curve);

    int AskDimension() const { return dimension_; }
    /// Writes the corner count (1, 2, 4 or 6) and that many corners; room for eight is enough.
    void AskCorners(int* count, double corners[][3]) const;

    bool IsPointInBBox(const double p[3], double tol) const;
    bool IsLineThruBBox(const double p0[3], const double p1[3], double tol) const;
    bool IsAlignedInX(const BoundingBox* other, double tol) const;
    /// Throws "BoundingBox::IsIntersecting: 3 dimension bbox intersection is not supported yet".
    bool IsIntersecting(const BoundingBox* other, double tol) const;
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
