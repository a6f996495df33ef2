#include "platform/os/pages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// Zeroed on arrival, writable to the last byte, and large pieces aligned
// so that huge pages can back them; sizes on both sides of the threshold.
TEST(Pages, PiecesArriveZeroedAndWholeOnBothSidesOfTheHugePageSize) {
  const size_t kMiB = size_t{1} << 20;
  for (size_t bytes : {size_t{1}, size_t{4096}, 2 * kMiB - 1, 2 * kMiB, 2 * kMiB + 1, 5 * kMiB + 123}) {
    auto* memory = static_cast<unsigned char*>(os::AllocateZeroed(bytes));
    ASSERT_NE(memory, nullptr) << bytes;
    EXPECT_TRUE(std::all_of(memory, memory + bytes, [](unsigned char c) { return c == 0; })) << bytes;
    std::memset(memory, 0xAB, bytes);
    EXPECT_EQ(memory[bytes - 1], 0xAB) << bytes;
    if (bytes >= 2 * kMiB) {
      EXPECT_EQ(reinterpret_cast<uintptr_t>(memory) % (2 * kMiB), 0u) << bytes;
    }
    os::ReleaseZeroed(memory, bytes);
  }
  os::ReleaseZeroed(nullptr, 3 * kMiB);  // ignored
}

// Memory given back is reused zeroed, not as the last owner left it.
TEST(Pages, AReleasedLargePieceComesBackZeroed) {
  const size_t bytes = size_t{4} << 20;
  auto* first = static_cast<unsigned char*>(os::AllocateZeroed(bytes));
  std::memset(first, 0x5A, bytes);
  os::ReleaseZeroed(first, bytes);
  auto* second = static_cast<unsigned char*>(os::AllocateZeroed(bytes));
  EXPECT_TRUE(std::all_of(second, second + bytes, [](unsigned char c) { return c == 0; }));
  os::ReleaseZeroed(second, bytes);
}

}  // namespace
