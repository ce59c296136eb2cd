#include "tessera/host/ReferenceHost.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>

#include "tessera/host/internal/ReferenceDocument.h"
#include "tessera/host/internal/ReferenceHostServices.h"
#include "tessera/host/internal/Services.h"
#include "tessera/kernel/ARC_SPLINE.h"
#include "tessera/kernel/BCEV.h"
#include "tessera/kernel/CurveInversion.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/RecordPtr.h"

// The blocks hold plain structs (see the header); they are copied in and out with memcpy because a block is
// untyped memory. Projection goes through a temporary curve record, so that every kind is answered by the
// same kernel routine.
namespace Tessera::Host {

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;
// Parameters this close to an end are the end, so that a trim at an end leaves no sliver.
constexpr double kEndSnap = 1e-9;
constexpr std::int32_t kServiceFailed = 1;

std::int32_t registrationCount = 0;

template <class Block>
Block ReadBlock(const void* data) {
    Block block;
    std::memcpy(&block, data, sizeof(Block));
    return block;
}

template <class Block>
void WriteBlock(void* data, const Block& block) {
    std::memcpy(data, &block, sizeof(Block));
}

// --- Math library

tagGPosition2d BuildPosition2d(void*, double x, double y) {
    return {x, y};
}

tagGVector2d BuildVector2d(void*, double x, double y) {
    return {x, y};
}

double GiveAngle(void*, const tagGVector2d* from, const tagGVector2d* to) {
    return Geometry::SignedAngle({from->x, from->y}, {to->x, to->y});
}

// --- Curves as kernel records

RecordPtr LineRecord(const ReferenceLineBlock& line) {
    const double start[3] = {line.startX, line.startY, 0.0};
    const double end[3] = {line.endX, line.endY, 0.0};
    return RecordPtr(ev03p0(start, end));
}

// The record runs counter-clockwise; a clockwise block is its reverse (see ToBlockParameter).
RecordPtr ArcRecord(const ReferenceArcBlock& arc) {
    const double centre[3] = {arc.centreX, arc.centreY, 0.0};
    const double from = std::min(arc.startAngle, arc.startAngle + arc.sweep);
    return RecordPtr(ev05p0(centre, arc.radius, from, from + std::fabs(arc.sweep)));
}

RecordPtr EllipseRecord(const HostEllipseBlock& ellipse) {
    const double centre[3] = {ellipse.centreX, ellipse.centreY, 0.0};
    const double radius = std::hypot(ellipse.axisX, ellipse.axisY);
    const double rotation = std::atan2(ellipse.axisY, ellipse.axisX);
    return RecordPtr(ev06p0(centre, radius, radius * ellipse.ratio, rotation, 0.0, kTwoPi));
}

/// A record to read from: a B-spline lends its own, the other kinds make one.
struct LentRecord {
    RecordPtr owned;
    KC_CURVE_struct_s* record = nullptr;
};

LentRecord RecordOf(const HostGeometryHandle& handle) {
    LentRecord lent;
    if (handle.data == nullptr) {
        return lent;
    }
    switch (handle.typeCode) {
    case kHostLine:
        lent.owned = LineRecord(ReadBlock<ReferenceLineBlock>(handle.data));
        break;
    case kHostArc:
        lent.owned = ArcRecord(ReadBlock<ReferenceArcBlock>(handle.data));
        break;
    case kHostCircleOrEllipse:
        lent.owned = EllipseRecord(ReadBlock<HostEllipseBlock>(handle.data));
        break;
    case kHostBSpline:
        lent.record = ReadBlock<ReferenceBSplineBlock>(handle.data).definition;
        return lent;
    default:
        return lent;
    }
    lent.record = lent.owned.get();
    return lent;
}

bool RunsBackwards(const HostGeometryHandle& handle) {
    return handle.typeCode == kHostArc && ReadBlock<ReferenceArcBlock>(handle.data).sweep < 0.0;
}

double ToRecordParameter(const HostGeometryHandle& handle, KC_CURVE_struct_s* record, double t) {
    double limits[2];
    evcrvp(record, limits);
    const double fraction = RunsBackwards(handle) ? 1.0 - t : t;
    return limits[0] + fraction * (limits[1] - limits[0]);
}

double ToBlockParameter(const HostGeometryHandle& handle, KC_CURVE_struct_s* record, double parameter) {
    double limits[2];
    evcrvp(record, limits);
    const double range = limits[1] - limits[0];
    if (range <= 0.0) {
        return 0.0;
    }
    double t = (parameter - limits[0]) / range;
    t = RunsBackwards(handle) ? 1.0 - t : t;
    if (std::fabs(t) <= kEndSnap) {
        return 0.0;
    }
    return std::fabs(t - 1.0) <= kEndSnap ? 1.0 : t;
}

// --- 2D geometry kernel

void LineFromPositions(void*, void* block, const tagGPosition2d* start, const tagGPosition2d* end,
                       std::int32_t*) {
    WriteBlock(block, ReferenceLineBlock{start->x, start->y, end->x, end->y});
}

void ArcThroughPositions(void*, const tagGPosition2d* start, const tagGPosition2d* end,
                         const tagGPosition2d* onArc, void* block, std::int32_t* status) {
    const Vex::Math::Point2 a{start->x, start->y};
    const Vex::Math::Point2 b{onArc->x, onArc->y};
    const Vex::Math::Point2 c{end->x, end->y};
    Vex::Math::Point2 centre{};
    double radius = 0.0;
    if (ARC_SPLINE_cre_circle_thru_3_points_2d(&a, &b, &c, &centre, &radius) == 0) {
        // No circle: a degenerate arc at the start, which can still be drawn and released.
        WriteBlock(block, ReferenceArcBlock{start->x, start->y, 0.0, 0.0, 0.0});
        *status = kServiceFailed;
        return;
    }
    const double from = std::atan2(a.y - centre.y, a.x - centre.x);
    const double to = std::atan2(c.y - centre.y, c.x - centre.x);
    const double turn = (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
    double sweep = to - from;
    if (turn > 0.0 && sweep < 0.0) {
        sweep += kTwoPi;
    } else if (turn < 0.0 && sweep > 0.0) {
        sweep -= kTwoPi;
    }
    WriteBlock(block, ReferenceArcBlock{centre.x, centre.y, radius, from, sweep});
}

// Knots that the poles alone determine: clamped uniform, or uniform over wrapped poles when periodic.
BcurveDataPtr DefinitionFromPoles(int degree, int poleCount, const tagGPosition2d* poles, bool isPeriodic) {
    const int order = degree + 1;
    const int total = isPeriodic ? poleCount + degree : poleCount;
    BcurveDataPtr definition(BCEV_alloc_bcurve_data(total, order));
    if (!definition) {
        return definition;
    }
    for (int i = 0; i < total; ++i) {
        const tagGPosition2d& pole = poles[i % poleCount];
        const double values[4] = {pole.x, pole.y, 0.0, 1.0};
        std::copy(values, values + 4, definition->poles[i]);
    }
    const int spans = total - degree;
    for (int i = 0; i < total + order; ++i) {
        const double step = static_cast<double>(i - degree) / spans;
        definition->knots[i] = isPeriodic ? step : std::clamp(step, 0.0, 1.0);
    }
    definition->periodic = isPeriodic ? 1 : 0;
    return definition;
}

void BsplineFromPoles(void*, void* block, std::uint8_t degree, std::int32_t poleCount,
                      const tagGPosition2d* poles, std::int32_t periodic, void*, void*) {
    const int fewestPoles = periodic != 0 ? 2 : degree + 1;
    if (degree < 1 || poleCount < fewestPoles || poles == nullptr) {
        return;
    }
    BcurveDataPtr definition = DefinitionFromPoles(degree, poleCount, poles, periodic != 0);
    KC_CURVE_struct_s* record = definition ? ev09p1(definition.get()) : nullptr;
    if (record == nullptr) {
        return;
    }
    static_cast<void>(definition.release()); // the record owns it now
    WriteBlock(block, ReferenceBSplineBlock{degree, poleCount, periodic != 0 ? 1 : 0, record});
}

void ProjectOnCurve(void*, const HostGeometryHandle* curve, const tagGPosition2d* position, double,
                    tagGPosition2d* foot, double* parameter, std::int32_t* status) {
    const LentRecord lent = RecordOf(*curve);
    const double p[3] = {position->x, position->y, 0.0};
    double t = 0.0;
    double nearest[3];
    if (lent.record == nullptr || em015cBounded(lent.record, p, &t, nearest, nullptr) == kInversionFailed) {
        *status = kServiceFailed;
        return;
    }
    *foot = {nearest[0], nearest[1]};
    *parameter = ToBlockParameter(*curve, lent.record, t);
}

/// New handle over the piece [from, to] of a curve, in the block's own parameters; empty on failure.
HostGeometryHandle PieceOf(const HostGeometryHandle& curve, KC_CURVE_struct_s* record, double from,
                           double to) {
    void* block = SM_calloc(1, kHostBlockSize, "SplitCurve:0");
    if (block == nullptr) {
        return {};
    }
    switch (curve.typeCode) {
    case kHostLine: {
        double start[3];
        double end[3];
        evcrve(record, 0, from, start);
        evcrve(record, 0, to, end);
        WriteBlock(block, ReferenceLineBlock{start[0], start[1], end[0], end[1]});
        return {block, curve.typeCode, {}};
    }
    case kHostArc: {
        auto arc = ReadBlock<ReferenceArcBlock>(curve.data);
        arc.startAngle += from * arc.sweep;
        arc.sweep *= to - from;
        WriteBlock(block, arc);
        return {block, curve.typeCode, {}};
    }
    case kHostBSpline: {
        const double range[2] = {from, to};
        RecordPtr part(em0941(record, range));
        if (part) {
            auto piece = ReadBlock<ReferenceBSplineBlock>(curve.data);
            piece.poleCount = static_cast<EVC_bcurve_s*>(part->data)->definition->numPoles;
            piece.periodic = 0;
            piece.definition = part.release();
            WriteBlock(block, piece);
            return {block, curve.typeCode, {}};
        }
        break;
    }
    default: // A block has no room for the limits of a circle or ellipse: it cannot be divided.
        break;
    }
    SM_free(block);
    return {};
}

void SplitCurve(void*, const HostGeometryHandle* curve, double parameter, HostGeometryHandle* first,
                HostGeometryHandle* second, std::int32_t* status) {
    *first = {};
    *second = {};
    const LentRecord lent = RecordOf(*curve);
    if (lent.record == nullptr || !(parameter >= -kEndSnap && parameter <= 1.0 + kEndSnap)) {
        *status = kServiceFailed;
        return;
    }
    const bool atStart = parameter <= kEndSnap;
    const bool atEnd = parameter >= 1.0 - kEndSnap;
    if (!atStart) {
        *first = PieceOf(*curve, lent.record, 0.0, atEnd ? 1.0 : parameter);
    }
    if (!atEnd) {
        *second = PieceOf(*curve, lent.record, atStart ? 0.0 : parameter, 1.0);
    }
    if ((!atStart && first->data == nullptr) || (!atEnd && second->data == nullptr)) {
        TesseraHost_ReleaseHandle(first);
        TesseraHost_ReleaseHandle(second);
        *status = kServiceFailed;
    }
}

void HandleDropped(void*, HostGeometryHandle* handle) {
    TesseraHost_ReleaseHandle(handle);
}

// --- Class library and error reporting

void RegisterExtensionModule(void*, const char*) {
    ++registrationCount;
}

void ReportError(void*, std::int32_t code, const char* sourceFile, std::int32_t line,
                 const char* functionName) {
    std::fprintf(stderr, "%s:%d: %s failed with 0x%08X\n", sourceFile, line, functionName,
                 static_cast<unsigned>(code));
}

} // namespace

HostServices ReferenceHostServices() {
    HostServices services{};
    services.size = sizeof(HostServices);
    services.buildPosition2d = BuildPosition2d;
    services.buildVector2d = BuildVector2d;
    services.giveAngle = GiveAngle;
    services.lineFromPositions = LineFromPositions;
    services.arcThroughPositions = ArcThroughPositions;
    services.bsplineFromPoles = BsplineFromPoles;
    services.projectOnCurve = ProjectOnCurve;
    services.splitCurve = SplitCurve;
    services.handleDropped = HandleDropped;
    services.registerExtensionModule = RegisterExtensionModule;
    services.HRerrEx = ReportError;
    AddDocumentServices(services);
    return services;
}

} // namespace Tessera::Host

using namespace Tessera::Host;

void TesseraHost_ReleaseHandle(HostGeometryHandle* handle) {
    if (handle == nullptr || handle->data == nullptr) {
        return;
    }
    if (handle->typeCode == kHostBSpline) {
        evcrvf(ReadBlock<ReferenceBSplineBlock>(handle->data).definition);
    }
    SM_free(handle->data);
    *handle = {};
}

std::int32_t TesseraHost_EvaluateHandle(const HostGeometryHandle* handle, double t,
                                        tagGPosition2d* position) {
    if (handle == nullptr || handle->data == nullptr || position == nullptr) {
        return TESSERA_REPORT(kErrorPointer, "TesseraHost_EvaluateHandle");
    }
    const LentRecord lent = RecordOf(*handle);
    if (lent.record == nullptr || !(t >= 0.0 && t <= 1.0)) {
        return TESSERA_REPORT(kErrorInvalidArgument, "TesseraHost_EvaluateHandle");
    }
    double p[3];
    evcrve(lent.record, 0, ToRecordParameter(*handle, lent.record, t), p);
    *position = {p[0], p[1]};
    return kOk;
}

std::int32_t TesseraHost_AskRegistrationCount(void) {
    return registrationCount;
}
