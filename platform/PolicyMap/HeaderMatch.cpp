#include "PolicyMap/HeaderMatch.h"

#include "Ip/PrefixHash.h"

namespace PolicyMap {
namespace {

constexpr std::uint32_t absent = 0xffffffff;

template <class Number>
void mix(Mox::Hash& hash, const std::optional<Number>& number) noexcept {
  hash.hashMix(number ? static_cast<std::uint32_t>(*number) : absent);
}

void mix(Mox::Hash& hash, const std::optional<Ip::Prefix>& prefix) noexcept {
  if (prefix) {
    hashMix(hash, *prefix);
  } else {
    hash.hashMix(absent);
  }
}

void mix(Mox::Hash& hash, const std::vector<NumberRange>& ranges) noexcept {
  hash.hashMix(static_cast<std::uint32_t>(ranges.size()));
  for (const NumberRange& range : ranges)
    hash.hashMix(static_cast<std::uint32_t>(range.first) << 16 | range.last);
}

}  // namespace

unsigned HeaderMatch::hash(unsigned seed) const noexcept {
  Mox::Hash hash(seed, isFragment ? 1 : 0);
  mix(hash, family);
  mix(hash, protocol);
  const std::uint64_t dscpBits = dscps.value_or(~std::uint64_t{0});
  hash.hashMix(static_cast<std::uint32_t>(dscpBits));
  hash.hashMix(static_cast<std::uint32_t>(dscpBits >> 32));
  mix(hash, source);
  mix(hash, destination);
  mix(hash, hopLimit);
  mix(hash, length);
  mix(hash, fragmentOffsets);
  mix(hash, sourcePorts);
  mix(hash, destinationPorts);
  for (const TcpFlagsMatch& flags : tcpFlags)
    hash.hashMix(static_cast<std::uint32_t>(flags.mask) << 8 | flags.value);
  return hash.result();
}

}  // namespace PolicyMap
