#pragma once

#include <string>

#include "agent/config/Configuration.h"

namespace ZelAgent {

/// "7", or "80..90" for more than one number.
[[nodiscard]] std::string toText(const PolicyMap::NumberRange& range);
/// The flags that count, with "+" between them and "!" before one that must be clear: "syn+!ack".
/// "any" if no flag counts.
[[nodiscard]] std::string toText(const PolicyMap::TcpFlagsMatch& flags);

/// What a rule matches as it is configured, on one line: "ipv4 protocol 4 dscp 10,12 source-set
/// CUSTOMERS", "any". Names of prefix sets are words. Two matches have the same text exactly if
/// they are equal, where the order of a list does not count.
[[nodiscard]] std::string toText(const RuleMatch& match);

}  // namespace ZelAgent
