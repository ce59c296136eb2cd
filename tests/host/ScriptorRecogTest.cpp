#include "tessera/host/ScriptorRecog.h"

#include <cstddef>
#include <cstring>

#include "tessera/host/ReferenceHost.h"
#include "tessera/kernel/SM.h"
#include "tests/support/HostProbe.h"

namespace {

using namespace Tessera::Testing;
using Handles = std::vector<HostGeometryHandle>;
using Points = std::vector<InputPoint>;
using Shape = std::function<InputPoint(double)>;

constexpr double kScale = 100000.0;
constexpr double kPi = std::numbers::pi;

Points Sample(int n, const Shape& shape) {
    Points points;
    for (int i = 0; i < n; ++i)
        points.push_back(shape(static_cast<double>(i) / (n - 1)));
    return points;
}
Shape Ellipse(InputPoint centre, double a, double b, double turn, double from, double to) {
    return [=](double t) {
        const double x = a * std::cos(from + (to - from) * t);
        const double y = b * std::sin(from + (to - from) * t);
        return InputPoint{centre.x + x * std::cos(turn) - y * std::sin(turn),
                          centre.y + x * std::sin(turn) + y * std::cos(turn)};
    };
}
InputPoint Wave(double t) {
    return {300 * t, 100 + 50 * std::sin(9 * t)};
}

/// Handles of one call, released at the end.
struct Recognised {
    explicit Recognised(const Points& points, std::size_t before = 0) : handles(before) {
        ConvertPolyLinePointsTorecognizedAnalyticTypes(points, handles);
    }
    ~Recognised() {
        for (HostGeometryHandle& handle : handles)
            TesseraHost_ReleaseHandle(&handle);
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
        EXPECT_EQ(Recognised(input, 2).handles.size(), 2u);
    }
}

// Appended after what the list held; the handle runs where the ink ran, a hundred thousandth of its size.
TEST(PolyLineEntry, CurvesRunWhereTheInkRan) {
    const struct {
        const char* name;
        int code;
        Shape shape;
    } rows[] = {
        {"line", 103,
         [](double t) {
             return InputPoint{10 + 180 * t, 20 + 90 * t};
         }},
        {"arc", 116, Ellipse({300, 50}, 100, 100, 0, 0.3, 3.1)},
        {"clockwise arc", 116, Ellipse({300, 50}, 100, 100, 0, 3.1, 0.3)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Recognised result(Sample(90, row.shape), 2);
        ASSERT_EQ(result.handles.size(), 3u);
        EXPECT_EQ(result.handles[0].typeCode, 0);
        ASSERT_EQ(result.handles[2].typeCode, row.code);
        for (int i = 0; i <= 20; ++i) {
            const InputPoint p = row.shape(i / 20.0);
            ExpectNear(At(result.handles[2], i / 20.0), {p.x / kScale, p.y / kScale}, 1e-11);
        }
    }
}

TEST(PolyLineEntry, ALineJoinsTheFirstAndTheLastInputPoint) {
    Points points = Sample(50, [](double t) { return InputPoint{10 + 180 * t, 20 + 90 * t}; });
    points.front().y += 0.4; // off the fitted line: the input's own ends count
    const Recognised result(points);
    ASSERT_EQ(result.handles.size(), 1u);
    const auto line = Read<ReferenceLineBlock>(result.handles[0]);
    EXPECT_DOUBLE_EQ(line.startX, 10 / kScale);
    EXPECT_DOUBLE_EQ(line.startY, 20.4 / kScale);
    EXPECT_DOUBLE_EQ(line.endX, 190 / kScale);
    EXPECT_DOUBLE_EQ(line.endY, 110 / kScale);
}

TEST(PolyLineEntry, ClosedRoundPolyLinesAreWrittenByTheLibrary) {
    const Recognised round(Sample(120, Ellipse({300, 200}, 80, 80, 0, 0, 2 * kPi)));
    ASSERT_EQ(round.handles.size(), 1u);
    EXPECT_EQ(round.handles[0].typeCode, 115);
    const auto circle = Read<HostEllipseBlock>(round.handles[0]);
    EXPECT_NEAR(circle.centreX * kScale, 300, 1e-6);
    EXPECT_NEAR(circle.centreY * kScale, 200, 1e-6);
    EXPECT_NEAR(circle.axisX * kScale, 80, 1e-6);
    EXPECT_EQ(circle.axisY, 0.0);
    EXPECT_EQ(circle.ratio, 1.0);
    EXPECT_EQ(circle.flag, 0);

    const double phi = 0.5;
    const Recognised oval(Sample(150, Ellipse({500, 300}, 120, 50, phi, 0, 2 * kPi)));
    ASSERT_EQ(oval.handles.size(), 1u);
    ASSERT_EQ(oval.handles[0].typeCode, 115);
    const auto block = Read<HostEllipseBlock>(oval.handles[0]);
    EXPECT_NEAR(block.centreX * kScale, 500, 1e-4);
    EXPECT_NEAR(block.centreY * kScale, 300, 1e-4);
    // The coordinates of the radius points go crossed; the axis may be stored either way round.
    const double s = block.ratio > 500 ? 1.0 : -1.0;
    EXPECT_NEAR(block.ratio, 500 + s * 120 * std::cos(phi), 1e-3);
    EXPECT_NEAR(block.axisX * kScale, 300 + s * 120 * std::sin(phi), 1e-3);
    EXPECT_NEAR(block.axisY * kScale, 500 - s * 50 * std::sin(phi), 1e-3);
}

// --- Services

int lineCount = 0;
int registrationCount = 0;
int dropCount = 0;

TEST(HostServicesTable, AnInstalledTableIsToldAndUsed) {
    lineCount = registrationCount = 0;
    const int before = TesseraHost_AskRegistrationCount();
    EXPECT_GE(before, 1) << "registered at load";
    {
        HostProbe host;
        host.table.lineFromPositions = [](void*, void*, const tagGPosition2d*, const tagGPosition2d*,
                                          std::int32_t*) { ++lineCount; };
        host.table.registerExtensionModule = [](void*, const char* name) {
            EXPECT_STREQ(name, "Tessera");
            ++registrationCount;
        };
        host.Install();
        const Recognised result(Sample(40, [](double t) { return InputPoint{200 * t, 0}; }));
        EXPECT_EQ(lineCount, 1);
        EXPECT_TRUE(host.reports.empty());
        HostServices lacking = host.table;
        lacking.splitCurve = nullptr;
        EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_InstallServices(&lacking)), 0x80004003u);
        lacking = host.table;
        lacking.size = offsetof(HostServices, HCreateLine2d) - 1;
        EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_InstallServices(&lacking)), 0x80070057u);
        ASSERT_EQ(host.reports.size(), 2u);
        EXPECT_EQ(static_cast<std::uint32_t>(host.reports[0].code), 0x80004003u);
        EXPECT_EQ(registrationCount, 1) << "the table in force stays";
        EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_AskReferenceServices(nullptr)), 0x80004003u);
        EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_AskReferenceServices(&lacking)), 0x80070057u);
        lacking = {};
        lacking.size = offsetof(HostServices, HCreateArc2d); // of an older program
        EXPECT_EQ(TesseraHost_AskReferenceServices(&lacking), 0);
        EXPECT_EQ(lacking.size, offsetof(HostServices, HCreateArc2d));
        EXPECT_TRUE(lacking.HCreateLine2d != nullptr && lacking.HCreateArc2d == nullptr);
    }
    EXPECT_EQ(TesseraHost_AskRegistrationCount(), before + 2)
        << "of the probe's first table and the way back";
}

