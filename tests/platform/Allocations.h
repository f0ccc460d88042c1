#pragma once

#include <cstddef>

namespace PlatformTests {

/// What the allocation functions of this executable, which replace the standard ones, have seen.
/// The counts cover the shared libraries under test as well.
[[nodiscard]] std::size_t allocations() noexcept;
/// Blocks that were allocated and not freed since.
[[nodiscard]] std::size_t liveAllocations() noexcept;

}  // namespace PlatformTests
