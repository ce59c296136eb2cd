// DisplayableObject - what the host can draw: display data, group membership, extent and polygon tests.
#pragma once

#include "tessera/core/DisplayData.h"
#include "tessera/core/TaggedObject.h"

namespace Tessera::Geometry {
class XYBox;
}

namespace Tessera::Core {

class Group;

class TESSERA_API DisplayableObject : public TaggedObject {
public:
    DisplayableObject();
    /// New identifier, the source's display data, no group.
    DisplayableObject(const DisplayableObject& other);
    /// Copies identifier and display data; the group stays.
    DisplayableObject& operator=(const DisplayableObject& other);
    ~DisplayableObject() override = default;

    bool IsDisplayable() const override { return true; }
    // New slots, in this order.
    /// Extent in the drawing plane; false when there is none.
    virtual bool AskXYBox(Geometry::XYBox& box) const = 0;
    /// Wholly inside the implicitly closed polygon of `count` vertices.
    virtual bool IsInPolygon(int count, double* xs, double* ys) = 0;
    /// Meets the polygon; each class says in which sense.
    virtual bool IsCrossPolygon(int count, double* xs, double* ys) = 0;

    const DisplayData& GetDisplayData() const { return displayData_; }
    double AskWidth() const { return displayData_.GetWidth(); }
    bool AskHighlight() const { return displayData_.GetHighlit(); }
    bool IsHidden() const { return !displayData_.GetVisibility(); }
    bool IsGrouped() const { return group_ != nullptr; }
    /// Not owned; null when the object is in no group.
    Group* AskGroup() const { return group_; }

    // Each reports the change before it stores the value.
    void SetDisplayData(const DisplayData& data);
    void SetWidth(double width);
    void SetHighlight(bool highlight);
    void SetHidden(bool hidden);
    void SetGroup(Group* group);

    /// Merged extent of `count` objects. A null first object leaves what `box` holds to be merged with; a
    /// later null object contributes the degenerate box at the origin. Without objects `box` stays as it is.
    static void AskXYBox(int count, DisplayableObject** objects, Geometry::XYBox& box);

protected:
    /// Display data and group without a report, for copies under construction.
    void CopyDisplayState(const DisplayableObject& other, bool withGroup);

private:
    DisplayData displayData_;
    Group* group_ = nullptr;
};

} // namespace Tessera::Core
