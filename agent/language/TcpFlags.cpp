#include "agent/language/TcpFlags.h"

#include <algorithm>
#include <array>

namespace ZelAgent {
namespace {

constexpr std::array<std::string_view, 8> names{"fin", "syn", "rst", "psh",
                                                "ack", "urg", "ece", "cwr"};

}  // namespace

std::string tcpFlagsText(std::uint8_t flags, std::string_view separator) {
  std::string text;
  for (std::size_t bit = 0; bit < names.size(); ++bit) {
    if ((flags >> bit & 1) == 0) continue;
    if (!text.empty()) text += separator;
    text += names[bit];
  }
  return text.empty() ? "none" : text;
}

std::optional<std::uint8_t> parseTcpFlags(std::string_view text) {
  if (text == "none") return 0;
  std::uint8_t flags = 0;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t end = std::min(text.find(',', from), text.size());
    const auto name = std::find(names.begin(), names.end(), text.substr(from, end - from));
    if (name == names.end()) return std::nullopt;
    flags |= static_cast<std::uint8_t>(1U << (name - names.begin()));
    from = end + 1;
  }
  return flags;
}

}  // namespace ZelAgent
