// Memory that runs out anywhere in an entry is reported; nothing is lost (the sanitizer build would tell),
// nothing is left half done in a document, and no exception leaves an entry.
#include <cstdlib>
#include <new>

#include "tessera/geometry/Line.h"
#include "tessera/host/ReferenceHost.h"
#include "tessera/host/ScriptorRecog.h"
#include "tessera/kernel/SM.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tessera/recognition/InkInterpretation.h"
#include "tessera/recognition/Scribble.h"
#include "tessera/recognition/SketchRecognizerPreferences.h"
#include "tests/support/DrawnStrokes.h"
#include "tests/support/HostInk.h"

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
    Stroke scribble = Tessera::Testing::StrokeThrough(Tessera::Testing::Zigzag(5, 60, 10, 30));
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

// A recogniser reports a lack of memory and goes on with what it has; a reading without that part would be
// another one, so there is none.
TEST(AllocationFailure, AnInterpretationIsWholeOrThrows) {
    const auto drawn = [](double ratio, double turns) {
        InkStroke ink;
        for (int i = 0; i < 90; ++i) {
            const double a = turns * 2 * 3.141592653589793 * i / 89;
            ink.samples.push_back({90 * std::cos(a), 90 * ratio * std::sin(a), 0.0});
        }
        return ink;
    };
    testing::internal::CaptureStderr();
    for (const InkStroke& ink : {drawn(1.0, 1.0), drawn(0.5, 1.1), drawn(0.0, 0.5), drawn(0.7, 0.4)})
        for (const bool byHypotheses : {true, false}) {
            SketchRecognizerPreferences preferences;
            preferences.SetReduceInkCurveDeviation(byHypotheses);
            const InkReading whole = InterpretInk(ink, preferences);
            int thrown = 0;
            FailEach([&] {
                try {
                    const InkReading reading = InterpretInk(ink, preferences);
                    EXPECT_EQ(reading.shape, whole.shape) << failing;
                    ASSERT_EQ(reading.curves.size(), whole.curves.size()) << failing;
                    EXPECT_EQ(reading.handSpread, whole.handSpread) << failing;
                } catch (const std::bad_alloc&) {
                    ++thrown;
                } catch (char* message) {
                    EXPECT_STREQ(message, "InterpretInk - out of memory");
                    ++thrown;
                }
            });
            EXPECT_GT(thrown, 5);
        }
    testing::internal::GetCapturedStderr();
}

// Each request for memory of either heap fails in turn. What a recogniser's own catch survives is a shorter
// answer, but a whole one.
TEST(AllocationFailure, TheInkEntryDoesAllOrNothing) {
    using namespace Tessera::Testing;
    const Ink strokes[] = {RectangleInk(300, 300),
                           Pen(252, 12).To(400, 12).Round(400, 82, 70, 70, -90, 90).ink,
                           ScratchInk(100, 200, 0), Pen(3, 13).To(247, 12).ink};
    testing::internal::CaptureStderr();
    for (const Ink& ink : strokes) {
        SCOPED_TRACE(&ink - strokes);
        for (const bool isKernelHeap : {false, true}) {
            int refused = 0;
            for (long n = 1, last = 0; last == 0; n += n < 300 ? 1 : 17) {
                HostProbe host;
                const Document document = NewDocument();
                AddTo(document, LineElement({110, 0}, {190, 0}));
                AddTo(document, LineElement({0, 10}, {250, 10}));
                const std::vector<double> before = Contents(document);
                const Conversion converted(document, ink, Conversion::DefaultOptions(), [&] {
                    allocations = 0;
                    failing = isKernelHeap ? 0 : n;
                    SM_fail_nth(isKernelHeap ? n : 0);
                });
                last = (isKernelHeap ? SM_ask_allocation_count() : allocations) < n ? n : 0;
                failing = 0;
                SM_fail_nth(0);
                SCOPED_TRACE(n);
                if (converted.code == 0) {
                    EXPECT_TRUE(host.reports.empty());
                    EXPECT_LT(WorstError(document), 1e-7);
                    continue;
                }
                ++refused;
                EXPECT_EQ(last, 0);
                EXPECT_EQ(static_cast<std::uint32_t>(converted.code), 0x8007000Eu);
                ASSERT_EQ(host.reports.size(), 1u);
                EXPECT_EQ(host.reports[0].code, converted.code);
                EXPECT_EQ(converted.result.elements, nullptr);
                EXPECT_EQ(Contents(document), before);
            }
            EXPECT_GT(refused, 5);
        }
    }
    testing::internal::GetCapturedStderr();
}

} // namespace
