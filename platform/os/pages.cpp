#include "platform/os/pages.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace os {
namespace {

constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kPage = 4096;

size_t RoundUp(size_t bytes, size_t unit) { return (bytes + unit - 1) / unit * unit; }

}  // namespace

void* AllocateZeroed(size_t bytes) {
  if (bytes < kHugePage) {
    void* memory = std::calloc(1, bytes);
    if (!memory) throw std::bad_alloc();
    return memory;
  }
  bytes = RoundUp(bytes, kPage);
  // Map a huge page more than needed and trim both ends to the alignment.
  const size_t span = bytes + kHugePage;
  void* raw = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) throw std::bad_alloc();
  const uintptr_t first = reinterpret_cast<uintptr_t>(raw);
  const uintptr_t start = RoundUp(first, kHugePage);
  if (start > first) munmap(raw, start - first);
  if (first + span > start + bytes) munmap(reinterpret_cast<void*>(start + bytes), first + span - start - bytes);
  void* memory = reinterpret_cast<void*>(start);
#ifdef MADV_HUGEPAGE
  madvise(memory, bytes, MADV_HUGEPAGE);  // advice only: without huge pages it simply stays in small ones
#endif
  return memory;
}

void ReleaseZeroed(void* memory, size_t bytes) {
  if (!memory) return;
  if (bytes < kHugePage) return std::free(memory);
  munmap(memory, RoundUp(bytes, kPage));
}

}  // namespace os
