#include "tessera/host/ScriptorRecog.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "tessera/host/internal/ScriptorTesseraRecog.h"
#include "tessera/host/internal/Services.h"
#include "tessera/kernel/SM.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"

namespace Tessera::Host {

namespace {

// Library units in one unit of the host.
constexpr double S = 100000.0;

tagGPosition2d Scaled(double x, double y) {
    return Services().buildPosition2d(Services().context, x / S, y / S);
}

tagGPosition2d Scaled(const tagGPosition2d& p) {
    return Scaled(p.x, p.y);
}

tagGPosition2d Scaled(const InputPoint& p) {
    return Scaled(p.x, p.y);
}

/// Tells the host which handles the library lets go of.
void Drop(HostGeometryHandle& handle) {
    if (handle.data != nullptr && Services().handleDropped != nullptr) {
        Services().handleDropped(Services().context, &handle);
    }
    handle = {};
}

/// A handle that is dropped unless it is handed on.
class HeldHandle {
public:
    HeldHandle() = default;
    explicit HeldHandle(const HostGeometryHandle& handle) : handle_(handle) {}
    HeldHandle(const HeldHandle&) = delete;
    HeldHandle& operator=(const HeldHandle&) = delete;
    HeldHandle(HeldHandle&& other) noexcept : handle_(other.Release()) {}
    HeldHandle& operator=(HeldHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~HeldHandle() { Drop(handle_); }

    bool IsEmpty() const { return handle_.data == nullptr; }
    HostGeometryHandle* Get() { return &handle_; }
    HostGeometryHandle Release() {
        const HostGeometryHandle handle = handle_;
        handle_ = {};
        return handle;
    }

private:
    HostGeometryHandle handle_;
};

double ProjectedParameter(HeldHandle& curve, const tagGPosition2d& position) {
    tagGPosition2d foot = kUnsetPosition;
    double parameter = 0.0;
    std::int32_t status = 0;
    Services().projectOnCurve(Services().context, curve.Get(), &position, 0.0, &foot, &parameter, &status);
    return parameter;
}

struct Pieces {
    HeldHandle first, second;
};

Pieces Split(HeldHandle& curve, double parameter) {
    Pieces pieces;
    std::int32_t status = 0;
    Services().splitCurve(Services().context, curve.Get(), parameter, pieces.first.Get(), pieces.second.Get(),
                          &status);
    return pieces;
}

/// The part of a B-spline between the first and the last input point.
HeldHandle Trim(HeldHandle curve, const tagGPosition2d& first, const tagGPosition2d& last) {
    const double tA = ProjectedParameter(curve, first);
    const double tB = ProjectedParameter(curve, last);
    const bool firstIsLower = tA <= tB;
    Pieces atLower = Split(curve, std::min(tA, tB));
    HeldHandle kept = atLower.first.IsEmpty() ? std::move(curve) : std::move(atLower.first);

    const double tOther = ProjectedParameter(kept, firstIsLower ? last : first);
    Pieces atOther = Split(kept, tOther);
    HeldHandle& chosen = atOther.second.IsEmpty() ? atOther.first : atOther.second;
    return chosen.IsEmpty() ? std::move(kept) : std::move(chosen);
}

void FillLine(HeldHandle& handle, const tagGPosition2d& first, const tagGPosition2d& last) {
    std::int32_t status = 0;
    handle.Get()->typeCode = kHostLine;
    Services().lineFromPositions(Services().context, handle.Get()->data, &first, &last, &status);
}

void FillArc(HeldHandle& handle, const ConstructEntry& entry, const tagGPosition2d& first,
             const tagGPosition2d& last) {
    const tagGPosition2d middle = Scaled(entry.p1);
    std::int32_t status = 0;
    handle.Get()->typeCode = kHostArc;
    Services().arcThroughPositions(Services().context, &first, &last, &middle, handle.Get()->data, &status);
}

void FillCircle(HeldHandle& handle, const ConstructEntry& entry) {
    const HostEllipseBlock block{entry.p0.x / S, entry.p0.y / S, entry.p1.x / S, 0.0, 1.0, 0};
    handle.Get()->typeCode = kHostCircleOrEllipse;
    std::memcpy(handle.Get()->data, &block, sizeof(block));
}

// The host expects the coordinates of the two radius points crossed in this way, and the ratio unscaled.
void FillEllipse(HeldHandle& handle, const ConstructEntry& entry) {
    const HostEllipseBlock block{entry.p0.x / S, entry.p0.y / S, entry.p1.y / S,
                                 entry.p2.x / S, entry.p1.x,     0};
    handle.Get()->typeCode = kHostCircleOrEllipse;
    std::memcpy(handle.Get()->data, &block, sizeof(block));
}

void FillBSpline(HeldHandle& handle, const ConstructEntry& entry) {
    std::vector<tagGPosition2d> poles;
    poles.reserve(entry.poles.size());
    for (const InputPoint& pole : entry.poles) {
        poles.push_back(Scaled(pole));
    }
    handle.Get()->typeCode = kHostBSpline;
    Services().bsplineFromPoles(Services().context, handle.Get()->data, entry.degree,
                                static_cast<std::int32_t>(poles.size()), poles.data(),
                                entry.periodic == 1 ? 1 : 0, nullptr, nullptr);
}

HeldHandle ToHostGeometry(const ConstructEntry& entry, const tagGPosition2d& first,
                          const tagGPosition2d& last) {
    HostGeometryHandle unfilled;
    unfilled.data = SM_calloc(1, kHostBlockSize, "ConvertPolyLine:0");
    if (unfilled.data == nullptr) {
        throw std::bad_alloc();
    }
    HeldHandle handle(unfilled);
    switch (entry.kind) {
    case ConstructKind_Line:
        FillLine(handle, first, last);
        break;
    case ConstructKind_OpenArc:
        FillArc(handle, entry, first, last);
        break;
    case ConstructKind_Circle:
        FillCircle(handle, entry);
        break;
    case ConstructKind_Ellipse:
        FillEllipse(handle, entry);
        break;
    case ConstructKind_BSpline:
        FillBSpline(handle, entry);
        return Trim(std::move(handle), first, last);
    default:
        break;
    }
    return handle;
}

void ConvertPolyLine(const std::vector<InputPoint>& points, std::vector<HostGeometryHandle>& out) {
    // The entry always runs with the default settings; these are the ones that a host will see here.
    [[maybe_unused]] const Geometry::SketchRecognizerPreferences preferences;
    ConstructList list;
    BuildConstructList(points, list, nullptr);
    if (list.empty()) {
        return;
    }
    const tagGPosition2d first = Scaled(points.front());
    const tagGPosition2d last = Scaled(points.back());
    for (const ConstructEntry& entry : list) {
        HeldHandle handle = ToHostGeometry(entry, first, last);
        out.emplace_back(); // before the handle is let go: this may throw
        out.back() = handle.Release();
    }
}

} // namespace

} // namespace Tessera::Host

void ConvertPolyLinePointsTorecognizedAnalyticTypes(const std::vector<InputPoint>& points,
                                                    std::vector<HostGeometryHandle>& out) {
    using namespace Tessera::Host;
    constexpr const char* kName = "ConvertPolyLinePointsTorecognizedAnalyticTypes";
    const ExceptionCode onException;
    try {
        ConvertPolyLine(points, out);
    } catch (...) {
        TESSERA_REPORT(onException.Or(kErrorFail), kName);
    }
}
