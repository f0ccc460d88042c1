// Why: what a rule matches is read by operators, and names the class map that holds it.
// Always: one line; two matches have the same text exactly when they are equal:
// "ipv4 protocol 4 dscp 10,12 source 198.18.0.1/32 destination 203.0.113.0/24", "any".
#pragma once

#include <string>

#include "PolicyMap/ClassMatch.h"

namespace ZelAgent {

[[nodiscard]] std::string toText(const PolicyMap::ClassMatch& match);

}  // namespace ZelAgent
