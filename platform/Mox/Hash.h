#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

#include "Velo/ByteHash.h"
#include "Velo/Export.h"

namespace Mox {

/// A running hash over 32-bit words. It depends on their order and on every bit.
///
///     Mox::Hash hash(seed, 0);
///     hash.hashMix(word);
///     unsigned value = hash.result();
class Hash {
 public:
  Hash(std::uint32_t seed, std::uint32_t stream) noexcept
      : state_((std::uint64_t{stream} << 32 | seed) ^ 0x6a09e667f3bcc909ULL) {}

  void hashMix(std::uint32_t word) noexcept {
    state_ = std::rotl(state_, 29) ^ word * 0x9e3779b97f4a7c15ULL;
  }

  [[nodiscard]] std::uint32_t result() const noexcept {
    const std::uint64_t mixed = (state_ ^ state_ >> 32) * 0xd6e8feb86659fd93ULL;
    return static_cast<std::uint32_t>(mixed >> 32);
  }

 private:
  std::uint64_t state_;
};

/// Hash of an attribute that is a string of bytes.
[[nodiscard]] inline unsigned hashSingleAttr(unsigned seed, std::string_view bytes) noexcept {
  return Velo::byteHash(seed, bytes);
}

/// The hash seed of this process.
class ZEL_EXPORT HashHelper {
 public:
  /// Chosen at random once per process, so that keys cannot be chosen to collide. For reproducible
  /// runs the environment variable `MOX_HASH_SEED` sets it to a number from 1 to 4294967295.
  [[nodiscard]] static unsigned hashSeed32() noexcept {
    if (seed_ == 0) [[unlikely]]
      drawSeed();
    return seed_;
  }

 private:
  static void drawSeed() noexcept;

  static unsigned seed_;  // 0 until it is chosen
};

}  // namespace Mox
