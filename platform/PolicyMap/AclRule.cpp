#include "PolicyMap/AclRule.h"

#include <cstring>

#include "Mox/Hash.h"

namespace PolicyMap {
namespace {

void mix(Mox::Hash& hash, const std::optional<Ip::Prefix>& prefix) noexcept {
  if (!prefix) {
    hash.hashMix(0xffffffff);
    return;
  }
  hash.hashMix(prefix->length);
  for (std::size_t at = 0; at < prefix->address.bytes.size(); at += sizeof(std::uint32_t)) {
    std::uint32_t word = 0;
    std::memcpy(&word, &prefix->address.bytes[at], sizeof word);
    hash.hashMix(word);
  }
}

}  // namespace

unsigned AclRule::hash(unsigned seed) const noexcept {
  Mox::Hash hash(seed, static_cast<std::uint32_t>(action.type));
  hash.hashMix(match.family ? static_cast<std::uint32_t>(*match.family) : 0xffffffff);
  hash.hashMix(match.protocol ? *match.protocol : 0xffffffff);
  const std::uint64_t dscps = match.dscps.value_or(~std::uint64_t{0});
  hash.hashMix(static_cast<std::uint32_t>(dscps));
  hash.hashMix(static_cast<std::uint32_t>(dscps >> 32));
  mix(hash, match.source);
  mix(hash, match.destination);
  hash.hashMix(action.vrfName.hash(seed));
  hash.hashMix(action.fallbackVrfName.hash(seed));
  hash.hashMix(action.postDecapVrfName.hash(seed));
  return hash.result();
}

}  // namespace PolicyMap
