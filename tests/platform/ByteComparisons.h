#pragma once

#include <cstddef>

namespace PlatformTests {

/// How often bytes were compared by `memcmp` or `bcmp`, which this executable replaces: what the
/// comparison of two texts of one length comes down to. The count covers the shared libraries
/// under test as well.
[[nodiscard]] std::size_t byteComparisons() noexcept;

}  // namespace PlatformTests
