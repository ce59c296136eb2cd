// DimensionBase - abstract root of the dimensions: annotations that measure one or two curves.
//
// Value      what the curves measure: a length or distance in model units, an angle in degrees, a radius.
// Placement  the text hangs on an anchor, the origin, and is turned by the text angle (degrees). The offset
//            vector (ComputeOffsetVector) is the side of the measured geometry towards which offsets count.
// Ownership  a dimension refers to its parent curves and never owns them; a parent that it is attached to
//            lists it (Curve::AddDimension). Either may be destroyed first: a dimension leaves every list in
//            which it stands, a curve is forgotten by the dimensions that it lists. A copy is attached to
//            nothing, and must not be used any more once a curve that it measures is gone.
// Change log setters report the change before they store it, and only while the dimension is finalized.
// Failure    bool results, null pointers or unchanged values; nothing here throws a message.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tessera/core/DisplayableObject.h"
#include "tessera/core/Export.h"
#include "tessera/dimension/DimensionType.h"
#include "tessera/geometry/Point.h"
#include "tessera/geometry/Vector.h"

namespace Tessera::Geometry {
class Curve;
}

namespace Tessera::Dimension {

class DragData;

/// To edit a value: CanUpdate, ComputeUpdateSide and SetUpdateSide, ComputeNewValue, GetUpdateCurves, then
/// SetAnnotation with the new value and UpdateDimension, which moves the curves and measures them again. A
/// value that the geometry cannot take moves nothing. Other dimensions of the moved curves follow with
/// Curve::UpdateDimensions.
class TESSERA_API DimensionBase : public Core::DisplayableObject {
public:
    DimensionBase() = default;
    /// Every field as given; no update side is chosen.
    DimensionBase(double annotation, double textAngle, double textHeightOffset, double textWidthOffset,
                  const Geometry::Point& origin, const Geometry::Vector& orientation, bool isFinalized,
                  double fontHeight);
    /// New identifier, no group, every field; not attached, and no typed value waits in the copy.
    DimensionBase(const DimensionBase& other);
    /// Copies identifier, display data and every field; group and attachments stay. Not reported.
    DimensionBase& operator=(const DimensionBase& other);

    // Slot order is part of the binary interface.
    ~DimensionBase() override;
    int AskClass() const override { return Core::ClassID_Dimension; }
    /// New dimension of the same kind over the same curves, attached to none of them; caller deletes.
    DimensionBase* Copy() const override = 0;
    /// Moves the origin and scales the font height and both text offsets by 1 / m[2][2]. Value, orientation
    /// and decoration follow the curves at the next update.
    void Transform(double m[3][3]) override;
    /// The copy refers to the deep copies of this dimension's parents, which are made when they are missing,
    /// and is attached to those whose originals list this one.
    DimensionBase* DeepCopy(std::set<int>& ids, std::map<int, Core::TaggedObject*>& copies) const override;
    /// Reports only finalized dimensions: one under construction or shown as a preview stays unknown to the
    /// host.
    void LogForChange() override;
    /// False here; the kinds of dimensions fill the box from their decoration.
    bool AskXYBox(Geometry::XYBox& box) const override;
    /// Every part, decoration and corners of the text, lies inside the polygon.
    bool IsInPolygon(int n, double* xs, double* ys) override;
    /// A decoration curve crosses the polygon, or a corner of an arrowhead or of the text lies inside.
    bool IsCrossPolygon(int n, double* xs, double* ys) override;

