#include "Classification/PrefixSet.h"

#include <algorithm>

#include "Ip/PrefixHash.h"

namespace Classification {
namespace {

bool anyContains(const std::vector<Ip::Prefix>& prefixes, const Ip::Address& address) noexcept {
  return std::any_of(prefixes.begin(), prefixes.end(),
                     [&](const Ip::Prefix& prefix) { return prefix.contains(address); });
}

}  // namespace

bool PrefixSet::contains(const Ip::Address& address) const noexcept {
  return anyContains(prefixes, address) && !anyContains(excluded, address);
}

unsigned PrefixSet::hash(unsigned seed) const noexcept {
  Mox::Hash hash(seed, static_cast<std::uint32_t>(prefixes.size()));
  for (const Ip::Prefix& prefix : prefixes)
    hashMix(hash, prefix);
  for (const Ip::Prefix& prefix : excluded)
    hashMix(hash, prefix);
  return hash.result();
}

}  // namespace Classification