// A free form is trimmed to the first and the last input point; what the trim replaces is dropped.
TEST(PolyLineEntry, AFreeFormIsABSplineTrimmedToTheInput) {
    dropCount = 0;
    HostProbe host;
    host.table.handleDropped = [](void*, HostGeometryHandle* handle) {
        ++dropCount;
        TesseraHost_ReleaseHandle(handle);
    };
    host.Install();
    const Points points = Sample(200, Wave);
    const Recognised result(points);
    ASSERT_EQ(result.handles.size(), 1u);
    ASSERT_EQ(result.handles[0].typeCode, 127);
    const auto block = Read<ReferenceBSplineBlock>(result.handles[0]);
    EXPECT_EQ(block.degree, 2);
    EXPECT_EQ(block.periodic, 0);
    ExpectNear(At(result.handles[0], 0.0), {points.front().x / kScale, points.front().y / kScale}, 1e-5);
    ExpectNear(At(result.handles[0], 1.0), {points.back().x / kScale, points.back().y / kScale}, 1e-11);
    EXPECT_GE(dropCount, 1);
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
    const tagGPosition2d a{1, 2}, b{5, -1}, over{3, 4}, under{3, -4};
    Handles handles{NewHandle(103), NewHandle(116), NewHandle(116), NewHandle(127)};
    services.lineFromPositions(nullptr, handles[0].data, &a, &b, &status);
    services.arcThroughPositions(nullptr, &a, &b, &over, handles[1].data, &status);
    services.arcThroughPositions(nullptr, &a, &b, &under, handles[2].data, &status);
    const tagGPosition2d poles[] = {{0, 0}, {1, 3}, {4, 3}, {5, 0}, {8, 1}};
    services.bsplineFromPoles(nullptr, handles[3].data, 2, 5, poles, 0, nullptr, nullptr);
    EXPECT_EQ(status, 0);
    return handles;
}

