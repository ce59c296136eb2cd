// AngularDimension - the angle between two lines, in degrees, along an arc about the point where they meet.
//
// Sector         two rays leave the meeting point c, one along each line; the picks at creation choose them.
//                The sector is the one below 180 degrees. The first line (GetLine(0), side 1) is the one at
//                the start of the arc, the second (GetLine(1), side 2) the one at its counter-clockwise end.
// Dimension arc  owned. Its ends are remembered as a parameter on each line, so that the arc follows lines
//                that move; its radius changes only by dragging.
// Text           centred on the arc at the param, an angle (radians) as the arc counts them; its anchor, the
//                origin, is the middle of its lower edge. The text height offset is always +-h/2 (h font
//                height). The text may stand beyond an end of the arc.
// Decoration     at each end, of angle a, with rho the unit vector from c, tau the unit vector along the arc
//                into the sector, W the text width offset (half the width of the text) and R the radius:
//                0 the end of the arc at the text, W + h/2 from its middle, or 1.5 h outside the tip when the
//                arrowhead is flipped; 1 the tip; 2 and 3 an extension line from h/4 off the nearer end of a
//                line that does not reach the tip until h/2 beyond the tip, else both the tip; 4 to 7 the
//                arrowhead, base corners at the tip + 0.75 h tau -+ 0.1875 h rho (- tau when flipped); 8 the
//                tip - h/2 rho. On the side beyond which the text stands 0 is the near edge of the text.
// Bare           without both lines, or without an arc because they are parallel, nothing is updated, dragged
//                or drawn.
#pragma once

#include <array>
#include <memory>

#include "tessera/dimension/DimDeco.h"
#include "tessera/dimension/DimensionBase.h"

namespace Tessera::Geometry {
class Arc;
class Line;
} // namespace Tessera::Geometry

namespace Tessera::Dimension {

struct AngularLayout;

class TESSERA_API AngularDimension : public DimensionBase {
public:
    /// Not bound; the text height offset is 15.
    AngularDimension();
    /// Bound to both lines and listed by each. A pick is taken to its foot on its line; a foot where the
    /// lines meet stands for the farther end of the line.
    AngularDimension(const Geometry::Line* line1, const Geometry::Line* line2, const Geometry::Point& pick1,
                     const Geometry::Point& pick2, double textHeightOffset, double fontHeight);
    AngularDimension(const AngularDimension& other);
    AngularDimension& operator=(const AngularDimension&) = delete;
    ~AngularDimension() override;

    /// What FindDimension finds, else a new one (caller deletes); null for lines that are null or without
    /// length. Parallel lines give a dimension without an arc, which is not valid.
    static AngularDimension* MakeDimension(const Geometry::Line* line1, const Geometry::Line* line2,
                                           const Geometry::Point& pick1, const Geometry::Point& pick2,
                                           double textHeightOffset, double fontHeight);
    /// The attached dimension that measures the sector chosen by the picks, in whatever order lines and
    /// picks come; null when there is none.
    static AngularDimension* FindDimension(const Geometry::Line* line1, const Geometry::Line* line2,
                                           const Geometry::Point& pick1, const Geometry::Point& pick2);

    AngularDimension* Copy() const override;
    /// Takes the dimension arc along. A reflection exchanges the two lines.
    void Transform(double m[3][3]) override;
    /// Takes over the content of another angular dimension, its lines included. An attached dimension moves
    /// to the new lines' lists.
    bool Replace(Core::TaggedObject* other) override;
    /// Extent of the decoration and of the arc; false without a decoration.
    bool AskXYBox(Geometry::XYBox& box) const override;
    void SetIsFinalized(bool finalized) override;
    void UpdateDimension() override;
    DimensionType_e GetType() const override { return Angular; }
    void GetParentCurves(std::vector<Geometry::Curve*>& curves) const override;
    /// A line takes the first free of the two places.
    void AddGeometry(Geometry::Curve* curve) override;
    /// The text follows the pointer round the centre, and the arc with it; the sector stays. Approaching the
    /// middle of the arc the text snaps to it (see DragData).
    bool MoveDimDeco(const DragData* drag) override;
    /// Turning side 1 or 2 to p changes the value by the arctangent of the sine of the turn; a value outside
    /// (0, 180) is not taken.
    double ComputeNewValue(const Geometry::Point& p, int side) const override;
    double GetDistanceToPoint(const Geometry::Point& p, int& part) override;
    int ComputeUpdateSide(const Geometry::Point& p) const override;
    Geometry::Point GetAnnotationMidPoint() override;
    Geometry::Point GetReferencePoint() const override;
    /// Side 1 the first line, 2 the second, 0 both.
    void GetUpdateCurves(int side, std::vector<Geometry::Curve*>& curves) const override;
    bool CanUpdate() const override { return IsValid(); }
    /// There are an arc and two lines that have a length and are not parallel.
    bool IsValid() const override;
    void GetTempDimDecoObjects(std::vector<Geometry::Curve*>& curves,
                               std::vector<Geometry::Point>& arrowPoints, bool flag) const override;
    void GetOrientedTextBox(std::vector<Geometry::Point>& corners) const override;
    /// Distance along the arc from the angle to the nearer end; negative outside.
    virtual double ComputeDecoEndDistance(double angle) const;

