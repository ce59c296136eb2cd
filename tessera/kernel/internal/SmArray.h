// Owners for kernel memory, so that early returns leak nothing.
#pragma once

#include <memory>

#include "tessera/kernel/SM.h"

struct SmRelease {
    void operator()(void* block) const { SM_free(block); }
};
template <class T>
using SmArray = std::unique_ptr<T[], SmRelease>;

/// Uninitialised array of a trivial type; empty on failure.
template <class T>
SmArray<T> MakeSmArray(std::size_t count, const char* tag) {
    return SmArray<T>(static_cast<T*>(SM_alloc(count * sizeof(T), tag)));
}
