#include "tessera/host/HostDocument.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "tessera/host/internal/ReferenceDocument.h"
#include "tessera/host/internal/Services.h"

// Removed elements stay in the list, unseen, until the next commit: a change that is undone finds them again.

namespace {

template <class Elements>
auto* ById(Elements& elements, HostElementId id) {
    const auto at =
        std::lower_bound(elements.begin(), elements.end(), id,
                         [](const auto& element, HostElementId wanted) { return element.id < wanted; });
    return at != elements.end() && at->id == id ? &*at : nullptr;
}

bool IsShown(const HostDocument& /*of*/, const HostDocument::Element& element) {
    return !element.isRemoved;
}

bool IsShown(const HostDocument& document, const HostConstraint2d& constraint) {
    return document.IsShown(constraint);
}

/// The index-th that is shown; null when there is none.
template <class List>
auto* NthShown(const HostDocument& document, const List& list, std::int32_t index) {
    if (document.removedCount == 0 && index >= 0 && static_cast<std::size_t>(index) < list.size()) {
        return &list[static_cast<std::size_t>(index)];
    }
    const auto found = std::find_if(
        list.begin(), list.end(), [&](const auto& item) { return IsShown(document, item) && index-- == 0; });
    return found == list.end() ? nullptr : &*found;
}

template <class List>
std::int32_t CountShown(const HostDocument& document, const List& list) {
    return static_cast<std::int32_t>(
        std::count_if(list.begin(), list.end(), [&](const auto& item) { return IsShown(document, item); }));
}

} // namespace

const HostDocument::Element* HostDocument::Find(HostElementId id) const {
    const Element* element = ById(elements, id);
    return element != nullptr && !element->isRemoved ? element : nullptr;
}

HostDocument::Element* HostDocument::Find(HostElementId id) {
    Element* element = ById(elements, id);
    return element != nullptr && !element->isRemoved ? element : nullptr;
}

HostDocument::Element* HostDocument::FindRemoved(HostElementId id) {
    Element* element = ById(elements, id);
    return element != nullptr && element->isRemoved ? element : nullptr;
}

bool HostDocument::IsShown(const HostConstraint2d& constraint) const {
    return std::all_of(constraint.members, constraint.members + constraint.memberCount,
                       [this](const HostConstraintMember& m) { return Find(m.element) != nullptr; });
}

namespace Tessera::Host {

std::int32_t AddElement(HostDocument& document, const HostElement2d& geometry, HostElementId& made) {
    if (!IsSound(geometry)) {
        return kErrorInvalidArgument;
    }
    const ExceptionCode onException;
    try {
        HostDocument::Element element;
        element.id = document.lastId + 1;
        element.geometry = ElementGeometry(geometry);
        element.geometry.SetId(element.id);
        element.curve = CurveOf(geometry);
        document.elements.push_back(std::move(element));
    } catch (...) {
        return onException.Or(kErrorInvalidArgument); // points that no such curve goes through
    }
    made = ++document.lastId;
    return kOk;
}

void CommitDocument(HostDocument& document) {
    if (document.removedCount == 0 && !document.hasChanged) {
        return;
    }
    // Relative to the tolerance zone: what a user cannot see but a solver would not call solved.
    constexpr double kSatisfied = 1e-6;
    const double tolerance = kSatisfied * document.toleranceZone / document.view.scale;
    std::erase_if(document.constraints, [&](const HostConstraint2d& constraint) {
        bool isTouched = false;
        for (int i = 0; i < constraint.memberCount; ++i) {
            const HostDocument::Element* element = document.Find(constraint.members[i].element);
            if (element == nullptr) {
                return true;
            }
            isTouched = isTouched || element->isChanged;
        }
        return isTouched && !(ConstraintError(document, constraint) <= tolerance);
    });
    std::erase_if(document.elements, [](const HostDocument::Element& element) { return element.isRemoved; });
    document.removedCount = 0;
    for (HostDocument::Element& element : document.elements) {
        element.isChanged = false;
    }
    document.hasChanged = false;
}

} // namespace Tessera::Host

using namespace Tessera::Host;

