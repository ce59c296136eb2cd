// The static AskXYBox needs boxes and is defined in tessera/geometry/DisplayableExtent.cpp.
#include "tessera/core/DisplayableObject.h"

namespace Tessera::Core {

DisplayableObject::DisplayableObject() = default;

// NOLINTNEXTLINE(bugprone-copy-constructor-init): the copy takes a new identifier
DisplayableObject::DisplayableObject(const DisplayableObject& other)
    : TaggedObject(), displayData_(other.displayData_) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): plain values only, the group stays
DisplayableObject& DisplayableObject::operator=(const DisplayableObject& other) {
    TaggedObject::operator=(other);
    displayData_ = other.displayData_;
    return *this;
}

void DisplayableObject::SetDisplayData(const DisplayData& data) {
    LogForChange();
    displayData_ = data;
}

void DisplayableObject::SetWidth(double width) {
    LogForChange();
    displayData_.SetWidth(width);
}

void DisplayableObject::SetHighlight(bool highlight) {
    LogForChange();
    displayData_.SetHighlit(highlight);
}

void DisplayableObject::SetHidden(bool hidden) {
    LogForChange();
    displayData_.SetVisibility(!hidden);
}

void DisplayableObject::SetGroup(Group* group) {
    LogForChange();
    group_ = group;
}

void DisplayableObject::CopyDisplayState(const DisplayableObject& other, bool withGroup) {
    displayData_ = other.displayData_;
    if (withGroup) {
        group_ = other.group_;
    }
}

} // namespace Tessera::Core
