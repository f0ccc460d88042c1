#pragma once

#include <optional>
#include <string>

#include "Ip/Prefix.h"

namespace ZelAgent {

/// Addresses and prefixes are values of the platform. The functions here read and write their text.
/// The text must be one whole address or prefix. Bits after the length of a prefix may be set in
/// the text; they are clear in the value.
using IpFamily = Ip::Family;
using IpAddress = Ip::Address;
using IpPrefix = Ip::Prefix;
using Ip::addressBits;

/// "192.0.2.1" or "2001:db8::1"; nothing for any other text.
[[nodiscard]] std::optional<IpAddress> parseIpAddress(const std::string& text);

/// "192.0.2.0/24" or "2001:db8::/32"; nothing for any other text.
[[nodiscard]] std::optional<IpPrefix> parseIpPrefix(const std::string& text);

/// "ipv4" or "ipv6".
[[nodiscard]] std::string toText(IpFamily family);
[[nodiscard]] std::string toText(const IpAddress& address);
[[nodiscard]] std::string toText(const IpPrefix& prefix);

}  // namespace ZelAgent