HostDocument* TesseraHost_CreateDocument(void) {
    try {
        return new HostDocument;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void TesseraHost_DeleteDocument(HostDocument* document) {
    delete document;
}

std::int32_t TesseraHost_SetView(HostDocument* document, const HostView* view) {
    constexpr const char* kName = "TesseraHost_SetView";
    if (document == nullptr || view == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    if (!std::isfinite(view->origin.x) || !std::isfinite(view->origin.y) || !std::isfinite(view->scale) ||
        !(view->scale > 0.0)) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    document->view = *view;
    return kOk;
}

std::int32_t TesseraHost_SetPreferences(HostDocument* document, std::int32_t showRelationship,
                                        double toleranceZone) {
    constexpr const char* kName = "TesseraHost_SetPreferences";
    if (document == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    if (!std::isfinite(toleranceZone) || !(toleranceZone > 0.0)) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    document->showRelationship = showRelationship != 0 ? 1 : 0;
    document->toleranceZone = toleranceZone;
    return kOk;
}

std::int32_t TesseraHost_CreateElement(HostDocument* document, const HostElement2d* geometry,
                                       HostElementId* made) {
    constexpr const char* kName = "TesseraHost_CreateElement";
    if (document == nullptr || geometry == nullptr || made == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    const std::int32_t code = AddElement(*document, *geometry, *made);
    return code < 0 ? TESSERA_REPORT(code, kName) : kOk;
}

std::int32_t TesseraHost_RemoveElement(HostDocument* document, HostElementId element) {
    constexpr const char* kName = "TesseraHost_RemoveElement";
    if (document == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    HostDocument::Element* found = document->Find(element);
    if (found == nullptr) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    found->isRemoved = true;
    ++document->removedCount;
    CommitDocument(*document);
    return kOk;
}

std::int32_t TesseraHost_AskElementCount(const HostDocument* document) {
    if (document == nullptr) {
        return TESSERA_REPORT(kErrorPointer, "TesseraHost_AskElementCount");
    }
    return CountShown(*document, document->elements);
}

std::int32_t TesseraHost_AskElementAt(const HostDocument* document, std::int32_t index,
                                      HostElement2d* geometry) {
    constexpr const char* kName = "TesseraHost_AskElementAt";
    if (document == nullptr || geometry == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    const HostDocument::Element* found = NthShown(*document, document->elements, index);
    if (found == nullptr) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    *geometry = found->geometry.View();
    return kOk;
}

std::int32_t TesseraHost_AskElement(const HostDocument* document, HostElementId element,
                                    HostElement2d* geometry) {
    constexpr const char* kName = "TesseraHost_AskElement";
    if (document == nullptr || geometry == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    const HostDocument::Element* found = document->Find(element);
    if (found == nullptr) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    *geometry = found->geometry.View();
    return kOk;
}

std::int32_t TesseraHost_EvaluateElement(const HostDocument* document, HostElementId element, double t,
                                         tagGPosition2d* position) {
    constexpr const char* kName = "TesseraHost_EvaluateElement";
    if (document == nullptr || position == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    const HostDocument::Element* found = document->Find(element);
    if (found == nullptr || !(t >= 0.0 && t <= 1.0)) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    double limits[2];
    found->curve.curve->AskRange(limits);
    const double fraction = found->curve.endsExchanged ? 1.0 - t : t;
    double p[3];
    evcrve(found->curve.curve->AskCurveData(), 0, limits[0] + fraction * (limits[1] - limits[0]), p);
    *position = {p[0], p[1]};
    return kOk;
}

std::int32_t TesseraHost_AskConstraintCount(const HostDocument* document) {
    if (document == nullptr) {
        return TESSERA_REPORT(kErrorPointer, "TesseraHost_AskConstraintCount");
    }
    return CountShown(*document, document->constraints);
}

std::int32_t TesseraHost_AskConstraintAt(const HostDocument* document, std::int32_t index,
                                         HostConstraint2d* constraint) {
    constexpr const char* kName = "TesseraHost_AskConstraintAt";
    if (document == nullptr || constraint == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    const HostConstraint2d* found = NthShown(*document, document->constraints, index);
    if (found == nullptr) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    *constraint = *found;
    return kOk;
}

std::int32_t TesseraHost_AskConstraintError(const HostDocument* document, HostConstraintId constraint,
                                            double* error) {
    constexpr const char* kName = "TesseraHost_AskConstraintError";
    if (document == nullptr || error == nullptr) {
        return TESSERA_REPORT(kErrorPointer, kName);
    }
    const HostConstraint2d* found = ById(document->constraints, constraint);
    if (found == nullptr || !document->IsShown(*found)) {
        return TESSERA_REPORT(kErrorInvalidArgument, kName);
    }
    *error = ConstraintError(*document, *found);
    return kOk;
}
