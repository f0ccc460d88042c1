#include "tests/chips/packet/TestPacket.h"

#include <arpa/inet.h>

#include <algorithm>
#include <stdexcept>

namespace Chips {
namespace {

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void appendWord(Bytes& bytes, std::size_t word) {
  bytes.push_back(static_cast<std::uint8_t>(word / 256));
  bytes.push_back(static_cast<std::uint8_t>(word % 256));
}

void appendAddress(Bytes& bytes, const std::string& text) {
  const Ip::Address value = address(text);
  append(bytes, std::span(value.bytes).first(Ip::addressBits(value.family) / 8));
}

Bytes v4Bytes(const TestPacket& packet) {
  const std::size_t headerLength = 20 + packet.options.size();
  Bytes bytes;
  bytes.push_back(static_cast<std::uint8_t>(0x40 + headerLength / 4));
  bytes.push_back(static_cast<std::uint8_t>(packet.dscp * 4 + packet.ecn));
  appendWord(bytes, headerLength + packet.payload.size());
  appendWord(bytes, 0xbeef);
  appendWord(bytes, packet.fragmentWord);
  bytes.push_back(packet.ttl);
  bytes.push_back(packet.protocol);
  appendWord(bytes, 0);
  appendAddress(bytes, packet.source);
  appendAddress(bytes, packet.destination);
  append(bytes, packet.options);
  append(bytes, packet.payload);
  mendChecksum(bytes);
  return bytes;
}

Bytes v6Payload(const TestPacket& packet) {
  Bytes bytes;
  for (std::size_t at = 0; at < packet.extensions.size(); ++at) {
    const bool isLast = at + 1 == packet.extensions.size();
    bytes.push_back(isLast ? packet.protocol : packet.extensions[at + 1].type);
    append(bytes, packet.extensions[at].afterNextHeader);
  }
  append(bytes, packet.payload);
  return bytes;
}

Bytes v6Bytes(const TestPacket& packet) {
  const Bytes payload = v6Payload(packet);
  const unsigned trafficClass = packet.dscp * 4U + packet.ecn;
  Bytes bytes;
  bytes.push_back(static_cast<std::uint8_t>(0x60 + trafficClass / 16));
  bytes.push_back(static_cast<std::uint8_t>(trafficClass % 16 * 16 + 0xa));
  appendWord(bytes, 0xbcde);
  appendWord(bytes, payload.size());
  bytes.push_back(packet.extensions.empty() ? packet.protocol : packet.extensions.front().type);
  bytes.push_back(packet.ttl);
  appendAddress(bytes, packet.source);
  appendAddress(bytes, packet.destination);
  append(bytes, payload);
  return bytes;
}

// One's complement addition is addition modulo 65535.
std::uint64_t sumOfHeader(std::span<const std::uint8_t> packet) {
  const std::size_t headerLength = packet[0] % 16 * std::size_t{4};
  std::uint64_t sum = 0;
  for (std::size_t at = 0; at < headerLength; at += 2)
    sum += packet[at] * std::uint64_t{256} + packet[at + 1];
  return sum % 65535;
}

}  // namespace

Ip::Address address(const std::string& text) {
  Ip::Address result;
  result.family = text.find(':') == std::string::npos ? Ip::Family::v4 : Ip::Family::v6;
  const int family = result.family == Ip::Family::v4 ? AF_INET : AF_INET6;
  if (inet_pton(family, text.c_str(), result.bytes.data()) != 1)
    throw std::invalid_argument("no IP address: " + text);
  return result;
}

Ip::Prefix prefix(const std::string& text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos) throw std::invalid_argument("no prefix: " + text);
  const int length = std::stoi(text.substr(slash + 1));
  return {address(text.substr(0, slash)), static_cast<std::uint8_t>(length)};
}

Bytes TestPacket::bytes() const {
  return address(destination).family == Ip::Family::v4 ? v4Bytes(*this) : v6Bytes(*this);
}

TestPacket TestPacket::around(const TestPacket& inner) const {
  TestPacket outer = *this;
  outer.protocol = address(inner.destination).family == Ip::Family::v4 ? 4 : 41;
  outer.payload = inner.bytes();
  return outer;
}

void mendChecksum(Bytes& packet) {
  packet[10] = 0;
  packet[11] = 0;
  const std::uint64_t checksum = 65535 - sumOfHeader(packet);
  packet[10] = static_cast<std::uint8_t>(checksum / 256);
  packet[11] = static_cast<std::uint8_t>(checksum % 256);
}

bool hasRightChecksum(std::span<const std::uint8_t> packet) {
  return sumOfHeader(packet) == 0;
}

ExactBytes::ExactBytes(std::span<const std::uint8_t> bytes)
    : bytes_(std::make_unique<std::uint8_t[]>(bytes.size())), size_(bytes.size()) {
  std::copy(bytes.begin(), bytes.end(), bytes_.get());
}

}  // namespace Chips