    /// Commits the dimension to the model, or takes it back. Each parent curve is told first
    /// (Curve::LogDimensionFinalize).
    virtual void SetIsFinalized(bool finalized) = 0;
    /// Moves the parent curves when a typed value waits, then recomputes value and decoration from them.
    virtual void UpdateDimension() = 0;
    virtual DimensionType_e GetType() const = 0;
    /// Appends the curves that the dimension measures.
    virtual void GetParentCurves(std::vector<Geometry::Curve*>& curves) const = 0;
    /// Takes a further parent curve without attaching to it; reported, no update.
    virtual void AddGeometry(Geometry::Curve* curve) = 0;
    /// Drags the annotation by the step from the previous to the current point of the record; false for
    /// null.
    virtual bool MoveDimDeco(const DragData* drag) = 0;
    /// Value that the dimension would show with the decoration of that side dragged to p.
    virtual double ComputeNewValue(const Geometry::Point& p, int side) const = 0;
    /// Distance from p to the drawn dimension. part: 0 text, 1 or 2 decoration of that side, -1 nothing
    /// drawn (the distance is then the largest double). On a tie text comes first, then side 2.
    virtual double GetDistanceToPoint(const Geometry::Point& p, int& part) = 0;
    /// Side that a pick at p selects: 0 text, 1, 2; -1 without a decoration.
    virtual int ComputeUpdateSide(const Geometry::Point& p) const = 0;
    virtual Geometry::Point GetAnnotationMidPoint() = 0;
    virtual Geometry::Point GetReferencePoint() const = 0;
    /// Appends the curves that a value edit on that side changes.
    virtual void GetUpdateCurves(int side, std::vector<Geometry::Curve*>& curves) const = 0;
    /// A typed value may drive the geometry.
    virtual bool CanUpdate() const = 0;
    /// The dimension still fits its curves.
    virtual bool IsValid() const = 0;
    /// Appends the decoration as new curves (caller deletes) and three points per filled arrowhead. The flag
    /// is reserved.
    virtual void GetTempDimDecoObjects(std::vector<Geometry::Curve*>& curves,
                                       std::vector<Geometry::Point>& arrowPoints, bool flag) const = 0;
    /// Appends the four corners of the text box, in order around it.
    virtual void GetOrientedTextBox(std::vector<Geometry::Point>& corners) const = 0;
    // Turning the measuring frame means something to horizontal and vertical dimensions only.
    virtual void Rotate(double /*angleRad*/) {}
    virtual double GetRotateAngle() const { return 0.0; }
    virtual void SetRotateAngle(double /*angleRad*/) {}
    virtual double GetCachedRotateAngle() const { return 0.0; }
    virtual void SetCachedRotateAngle(double /*angleRad*/) {}
    virtual void FinalizeRotate() {}

    // --- Fields
    double GetAnnotation() const { return fields_.annotation; }
    /// A typed value: the next UpdateDimension makes the curves follow it when a side is chosen.
    void SetAnnotation(double value);
    double GetTextAngle() const { return fields_.textAngle; } ///< degrees
    void SetTextAngle(double angleDeg);
    double GetTextHeightOffset() const { return fields_.textHeightOffset; }
    void SetTextHeightOffset(double offset);
    double GetTextWidthOffset() const { return fields_.textWidthOffset; }
    void SetTextWidthOffset(double offset);
    Geometry::Point& GetOrigin() { return fields_.origin; }
    const Geometry::Point& GetOrigin() const { return fields_.origin; }
    void SetOrigin(const Geometry::Point& origin);
    void SetOrigin(double x, double y);
    Geometry::Vector& GetOrientation() { return fields_.orientation; }
    const Geometry::Vector& GetOrientation() const { return fields_.orientation; }
    void SetOrientation(const Geometry::Vector& orientation);
    /// False while the dimension is being created or previewed, true once it is part of the model.
    bool GetIsFinalized() const { return fields_.isFinalized; }
    double GetFontHeight() const { return fields_.fontHeight; } ///< of a character, model units
    void SetFontHeight(double height);
    /// Side or end that a value edit moves; -1 none chosen.
    int GetUpdateSide() const { return fields_.updateSide; }
    void SetUpdateSide(int side);

    double GetFontWidth() const { return 0.5 * GetFontHeight(); } ///< of one character
    double GetArrowheadWidth() const { return GetFontHeight() * 0.5 * 3.0 * 0.25; }
    double GetArrowheadLength() const { return 2.0 * GetArrowheadWidth(); }

    // --- Factories; null for a type that they do not make
    static DimensionBase* CreateDimensionByType(DimensionType_e type);
    /// Bound to one curve and attached to it: length, horizontal and vertical need a Line, radial an Arc;
    /// the kind of the curve is not tested.
    static DimensionBase* CreateDimensionByType(DimensionType_e type, Geometry::Curve* curve,
                                                double textHeightOffset, double fontHeight);

    // --- Text
    /// The stored value as "%f" prints it.
    std::string GetAnnotationText() const;
    /// The value that the text shows: the annotation, or twice the radius of a major arc.
    double GetDisplayedValue() const;
    /// Decimals that the document's length unit asks for; 0 for angles.
    int GetNumDigitsRequired() const;
    /// n without the zeros that would end the printed value; 0 for a whole value.
    int GetNumDigitsAfterDecimalPoint(int n) const;
    /// Width of the printed value, model units. Radial dimensions have a longer one of their own.
    double ComputeAnnotationStringLength() const;
    /// Angle of the orientation, degrees in [0, 360); makes the stored orientation a unit vector.
    double ComputeAnnotationOrientationAngle();
    /// Text angle that keeps text along a direction of angleDeg readable; *textHeightOffset grows by
    /// heightDelta where the text is turned. The type is reserved.
    static void ComputeTextAngleAndHeightOffset(DimensionType_e type, double angleDeg, double heightDelta,
                                                double* textAngle, double* textHeightOffset);
    /// Unit normal of the direction towards +x, or towards +y for a horizontal direction.
    Geometry::Vector ComputeOffsetVector(const Geometry::Vector& direction) const;
    /// Distance of the text from the geometry: along the leader for radial dimensions, else the height
    /// offset.
    double GetTextOffset() const;

