// RadialDimension - the radius of an arc, or the diameter of an arc of more than half a turn, at the end of a
// leader.
//
// Foot        F, the point of the arc at the relative parameter (0 start, 1 end), where the leader starts;
//             along = unit vector from the centre through F. The annotation is the radius, for diameters too.
// Text        reads along the leader, turned upright, a quarter of the font height h clear of it. The text
//             offset goes from F to the leader's free end, along when positive, towards the centre when
//             negative. The text width offset W is the whole length of the text; the anchor, the origin, is
//             the end of the text nearer to the centre, F + (text offset - W) along, moved clear.
// Decoration  0 the leader's free end; 1 and 2 F; 3 and 4 base corners of the arrowhead, F + 0.75 h along
//             -+ 0.1875 h perp (perp = along turned a quarter counter-clockwise; - along when the text stands
//             inside); 5 F.
// Bare        without an arc nothing is updated, dragged or drawn.
#pragma once

#include <memory>

#include "tessera/dimension/DimDeco.h"
#include "tessera/dimension/DimensionBase.h"

namespace Tessera::Geometry {
class Arc;
}

namespace Tessera::Dimension {

class TESSERA_API RadialDimension : public DimensionBase {
public:
    RadialDimension() = default; ///< not bound
    // Bound to the arc and listed by it. The leader meets the arc at the pick, or at the end nearer to a pick
    // beside the arc. It meets the middle without a pick, and also when either coordinate of the pick is not
    // above the length tolerance. The text height offset follows the font height at every update.
    RadialDimension(Geometry::Arc* arc, const Geometry::Point& pick, double fontHeight);
    RadialDimension(Geometry::Arc* arc, double fontHeight);
    RadialDimension(Geometry::Arc* arc, double textHeightOffset, double fontHeight);
    RadialDimension(const RadialDimension& other);
    RadialDimension& operator=(const RadialDimension&) = delete;
    ~RadialDimension() override;

    // The radial dimension that the arc carries already, else a new one (caller deletes); null for null.
    static RadialDimension* MakeDimension(Geometry::Arc* arc, const Geometry::Point& pick, double fontHeight);
    static RadialDimension* MakeDimension(Geometry::Arc* arc, double fontHeight);

    RadialDimension* Copy() const override;
    void Transform(double m[3][3]) override;
    /// Takes over the content of another radial dimension, its arc included. An attached dimension moves to
    /// the new arc's list.
    bool Replace(Core::TaggedObject* other) override;
    bool AskXYBox(Geometry::XYBox& box) const override;
    void SetIsFinalized(bool finalized) override;
    void UpdateDimension() override;
    DimensionType_e GetType() const override { return Radial; }
    void GetParentCurves(std::vector<Geometry::Curve*>& curves) const override;
    /// An arc takes the place of the present one.
    void AddGeometry(Geometry::Curve* curve) override;
    /// The leader's free end follows the pointer as far as the arc allows.
    bool MoveDimDeco(const DragData* drag) override;
    /// The radius with the leader's foot dragged to p: along the radius only, never below 0.05.
    double ComputeNewValue(const Geometry::Point& p, int side) const override;
    double GetDistanceToPoint(const Geometry::Point& p, int& part) override;
    int ComputeUpdateSide(const Geometry::Point& p) const override;
    Geometry::Point GetAnnotationMidPoint() override;
    Geometry::Point GetReferencePoint() const override;
    /// The arc, whatever the side.
    void GetUpdateCurves(int side, std::vector<Geometry::Curve*>& curves) const override;
    bool CanUpdate() const override { return true; }
    bool IsValid() const override { return true; }
    void GetTempDimDecoObjects(std::vector<Geometry::Curve*>& curves,
                               std::vector<Geometry::Point>& arrowPoints, bool flag) const override;
    void GetOrientedTextBox(std::vector<Geometry::Point>& corners) const override;

    // --- Fields
    Geometry::Arc* GetArc() const { return arc_; }
    void SetArc(Geometry::Arc* arc); ///< reported; neither attached nor updated
    /// Angle of the foot, radians; follows the relative parameter at every update.
    double GetParam() const { return param_; }
    double GetRelativeParam() const { return relativeParam_; }
    void SetRelativeParam(double u);
    double GetTextOffset() const { return textOffset_; }
    void SetTextOffset(double offset);
    /// Borrowed until the next update; null before the first one.
    RadialDimDeco* GetRadialDimDeco() const { return deco_.get(); }
    /// Takes ownership; the record set before is deleted unless it is the same.
    void SetRadialDimDeco(RadialDimDeco* deco);
    /// Appends all points.
    void GetRadialDimDecoPoints(std::vector<Geometry::Point>& points) const;
    /// Appends the outline of leader and arrowhead: 0, 1, 3, 4, 1.
    void GetRadialDimDecoPolygon(std::vector<Geometry::Point>& points) const;
    /// The text is a radius, not a diameter.
    bool DisplayR() const;

    // --- Steps of an update. Each needs an arc and does nothing without.
    /// along: unit, outward at the foot. across: the side of the leader towards which the text height offset
    /// counts so that the text stands clear of the leader with its heads up.
    void ComputeAnnotationOrientation(Geometry::Vector& along, Geometry::Vector& across) const;
    /// Anchor of the text for the present height offset: out[0] x, out[1] y.
    void ComputeAnnotationOrigin(double* out) const;
    /// Width of the printed value and its prefix; longer than that of the base by the prefix.
    double ComputeAnnotationStringLength() const;
    void ComputeRadialDimensionDeco();
    /// From the foot to where a text of that width starts, along the leader.
    double GetAnnotationOffsetFromDecoEnd(double width) const { return textOffset_ - width; }

protected:
    void ExchangeCurve(const Geometry::Curve* parent, Geometry::Curve* replacement) override;

private:
    RadialDimension(Geometry::Arc* arc, const Geometry::Point* pick, double textHeightOffset,
                    double fontHeight);
    static RadialDimension* FindOrMake(Geometry::Arc* arc, const Geometry::Point* pick, double fontHeight);
    void AssignDimension(const RadialDimension* other);
    void PlaceAt(const Geometry::Point* pick);
    void PlaceFoot(double angle);
    void ApplyTypedValue();
    void Refresh();
    void PlaceText();
    Geometry::Point AskFoot(Geometry::Vector& along) const;
    const std::vector<Geometry::Point>* Points() const; // null unless complete

    Geometry::Arc* arc_ = nullptr; // not owned
    double param_ = 0.0;
    double relativeParam_ = 0.0;
    std::unique_ptr<RadialDimDeco> deco_;
    double textOffset_ = 0.0;
};

} // namespace Tessera::Dimension
