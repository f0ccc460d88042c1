#include "tests/agent/features/RandomMatches.h"

namespace ZelAgent {
namespace {

using Ranges = std::vector<PolicyMap::NumberRange>;

class MatchMaker final {
 public:
  MatchMaker(RandomChoices& choices, Configuration& configuration)
      : choices_(choices), configuration_(configuration) {}

  void make() {
    for (const IpFamily family : {IpFamily::v4, IpFamily::v6}) {
      for (const char* const name : {"few", "many"})
        configuration_.prefixSets.push_back(prefixSet(family, name));
    }
    for (NetworkInstance& instance : configuration_.networkInstances) {
      for (Policy& policy : instance.policies) {
        for (Rule& rule : policy.rules)
          if (rule.match.family) add(rule.match);
      }
      for (PolicyBinding& binding : instance.policyBindings)
        addSecondPolicy(instance, binding);
    }
  }

 private:
  PrefixSet prefixSet(IpFamily family, const char* name) {
    PrefixSet set{name, family, {}, {}};
    for (unsigned count = choices_.below(5); count > 0; --count)
      set.prefixes.push_back(prefix(family));
    for (unsigned count = choices_.below(4); count > 0; --count)
      set.excluded.push_back(prefix(family));
    return set;
  }

  IpPrefix prefix(IpFamily family) {
    const unsigned length = choices_.below(Ip::addressBits(family) + 1);
    return {Ip::firstBits(randomAddress(choices_, family), length),
            static_cast<std::uint8_t>(length)};
  }

  void add(RuleMatch& match) {
    static const std::vector<std::string> sets{"few", "many"};
    static const std::vector<std::uint8_t> hopLimits{0, 1, 2, 255};
    if (choices_.percent(15)) match.sourceSet = choices_.oneOf(sets);
    if (choices_.percent(15)) match.destinationSet = choices_.oneOf(sets);
    if (choices_.percent(8)) match.hopLimit = choices_.oneOf(hopLimits);
    if (choices_.percent(4)) match.length = static_cast<std::uint16_t>(20 + choices_.below(60));
    if (choices_.percent(8)) match.isFragment = true;
    if (choices_.percent(8)) match.fragmentOffsets = ranges(8191);
    if (choices_.percent(15)) match.sourcePorts = ranges(65535);
    if (choices_.percent(15)) match.destinationPorts = ranges(65535);
    if (choices_.percent(10)) addFlags(match);
  }

  // Wide, so that some numbers are in them.
  Ranges ranges(unsigned most) {
    Ranges ranges;
    for (unsigned count = 1 + choices_.below(3); count > 0; --count) {
      const unsigned first = choices_.percent(40) ? 0 : choices_.below(most + 1);
      const unsigned last = choices_.percent(20) ? first : first + choices_.below(most - first + 1);
      ranges.push_back({static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(last)});
    }
    return ranges;
  }

  void addFlags(RuleMatch& match) {
    for (unsigned count = 1 + choices_.below(2); count > 0; --count) {
      const unsigned mask = 1U << choices_.below(8) | 1U << choices_.below(8);
      match.tcpFlags.push_back(
          {static_cast<std::uint8_t>(mask), static_cast<std::uint8_t>(choices_.below(256) & mask)});
    }
  }

  void addSecondPolicy(const NetworkInstance& instance, PolicyBinding& binding) {
    const std::string& other = choices_.oneOf(instance.policies).policyId;
    if (choices_.percent(50) || other == binding.policyId) return;
    binding.forwardingPolicyId = other;
    if (choices_.percent(20)) binding.policyId.clear();
  }

  RandomChoices& choices_;
  Configuration& configuration_;
};

}  // namespace

void addMatches(RandomChoices& choices, Configuration& configuration) {
  MatchMaker(choices, configuration).make();
}

}  // namespace ZelAgent