    // --- Fields
    /// Borrowed until the next change of the dimension; null before it is bound.
    Geometry::Arc* GetDimensionArc() const { return arc_.get(); }
    /// Takes ownership; the arc set before is deleted unless it is the same.
    void SetDimensionArc(Geometry::Arc* arc);
    double GetParam() const { return param_; } ///< radians
    void SetParam(double angle);
    /// Decoration of side 1 or 2, borrowed until the next update; null before the first one.
    AngularDimDeco* GetAngularDimDeco(int side) const;
    /// Takes ownership; the record set before is deleted unless it is the same. Nothing happens for a side
    /// other than 1 or 2: the record stays the caller's.
    void SetAngularDimDeco(int side, AngularDimDeco* deco);
    double GetDecoEndDistance() const { return decoEndDistance_; }
    void SetDecoEndDistance(double distance);
    /// Line 0 or 1; null when it is missing.
    Geometry::Line* GetLine(int index) const { return index == 0 || index == 1 ? lines_[index] : nullptr; }
    /// Where the arc meets the first line (1) or the second (any other value); may lie beyond 0 to 1.
    double GetLineParam(int which) const { return lineParams_[which == 1 ? 0 : 1]; }
    void SetLineParam(int which, double t);
    int GetParamUsed() const { return paramUsed_; }
    void SetParamUsed(int value);
    /// Text off the middle of the arc: angle, positive counter-clockwise, and distance along the arc. An
    /// update uses the smaller of the two turns.
    double GetAnnotCenterParamOffset() const { return paramOffset_; }
    void SetAnnotCenterParamOffset(double angle);
    double GetAnnotCenterDistOffset() const { return distOffset_; }
    void SetAnnotCenterDistOffset(double distance);
    /// line takes the place of the one with its identifier, else of the first; attachment moves along, no
    /// update.
    void ReplaceCurve(Geometry::Line* line);
    /// Takes over the content of another dimension, its lines included, each field reported. An attached
    /// dimension moves to the new lines' lists.
    void AssignDimension(const AngularDimension* other);

    // --- Steps of an update. Each needs an arc and does nothing without.
    /// New arc (caller deletes) counter-clockwise from the ray towards p1 on the first line to the ray
    /// towards p2 on the second. Its radius is the distance of p1's foot from the centre, or, unless
    /// `through`, the smaller of the two distances. Null without two lines that meet.
    Geometry::Arc* ComputeDimensionArc(const Geometry::Point& p1, const Geometry::Point& p2,
                                       bool through) const;
    /// Both lines end where they meet.
    bool CenterAtLineEnds() const;
    /// Side beyond whose end of the arc the text stands, 0 when it stands on the arc.
    int GetOutsideSide() const;
    void ComputeAngularDimensionDeco(int side);
    /// Anchor of the text for the present height offset along `across`: out[0] x, out[1] y.
    void ComputeAnnotationOrigin(const Geometry::Vector& across, double* out) const;
    /// Brings both tips back onto the ends of the arc, the arrowheads along with them.
    void AdjustPoint1s();
    /// Text and arrowheads do not fit between the lines, wherever the text stands.
    bool ArrowheadFlipped() const;

protected:
    void ExchangeCurve(const Geometry::Curve* parent, Geometry::Curve* replacement) override;

private:
    bool HasLines() const;
    bool AskLayout(AngularLayout& layout) const;
    /// The arc follows the lines; false when they do not meet any more.
    bool FollowLines();
    bool HasArcMoved(const Geometry::Point& q1, const Geometry::Point& q2) const;
    void ExchangeLines();
    void StoreLineParams();
    void ApplyTypedValue();
    void Refresh(bool isEdited);
    bool IsCentred() const;
    double PlaceParam() const;
    void PlaceText();
    std::vector<Geometry::Point>* PointsOf(int side) const;

    std::unique_ptr<Geometry::Arc> arc_;
    double param_ = 0.0;
    std::array<std::unique_ptr<AngularDimDeco>, 2> decos_;
    double decoEndDistance_ = 0.0;
    std::array<Geometry::Line*, 2> lines_{}; // not owned
    std::array<double, 2> lineParams_{};
    std::int32_t paramUsed_ = 0;
    double paramOffset_ = 0.0;
    double distOffset_ = 0.0;
};

} // namespace Tessera::Dimension
