// The reference host's document and the services over it.
#pragma once

#include <vector>

#include "tessera/host/HostDocument.h"
#include "tessera/host/HostServices.h"
#include "tessera/host/internal/FFMGEOM.h"

struct HostDocument {
    struct Element {
        HostElementId id = 0;
        Tessera::Host::ElementGeometry geometry;
        Tessera::Host::ElementCurve curve; ///< the same geometry, to compute with
        bool isRemoved = false;            ///< until the next commit it can come back
        bool isChanged = false;            ///< since the last commit
    };

    HostView view{{0.0, 0.0}, 1.0, 0, 0};
    std::int32_t showRelationship = 1;
    double toleranceZone = 10.0;
    std::vector<Element> elements;             ///< by ascending identifier
    std::vector<HostConstraint2d> constraints; ///< by ascending identifier
    std::size_t removedCount = 0; ///< elements that are removed; while there are none, nothing is hidden
    bool hasChanged = false;      ///< whether some element is changed
    std::int64_t lastId = 0;
    HostElementId target = 0;

    /// Null when there is none, or when it has been removed.
    const Element* Find(HostElementId id) const;
    Element* Find(HostElementId id);
    Element* FindRemoved(HostElementId id);
    /// Whether all members are there.
    bool IsShown(const HostConstraint2d& constraint) const;
};

namespace Tessera::Host {

/// Fills the entries that serve the ink entry.
void AddDocumentServices(HostServices& services);

/// The document's own operations, unreported.
std::int32_t AddElement(HostDocument& document, const HostElement2d& geometry, HostElementId& made);
void CommitDocument(HostDocument& document);
/// See TesseraHost_AskConstraintError; infinite where a member has not the point or the kind asked for.
double ConstraintError(const HostDocument& document, const HostConstraint2d& constraint);

} // namespace Tessera::Host
