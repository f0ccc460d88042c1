#include "chips/packet/Checksum.h"

namespace Chips {
namespace {

std::uint16_t folded(std::uint32_t sum) noexcept {
  while (sum > 0xffff)
    sum = (sum & 0xffff) + (sum >> 16);
  return static_cast<std::uint16_t>(sum);
}

}  // namespace

std::uint16_t checksumOf(std::span<const std::uint8_t> bytes) noexcept {
  std::uint32_t sum = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    sum += at % 2 == 0 ? static_cast<std::uint32_t>(bytes[at]) << 8 : bytes[at];
    sum = folded(sum);
  }
  return static_cast<std::uint16_t>(~sum);
}

std::uint16_t checksumAfter(std::uint16_t checksum, std::uint16_t oldWord,
                            std::uint16_t newWord) noexcept {
  const auto complement = [](std::uint16_t word) { return static_cast<std::uint16_t>(~word); };
  const std::uint32_t sum =
      std::uint32_t{complement(checksum)} + complement(oldWord) + std::uint32_t{newWord};
  return complement(folded(sum));
}

}  // namespace Chips
