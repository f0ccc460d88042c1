// Packets for tests, written as what they are made of, and their checksums computed in another way
// than the chip does.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Ip/Prefix.h"

namespace Chips {

using Bytes = std::vector<std::uint8_t>;

// "10.1.2.3", "2001:db8::1"; with "/LENGTH" for a prefix. Throws `std::invalid_argument`.
[[nodiscard]] Ip::Address address(const std::string& text);
[[nodiscard]] Ip::Prefix prefix(const std::string& text);

struct ExtensionHeader {
  std::uint8_t type = 0;
  Bytes afterNextHeader;  // with the length byte, in all one byte less than a multiple of eight
};

struct TestPacket {
  std::string source = "192.0.2.1";
  std::string destination = "198.51.100.1";  // decides on the family, too
  std::uint8_t protocol = 17;
  std::uint8_t dscp = 0;
  std::uint8_t ecn = 0;
  std::uint8_t ttl = 64;
  std::uint16_t fragmentWord = 0;             // IPv4: flags and offset
  Bytes options{};                            // IPv4: a multiple of four bytes
  std::vector<ExtensionHeader> extensions{};  // IPv6
  Bytes payload = {1, 2, 3, 4, 5, 6, 7, 8};

  [[nodiscard]] Bytes bytes() const;
  // This packet around another.
  [[nodiscard]] TestPacket around(const TestPacket& inner) const;
};

// Makes the checksum of an IPv4 header right.
void mendChecksum(Bytes& packet);
[[nodiscard]] bool hasRightChecksum(std::span<const std::uint8_t> packet);

// A copy of the bytes in memory of exactly their size, so that a sanitizer sees every step beyond.
class ExactBytes final {
 public:
  explicit ExactBytes(std::span<const std::uint8_t> bytes);
  [[nodiscard]] std::span<const std::uint8_t> span() const noexcept {
    return {bytes_.get(), size_};
  }

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::size_t size_;
};

}  // namespace Chips
