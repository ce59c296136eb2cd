// Memory that runs out anywhere on the way from a poly-line to host geometry, or in a scribble test, is
// reported; nothing is lost (the sanitizer build would tell) and no exception leaves an entry.
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "tessera/geometry/Line.h"
#include "tessera/host/ReferenceHost.h"
#include "tessera/host/ScriptorRecog.h"
#include "tessera/kernel/SM.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tessera/strokes/Stroke.h"

namespace {

long allocations = 0;
long failing = 0; // the allocation that fails; 0: none

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (++allocations == failing)
        throw std::bad_alloc();
    if (void* block = std::malloc(size > 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}
// The standard library's temporary buffers come from here: without memory they do without.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return ++allocations == failing ? nullptr : std::malloc(size > 0 ? size : 1);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

using namespace Tessera::Geometry;

/// Runs a step once as it is and then once for each of its allocations, with that one failing.
template <class Step>
void FailEach(Step step) {
    allocations = 0;
    step();
    const long count = allocations;
    ASSERT_GT(count, 0);
    for (long n = 1; n <= count; ++n) {
        allocations = 0;
        failing = n;
        step();
        failing = 0;
    }
}

TEST(AllocationFailure, NothingLeavesThePolyLineEntry) {
    std::vector<std::vector<InputPoint>> drawings(3);
    for (int i = 0; i < 80; ++i) {
        const double a = 2 * 3.141592653589793 * i / 79;
        drawings[0].push_back({3.0 * i, 1.0 * i});
        drawings[1].push_back({90 * std::cos(a), 90 * std::sin(a)});
        drawings[2].push_back({5.0 * i, 60 * std::sin(2 * a)});
    }
    for (const std::vector<InputPoint>& points : drawings) {
        testing::internal::CaptureStderr();
        FailEach([&] {
            std::vector<HostGeometryHandle> handles;
            ConvertPolyLinePointsTorecognizedAnalyticTypes(points, handles);
            for (HostGeometryHandle& handle : handles)
                TesseraHost_ReleaseHandle(&handle);
        });
        EXPECT_FALSE(testing::internal::GetCapturedStderr().empty()) << "failures are reported";
    }
}

TEST(AllocationFailure, NothingLeavesTheScribbleEntries) {
    Stroke scribble;
    for (int i = 0; i <= 150; ++i) {
        const int leg = i / 30;
        const double t = i % 30 / 30.0;
        scribble.AddPoint(StrokePoint(10 * (leg + t), leg % 2 == 0 ? 60 * t : 60 * (1 - t), 1));
    }
    SketchRecognizerPreferences preferences;
    Line line(Point(0, 30), Point(50, 30));
    Curve* curves[] = {&line};
    testing::internal::CaptureStderr();
    FailEach([&] {
        int counts[4], *lists[4], status = -1, cuspCount = -1;
        double* ranges = nullptr;
        const int answer = StrokeRecognizeScribble(&scribble, &preferences, 1, curves, &counts[0], &lists[0],
                                                   &counts[1], &lists[1], &counts[2], &lists[2], &ranges,
                                                   &counts[3], &lists[3], &status);
        const bool hasFailed = failing > 0 && allocations >= failing;
        EXPECT_EQ(status, hasFailed ? 1 : 0);
        EXPECT_EQ(answer, hasFailed ? 0 : 1);
        EXPECT_EQ(counts[0], answer) << "the line is hit";
        for (int* list : lists)
            SM_free(list);
        SM_free(ranges);
        StrokeIsScribbleShape(&scribble, &preferences, &cuspCount);
    });
    testing::internal::GetCapturedStderr();
}

} // namespace
