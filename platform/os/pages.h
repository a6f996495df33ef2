// Zeroed memory for large tables. Small pieces come from the C heap; a
// piece of 2 MB or more is mapped on its own, aligned to 2 MB and offered
// to the kernel for huge pages, which halves the cost of first touching a
// fetched table. Either way the memory reads as zeros.
#pragma once

#include <cstddef>

namespace os {

// Raises std::bad_alloc when no memory is left.
void* AllocateZeroed(size_t bytes);
// `bytes` must be the size given to AllocateZeroed; null is ignored.
void ReleaseZeroed(void* memory, size_t bytes);

}  // namespace os
