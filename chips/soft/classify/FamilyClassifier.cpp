#include "chips/soft/classify/FamilyClassifier.h"

#include <algorithm>
#include <map>
#include <utility>

namespace SoftChip {
namespace {

std::vector<std::size_t> placesOfFamily(std::span<const PolicyMap::AclRule> rules,
                                        Ip::Family family) {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < rules.size(); ++place) {
    if (rules[place].match.family.value_or(family) == family) places.push_back(place);
  }
  return places;
}

RuleSet setOf(const PrefixTrie<RuleSet>& sets, const Ip::Address& address) {
  const auto match = sets.longestMatch(address);
  return match ? match->value : emptyRuleSet;
}

}  // namespace

FamilyClassifier::FamilyClassifier(Rules rules, Ip::Family family)
    : places_(placesOfFamily(rules, family)), sets_(places_.size()) {
  compilePrefixes(rules, family, &PolicyMap::ClassMatch::source, sources_);
  compilePrefixes(rules, family, &PolicyMap::ClassMatch::destination, destinations_);
  compileProtocols(rules);
  compileDscps(rules);
}

void FamilyClassifier::compilePrefixes(Rules rules, Ip::Family family, PrefixOf prefixOf,
                                       PrefixSets& sets) {
  const Ip::Prefix every{{family, {}}, 0};
  std::vector<std::pair<Ip::Prefix, std::uint32_t>> users;
  users.reserve(count());
  for (std::uint32_t number = 0; number < count(); ++number)
    users.emplace_back((matchOf(rules, number).*prefixOf).value_or(every), number);
  std::sort(users.begin(), users.end());

  // The order has a prefix after all prefixes that cover it. `open` holds the prefixes that cover
  // the current one, the shortest first.
  std::vector<std::pair<Ip::Prefix, RuleSet>> open;
  Members members;
  for (auto user = users.begin(); user != users.end();) {
    const Ip::Prefix prefix = user->first;
    members.clear();
    for (; user != users.end() && user->first == prefix; ++user)
      members.push_back(user->second);
    while (!open.empty() && !open.back().first.contains(prefix.address))
      open.pop_back();
    open.emplace_back(prefix,
                      sets_.setIs(open.empty() ? emptyRuleSet : open.back().second, members));
    sets.valueIs(prefix, open.back().second);
  }
}

void FamilyClassifier::compileProtocols(Rules rules) {
  Members any;
  std::map<std::uint8_t, Members> only;
  for (std::uint32_t number = 0; number < count(); ++number) {
    const auto& protocol = matchOf(rules, number).protocol;
    (protocol ? only[*protocol] : any).push_back(number);
  }
  protocols_.fill(sets_.setIs(emptyRuleSet, any));
  for (const auto& [protocol, members] : only)
    protocols_[protocol] = sets_.setIs(protocols_[protocol], members);
}

void FamilyClassifier::compileDscps(Rules rules) {
  Members any;
  std::array<Members, 64> only;
  for (std::uint32_t number = 0; number < count(); ++number) {
    const std::optional<std::uint64_t>& dscps = matchOf(rules, number).dscps;
    if (!dscps) any.push_back(number);
    for (std::size_t dscp = 0; dscp < only.size(); ++dscp) {
      if (dscps && (*dscps >> dscp & 1) != 0) only[dscp].push_back(number);
    }
  }
  dscps_.fill(sets_.setIs(emptyRuleSet, any));
  for (std::size_t dscp = 0; dscp < only.size(); ++dscp)
    dscps_[dscp] = sets_.setIs(dscps_[dscp], only[dscp]);
}

std::optional<std::size_t> FamilyClassifier::firstMatch(const PacketHeader& header) const {
  const auto number =
      sets_.lowestInAll({protocols_[header.protocol], dscps_[header.dscp],
                         setOf(sources_, header.source), setOf(destinations_, header.destination)});
  if (!number) return std::nullopt;
  return places_[*number];
}

}  // namespace SoftChip
