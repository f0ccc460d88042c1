// Reads an input from its front: small numbers first, then the rest as bytes. Reads no byte outside
// of the input. At the end of the input every number is 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Fuzz {

class FuzzedBytes final {
 public:
  FuzzedBytes(const std::uint8_t* data, std::size_t size) noexcept : left_(data, size) {}

  [[nodiscard]] bool empty() const noexcept { return left_.empty(); }
  [[nodiscard]] std::span<const std::uint8_t> rest() const noexcept { return left_; }

  [[nodiscard]] std::uint8_t byte() noexcept {
    if (left_.empty()) return 0;
    const std::uint8_t first = left_.front();
    left_ = left_.subspan(1);
    return first;
  }

  // A number from 0 to `limit` - 1. Takes one byte if that is enough. Precondition: `limit` is not
  // 0.
  [[nodiscard]] unsigned below(unsigned limit) noexcept {
    unsigned number = byte();
    for (unsigned reach = 256; reach != 0 && reach < limit; reach *= 256)
      number = number << 8U | byte();
    return number % limit;
  }

  [[nodiscard]] bool flag() noexcept { return byte() % 2 != 0; }

 private:
  std::span<const std::uint8_t> left_;
};

}  // namespace Fuzz
