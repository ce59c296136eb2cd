// Fault injection for tests: makes the nth SM_* allocation fail.
#pragma once

/// The nth allocation from now on (1 = the next) fails, once; 0 switches injection off.
void SM_fail_nth(long n);
/// Allocations asked for since the last SM_fail_nth.
long SM_ask_allocation_count();
