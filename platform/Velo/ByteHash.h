#pragma once

#include <string_view>

#include "Velo/Export.h"

namespace Velo {

/// 32-bit hash of a byte string: the same bytes and seed always give the same value, and a seed
/// scatters the values anew. Every collection that keys on text hashes with this one function.
[[nodiscard]] ZEL_EXPORT unsigned byteHash(unsigned seed, std::string_view bytes) noexcept;

}  // namespace Velo
