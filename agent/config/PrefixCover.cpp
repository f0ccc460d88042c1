#include "agent/config/PrefixCover.h"

#include <algorithm>
#include <utility>

namespace ZelAgent {
namespace {

// Whether the prefixes, which differ, are the halves of a shorter one.
bool areHalves(const IpPrefix& lower, const IpPrefix& upper) {
  if (lower.length != upper.length || lower.length == 0) return false;
  const unsigned common = lower.length - 1U;
  return firstBits(lower.address, common) == firstBits(upper.address, common);
}

// The fewest prefixes with the same addresses, in ascending order. A prefix is in front of those
// that it covers. So only the last of the result can cover the next one, and it does so if it has
// its first address.
std::vector<IpPrefix> joinedPrefixes(std::vector<IpPrefix> prefixes) {
  std::sort(prefixes.begin(), prefixes.end());
  std::vector<IpPrefix> result;
  for (const IpPrefix& prefix : prefixes) {
    if (!result.empty() && result.back().contains(prefix.address)) continue;
    result.push_back(prefix);
    while (result.size() > 1 && areHalves(result[result.size() - 2], result.back())) {
      result.pop_back();
      --result.back().length;
    }
  }
  return result;
}

}  // namespace

bool cover(std::vector<IpPrefix> covering, const std::vector<IpPrefix>& prefixes) {
  const std::vector<IpPrefix> joined = joinedPrefixes(std::move(covering));
  return std::all_of(prefixes.begin(), prefixes.end(), [&](const IpPrefix& prefix) {
    const auto next = std::upper_bound(joined.begin(), joined.end(), prefix);
    return next != joined.begin() && (next - 1)->contains(prefix.address);
  });
}

}  // namespace ZelAgent
