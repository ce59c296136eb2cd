// Owners for kernel memory, so that early returns leak nothing.
#pragma once

#include <limits>
#include <memory>

#include "tessera/kernel/SM.h"

struct SmRelease {
    void operator()(void* block) const { SM_free(block); }
};
template <class T>
using SmArray = std::unique_ptr<T[], SmRelease>;

/// a b, or the largest count, which no allocation can serve, where the product overflows.
constexpr std::size_t SmProduct(std::size_t a, std::size_t b) {
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    return b != 0 && a > kMost / b ? kMost : a * b;
}

/// Uninitialised array of a trivial type; empty on failure, also when its size in bytes overflows.
template <class T>
SmArray<T> MakeSmArray(std::size_t count, const char* tag) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
        return nullptr;
    return SmArray<T>(static_cast<T*>(SM_alloc(count * sizeof(T), tag)));
}
