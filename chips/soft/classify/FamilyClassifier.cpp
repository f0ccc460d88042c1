#include "chips/soft/classify/FamilyClassifier.h"

#include <algorithm>
#include <array>

namespace Chips {
namespace {

using Classification::PrefixSet;
using Classification::SharedPrefixSet;
using PolicyMap::AclMatch;
using Members = RuleSets::Members;

std::vector<std::size_t> placesOfFamily(std::span<const PolicyMap::AclRule> rules,
                                        Ip::Family family) {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < rules.size(); ++place) {
    if (rules[place].match->family.value_or(family) == family) places.push_back(place);
  }
  return places;
}

std::optional<SharedPrefixSet> setOfOne(const std::optional<Ip::Prefix>& prefix) {
  if (!prefix) return std::nullopt;
  return SharedPrefixSet(PrefixSet{{*prefix}, {}});
}

}  // namespace

// The sets that are to be intersected.
class FamilyClassifier::Chosen final {
 public:
  void add(RuleSet set) noexcept { sets_[count_++] = set; }
  template <class Field, class Value>
  void add(const Field& field, const Value& value) {
    if (field.isUsed()) add(field.setOf(value));
  }

  [[nodiscard]] std::span<const RuleSet> sets() const noexcept { return {sets_.data(), count_}; }

 private:
  std::array<RuleSet, 13> sets_{};
  std::size_t count_ = 0;
};

FamilyClassifier::FamilyClassifier(Rules rules, Ip::Family family)
    : places_(placesOfFamily(rules, family)), sets_(places_.size()) {
  compileAddresses(rules);
  compileBytes(rules);
  compileRanges(rules);
  compileFragments(rules);
}

void FamilyClassifier::compileAddresses(Rules rules) {
  sources_.compile(sets_, count(),
                   [&](std::uint32_t rule) { return setOfOne(matchOf(rules, rule).source); });
  destinations_.compile(sets_, count(), [&](std::uint32_t rule) {
    return setOfOne(matchOf(rules, rule).destination);
  });
  sourceSets_.compile(sets_, count(),
                      [&](std::uint32_t rule) { return matchOf(rules, rule).sourceSet; });
  destinationSets_.compile(sets_, count(),
                           [&](std::uint32_t rule) { return matchOf(rules, rule).destinationSet; });
}

void FamilyClassifier::compileBytes(Rules rules) {
  const auto compile = [&](ByteField& field, auto compares, auto matches) {
    field.compile(
        sets_, count(), [&](std::uint32_t rule) { return compares(matchOf(rules, rule)); },
        [&](std::uint32_t rule, std::uint8_t value) {
          return matches(matchOf(rules, rule), value);
        });
  };
  compile(
      protocols_, [](const AclMatch& match) { return match.protocol.has_value(); },
      [](const AclMatch& match, std::uint8_t value) { return match.protocol == value; });
  compile(
      dscps_, [](const AclMatch& match) { return match.dscps.has_value(); },
      [](const AclMatch& match, std::uint8_t value) {
        return value < 64 && (*match.dscps >> value & 1) != 0;
      });
  compile(
      hopLimits_, [](const AclMatch& match) { return match.hopLimit.has_value(); },
      [](const AclMatch& match, std::uint8_t value) { return match.hopLimit == value; });
  compile(
      tcpFlags_, [](const AclMatch& match) { return !match.tcpFlags.empty(); },
      [](const AclMatch& match, std::uint8_t value) {
        return std::any_of(match.tcpFlags.begin(), match.tcpFlags.end(),
                           [value](const auto& flags) { return flags.matches(value); });
      });
}

void FamilyClassifier::compileRanges(Rules rules) {
  const auto compile = [&](RangeField& field, auto rangesOf) {
    field.compile(sets_, count(),
                  [&](std::uint32_t rule) { return rangesOf(matchOf(rules, rule)); });
  };
  compile(lengths_, [](const AclMatch& match) {
    return match.length ? RangeField::Ranges{{*match.length, *match.length}} : RangeField::Ranges();
  });
  compile(fragmentOffsets_, [](const AclMatch& match) { return match.fragmentOffsets; });
  compile(sourcePorts_, [](const AclMatch& match) { return match.sourcePorts; });
  compile(destinationPorts_, [](const AclMatch& match) { return match.destinationPorts; });
}

void FamilyClassifier::compileFragments(Rules rules) {
  Members notForFragmentsOnly;
  Members forLaterFragments;
  for (std::uint32_t rule = 0; rule < count(); ++rule) {
    const AclMatch& match = matchOf(rules, rule);
    if (!match.isFragment) notForFragmentsOnly.push_back(rule);
    if (!match.comparesUpperLayer() || match.matchesLaterFragments)
      forLaterFragments.push_back(rule);
  }
  isFragmentUsed_ = notForFragmentsOnly.size() < count();
  notForFragmentsOnly_ = sets_.setIs(emptyRuleSet, notForFragmentsOnly);
  forLaterFragments_ = sets_.setIs(emptyRuleSet, forLaterFragments);
}

std::optional<std::size_t> FamilyClassifier::firstMatch(const PacketHeader& header) const {
  if (places_.empty()) return std::nullopt;
  Chosen chosen;
  chosen.add(protocols_.setOf(header.protocol));
  chosen.add(dscps_, header.dscp);
  chosen.add(sources_, header.source);
  chosen.add(destinations_, header.destination);
  chosen.add(sourceSets_, header.source);
  chosen.add(destinationSets_, header.destination);
  chosen.add(hopLimits_, header.ttl);
  chosen.add(lengths_, header.totalLength);
  chosen.add(fragmentOffsets_, header.fragment.offset);
  if (isFragmentUsed_ && !header.fragment.isFragment()) chosen.add(notForFragmentsOnly_);
  addUpperLayer(header, chosen);
  const auto number = sets_.lowestInAll(chosen.sets());
  if (!number) return std::nullopt;
  return places_[*number];
}

void FamilyClassifier::addUpperLayer(const PacketHeader& header, Chosen& chosen) const {
  if (header.fragment.offset != 0) return chosen.add(forLaterFragments_);
  if (header.ports) {
    chosen.add(sourcePorts_, header.ports->source);
    chosen.add(destinationPorts_, header.ports->destination);
  } else {
    chosen.add(sourcePorts_.any());
    chosen.add(destinationPorts_.any());
  }
  if (header.tcpFlags) {
    chosen.add(tcpFlags_, *header.tcpFlags);
  } else {
    chosen.add(tcpFlags_.any());
  }
}

}  // namespace Chips
