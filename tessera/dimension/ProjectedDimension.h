// ProjectedDimension - what horizontal and vertical dimensions share: the extent of a line, of a line and an
// arc, or of two arcs along a measuring axis that can be turned.
//
// Dimension line  of a line alone the line; of a line and an arc from the line's end nearer to the arc's
//                 centre (of equally near ones the start) to that centre; of two arcs from centre to centre,
//                 in the order of the list. Full circles count like arcs.
// M               starts at the end of the dimension line that comes first across the measuring axis (the
//                 lower one for horizontal, the left one for vertical dimensions) and runs along the axis to
//                 below or beside the other end. Sides 1 and 2 belong to start and end of the dimension line.
// Angles          in radians, counter-clockwise.
#pragma once

#include "tessera/dimension/LengthDimension.h"

namespace Tessera::Geometry {
class Arc;
}

namespace Tessera::Dimension {

class TESSERA_API ProjectedDimension : public LengthDimension {
public:
    ProjectedDimension* Copy() const override = 0;
    DimensionType_e GetType() const override = 0;
    bool Replace(Core::TaggedObject* other) override;
    void GetParentCurves(std::vector<Geometry::Curve*>& curves) const override;
    /// A line becomes the line when there is none yet, an arc joins the arcs; reported in any case.
    void AddGeometry(Geometry::Curve* curve) override;
    void Rotate(double angleRad) override; ///< turns the frame and updates
    double GetRotateAngle() const override { return rotateAngle_; }
    void SetRotateAngle(double angleRad) override;
    double GetCachedRotateAngle() const override { return cachedRotateAngle_; }
    /// Ignores its argument, on purpose: the angle that the frame has is confirmed.
    void SetCachedRotateAngle(double angleRad) override;
    void FinalizeRotate() override; ///< confirms the angle that the frame has
    Geometry::Line* GetDimensionLine() const override;

    void AddArc(Geometry::Arc* arc); ///< reported; neither attached nor updated
    void GetArcs(std::vector<Geometry::Arc*>& arcs) const;
    /// c takes the place of the parent with its identifier, else of the first parent of its curve type;
    /// attachment moves along, no update.
    void ReplaceCurve(Geometry::Curve* c);
    /// The text height offset with which an update would leave the text where it is.
    double ComputeTextHeightOffset();

protected:
    enum class Axis { X, Y };

    explicit ProjectedDimension(Axis axis) : axis_(axis) {}
    ProjectedDimension(const ProjectedDimension& other) = default;
    ProjectedDimension(Axis axis, Geometry::Line* line, Geometry::Arc* first, Geometry::Arc* second,
                       double textHeightOffset, double fontHeight);

    void ExchangeCurve(const Geometry::Curve* parent, Geometry::Curve* replacement) override;
    bool AskMeasured(Segment& measured) const override;
    void UpdateOver(const Segment& measured) override;
    void GrowParents(double growth, const Geometry::Vector& along) override;
    void AdjustFeet() override;
    Geometry::Vector AskGrowthAxis() const override;
    void AssignDimension(const ProjectedDimension* other);
    /// Ends of a line in the order across the measuring axis; order is 1 when its start comes first, else -1.
    void OrderEnds(const Segment& line, Geometry::Point& a, Geometry::Point& b, int& order) const;
    void OrderEnds(const Geometry::Line* line, Geometry::Point& a, Geometry::Point& b, int& order) const;

private:
    bool AskDimensionSegment(Segment& segment) const;

    Axis axis_;
    std::vector<Geometry::Arc*> arcs_;
    double rotateAngle_ = 0.0;
    double cachedRotateAngle_ = 0.0;
};

} // namespace Tessera::Dimension
