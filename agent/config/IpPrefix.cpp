#include "agent/config/IpPrefix.h"

#include <arpa/inet.h>

#include <charconv>
#include <string_view>

namespace ZelAgent {
namespace {

int socketFamily(IpFamily family) noexcept {
  return family == IpFamily::v4 ? AF_INET : AF_INET6;
}

std::optional<std::uint8_t> parseLength(std::string_view text, unsigned maxLength) {
  const bool startsWithDigit = !text.empty() && text.front() >= '0' && text.front() <= '9';
  const bool leadingZero = text.size() > 1 && text.front() == '0';
  if (!startsWithDigit || leadingZero) return std::nullopt;
  unsigned length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  const bool whole = error == std::errc{} && end == text.data() + text.size();
  if (!whole || length > maxLength) return std::nullopt;
  return static_cast<std::uint8_t>(length);
}

}  // namespace

std::optional<IpAddress> parseIpAddress(const std::string& text) {
  if (text.find('\0') != std::string::npos) return std::nullopt;
  IpAddress address;
  address.family = text.find(':') == std::string::npos ? IpFamily::v4 : IpFamily::v6;
  const int parsed = inet_pton(socketFamily(address.family), text.c_str(), address.bytes.data());
  if (parsed != 1) return std::nullopt;
  return address;
}

std::optional<IpPrefix> parseIpPrefix(const std::string& text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos) return std::nullopt;
  const auto address = parseIpAddress(text.substr(0, slash));
  if (!address) return std::nullopt;
  const auto length =
      parseLength(std::string_view(text).substr(slash + 1), addressBits(address->family));
  if (!length) return std::nullopt;
  return IpPrefix{Ip::firstBits(*address, *length), *length};
}

std::string toText(IpFamily family) {
  return family == IpFamily::v4 ? "ipv4" : "ipv6";
}

std::string toText(const IpAddress& address) {
  char text[INET6_ADDRSTRLEN] = "";
  inet_ntop(socketFamily(address.family), address.bytes.data(), text, sizeof text);
  return text;
}

std::string toText(const IpPrefix& prefix) {
  return toText(prefix.address) + '/' + std::to_string(prefix.length);
}

}  // namespace ZelAgent
