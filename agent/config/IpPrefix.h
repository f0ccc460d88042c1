// Why: configurations, events and reports write addresses and prefixes as text, and everything else
// compares them as bits.
// Always: only the whole text of one address or prefix is read; bits after the length of a prefix
// may be set in the text and are clear in the value.
#pragma once

#include <optional>
#include <string>

#include "Ip/Prefix.h"

namespace ZelAgent {

using IpFamily = Ip::Family;
using IpAddress = Ip::Address;
using IpPrefix = Ip::Prefix;
using Ip::addressBits;

// "192.0.2.1" or "2001:db8::1"; nothing for any other text.
[[nodiscard]] std::optional<IpAddress> parseIpAddress(const std::string& text);

// "192.0.2.0/24" or "2001:db8::/32"; nothing for any other text.
[[nodiscard]] std::optional<IpPrefix> parseIpPrefix(const std::string& text);

// "ipv4" or "ipv6"
[[nodiscard]] std::string toText(IpFamily family);
[[nodiscard]] std::string toText(const IpAddress& address);
[[nodiscard]] std::string toText(const IpPrefix& prefix);

}  // namespace ZelAgent
