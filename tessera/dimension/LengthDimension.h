// LengthDimension - the length of a line: two extension lines, a dimension line with an arrowhead at each end
// and the value as text in its break. Horizontal, vertical and linear dimensions derive from it and replace
// what is measured; decoration, dragging and value editing are shared.
//
// Measured line  M, from E1 to E2: the line itself here. Side 1 is its start, side 2 its end, whichever
//                way the text reads. d is the unit reading direction, n = ComputeOffsetVector(d), h the font
//                height, H the text height offset, W the text width offset (half the width of the text).
// Decoration     with H' = H + h/2 and H'' = H + h (- for offsets not above the length tolerance),
//                W' = W + h/2 and P the point of M at the relative parameter, at each end E:
//                0 P -+ W' d + H' n, or 1.5 h outside the tip when the arrowhead is flipped; 1 the tip
//                E + H' n; 2 the foot of the extension line, h/4 from E; 3 its far end E + H'' n; 4 to 7 the
//                arrowhead, 0.75 h long and 0.375 h wide; 8 the tip moved h/2 towards E.
// Text           is centred on its anchor, the origin, the middle of its lower edge.
// Bare           without a line nothing is updated, dragged or drawn.
#pragma once

#include <memory>

#include "tessera/dimension/DimDeco.h"
#include "tessera/dimension/DimensionBase.h"

namespace Tessera::Geometry {
class Line;
}

namespace Tessera::Dimension {

struct LengthLayout;
struct Segment;

class TESSERA_API LengthDimension : public DimensionBase {
public:
    /// Not bound; the text height offset is 15.
    LengthDimension();
    /// Bound to the line and listed by it; the text height offset is 0.75 font heights unless given.
    LengthDimension(Geometry::Line* line, double fontHeight);
    LengthDimension(Geometry::Line* line, double textHeightOffset, double fontHeight);
    LengthDimension(const LengthDimension& other);
    LengthDimension& operator=(const LengthDimension&) = delete;
    ~LengthDimension() override;

    /// The length dimension that the line carries already, else a new one (caller deletes); null for null.
    static LengthDimension* MakeDimension(Geometry::Line* line, double fontHeight);

    LengthDimension* Copy() const override;
    void Transform(double m[3][3]) override;
    /// Takes over the content of another dimension of the same type, its parents included. An attached
    /// dimension moves to the new parents' lists.
    bool Replace(Core::TaggedObject* other) override;
    bool AskXYBox(Geometry::XYBox& box) const override;
    void SetIsFinalized(bool finalized) override;
    void UpdateDimension() override;
    DimensionType_e GetType() const override { return Length; }
    void GetParentCurves(std::vector<Geometry::Curve*>& curves) const override;
    void AddGeometry(Geometry::Curve* curve) override;
    bool MoveDimDeco(const DragData* drag) override;
    double ComputeNewValue(const Geometry::Point& p, int side) const override;
    double GetDistanceToPoint(const Geometry::Point& p, int& part) override;
    int ComputeUpdateSide(const Geometry::Point& p) const override;
    Geometry::Point GetAnnotationMidPoint() override;
    Geometry::Point GetReferencePoint() const override;
    void GetUpdateCurves(int side, std::vector<Geometry::Curve*>& curves) const override;
    bool CanUpdate() const override { return true; }
    bool IsValid() const override { return true; }
    void GetTempDimDecoObjects(std::vector<Geometry::Curve*>& curves,
                               std::vector<Geometry::Point>& arrowPoints, bool flag) const override;
    void GetOrientedTextBox(std::vector<Geometry::Point>& corners) const override;

    /// Distance along M from the position u (0 to 1) to the nearer end; negative outside.
    virtual double ComputeDecoEndDistance(double u) const;
    /// The line that is measured: a parent, or a new line when it is not the one that GetLine answers (caller
    /// deletes); null when there is nothing to measure.
    virtual Geometry::Line* GetDimensionLine() const;
    /// M as a new line (caller deletes); null when there is nothing to measure.
    virtual Geometry::Line* ComputeTempDimensionLine() const;

