// Why: rules match on prefixes and routes are kept by prefix, so both are compared as bits and not
// as the text they were written in.
// Always: bytes after those of the family, and bits after the length of a prefix, are zero; so
// equal prefixes are equal values however they were written.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace ZelAgent {

enum class IpFamily : std::uint8_t { v4, v6 };

struct IpAddress {
  IpFamily family = IpFamily::v4;
  std::array<std::uint8_t, 16> bytes{};

  auto operator<=>(const IpAddress&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

struct IpPrefix {
  IpAddress address;
  std::uint8_t length = 0;

  auto operator<=>(const IpPrefix&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

[[nodiscard]] constexpr unsigned addressBits(IpFamily family) noexcept {
  return family == IpFamily::v4 ? 32 : 128;
}

// "192.0.2.1" or "2001:db8::1"; nothing for any other text.
[[nodiscard]] std::optional<IpAddress> parseIpAddress(const std::string& text);

// "192.0.2.0/24" or "2001:db8::/32"; nothing for any other text. Bits after the length may be set
// in the text and are cleared in the value.
[[nodiscard]] std::optional<IpPrefix> parseIpPrefix(const std::string& text);

[[nodiscard]] std::string toText(const IpAddress& address);
[[nodiscard]] std::string toText(const IpPrefix& prefix);

}  // namespace ZelAgent
