// The users that the library counts, the rules that the chip holds and the users that the agent
// shows are the same, whatever configurations follow each other and whatever the chip refuses.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>

#include "agent/model/forwarding/ForwardingAgent.h"
#include "testing/RandomSeed.h"

namespace ZelAgent {
namespace {

using Counts = std::map<VrfAction, std::uint32_t>;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

class RandomConfigurations final {
 public:
  explicit RandomConfigurations(std::uint32_t seed) : random_(seed) {}

  Configuration next() {
    Configuration configuration;
    configuration.networkInstances.push_back(instance(defaultVrfName));
    configuration.networkInstances.front().type = InstanceType::defaultInstance;
    for (const char* const name : {"red", "blue", "green"}) {
      if (below(4) != 0) configuration.networkInstances.push_back(instance(name));
    }
    bind(configuration);
    return configuration;
  }

  unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

 private:
  NetworkInstance instance(const std::string& name) {
    NetworkInstance instance;
    instance.name = name;
    if (below(2) == 0) instance.fallback = vrf();
    for (const char* const id : {"P", "Q"}) {
      if (below(3) == 0) continue;
      Policy policy{id, {}};
      for (std::uint32_t sequence = 0; sequence < 8; ++sequence) {
        if (below(2) == 0) policy.rules.push_back(rule(sequence));
      }
      instance.policies.push_back(policy);
    }
    return instance;
  }

  Rule rule(std::uint32_t sequence) {
    Rule rule;
    rule.sequenceId = sequence;
    rule.match.family = IpFamily::v4;
    rule.match.protocol = static_cast<std::uint8_t>(below(4));
    switch (below(6)) {
      case 0:
        rule.action = NoAction{};
        break;
      case 1:
        rule.action = Discard{};
        break;
      case 2:
        rule.action = Decapsulate{vrf(), vrf(), vrf()};
        break;
      default:
        rule.action = LookUp{vrf()};
        break;
    }
    return rule;
  }

  std::string vrf() {
    static const std::vector<std::string> names{defaultVrfName, "red", "blue", "green", "nowhere"};
    return names[below(static_cast<unsigned>(names.size()))];
  }

  // Each interface has at most one policy, of any instance.
  void bind(Configuration& configuration) {
    for (const char* const interface : {"e1", "e2", "e3", "e4"}) {
      const auto count = static_cast<unsigned>(configuration.networkInstances.size());
      NetworkInstance& instance = configuration.networkInstances[below(count)];
      if (instance.policies.empty() || below(5) == 0) continue;
      const auto policies = static_cast<unsigned>(instance.policies.size());
      instance.policyBindings.push_back({interface, instance.policies[below(policies)].policyId});
    }
  }

  std::mt19937 random_;
};

Counts countsOf(const ForwardingAgent& agent) {
  Counts counts;
  const auto& users = agent.policySm().vrfSm()->vrfHwConfig()->vrfRefCount();
  for (auto entry = users.iterator(); entry; ++entry)
    counts[entry.key()] = entry.value();
  return counts;
}

Counts rulesOf(ForwardingAgent& agent) {
  Counts counts;
  for (const Velo::String& intf : agent.acl().intfs()) {
    for (const PolicyMap::AclRule& rule : agent.acl().rules(intf)) {
      if (const auto action = vrfActionOf(rule.action)) ++counts[*action];
    }
  }
  return counts;
}

Counts shownOf(const ForwardingAgent& agent) {
  Counts counts;
  for (const auto& [action, users] : agent.users())
    counts[action] = static_cast<std::uint32_t>(users.size());
  return counts;
}

void expectAgreement(ForwardingAgent& agent) {
  const Counts rules = rulesOf(agent);
  EXPECT_EQ(countsOf(agent), rules);
  EXPECT_EQ(shownOf(agent), rules);
}

TEST(UsersAgree, AfterEachOfManyConfigurations) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomConfigurations configurations(seed.value());
  ForwardingAgent agent(8);
  for (unsigned step = 0; step < 200 && !::testing::Test::HasFailure(); ++step) {
    SCOPED_TRACE(step);
    const Configuration next = configurations.next();
    agent.apply(next);
    expectAgreement(agent);
    EXPECT_EQ(agent.users(), usersOfActions(next));
  }
  agent.removeAll();
  EXPECT_TRUE(countsOf(agent).empty());
  EXPECT_EQ(agent.acl().rulesInUse(), 0U);
}

TEST(UsersAgree, WhileTheClassificationHardwareRefusesRules) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  RandomConfigurations configurations(seed.value());
  ForwardingAgent agent(8);
  for (unsigned step = 0; step < 200 && !::testing::Test::HasFailure(); ++step) {
    SCOPED_TRACE(step);
    agent.ruleCapacityIs(configurations.below(20));
    agent.apply(configurations.next());
    expectAgreement(agent);
    std::map<std::string, std::set<bool>> programmed;
    for (const RuleState& rule : agent.rules()) {
      if (!rule.isPrevious) programmed[rule.user.interface].insert(rule.place.has_value());
    }
    for (const auto& [interface, states] : programmed)
      EXPECT_EQ(states.size(), 1U) << "all rules of an interface or none";
  }
}

}  // namespace
}  // namespace ZelAgent
