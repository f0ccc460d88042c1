#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ZelAgent {

/// The names of the flags that are set, with `separator` between them, from FIN on: "syn,ack".
/// "none" if no flag is set. A flag has its bit of the TCP header: FIN is 1, CWR is 128.
[[nodiscard]] std::string tcpFlagsText(std::uint8_t flags, std::string_view separator);

/// Reads back what `tcpFlagsText` writes with the separator ",", with the names in any order.
[[nodiscard]] std::optional<std::uint8_t> parseTcpFlags(std::string_view text);

}  // namespace ZelAgent
