#include "agent/model/packets/EthernetFrame.h"

#include <cstddef>

namespace ZelAgent {
namespace {

constexpr std::size_t addressesBytes = 12;
constexpr std::size_t typeBytes = 2;
constexpr std::size_t tagBytes = 4;

constexpr unsigned typeIpv4 = 0x0800;
constexpr unsigned typeIpv6 = 0x86dd;
constexpr unsigned typeVlan = 0x8100;
constexpr unsigned typeServiceVlan = 0x88a8;

}  // namespace

std::optional<std::span<const std::uint8_t>> ipPacketIn(
    std::span<const std::uint8_t> frame) noexcept {
  for (std::size_t at = addressesBytes; at + typeBytes <= frame.size(); at += tagBytes) {
    const unsigned type = static_cast<unsigned>(frame[at]) << 8 | frame[at + 1];
    if (type == typeIpv4 || type == typeIpv6) return frame.subspan(at + typeBytes);
    if (type != typeVlan && type != typeServiceVlan) return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace ZelAgent
