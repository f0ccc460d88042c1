#pragma once

#include <string>

#include "agent/config/Configuration.h"

namespace ZelAgent {

/// What a rule matches as it is configured, on one line: "ipv4 protocol 4 dscp 10,12 source-set
/// CUSTOMERS", "any". Names of prefix sets are words. Two matches have the same text exactly if
/// they are equal, where the order of a list does not count.
[[nodiscard]] std::string toText(const RuleMatch& match);

}  // namespace ZelAgent
