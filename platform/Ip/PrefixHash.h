#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Ip/Prefix.h"
#include "Mox/Hash.h"

namespace Ip {

/// Adds the prefix to the hash.
inline void hashMix(Mox::Hash& hash, const Prefix& prefix) noexcept {
  hash.hashMix(static_cast<std::uint32_t>(prefix.address.family) << 8 | prefix.length);
  for (std::size_t at = 0; at < prefix.address.bytes.size(); at += sizeof(std::uint32_t)) {
    std::uint32_t word = 0;
    std::memcpy(&word, &prefix.address.bytes[at], sizeof word);
    hash.hashMix(word);
  }
}

}  // namespace Ip
