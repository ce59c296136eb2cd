// Running out of memory at every place of an operation in turn.
#pragma once

#include <gtest/gtest.h>

#include "tessera/kernel/internal/SmFault.h"

/// Runs the operation again and again, each time with another of its allocations failing, until none is left
/// to fail; every run but that last one must return false. What leaks the sanitizer tells.
/// @return the number of allocations
template <class Operation>
long FailEachAllocation(Operation operation) {
    for (long n = 1;; ++n) {
        SM_fail_nth(n);
        const bool succeeded = operation();
        const bool hasFailed = SM_ask_allocation_count() >= n;
        SM_fail_nth(0);
        EXPECT_EQ(succeeded, !hasFailed) << "allocation " << n;
        if (!hasFailed)
            return n - 1;
    }
}
