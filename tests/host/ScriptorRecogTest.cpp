#include "tessera/host/ScriptorRecog.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "tessera/host/HostServices.h"
#include "tessera/host/ReferenceHost.h"
#include "tessera/host/internal/ReferenceHostServices.h"
#include "tessera/kernel/SM.h"

namespace {

using Handles = std::vector<HostGeometryHandle>;
using Points = std::vector<InputPoint>;

constexpr double kScale = 100000.0;
constexpr double kPi = std::numbers::pi;

template <class Shape>
Points Sample(int n, Shape shape) {
    Points points;
    for (int i = 0; i < n; ++i) {
        points.push_back(shape(static_cast<double>(i) / (n - 1)));
    }
    return points;
}

Points Circle(double cx, double cy, double r, int n = 120) {
    return Sample(n, [=](double t) {
        return InputPoint{cx + r * std::cos(2 * kPi * t), cy + r * std::sin(2 * kPi * t)};
    });
}

/// Handles of one call, released at the end.
struct Recognised {
    explicit Recognised(const Points& points) {
        ConvertPolyLinePointsTorecognizedAnalyticTypes(points, handles);
    }
    ~Recognised() {
        for (HostGeometryHandle& handle : handles) {
            TesseraHost_ReleaseHandle(&handle);
        }
    }
    Recognised(const Recognised&) = delete;
    Recognised& operator=(const Recognised&) = delete;
    Handles handles;
};

template <class Block>
Block Read(const HostGeometryHandle& handle) {
    Block block;
    std::memcpy(&block, handle.data, sizeof(block));
    return block;
}

tagGPosition2d At(const HostGeometryHandle& handle, double t) {
    tagGPosition2d p{};
    EXPECT_EQ(TesseraHost_EvaluateHandle(&handle, t, &p), 0);
    return p;
}

TEST(PolyLineEntry, NothingIsAppendedForInputWithoutACurve) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Points inputs[] = {{}, {{1, 2}}, {{5, 5}, {5, 5}, {5, 5}}, {{0, 0}, {nan, 1}, {2, 2}, {3, 3}}};
    for (const Points& input : inputs) {
        SCOPED_TRACE(input.size());
        EXPECT_TRUE(Recognised(input).handles.empty());
    }
}

TEST(PolyLineEntry, AStraightLineJoinsFirstAndLastInputPoint) {
    Points points = Sample(50, [](double t) { return InputPoint{10 + 180 * t, 20 + 90 * t}; });
    points.front().y += 0.4; // off the fitted line: the input's own ends count
    const Recognised result(points);
    ASSERT_EQ(result.handles.size(), 1u);
    EXPECT_EQ(result.handles[0].typeCode, 103);
    const auto line = Read<ReferenceLineBlock>(result.handles[0]);
    EXPECT_DOUBLE_EQ(line.startX, 10 / kScale);
    EXPECT_DOUBLE_EQ(line.startY, 20.4 / kScale);
    EXPECT_DOUBLE_EQ(line.endX, 190 / kScale);
    EXPECT_DOUBLE_EQ(line.endY, 110 / kScale);
}

TEST(PolyLineEntry, AnOpenArcRunsThroughTheMiddleOfTheDrawnOne) {
    for (const bool clockwise : {false, true}) {
        SCOPED_TRACE(clockwise);
        const Recognised result(Sample(90, [=](double t) {
            const double angle = 0.3 + (clockwise ? 1 - t : t) * 2.8;
            return InputPoint{300 + 100 * std::cos(angle), 50 + 100 * std::sin(angle)};
        }));
        ASSERT_EQ(result.handles.size(), 1u);
        ASSERT_EQ(result.handles[0].typeCode, 116);
        for (int i = 0; i <= 20; ++i) {
            const double angle = 0.3 + 2.8 * (clockwise ? 20 - i : i) / 20.0;
            const tagGPosition2d p = At(result.handles[0], i / 20.0);
            EXPECT_NEAR(p.x * kScale, 300 + 100 * std::cos(angle), 1e-6);
            EXPECT_NEAR(p.y * kScale, 50 + 100 * std::sin(angle), 1e-6);
        }
    }
}

