#include "chips/packet/HeaderRewrite.h"

#include "chips/packet/Checksum.h"
#include "chips/packet/NetworkOrder.h"

namespace Chips {
namespace {

constexpr std::size_t trafficClassAt = 1;  // IPv4
constexpr std::size_t ttlAt = 8;           // IPv4
constexpr std::size_t checksumAt = 10;     // IPv4
constexpr std::size_t hopLimitAt = 7;      // IPv6

bool isV4(std::span<const std::uint8_t> packet) noexcept {
  return packet[0] >> 4 == 4;
}

void byteInV4Is(std::span<std::uint8_t> packet, std::size_t at, std::uint8_t byte) noexcept {
  const std::size_t wordStart = at - at % 2;
  const std::uint16_t before = wordAt(packet, wordStart);
  packet[at] = byte;
  wordAtIs(packet, checksumAt,
           checksumAfter(wordAt(packet, checksumAt), before, wordAt(packet, wordStart)));
}

}  // namespace

void ttlIs(std::span<std::uint8_t> packet, std::uint8_t ttl) noexcept {
  if (isV4(packet)) {
    byteInV4Is(packet, ttlAt, ttl);
  } else {
    packet[hopLimitAt] = ttl;
  }
}

bool ttlDown(std::span<std::uint8_t> packet) noexcept {
  const std::uint8_t ttl = packet[isV4(packet) ? ttlAt : hopLimitAt];
  if (ttl <= 1) return false;
  ttlIs(packet, static_cast<std::uint8_t>(ttl - 1));
  return true;
}

void ecnIs(std::span<std::uint8_t> packet, std::uint8_t ecn) noexcept {
  if (isV4(packet)) {
    byteInV4Is(packet, trafficClassAt,
               static_cast<std::uint8_t>((packet[trafficClassAt] & 0xfc) | ecn));
  } else {
    packet[1] = static_cast<std::uint8_t>((packet[1] & 0xcf) | ecn << 4);
  }
}

}  // namespace Chips
