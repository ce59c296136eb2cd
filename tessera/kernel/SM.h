// SM - the kernel's allocator: plain heap memory with a diagnostic tag.
//
// Every kernel result is allocated here and freed with SM_free (records: evcrvf). Allocation failure
// gives null. The tag names routine and ordinal ("ev09p1:0"); it is not stored.
#pragma once

#include <cstddef>

#include "tessera/core/Export.h"

/// Uninitialised memory; null on failure. A size of 0 gives a unique pointer or null, free it all the same.
TESSERA_API void* SM_alloc(std::size_t bytes, const char* tag = nullptr);
/// Zero-filled memory for count records; null on failure or when the product overflows.
TESSERA_API void* SM_calloc(std::size_t count, std::size_t bytes, const char* tag = nullptr);
/// Grows or shrinks a block; on failure null is returned and the old block stays valid.
TESSERA_API void* SM_realloc(void* block, std::size_t bytes, const char* tag = nullptr);
/// Frees a block; null is accepted.
TESSERA_API void SM_free(void* block);