TEST(PolyLineEntry, AClosedRoundPolyLineIsACircle) {
    const Recognised result(Circle(300, 200, 80));
    ASSERT_EQ(result.handles.size(), 1u);
    EXPECT_EQ(result.handles[0].typeCode, 115);
    const auto circle = Read<HostEllipseBlock>(result.handles[0]);
    EXPECT_NEAR(circle.centreX * kScale, 300, 1e-6);
    EXPECT_NEAR(circle.centreY * kScale, 200, 1e-6);
    EXPECT_NEAR(circle.axisX * kScale, 80, 1e-6);
    EXPECT_EQ(circle.axisY, 0.0);
    EXPECT_EQ(circle.ratio, 1.0);
    EXPECT_EQ(circle.flag, 0);
}

TEST(PolyLineEntry, AClosedEllipseCarriesItsCrossedCoordinates) {
    const double a = 120;
    const double b = 50;
    const double phi = 0.5;
    const Recognised result(Sample(150, [=](double t) {
        const double x = a * std::cos(2 * kPi * t);
        const double y = b * std::sin(2 * kPi * t);
        return InputPoint{500 + x * std::cos(phi) - y * std::sin(phi),
                          300 + x * std::sin(phi) + y * std::cos(phi)};
    }));
    ASSERT_EQ(result.handles.size(), 1u);
    ASSERT_EQ(result.handles[0].typeCode, 115);
    const auto block = Read<HostEllipseBlock>(result.handles[0]);
    EXPECT_NEAR(block.centreX * kScale, 500, 1e-4);
    EXPECT_NEAR(block.centreY * kScale, 300, 1e-4);
    // The axis may be stored either way round; both of its points lie on the ellipse.
    const double s = block.ratio > 500 ? 1.0 : -1.0;
    EXPECT_NEAR(block.ratio, 500 + s * a * std::cos(phi), 1e-3);
    EXPECT_NEAR(block.axisX * kScale, 300 + s * a * std::sin(phi), 1e-3);
    EXPECT_NEAR(block.axisY * kScale, 500 - s * b * std::sin(phi), 1e-3);
}

TEST(PolyLineEntry, AFreeFormStrokeIsABSplineFromFirstToLastPoint) {
    const Points points = Sample(200, [](double t) {
        return InputPoint{300 * t, 100 + 60 * std::sin(9 * t) * std::exp(-t) + 25 * std::cos(17 * t)};
    });
    const Recognised result(points);
    ASSERT_GE(result.handles.size(), 1u);
    int splines = 0;
    for (const HostGeometryHandle& handle : result.handles) {
        if (handle.typeCode != 127) {
            continue;
        }
        ++splines;
        const auto block = Read<ReferenceBSplineBlock>(handle);
        EXPECT_EQ(block.degree, 2);
        EXPECT_EQ(block.periodic, 0);
        ASSERT_NE(block.definition, nullptr);
        const tagGPosition2d end = At(handle, 1.0);
        if (result.handles.size() == 1) {
            EXPECT_NEAR(At(handle, 0.0).x * kScale, points.front().x, 1e-6);
            EXPECT_NEAR(end.x * kScale, points.back().x, 1e-6);
            EXPECT_NEAR(end.y * kScale, points.back().y, 1e-6);
        }
    }
    EXPECT_GE(splines, 1);
}

TEST(PolyLineEntry, AppendsAfterWhatTheListHeld) {
    Handles handles(2);
    handles[0].typeCode = 7;
    ConvertPolyLinePointsTorecognizedAnalyticTypes(Circle(10, 10, 60), handles);
    ASSERT_EQ(handles.size(), 3u);
    EXPECT_EQ(handles[0].typeCode, 7);
    EXPECT_EQ(handles[2].typeCode, 115);
    TesseraHost_ReleaseHandle(&handles[2]);
    EXPECT_EQ(handles[2].data, nullptr);
}

// --- Services

/// A host that only counts; geometry comes from the reference host.
struct CountingHost {
    static CountingHost* current;
    int registered = 0, lines = 0, dropped = 0, errors = 0;
    std::int32_t lastCode = 0;