    // --- Fields
    Geometry::Line* GetLine() const { return line_; }
    void SetLine(Geometry::Line* line); ///< reported; neither attached nor updated
    /// Position of the text along M, 0 at its start, 1 at its end.
    double GetRelativeParam() const { return relativeParam_; }
    void SetRelativeParam(double u);
    double GetDecoEndDistance() const { return decoEndDistance_; }
    void SetDecoEndDistance(double distance);
    /// Decoration of side 1 or 2, borrowed until the next update; null before the first one.
    LengthDimDeco* GetLengthDimDeco(int side) const;
    /// Takes ownership; the record set before is deleted unless it is the same. Nothing happens for a side
    /// other than 1 or 2: the record stays the caller's.
    void SetLengthDimDeco(int side, LengthDimDeco* deco);
    /// Appends all points of that side.
    void GetLengthDimDecoPoints(int side, std::vector<Geometry::Point>& points) const;
    /// Appends the outline of dimension line and arrowhead: 0, 1, 5, 6, 1.
    void GetLengthDimDecoPolygon(int side, std::vector<Geometry::Point>& points) const;

    // --- Steps of an update. Each needs something to measure and does nothing without.
    /// Unit direction of M, turned so that text along it reads left to right, or bottom to top.
    void ComputeAnnotationOrientation(Geometry::Vector& v) const;
    /// Anchor of the text for the present height offset: out[0] x, out[1] y. Adjusts the relative parameter.
    void ComputeAnnotationOrigin(double* out);
    void ComputeLengthDimensionDeco(int side);
    /// Brings both tips back onto the normals through the ends of M, arrowheads and text side along with
    /// them.
    void AdjustPoint1s();
    /// Move the foot of an extension line to within h/4 of a real end of the dimension line, towards its tip:
    /// 3 that of the end first on the measuring axis, 4 that of the other.
    void AdjustPoint3(const Geometry::Line* line, const Geometry::Point& end);
    void AdjustPoint4(const Geometry::Line* line, const Geometry::Point& end);
    /// Keeps text and arrowheads between the extension lines, or the text within M where they do not fit.
    /// Stored without a report; returns the parameter.
    double AdjustRelativeParam();
    /// Text and arrowheads do not fit between the extension lines, wherever the text stands.
    bool FlipArrowhead() const;
    /// Turns the arrowhead of that side over when it is drawn on the wrong side of its extension line.
    void AdjustArrowheadFlip(int side);
    /// The two ends of the text in the middle of its height.
    void GetAnnotationBoundingPoints(Geometry::Point& a, Geometry::Point& b) const;

    // --- Steps of a drag
    /// Carries the decoration of that side along with the step, its foot staying where it is; sign is the
    /// side of M on which the text stands afterwards.
    void Move(int side, const Geometry::Vector& step, bool crossed, double sign);
    /// Moves the anchor by the step. When an end of the text comes near to an end of M, or its middle to the
    /// middle of M, both are changed along d so that they align; returns whether that happened. See
    /// DragData::GetFirstParameter for the distances.
    bool SnapAnnotationOrigin(const DragData* drag, Geometry::Point& origin, Geometry::Vector& step) const;

protected:
    void ExchangeCurve(const Geometry::Curve* parent, Geometry::Curve* replacement) override;
    /// M; false when there is nothing to measure.
    virtual bool AskMeasured(Segment& measured) const;
    /// Lets the parents follow a typed value: the sides move apart by the growth along the unit vector.
    virtual void GrowParents(double growth, const Geometry::Vector& along);
    /// What an update or drag does last: feet of the extension lines back to the real geometry.
    virtual void AdjustFeet() {}
    /// Direction along which a typed value moves the ends of an M without length.
    virtual Geometry::Vector AskGrowthAxis() const { return GetOrientation(); }

    /// The curve-bound constructors: fields first, then Bind once the object is complete.
    static constexpr double kHeightOffsetPerFontHeight = 3.0 * 0.25;
    struct Unbound {};
    LengthDimension(Unbound, double textHeightOffset, double fontHeight);
    void Bind();
    void AssignDimension(const LengthDimension* other);
    /// The update steps over M.
    virtual void UpdateOver(const Segment& measured);
    /// Puts the foot of an extension line at the point, or within h/4 of it towards the tip.
    void PlaceFoot(int side, const Geometry::Point& foot);
    void PullFoot(int side, const Geometry::Point& foot);
    /// What has lost a parent shows nothing until the next update.
    void DropDecorations();

    Geometry::Line* line_ = nullptr;
    double relativeParam_ = 0.5;

private:
    bool AskLayout(LengthLayout& layout) const;
    void ApplyTypedValue();
    void PlaceText();
    std::vector<Geometry::Point>* PointsOf(int side) const;
    std::unique_ptr<LengthDimDeco>& DecoOf(int side) { return side == 1 ? deco1_ : deco2_; }

    std::unique_ptr<LengthDimDeco> deco1_;
    std::unique_ptr<LengthDimDeco> deco2_;
    double decoEndDistance_ = 0.0;
};

} // namespace Tessera::Dimension
