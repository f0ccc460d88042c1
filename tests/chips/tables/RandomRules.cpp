#include "tests/chips/tables/RandomRules.h"

#include <algorithm>

namespace ChipTables {

PolicyMap::AclMatch RandomRules::match() {
  PolicyMap::AclMatch match;
  if (oneIn(12)) return match;
  match.family = family();
  if (oneIn(3)) match.protocol = oneIn(2) ? 6 : 17;
  if (oneIn(5)) match.dscps = random_() & 0xf;
  if (oneIn(4)) match.source = prefix(*match.family);
  if (oneIn(3)) match.destination = prefix(*match.family);
  if (oneIn(5)) match.sourceSet = prefixSet(*match.family);
  if (oneIn(5)) match.destinationSet = prefixSet(*match.family);
  if (oneIn(8)) match.hopLimit = byte();
  if (oneIn(8)) match.length = number();
  if (oneIn(8)) match.isFragment = true;
  if (oneIn(8)) match.fragmentOffsets = ranges();
  addUpperLayer(match);
  return match;
}

void RandomRules::addUpperLayer(PolicyMap::AclMatch& match) {
  if (oneIn(5)) match.sourcePorts = ranges();
  if (oneIn(5)) match.destinationPorts = ranges();
  match.matchesLaterFragments = oneIn(2);
  if (!oneIn(6)) return;
  for (std::uint32_t count = below(2) + 1; count > 0; --count) {
    const auto mask = static_cast<std::uint8_t>(below(8));
    match.tcpFlags.push_back({mask, static_cast<std::uint8_t>(below(8) & mask)});
  }
}

Chips::PacketHeader RandomRules::packet() {
  Chips::PacketHeader header;
  header.family = family();
  header.source = address(header.family);
  header.destination = address(header.family);
  header.protocol = oneIn(5) ? 1 : oneIn(2) ? 6 : 17;
  header.dscp = static_cast<std::uint8_t>(below(6));
  header.ttl = byte();
  header.totalLength = oneIn(6) ? 65536 + below(2) : number();
  if (oneIn(3)) header.fragment = {oneIn(2) ? number() : std::uint16_t{0}, oneIn(2)};
  if (header.fragment.offset == 0 && header.protocol != 1 && !oneIn(5)) {
    header.ports = {number(), number()};
    if (header.protocol == 6 && !oneIn(4)) header.tcpFlags = static_cast<std::uint8_t>(below(8));
  }
  return header;
}

Ip::Address RandomRules::address(Ip::Family family) {
  static constexpr std::array<std::uint8_t, 4> values{0, 1, 128, 255};
  Ip::Address address;
  address.family = family;
  for (const unsigned at : {0U, 1U, family == Ip::Family::v4 ? 3U : 15U})
    address.bytes.at(at) = values.at(below(3 + at % 2));
  return address;
}

Ip::Prefix RandomRules::prefix(Ip::Family family) {
  const std::uint32_t length = oneIn(4) ? Ip::addressBits(family) : below(18);
  return {Ip::firstBits(address(family), length), static_cast<std::uint8_t>(length)};
}

Classification::PrefixSet RandomRules::prefixSet(Ip::Family family) {
  Classification::PrefixSet set;
  for (std::uint32_t count = below(4); count > 0; --count)
    set.prefixes.push_back(prefix(family));
  for (std::uint32_t count = below(3); count > 0; --count)
    set.excluded.push_back(prefix(family));
  return set;
}

std::uint8_t RandomRules::byte() {
  return static_cast<std::uint8_t>(oneIn(2) ? 64 : 255 * below(2));
}

std::uint16_t RandomRules::number() {
  static constexpr std::array<std::uint16_t, 7> values{0, 1, 80, 1023, 1024, 40000, 65535};
  return values.at(below(7));
}

std::vector<PolicyMap::NumberRange> RandomRules::ranges() {
  std::vector<PolicyMap::NumberRange> ranges;
  for (std::uint32_t count = below(2) + 1; count > 0; --count) {
    const auto [first, last] = std::minmax({number(), number()});
    ranges.push_back({first, last});
  }
  return ranges;
}

}  // namespace ChipTables
