// The merged extent of displayable objects: it needs boxes, which core does not know.
#include "tessera/core/DisplayableObject.h"
#include "tessera/geometry/XYBox.h"

namespace Tessera::Core {

void DisplayableObject::AskXYBox(int count, DisplayableObject** objects, Geometry::XYBox& box) {
    if (objects == nullptr || count < 1) {
        return;
    }
    if (objects[0] != nullptr) {
        objects[0]->AskXYBox(box);
    }
    for (int i = 1; i < count; ++i) {
        Geometry::XYBox extent; // a null object brings in the origin
        if (objects[i] != nullptr) {
            objects[i]->AskXYBox(extent);
        }
        box.Merge(extent);
    }
}

} // namespace Tessera::Core
