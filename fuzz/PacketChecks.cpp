#include "fuzz/PacketChecks.h"

#include <algorithm>

#include "fuzz/Must.h"

namespace Fuzz {
namespace {

constexpr std::size_t fixedV4 = 20;
constexpr std::size_t fixedV6 = 40;

bool isV4(PacketBytes packet) {
  return packet.size() >= fixedV4 && packet[0] >> 4U == 4;
}

bool isV6(PacketBytes packet) {
  return packet.size() >= fixedV6 && packet[0] >> 4U == 6;
}

unsigned wordAt(PacketBytes bytes, std::size_t at) {
  return static_cast<unsigned>(bytes[at]) << 8U | bytes[at + 1];
}

std::size_t headerLengthV4(PacketBytes packet) {
  return (packet[0] & 15U) * std::size_t{4};
}

std::size_t lengthOf(PacketBytes packet) {
  return isV4(packet) ? wordAt(packet, 2) : fixedV6 + wordAt(packet, 4);
}

std::uint8_t ttlOf(PacketBytes packet) {
  return isV4(packet) ? packet[8] : packet[7];
}

unsigned long sumOfWords(PacketBytes header) {
  unsigned long sum = 0;
  for (std::size_t at = 0; at < header.size(); at += 2)
    sum += wordAt(header, at);
  return sum;
}

// The words of a header with a correct checksum add up to a multiple of 2^16 - 1. No header adds up
// to 0.
bool hasRightChecksum(PacketBytes header) {
  return sumOfWords(header) % 0xffffU == 0;
}

void correctChecksum(std::span<std::uint8_t> header) {
  header[10] = header[11] = 0;
  const unsigned long checksum = 0xffffU - sumOfWords(header) % 0xffffU;
  header[10] = static_cast<std::uint8_t>(checksum >> 8U);
  header[11] = static_cast<std::uint8_t>(checksum & 0xffU);
}

// The packet with 0 in place of the fields that forwarding may change.
std::vector<std::uint8_t> unchanged(PacketBytes packet, bool decapsulated) {
  std::vector<std::uint8_t> bytes(packet.begin(), packet.end());
  if (isV4(packet)) {
    bytes[8] = bytes[10] = bytes[11] = 0;
    if (decapsulated) bytes[1] &= 0xfcU;
  } else {
    bytes[7] = 0;
    if (decapsulated) bytes[1] &= 0xcfU;
  }
  return bytes;
}

}  // namespace

void correctChecksums(std::span<std::uint8_t> packet) {
  for (int headers = 0; headers < 2 && isV4(packet); ++headers) {
    const std::size_t length = headerLengthV4(packet);
    if (length < fixedV4 || length > packet.size()) return;
    correctChecksum(packet.first(length));
    packet = packet.subspan(length);
  }
}

void checkLeft(PacketBytes left, PacketBytes arrived, bool decapsulated) {
  must(isV4(left) || isV6(left), "what leaves is an IP packet");
  must(lengthOf(left) == left.size(), "what leaves is as long as it says");
  if (isV4(left)) {
    const std::size_t length = headerLengthV4(left);
    must(length >= fixedV4 && length <= left.size(), "its header is within it");
    must(hasRightChecksum(left.first(length)), "its checksum is right");
  }
  must(ttlOf(left) > 0 && ttlOf(left) + 1 == ttlOf(arrived), "its time to live is one less");
  const PacketBytes from = decapsulated ? arrived.subspan(headerLengthV4(arrived)) : arrived;
  must(from.size() >= left.size(), "nothing is added to what arrived");
  must(unchanged(left, decapsulated) == unchanged(from.first(left.size()), decapsulated),
       "the rest of it is as it arrived");
}

}  // namespace Fuzz
