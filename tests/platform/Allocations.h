#pragma once

#include <cstddef>

namespace PlatformTests {

/// What the allocation functions of this executable, which replace the standard ones, have seen.
/// The counts cover the shared libraries under test as well.
[[nodiscard]] std::size_t allocations() noexcept;
/// Blocks that were allocated and not freed since.
[[nodiscard]] std::size_t liveAllocations() noexcept;

/// While it lives, this thread's allocation number `passing` (from 0), and every later one, fails
/// with `std::bad_alloc`.
class FailingAllocations {
 public:
  explicit FailingAllocations(std::size_t passing) noexcept;
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
  ~FailingAllocations();
};

}  // namespace PlatformTests