    // --- Selection
    /// p lies in the text box grown by the tolerance.
    bool AnnotationSelected(const Geometry::Point& p, double tolerance) const;
    /// The curve meets a decoration curve or the diagonal of the text box. The flag is reserved.
    bool IntersectCurve(const Geometry::Curve* curve, double tolerance, bool flag) const;

    /// Takes the dimension out of the curve's list, then out of those of all its other parents. False when
    /// either is null or the curve does not list it.
    static bool RemoveDimensionOnCurve(Geometry::Curve* curve, DimensionBase* dim);

protected:
    /// Puts another curve of the same kind, or null, in place of a parent wherever it is referred to; without
    /// a report, attachment or update. A null replacement may mean that the parent is being destroyed: it is
    /// only good for comparing then.
    virtual void ExchangeCurve(const Geometry::Curve* parent, Geometry::Curve* replacement) = 0;

    /// The measured value: reported and stored like a typed one, but it will not move geometry.
    void StoreAnnotation(double value);
    /// Forgets that a value was typed. True when one was, a side is chosen and CanUpdate() holds.
    bool TakePendingEdit();
    /// Share of the growth by a typed value that side 1 or 2 takes: all when it is the update side, half when
    /// that is 0.
    double ShareOf(int side) const {
        return GetUpdateSide() == 0 ? 0.5 : (GetUpdateSide() == side ? 1.0 : 0.0);
    }
    /// SetIsFinalized of every kind: a changed flag is told to each parent curve, then stored.
    void ChangeIsFinalized(bool finalized);
    /// To be called first in the destructor of each concrete kind: what the host asks when it is told must
    /// still be answered by that kind.
    void DetachFromCurves();
    bool IsAttachedTo(const Geometry::Curve* curve) const;
    /// Attaches to each parent that does not list this dimension yet.
    void AttachToParents();
    /// ReplaceCurve of every kind: the replacement takes the place of the parent with its identifier, else of
    /// the first parent of its curve type; attachment moves along, no update.
    void ReplaceParent(Geometry::Curve* replacement);
    /// After a change of parents: leaves the former ones and, if it was attached to any, joins the new ones.
    void FollowParents(const std::vector<Geometry::Curve*>& former);
    /// Assigns what all kinds share except the finalized flag, each field reported; no pending edit remains.
    void AssignFields(const DimensionBase& other);
    /// Lets `assign` take over the content of another dimension, follows its parents and takes its finalized
    /// flag.
    template <class Assign>
    void TakeOver(const DimensionBase& source, Assign assign) {
        std::vector<Geometry::Curve*> former;
        GetParentCurves(former);
        const bool finalized = source.GetIsFinalized();
        assign();
        // The flag last: while it holds, curves report that they lose or gain this dimension.
        FollowParents(former);
        SetIsFinalized(finalized);
    }
    /// Replace of every kind: reports, then takes over another dimension of the same type. False and nothing
    /// done for anything else.
    template <class Kind, class Assign>
    bool ReplaceBy(Core::TaggedObject* other, Assign assign) {
        const auto* source = dynamic_cast<const Kind*>(other);
        if (source == nullptr || source->AskClass() != AskClass() || source->GetType() != GetType())
            return false;
        LogForChange();
        TakeOver(*source, [&] { assign(source); });
        return true;
    }
    /// Reports, then stores.
    template <class T>
    void Store(T& field, const T& value) {
        LogForChange();
        field = value;
    }

private:
    friend class Geometry::Curve; // keeps listedBy_ in step with its list

    struct Fields {
        double annotation = 0.0;
        double textAngle = 0.0;
        double textHeightOffset = 0.0;
        double textWidthOffset = 0.0;
        Geometry::Point origin;
        Geometry::Vector orientation = Geometry::Vector(1.0, 0.0);
        bool isFinalized = false;
        double fontHeight = 5.29;
        std::int32_t updateSide = -1;
    };

    Fields fields_;
    bool hasTypedValue_ = false;
    std::vector<Geometry::Curve*> listedBy_; // one entry per curve whose list holds this dimension
};

} // namespace Tessera::Dimension