    CountingHost() {
        current = this;
        HostServices table = Tessera::Host::ReferenceHostServices();
        table.context = this;
        table.lineFromPositions = [](void* context, void*, const tagGPosition2d*, const tagGPosition2d*,
                                     std::int32_t*) { ++static_cast<CountingHost*>(context)->lines; };
        table.registerExtensionModule = [](void* context, const char* name) {
            EXPECT_STREQ(name, "Tessera");
            ++static_cast<CountingHost*>(context)->registered;
        };
        table.handleDropped = [](void* context, HostGeometryHandle* handle) {
            ++static_cast<CountingHost*>(context)->dropped;
            TesseraHost_ReleaseHandle(handle);
        };
        table.HRerrEx = [](void* context, std::int32_t code, const char*, std::int32_t line,
                           const char* name) {
            auto* host = static_cast<CountingHost*>(context);
            ++host->errors;
            host->lastCode = code;
            EXPECT_GT(line, 0);
            EXPECT_STRNE(name, "");
        };
        EXPECT_EQ(TesseraHost_InstallServices(&table), 0);
    }
    ~CountingHost() { TesseraHost_InstallServices(nullptr); }
    CountingHost(const CountingHost&) = delete;
    CountingHost& operator=(const CountingHost&) = delete;
};
CountingHost* CountingHost::current = nullptr;

TEST(HostServicesTable, AnInstalledTableIsToldAndUsed) {
    const int before = TesseraHost_AskRegistrationCount();
    EXPECT_GE(before, 1) << "registered at load";
    {
        CountingHost host;
        EXPECT_EQ(host.registered, 1);
        const Recognised result(Sample(40, [](double t) { return InputPoint{200 * t, 0}; }));
        ASSERT_EQ(result.handles.size(), 1u);
        EXPECT_EQ(host.lines, 1);
        EXPECT_EQ(host.errors, 0);
    }
    EXPECT_EQ(TesseraHost_AskRegistrationCount(), before + 1) << "told again when it is put back";
}

TEST(HostServicesTable, ATableThatLacksSomethingIsRefusedOnce) {
    CountingHost host;
    HostServices table = Tessera::Host::ReferenceHostServices();
    table.splitCurve = nullptr;
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_InstallServices(&table)), 0x80004003u);
    EXPECT_EQ(host.errors, 1);
    EXPECT_EQ(static_cast<std::uint32_t>(host.lastCode), 0x80004003u);
    table = Tessera::Host::ReferenceHostServices();
    table.size = offsetof(HostServices, HCreateLine2d) - 1;
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_InstallServices(&table)), 0x80070057u);
    EXPECT_EQ(host.errors, 2);
    EXPECT_EQ(host.registered, 1) << "the table in force stays";
}

TEST(HostServicesTable, WhatATrimReplacesIsDropped) {
    CountingHost host;
    {
        const Recognised result(Sample(200, [](double t) {
            return InputPoint{300 * t, 100 + 60 * std::sin(9 * t) * std::exp(-t) + 25 * std::cos(17 * t)};
        }));
        ASSERT_GE(result.handles.size(), 1u);
    }
    EXPECT_GE(host.dropped, 1);
}

// --- Reference host

HostGeometryHandle NewHandle(std::uint8_t code) {
    HostGeometryHandle handle;
    handle.data = SM_calloc(1, kHostBlockSize);
    handle.typeCode = code;
    return handle;
}

/// One handle of each kind that can be divided.
Handles DivisibleHandles() {
    const HostServices services = Tessera::Host::ReferenceHostServices();
    std::int32_t status = 0;
    const tagGPosition2d a{1, 2};
    const tagGPosition2d b{5, -1};
    const tagGPosition2d over{3, 4};
    const tagGPosition2d under{3, -4};
    Handles handles{NewHandle(103), NewHandle(116), NewHandle(116), NewHandle(127)};
    services.lineFromPositions(nullptr, handles[0].data, &a, &b, &status);
    services.arcThroughPositions(nullptr, &a, &b, &over, handles[1].data, &status);
    services.arcThroughPositions(nullptr, &a, &b, &under, handles[2].data, &status);
    const tagGPosition2d poles[] = {{0, 0}, {1, 3}, {4, 3}, {5, 0}, {8, 1}};
    services.bsplineFromPoles(nullptr, handles[3].data, 2, 5, poles, 0, nullptr, nullptr);
    EXPECT_EQ(status, 0);
    return handles;
}

