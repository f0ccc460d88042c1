#pragma once

#include <cstddef>

/// The bytes that the process has allocated and not freed. Blocks that the C library keeps for the
/// next request of their size may count as allocated: at most seven for each of 64 sizes up to 1
/// KiB.
[[nodiscard]] std::size_t allocatedMemory() noexcept;

/// Whether that is told by the address sanitizer.
[[nodiscard]] bool memoryIsOfSanitizer() noexcept;
