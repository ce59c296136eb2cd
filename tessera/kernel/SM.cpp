#include "tessera/kernel/SM.h"

#include <cstdlib>
#include <limits>

#include "tessera/kernel/internal/SmFault.h"

// The process heap behind a counter: a test asks for the nth request to fail and thereby walks through every
// error path of a routine.

namespace {

long requestsSinceReset = 0;
long failingRequest = 0;
long refusals = 0;

bool TakeRequest() {
    ++requestsSinceReset;
    return requestsSinceReset != failingRequest;
}

void* Counted(void* block) {
    refusals += block == nullptr ? 1 : 0;
    return block;
}

// malloc(0) and realloc(p, 0) differ between platforms; one byte does not.
std::size_t AtLeastOne(std::size_t bytes) {
    return bytes == 0 ? 1 : bytes;
}

} // namespace

void* SM_alloc(std::size_t bytes, const char* /*tag*/) {
    return Counted(TakeRequest() ? std::malloc(AtLeastOne(bytes)) : nullptr);
}

void* SM_calloc(std::size_t count, std::size_t bytes, const char* /*tag*/) {
    const bool isOverflow = bytes != 0 && count > std::numeric_limits<std::size_t>::max() / bytes;
    return Counted(TakeRequest() && !isOverflow ? std::calloc(AtLeastOne(count), AtLeastOne(bytes))
                                                : nullptr);
}

void* SM_realloc(void* block, std::size_t bytes, const char* /*tag*/) {
    return Counted(TakeRequest() ? std::realloc(block, AtLeastOne(bytes)) : nullptr);
}

void SM_free(void* block) {
    std::free(block);
}

void SM_fail_nth(long n) {
    requestsSinceReset = 0;
    failingRequest = n;
}

long SM_ask_allocation_count() {
    return requestsSinceReset;
}

long SM_ask_refusal_count() {
    return refusals;
}

void SM_count_refusal() {
    ++refusals;
}
