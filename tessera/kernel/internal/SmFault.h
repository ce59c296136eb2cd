// How memory runs out: counted for those who have to tell it from other failures, and brought about by tests.
#pragma once

/// The nth allocation from now on (1 = the next) fails, once; 0 switches injection off.
void SM_fail_nth(long n);
/// Allocations asked for since the last SM_fail_nth.
long SM_ask_allocation_count();
/// Allocations that have given null since the program began, and what SM_count_refusal has added. The layers
/// above throw texts that do not say so.
long SM_ask_refusal_count();
/// Counts memory that ran out elsewhere where the caller is not told so.
void SM_count_refusal();
