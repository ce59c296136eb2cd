// FFMGEOM - between the host's coordinates and elements and the library's strokes and curves.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tessera/geometry/Curve.h"
#include "tessera/host/HostElement.h"
#include "tessera/host/HostInk.h"
#include "tessera/host/internal/ScriptorTesseraRecog.h"
#include "tessera/recognition/InkInterpretation.h"

namespace Tessera::Host {

/// Geometry of one element that owns its arrays.
class ElementGeometry {
public:
    ElementGeometry() = default;
    explicit ElementGeometry(const HostElement2d& element);
    explicit ElementGeometry(const ConstructEntry& entry);

    /// Refers to this object's arrays.
    HostElement2d View() const;
    void SetId(HostElementId id) { element_.id = id; }
    /// The same points, run through the other way; lines and B-splines stay.
    void ExchangeEnds();

private:
    HostElement2d element_{};
    std::vector<tagGPosition2d> poles_;
    std::vector<double> knots_;
    std::vector<double> weights_;
};

/// An element as a curve of the library.
struct ElementCurve {
    HostElementId id = 0;
    std::unique_ptr<Geometry::Curve> curve;
    bool endsExchanged = false; ///< arcs of the library run counter-clockwise, those of hosts either way
};

/// Whether the element has a known kind, finite numbers and some extent.
bool IsSound(const HostElement2d& element);
/// The element must be sound; throws the text of the curve's constructor where there is no such curve.
ElementCurve CurveOf(const HostElement2d& element);

/// The stroke in model coordinates, through DCToModel.
/// @return 0 or the code of the failure, which has been reported.
std::int32_t InkToModel(const HostInkStroke& ink, HostDocument* document, Geometry::InkStroke& stroke);
/// Device units in one model unit, measured through ModelToDC at a position and a step away from it.
std::int32_t AskViewScale(HostDocument* document, const tagGPosition2d& at, double step, double* scale);

} // namespace Tessera::Host
