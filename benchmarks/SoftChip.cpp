// One packet in the software chip. Classification by 1,000 rules is compared with a search of the
// rules one by one. The lookup of the destination among 100,000 routes is compared with a walk over
// the lengths of a `std::map`, longest first. The packets reach every rule and every route.

#include <bit>
#include <map>

#include "benchmarks/Families.h"
#include "benchmarks/World.h"
#include "chips/soft/SoftAclHelper.h"
#include "chips/soft/SoftRouteTables.h"

namespace Benchmarks {
namespace {

using Chips::PacketHeader;
using Chips::Route;
using PolicyMap::AclMatch;
using PolicyMap::AclRule;

constexpr std::uint32_t ruleCount = 1000;
constexpr std::size_t routeCount = 100'000;
constexpr std::size_t packetCount = 4096;
constexpr std::uint32_t vrfId = 1;

Ip::Address drawnAddress(Draw& draw) {
  Ip::Address address;
  for (unsigned byte = 0; byte < 4; ++byte)
    address.bytes[byte] = static_cast<std::uint8_t>(draw.below(256));
  return address;
}

Ip::Prefix drawnPrefix(Draw& draw, unsigned shortest) {
  const unsigned length = shortest + draw.below(25 - shortest);
  return {Ip::firstBits(drawnAddress(draw), length), static_cast<std::uint8_t>(length)};
}

// A random address that the prefix covers.
Ip::Address drawnIn(Draw& draw, const Ip::Prefix& prefix) {
  Ip::Address address = prefix.address;
  address.bytes[3] = static_cast<std::uint8_t>(draw.below(256));
  return address;
}

/// Rules for traffic between prefixes. Some also match a protocol or a DSCP.
AclRule drawnRule(Draw& draw) {
  AclMatch match;
  match.family = Ip::Family::v4;
  match.source = drawnPrefix(draw, 8);
  match.destination = drawnPrefix(draw, 8);
  if (draw.below(2) == 0) match.protocol = draw.below(2) == 0 ? 6 : 17;
  if (draw.below(4) == 0) match.dscps = std::uint64_t{1} << draw.below(64);
  return {match, {}};
}

PacketHeader packetOf(Draw& draw, const AclMatch& match) {
  PacketHeader header;
  header.source = drawnIn(draw, *match.source);
  header.destination = drawnIn(draw, *match.destination);
  header.protocol = match.protocol.value_or(1);
  header.dscp = match.dscps ? static_cast<std::uint8_t>(std::countr_zero(*match.dscps)) : 0;
  return header;
}

bool matches(const AclMatch& match, const PacketHeader& header) {
  return (!match.family || *match.family == header.family) &&
         (!match.protocol || *match.protocol == header.protocol) &&
         (!match.dscps || (*match.dscps >> header.dscp & 1U) != 0) &&
         (!match.source || match.source->contains(header.source)) &&
         (!match.destination || match.destination->contains(header.destination));
}

std::size_t scan(const std::vector<AclRule>& rules, const PacketHeader& header) {
  std::size_t place = 0;
  while (place < rules.size() && !matches(*rules[place].match, header))
    ++place;
  return place;
}

void classification(Report& report) {
  Draw draw(9);
  const Velo::String intf("et1");
  const auto chip = Mox::makePtr<Chips::SoftAclHelper>("acl", ruleCount);
  std::vector<AclRule> rules;
  for (std::size_t place = 0; place < ruleCount; ++place) {
    rules.push_back(drawnRule(draw));
    static_cast<void>(chip->addRule(intf, place, rules.back()));
  }
  std::vector<PacketHeader> packets;
  for (std::size_t i = 0; i < packetCount; ++i)
    packets.push_back(packetOf(draw, *rules[draw.below(ruleCount)].match));
  static_cast<void>(chip->classify(intf, packets[0]));  // compiles the rules

  Comparison("classification of one packet in the software chip", ruleCount)
      .ours([&, i = std::size_t{0}](benchmark::State& state) mutable {
        for (auto _ : state)
          benchmark::DoNotOptimize(chip->classify(intf, packets[i++ % packetCount]));
      })
      .beside("linear rule scan", timesFaster(20),
              [&, i = std::size_t{0}](benchmark::State& state) mutable {
                for (auto _ : state)
                  benchmark::DoNotOptimize(scan(rules, packets[i++ % packetCount]));
              })
      .measure(report);
}

using RouteMap = std::map<Ip::Prefix, Route>;

const Route* walk(const RouteMap& routes, const Ip::Address& address) {
  for (unsigned length = 33; length-- != 0;) {
    const auto found =
        routes.find({Ip::firstBits(address, length), static_cast<std::uint8_t>(length)});
    if (found != routes.end()) return &found->second;
  }
  return nullptr;
}

void lookup(Report& report) {
  Draw draw(10);
  Chips::SoftRouteTables tables;
  RouteMap map;
  const Route route{Route::Kind::egress, "et1"};
  while (map.size() < routeCount) {
    const Ip::Prefix prefix = drawnPrefix(draw, 12);
    tables.routeIs(vrfId, prefix, route);
    map.emplace(prefix, route);
  }
  std::vector<Ip::Prefix> prefixes;
  for (const auto& [prefix, ofPrefix] : map)
    prefixes.push_back(prefix);
  std::vector<Ip::Address> addresses;
  for (std::size_t i = 0; i < packetCount; ++i)
    addresses.push_back(drawnIn(draw, prefixes[draw.below(routeCount)]));

  Comparison("lookup of one packet in the software chip", routeCount)
      .ours([&, i = std::size_t{0}](benchmark::State& state) mutable {
        for (auto _ : state)
          benchmark::DoNotOptimize(tables.lookUp(vrfId, addresses[i++ % packetCount], {}));
      })
      .beside("longest-prefix walk over std::map", timesFaster(20),
              [&, i = std::size_t{0}](benchmark::State& state) mutable {
                for (auto _ : state)
                  benchmark::DoNotOptimize(walk(map, addresses[i++ % packetCount]));
              })
      .measure(report);
}

}  // namespace

void softChip(Report& report) {
  classification(report);
  lookup(report);
}

}  // namespace Benchmarks
