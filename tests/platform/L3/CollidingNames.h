#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace PlatformTests {

/// Different names whose bytes have one hash under the seed 0, `Mox::hashSingleAttr(0, bytes)`.
///
/// Each has two words of eight bytes. The hash takes them in one after the other, and lets the
/// state before the second be undone by that word: it is chosen so that the state after it is the
/// same for every first word.
class CollidingNames {
 public:
  explicit CollidingNames(unsigned count) {
    texts_.reserve(count);
    for (std::uint64_t first = 0; first < count; ++first)
      texts_.push_back(text(first));
  }

  [[nodiscard]] const std::vector<std::string>& texts() const noexcept { return texts_; }

 private:
  static constexpr std::size_t length = 2 * sizeof(std::uint64_t);
  static constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15;

  // As the hash of bytes does it.
  static std::uint64_t scrambled(std::uint64_t state) noexcept {
    state ^= state >> 32;
    state *= 0xd6e8feb86659fd93;
    return state ^ state >> 32;
  }

  static std::string text(std::uint64_t first) {
    const std::uint64_t initial = (length + 1) * multiplier;
    const std::uint64_t second = scrambled(initial ^ first) * multiplier;
    std::string bytes(length, '\0');
    std::memcpy(bytes.data(), &first, sizeof first);
    std::memcpy(bytes.data() + sizeof first, &second, sizeof second);
    return bytes;
  }

  std::vector<std::string> texts_;
};

}  // namespace PlatformTests
