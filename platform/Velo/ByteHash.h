#pragma once

#include <string_view>

#include "Velo/Export.h"

namespace Velo {

/// 32-bit hash of a byte string. The same bytes and seed always have the same value; another seed
/// gives unrelated values. Every collection with text as keys uses it.
[[nodiscard]] ZEL_EXPORT unsigned byteHash(unsigned seed, std::string_view bytes) noexcept;

}  // namespace Velo
