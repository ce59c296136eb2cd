#include <algorithm>
#include <cmath>
#include <new>

#include "tessera/geometry/Arc.h"
#include "tessera/geometry/Ellipse.h"
#include "tessera/geometry/XYBox.h"
#include "tessera/host/internal/ReferenceDocument.h"
#include "tessera/host/internal/Services.h"

// The services of the ink entry over a HostDocument. They report nothing themselves: the library does, where
// it calls them.
namespace Tessera::Host {

namespace {

std::int32_t Create(HostDocument* document, std::int32_t kind, std::initializer_list<tagGPosition2d> points,
                    HostElementId* made, double radius = 0.0) {
    HostElement2d geometry{};
    geometry.kind = kind;
    geometry.radius = radius;
    std::copy(points.begin(), points.end(), geometry.points);
    return AddElement(*document, geometry, *made);
}

std::int32_t CreateLine(void*, HostDocument* document, const tagGPosition2d* start, const tagGPosition2d* end,
                        HostElementId* made) {
    return Create(document, kHostElementLine, {*start, *end}, made);
}

std::int32_t CreateArc(void*, HostDocument* document, const tagGPosition2d* start, const tagGPosition2d* end,
                       const tagGPosition2d* onArc, HostElementId* made) {
    return Create(document, kHostElementArc, {*start, *end, *onArc}, made);
}

std::int32_t CreateCircle(void*, HostDocument* document, const tagGPosition2d* centre, double radius,
                          HostElementId* made) {
    return Create(document, kHostElementCircle, {*centre}, made, radius);
}

std::int32_t CreateEllipse(void*, HostDocument* document, const tagGPosition2d* centre,
                           const tagGPosition2d* firstAxis, const tagGPosition2d* secondAxis,
                           HostElementId* made) {
    return Create(document, kHostElementEllipse, {*centre, *firstAxis, *secondAxis}, made);
}

std::int32_t CreateEllipticArc(void*, HostDocument* document, const tagGPosition2d* centre,
                               const tagGPosition2d* firstAxis, const tagGPosition2d* secondAxis,
                               const tagGPosition2d* start, const tagGPosition2d* end, HostElementId* made) {
    return Create(document, kHostElementEllipticArc, {*centre, *firstAxis, *secondAxis, *start, *end}, made);
}

std::int32_t CreateBSpline(void*, HostDocument* document, const HostElement2d* bspline, HostElementId* made) {
    return bspline->kind == kHostElementBSpline ? AddElement(*document, *bspline, *made)
                                                : kErrorInvalidArgument;
}

std::int32_t CreateRectangle(void* context, HostDocument* document, const tagGPosition2d corners[4],
                             HostElementId made[4]) {
    const std::size_t before = document->elements.size();
    for (int i = 0; i < 4; ++i) {
        const std::int32_t code = CreateLine(context, document, &corners[(i + 3) % 4], &corners[i], &made[i]);
        if (code < 0) {
            document->elements.resize(before);
            return code;
        }
    }
    return kOk;
}

std::int32_t Modify(void*, HostDocument* document, const HostElement2d* geometry) {
    HostDocument::Element* element = document->Find(geometry->id);
    if (element == nullptr || !IsSound(*geometry)) {
        return kErrorInvalidArgument;
    }
    const ExceptionCode onException;
    try {
        ElementCurve curve = CurveOf(*geometry);
        element->geometry = ElementGeometry(*geometry);
        element->curve = std::move(curve);
    } catch (...) {
        return onException.Or(kErrorInvalidArgument);
    }
    element->isChanged = true;
    document->hasChanged = true;
    return kOk;
}

std::int32_t Remove(void*, HostDocument* document, HostElementId id) {
    HostDocument::Element* element = document->Find(id);
    if (element == nullptr) {
        return kErrorInvalidArgument;
    }
    element->isRemoved = true;
    ++document->removedCount;
    return kOk;
}

std::int32_t Restore(void*, HostDocument* document, HostElementId id) {
    HostDocument::Element* element = document->FindRemoved(id);
    if (element == nullptr) {
        return kErrorInvalidArgument;
    }
    element->isRemoved = false;
    --document->removedCount;
    return kOk;
}

// --- View and preferences

std::int32_t DeviceToModel(void*, HostDocument* document, const tagGPosition2d* device,
                           tagGPosition2d* model) {
    const HostView& view = document->view;
    const double up = view.isYDown == 1 ? -1.0 : 1.0;
    *model = {view.origin.x + device->x / view.scale, view.origin.y + up * device->y / view.scale};
    return kOk;
}

std::int32_t ModelToDevice(void*, HostDocument* document, const tagGPosition2d* model,
                           tagGPosition2d* device) {
    const HostView& view = document->view;
    const double up = view.isYDown == 1 ? -1.0 : 1.0;
    *device = {(model->x - view.origin.x) * view.scale, up * (model->y - view.origin.y) * view.scale};
    return kOk;
}

std::int32_t AskShowRelationship(void*, HostDocument* document, std::int32_t* isShown) {
    *isShown = document->showRelationship;
    return kOk;
}

std::int32_t AskToleranceZone(void*, HostDocument* document, double* zone) {
    *zone = document->toleranceZone;
    return kOk;
}

// --- Constraints

std::int32_t CreateConstraint(void*, HostDocument* document, const HostConstraint2d* constraint,
                              HostConstraintId* made) {
    if (constraint->memberCount < 1 || constraint->memberCount > 3 || !document->IsShown(*constraint) ||
        !std::isfinite(ConstraintError(*document, *constraint))) {
        return kErrorInvalidArgument;
    }
    try {
        document->constraints.push_back(*constraint);
    } catch (const std::bad_alloc&) {
        return kErrorOutOfMemory;
    }
    *made = ++document->lastId;
    document->constraints.back().id = *made;
    return kOk;
}

std::int32_t Retarget(void*, HostDocument* document, const HostConstraintMember* from,
                      const HostConstraintMember* to) {
    if (document->Find(from->element) == nullptr || document->Find(to->element) == nullptr) {
        return kErrorInvalidArgument;
    }
    for (HostConstraint2d& constraint : document->constraints) {
        for (int i = 0; i < constraint.memberCount; ++i) {
            HostConstraintMember& member = constraint.members[i];
            if (member.element == from->element && member.point == from->point) {
                member = *to;
            }
        }
    }
    return kOk;
}

std::int32_t RemoveConstraint(void*, HostDocument* document, HostConstraintId id) {
    const std::size_t removed =
        std::erase_if(document->constraints, [id](const HostConstraint2d& c) { return c.id == id; });
    return removed == 0 ? kErrorInvalidArgument : kOk;
}

std::int32_t Commit(void*, HostDocument* document) {
    CommitDocument(*document);
    return kOk;
}

// --- Locating

/// The curve's box, with its centre if it has one.
Geometry::XYBox BoxOf(const Geometry::Curve& curve) {
    Geometry::XYBox box;
    curve.AskXYBox(box);
    if (curve.GetType() == Geometry::CurveType_Arc) {
        box.Merge(static_cast<const Geometry::Arc&>(curve).GetCenter());
    } else if (curve.GetType() == Geometry::CurveType_Ellipse) {
        box.Merge(static_cast<const Geometry::Ellipse&>(curve).AskCenter());
    }
    return box;
}

std::int32_t Locate(void*, HostDocument* document, const tagGPosition2d* lower, const tagGPosition2d* upper,
                    std::int32_t capacity, HostElementId* found, std::int32_t* count) {
    *count = 0;
    for (const HostDocument::Element& element : document->elements) {
        if (element.isRemoved) {
            continue;
        }
        const Geometry::XYBox box = BoxOf(*element.curve.curve);
        if (box.min.x <= upper->x && box.max.x >= lower->x && box.min.y <= upper->y &&
            box.max.y >= lower->y) {
            if (*count < capacity) {
                found[*count] = element.id;
            }
            ++*count;
        }
    }
    return kOk;
}

std::int32_t SetTarget(void*, HostDocument* document, HostElementId id) {
    if (document->Find(id) == nullptr) {
        return kErrorInvalidArgument;
    }
    document->target = id;
    return kOk;
}

std::int32_t Evaluate(void*, HostDocument* document, HostElement2d* geometry) {
    const HostDocument::Element* element = document->Find(document->target);
    if (element == nullptr) {
        return kErrorFail;
    }
    *geometry = element->geometry.View();
    return kOk;
}

std::int32_t Clear(void*, HostDocument* document) {
    document->target = 0;
    return kOk;
}

} // namespace

void AddDocumentServices(HostServices& services) {
    services.HCreateLine2d = CreateLine;
    services.HCreateArc2d = CreateArc;
    services.HCreateCircle2d = CreateCircle;
    services.HCreateEllipse2d = CreateEllipse;
    services.HCreateEllipArc2d = CreateEllipticArc;
    services.HCreateBspCurve2dEx = CreateBSpline;
    services.HCreateRectangle2d = CreateRectangle;
    services.HModifyElement2d = Modify;
    services.HRemoveElement2d = Remove;
    services.HRestoreElement2d = Restore;
    services.DCToModel = DeviceToModel;
    services.ModelToDC = ModelToDevice;
    services.GetShowRelationship = AskShowRelationship;
    services.GetToleranceZone = AskToleranceZone;
    services.createConstraint = CreateConstraint;
    services.retargetConstraint = Retarget;
    services.removeConstraint = RemoveConstraint;
    services.commitConstraints = Commit;
    services.Locate = Locate;
    services.SetTarget = SetTarget;
    services.Evaluate = Evaluate;
    services.Clear = Clear;
}

} // namespace Tessera::Host