TEST(ReferenceHost, ProjectionInvertsEvaluation) {
    const HostServices services = Tessera::Host::ReferenceHostServices();
    for (HostGeometryHandle& handle : DivisibleHandles()) {
        SCOPED_TRACE(static_cast<int>(handle.typeCode));
        for (const double t : {0.0, 0.125, 0.5, 0.9, 1.0}) {
            const tagGPosition2d p = At(handle, t);
            tagGPosition2d foot{1e30, 1e30};
            double parameter = 0;
            std::int32_t status = 0;
            services.projectOnCurve(nullptr, &handle, &p, 0.0, &foot, &parameter, &status);
            EXPECT_EQ(status, 0);
            EXPECT_NEAR(parameter, t, 1e-7);
            EXPECT_NEAR(std::hypot(foot.x - p.x, foot.y - p.y), 0, 1e-9);
        }
        TesseraHost_ReleaseHandle(&handle);
    }
}

TEST(ReferenceHost, PiecesRetraceTheWholeAndEndsGiveOnePiece) {
    const HostServices services = Tessera::Host::ReferenceHostServices();
    for (HostGeometryHandle& handle : DivisibleHandles()) {
        SCOPED_TRACE(static_cast<int>(handle.typeCode));
        for (const double cut : {0.0, 5e-10, 0.3, 0.75, 1.0 - 5e-10, 1.0}) {
            SCOPED_TRACE(cut);
            HostGeometryHandle first;
            HostGeometryHandle second;
            std::int32_t status = 0;
            services.splitCurve(nullptr, &handle, cut, &first, &second, &status);
            EXPECT_EQ(status, 0);
            EXPECT_EQ(first.data == nullptr, cut < 1e-9);
            EXPECT_EQ(second.data == nullptr, cut > 1 - 1e-9);
            for (const double u : {0.0, 0.4, 1.0}) {
                if (first.data != nullptr) {
                    const double whole = second.data == nullptr ? u : u * cut;
                    EXPECT_NEAR(At(first, u).x, At(handle, whole).x, 1e-12);
                    EXPECT_NEAR(At(first, u).y, At(handle, whole).y, 1e-12);
                }
                if (second.data != nullptr) {
                    const double whole = first.data == nullptr ? u : cut + u * (1 - cut);
                    EXPECT_NEAR(At(second, u).x, At(handle, whole).x, 1e-12);
                    EXPECT_NEAR(At(second, u).y, At(handle, whole).y, 1e-12);
                }
            }
            TesseraHost_ReleaseHandle(&first);
            TesseraHost_ReleaseHandle(&second);
        }
        TesseraHost_ReleaseHandle(&handle);
    }
}

TEST(ReferenceHost, RefusesWhatItCannotAnswer) {
    CountingHost quiet; // takes the reports
    tagGPosition2d p{7, 7};
    HostGeometryHandle empty;
    HostGeometryHandle unfilled = NewHandle(0);
    HostGeometryHandle line = NewHandle(103);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(nullptr, 0, &p)), 0x80004003u);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(&empty, 0, &p)), 0x80004003u);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(&unfilled, 0, &p)), 0x80070057u);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(&line, 1.1, &p)), 0x80070057u);
    EXPECT_EQ(quiet.errors, 4);
    EXPECT_EQ(p.x, 7);
    TesseraHost_ReleaseHandle(nullptr);
    TesseraHost_ReleaseHandle(&empty);
    TesseraHost_ReleaseHandle(&unfilled);
    TesseraHost_ReleaseHandle(&line);
}

TEST(ReferenceHost, APeriodicBSplineClosesSmoothly) {
    const HostServices services = Tessera::Host::ReferenceHostServices();
    HostGeometryHandle handle = NewHandle(127);
    const tagGPosition2d poles[] = {{0, 0}, {4, 0}, {5, 3}, {1, 5}};
    services.bsplineFromPoles(nullptr, handle.data, 3, 4, poles, 1, nullptr, nullptr);
    const tagGPosition2d start = At(handle, 0.0);
    const tagGPosition2d end = At(handle, 1.0);
    EXPECT_NEAR(start.x, end.x, 1e-12);
    EXPECT_NEAR(start.y, end.y, 1e-12);
    const double h = 1e-5;
    EXPECT_NEAR((At(handle, h).x - start.x) / h, (end.x - At(handle, 1 - h).x) / h, 1e-2);
    TesseraHost_ReleaseHandle(&handle);
}

} // namespace
