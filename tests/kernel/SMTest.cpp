#include "tessera/kernel/SM.h"

#include <cstdint>

#include "tessera/kernel/internal/SmArray.h"
#include "tessera/kernel/internal/SmFault.h"
#include "tests/support/Test.h"

namespace {

constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();

TEST(SM, AllocatesClearsGrowsAndFrees) {
    auto* block = static_cast<unsigned char*>(SM_alloc(16, "SMTest:0"));
    std::fill_n(block, 16, 7);
    block = static_cast<unsigned char*>(SM_realloc(block, 1 << 16, "SMTest:1"));
    EXPECT_EQ(std::count(block, block + 16, 7), 16);
    SM_free(block);
    auto* cleared = static_cast<unsigned char*>(SM_calloc(25, 4));
    EXPECT_EQ(std::count(cleared, cleared + 100, 0), 100);
    SM_free(cleared);
    SM_free(nullptr);
    SM_free(SM_alloc(0));
    SM_free(SM_realloc(SM_alloc(8), 0)); // shrinking to nothing still leaves a block to free
}

TEST(SM, ArraysThatNoMemoryCanHoldAreRefused) {
    static_assert(SmProduct(kMost / 2, 3) == kMost && SmProduct(1 << 10, 5) == 5120 && SmProduct(7, 0) == 0);
    volatile std::size_t half = kMost / 2;
    EXPECT_EQ(SM_calloc(half, 4), nullptr);
    // The bytes of these overflow to 0 and to 8: a block would come back, far too small.
    EXPECT_EQ(MakeSmArray<double>(kMost / 8 + 1, "SMTest:2"), nullptr);
    EXPECT_EQ(MakeSmArray<double>(kMost / 8 + 2, "SMTest:3"), nullptr);
    EXPECT_NE(MakeSmArray<double>(3, "SMTest:4"), nullptr);
}

TEST(SM, TheNthRequestFailsOnce) {
    SM_fail_nth(2);
    void* first = SM_alloc(8);
    EXPECT_EQ(SM_realloc(first, 64), nullptr); // first stays valid
    void* third = SM_calloc(1, 8);
    EXPECT_TRUE(first != nullptr && third != nullptr && SM_ask_allocation_count() == 3);
    SM_free(first);
    SM_free(third);
    SM_fail_nth(0);
    EXPECT_EQ(SM_ask_allocation_count(), 0);
}

} // namespace