TEST(ReferenceHost, ProjectionInvertsEvaluationAndPiecesRetraceTheWhole) {
    const HostServices services = Tessera::Host::ReferenceHostServices();
    for (HostGeometryHandle& handle : DivisibleHandles()) {
        for (const double cut : {0.0, 5e-10, 0.125, 0.3, 0.75, 1.0 - 5e-10, 1.0}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(handle.typeCode) << " at " << cut);
            const tagGPosition2d p = At(handle, cut);
            tagGPosition2d foot{1e30, 1e30};
            double parameter = 0;
            std::int32_t status = 0;
            services.projectOnCurve(nullptr, &handle, &p, 0.0, &foot, &parameter, &status);
            EXPECT_EQ(status, 0);
            EXPECT_NEAR(parameter, cut, 1e-7);
            ExpectNear(foot, p, 1e-9);

            HostGeometryHandle first, second;
            services.splitCurve(nullptr, &handle, cut, &first, &second, &status);
            EXPECT_EQ(status, 0);
            EXPECT_EQ(first.data == nullptr, cut < 1e-9);
            EXPECT_EQ(second.data == nullptr, cut > 1 - 1e-9);
            for (const double u : {0.0, 0.4, 1.0}) {
                if (first.data != nullptr)
                    ExpectNear(At(first, u), At(handle, second.data == nullptr ? u : u * cut), 1e-12);
                if (second.data != nullptr) {
                    ExpectNear(At(second, u), At(handle, first.data == nullptr ? u : cut + u * (1 - cut)),
                               1e-12);
                }
            }
            TesseraHost_ReleaseHandle(&first);
            TesseraHost_ReleaseHandle(&second);
        }
        TesseraHost_ReleaseHandle(&handle);
    }
}

TEST(ReferenceHost, RefusesWhatItCannotAnswer) {
    HostProbe host;
    tagGPosition2d p{7, 7};
    HostGeometryHandle empty, unfilled = NewHandle(0), line = NewHandle(103);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(nullptr, 0, &p)), 0x80004003u);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(&empty, 0, &p)), 0x80004003u);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(&unfilled, 0, &p)), 0x80070057u);
    EXPECT_EQ(static_cast<std::uint32_t>(TesseraHost_EvaluateHandle(&line, 1.1, &p)), 0x80070057u);
    EXPECT_EQ(host.reports.size(), 4u);
    EXPECT_EQ(p.x, 7);
    TesseraHost_ReleaseHandle(nullptr);
    for (HostGeometryHandle* handle : {&empty, &unfilled, &line}) {
        TesseraHost_ReleaseHandle(handle);
        EXPECT_EQ(handle->data, nullptr);
    }
}

TEST(ReferenceHost, APeriodicBSplineClosesSmoothly) {
    const HostServices services = Tessera::Host::ReferenceHostServices();
    HostGeometryHandle handle = NewHandle(127);
    const tagGPosition2d poles[] = {{0, 0}, {4, 0}, {5, 3}, {1, 5}};
    services.bsplineFromPoles(nullptr, handle.data, 3, 4, poles, 1, nullptr, nullptr);
    ExpectNear(At(handle, 0.0), At(handle, 1.0), 1e-12);
    const double h = 1e-5;
    EXPECT_NEAR((At(handle, h).x - At(handle, 0.0).x) / h, (At(handle, 1.0).x - At(handle, 1 - h).x) / h,
                1e-2);
    TesseraHost_ReleaseHandle(&handle);
}

} // namespace
