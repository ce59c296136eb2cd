// LinearDimension - the distance between two curves: two parallel lines, or any two of line, arc and ellipse;
// arcs and ellipses take part through their centres.
//
// M      between lines from the first one at the pick point parameter (which may lie beyond its ends) square
//        to the second; between a line and a centre square to the line; else from centre to centre. Side 1 is
//        the first curve, side 2 the second. Where both meet the value is 0 and the direction stays.
// Feet   of the extension lines lie on the curves: at the point of a line nearest to the tip, so that an
//        extension line is seen only where the line does not reach, or at the centre.
// Value  a typed one moves the curve of the chosen side along M, both by half for side 0.
#pragma once

#include "tessera/dimension/LengthDimension.h"

namespace Tessera::Geometry {
class Arc;
class Ellipse;
} // namespace Tessera::Geometry

namespace Tessera::Dimension {

class TESSERA_API LinearDimension : public LengthDimension {
public:
    /// Not bound; the text height offset is 15.
    LinearDimension() = default;
    // Bound to both curves and listed by each. The pick says where along the first line the distance is
    // measured; null is its start.
    LinearDimension(const Geometry::Line* first, const Geometry::Line* second, const Geometry::Point* pick,
                    double textHeightOffset, double fontHeight);
    LinearDimension(const Geometry::Line* first, const Geometry::Arc* second, double textHeightOffset,
                    double fontHeight);
    LinearDimension(const Geometry::Line* first, const Geometry::Ellipse* second, double textHeightOffset,
                    double fontHeight);
    LinearDimension(const Geometry::Arc* first, const Geometry::Arc* second, double textHeightOffset,
                    double fontHeight);
    LinearDimension(const Geometry::Arc* first, const Geometry::Ellipse* second, double textHeightOffset,
                    double fontHeight);
    LinearDimension(const Geometry::Ellipse* first, const Geometry::Ellipse* second, double textHeightOffset,
                    double fontHeight);
    LinearDimension(const LinearDimension& other) = default;
    ~LinearDimension() override;

    // The linear dimension that both curves carry already, in either order, else a new one (caller deletes);
    // null when a curve is null.
    static LinearDimension* MakeDimension(const Geometry::Line* first, const Geometry::Line* second,
                                          const Geometry::Point* pick, double textHeightOffset,
                                          double fontHeight);
    static LinearDimension* MakeDimension(const Geometry::Line* first, const Geometry::Arc* second,
                                          double textHeightOffset, double fontHeight);
    static LinearDimension* MakeDimension(const Geometry::Line* first, const Geometry::Ellipse* second,
                                          double textHeightOffset, double fontHeight);
    static LinearDimension* MakeDimension(const Geometry::Arc* first, const Geometry::Arc* second,
                                          double textHeightOffset, double fontHeight);
    static LinearDimension* MakeDimension(const Geometry::Arc* first, const Geometry::Ellipse* second,
                                          double textHeightOffset, double fontHeight);
    static LinearDimension* MakeDimension(const Geometry::Ellipse* first, const Geometry::Ellipse* second,
                                          double textHeightOffset, double fontHeight);

    LinearDimension* Copy() const override;
    bool Replace(Core::TaggedObject* other) override;
    DimensionType_e GetType() const override { return Linear; }
    void GetParentCurves(std::vector<Geometry::Curve*>& curves) const override;
    /// A line, arc or ellipse takes the first free of the two places.
    void AddGeometry(Geometry::Curve* curve) override;
    bool CanUpdate() const override { return IsValid(); }
    /// Both curves are there and have a length; two lines are parallel.
    bool IsValid() const override;
    /// M as a new line, caller deletes; null unless the dimension is valid.
    Geometry::Line* GetDimensionLine() const override;

    double GetPickPointParam() const { return pickPointParam_; }
    void SetPickPointParam(double t);
    /// c takes the place of the parent with its identifier, else of the first parent of its curve type;
    /// attachment moves along, no update.
    void ReplaceCurve(Geometry::Curve* c);
    /// Takes over the content of another dimension, its curves included, each field reported. An attached
    /// dimension moves to the new curves' lists.
    void AssignDimension(const LinearDimension* other);

    // Move the foot of an extension line: to the point of the line nearest to the tip, or to a centre. A
    // curve other than the second one means side 1, a point the side whose end of M is nearer.
    void AdjustDimExtension(const Geometry::Line* line);
    void AdjustDimExtension(const Geometry::Arc* arc);
    void AdjustDimExtension(const Geometry::Ellipse* ellipse);
    void AdjustDimExtension(const Geometry::Point& centre);

protected:
    void ExchangeCurve(const Geometry::Curve* parent, Geometry::Curve* replacement) override;
    bool AskMeasured(Segment& measured) const override;
    void GrowParents(double growth, const Geometry::Vector& along) override;
    void AdjustFeet() override;
    Geometry::Vector AskGrowthAxis() const override;

private:
    LinearDimension(const Geometry::Curve* first, const Geometry::Curve* second, double pickPointParam,
                    double textHeightOffset, double fontHeight);
    int SideOf(const Geometry::Curve* curve) const { return curve == second_ && curve != first_ ? 2 : 1; }

    Geometry::Curve* first_ = nullptr;
    Geometry::Curve* second_ = nullptr;
    double pickPointParam_ = 0.0;
};

} // namespace Tessera::Dimension
