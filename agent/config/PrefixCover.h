#pragma once

#include <vector>

#include "agent/config/IpPrefix.h"

namespace ZelAgent {

/// Whether every address of `prefixes` is in one of `covering`, however those divide it. It takes
/// the time of sorting `covering`, and of a binary search for each of `prefixes`.
[[nodiscard]] bool cover(std::vector<IpPrefix> covering, const std::vector<IpPrefix>& prefixes);

}  // namespace ZelAgent
