// What packets meet while the traffic-policy machine changes rules: after every call of the
// hardware each packet is treated as before or as after the change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "FewestSteps.h"
#include "PacketHardware.h"
#include "TrafficPolicyFixture.h"
#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclRule;
using PolicyMap::ActionType;
using PolicyMap::WhenFull;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

// The packets of the tests differ in their DSCP. A match is a set of them, so that matches overlap
// in every way.
constexpr unsigned packets = 5;
using Treatments = std::array<std::string, packets>;

constexpr const char* dropped = "dropped by the closed interface";

Treatments treatmentsBy(const Rules& rules, bool isClosed) {
  Treatments treatments;
  for (unsigned packet = 0; packet < packets; ++packet) {
    const auto match = std::find_if(rules.begin(), rules.end(), [&](const AclRule& rule) {
      return (*rule.match->dscps >> packet & 1) != 0;
    });
    if (match != rules.end()) {
      treatments[packet] = match->action.vrfName.str();
    } else {
      treatments[packet] = isClosed ? dropped : "own VRF";
    }
  }
  return treatments;
}

AclRule ruleOn(std::uint64_t dscps, const std::string& vrf) {
  AclRule rule = ruleNamed(vrf);
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v4;
  match.dscps = dscps;
  rule.match = match;
  return rule;
}

// "12>red 4>blue": sets of packets, as a number, and VRFs.
std::string textOf(const Rules& rules) {
  std::string text;
  for (const AclRule& rule : rules)
    text += std::to_string(*rule.match->dscps) + '>' + rule.action.vrfName.str() + ' ';
  return text;
}

// Changes the rules of interfaces, and compares each packet after each call of the hardware.
class Consistency : public TrafficPolicyFixture {
 protected:
  using Lists = std::map<Velo::String, Rules>;

  Consistency() {
    packetHardware_->changed = [this](const Velo::String& intf) { compare(intf); };
  }

  // The policies of all interfaces, programmed in one change.
  void wantedAre(const Lists& wanted) {
    sm_->hasNotificationActiveIs(false);
    before_.clear();
    wasClosed_.clear();
    for (const auto& [intf, rules] : wanted) {
      configure(intf, rules);
      before_[intf] = packetHardware_->rules(intf);
      if (packetHardware_->intfClosed(intf)) wasClosed_.insert(intf);
    }
    after_ = wanted;
    isCompared_ = true;
    sm_->hasNotificationActiveIs(true);
    isCompared_ = false;
    for (const auto& [intf, rules] : wanted)
      expectAllOrNothing(intf);
  }

  void configure(const Velo::String& intf, const Rules& rules) {
    PolicyRules policy;
    for (const AclRule& rule : rules) {
      const std::string classMap = std::to_string(*rule.match->dscps);
      classMaps_->classMapIs(classMap, PolicyMap::ClassMatch{*rule.match, {}, {}});
      policy.push_back({static_cast<std::uint32_t>(policy.size()), classMap, rule.action});
    }
    policies_->policyMapIs("of " + intf.str(), policy);
    intfs_->intfIs(intf, {IntfKind::routed, "of " + intf.str()});
  }

  // Whether the interface was open and had no rules.
  [[nodiscard]] bool hadNone(const Velo::String& intf) const {
    return before_.at(intf).empty() && !wasClosed_.contains(intf);
  }

  void compare(const Velo::String& intf) {
    if (!isCompared_) return;
    const Treatments old = treatmentsBy(before_.at(intf), wasClosed_.contains(intf));
    const Treatments wanted = treatmentsBy(after_.at(intf), false);
    const Treatments now =
        treatmentsBy(packetHardware_->rules(intf), packetHardware_->intfClosed(intf));
    for (unsigned packet = 0; packet < packets; ++packet) {
      if (now[packet] == old[packet] || now[packet] == wanted[packet]) continue;
      if (now[packet] == dropped && hadNone(intf)) continue;  // checked at the end
      misled_.insert(history_);
      if (old[packet] == wanted[packet]) misledAlthoughUnchanged_.insert(history_);
      if (example_.empty()) {
        example_ = "from " + textOf(before_.at(intf)) + "to " + textOf(after_.at(intf)) + "by " +
                   textOf(packetHardware_->rules(intf)) + "packet " + std::to_string(packet) +
                   " meets " + now[packet];
      }
    }
  }

  void expectAllOrNothing(const Velo::String& intf) {
    const Rules& now = packetHardware_->rules(intf);
    if (now == after_.at(intf)) {
      EXPECT_FALSE(packetHardware_->intfClosed(intf)) << textOf(now);
      return;
    }
    EXPECT_EQ(textOf(now), textOf(before_.at(intf))) << "wanted " << textOf(after_.at(intf));
    const bool closes = packetHardware_->whenFull() == WhenFull::closed;
    EXPECT_EQ(packetHardware_->intfClosed(intf), now.empty() && closes);
  }

  void expectNobodyMisled(std::size_t histories) {
    EXPECT_EQ(misled_.size(), 0U) << "of " << histories << " histories, of which in "
                                  << misledAlthoughUnchanged_.size()
                                  << " for packets whose treatment does not change; " << example_;
  }

  Mox::Ptr<PacketHardware> packetHardware_ = Mox::makePtr<PacketHardware>();
  Mox::Ptr<ZelTrafficPolicySm> sm_ = smOn(packetHardware_);
  Lists before_;
  Lists after_;
  std::set<Velo::String> wasClosed_;
  bool isCompared_ = false;
  std::size_t history_ = 0;
  std::set<std::size_t> misled_;
  std::set<std::size_t> misledAlthoughUnchanged_;
  std::string example_;

 private:
  Mox::Ptr<ZelTrafficPolicySm> smOn(const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& helper) const {
    TrafficPolicyInputs inputs;
    inputs.intfConfig = intfs_;
    inputs.policyConfig = policies_;
    inputs.classTypeConfig = classMaps_;
    inputs.status = status_;
    inputs.aclHelper = helper;
    return ZelTrafficPolicySm::ZelTrafficPolicySmIs(inputs, false);
  }
};

// The rule for packet 0 moves behind one for all packets that leaves.
TEST_F(Consistency, AMovedRuleMisleadsNoPacket) {
  const AclRule moved = ruleOn(1, "m");
  const AclRule all = ruleOn(31, "o");
  const AclRule a = ruleOn(2, "a");
  const AclRule b = ruleOn(4, "b");
  wantedAre({{"eth1", {moved, all, a, b}}});
  const unsigned counter = packetHardware_->counters("eth1").front();
  wantedAre({{"eth1", {a, b, moved}}});
  EXPECT_EQ(textOf(packetHardware_->rules("eth1")), textOf({a, b, moved}));
  EXPECT_EQ(packetHardware_->counters("eth1").back(), counter) << "the rule keeps its counter";
  expectNobodyMisled(1);
}

class RandomConsistency : public Consistency {
 protected:
  static constexpr const char* vrfs[] = {"red", "blue", "green"};

  std::size_t upTo(std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(random_);
  }
  bool oneIn(std::size_t chances) { return upTo(chances - 1) == 0; }
  // Few different matches, so that most rules of one list are in the other one too, with the same
  // action or with another one.
  Rules anyRules() {
    Rules rules(2 + upTo(5));
    for (AclRule& rule : rules)
      rule = ruleOn(matches_[upTo(matches_.size() - 1)], vrfs[upTo(2)]);
    return rules;
  }
  Rules anyChangeOf(Rules rules) {
    if (oneIn(4)) return anyRules();
    if (oneIn(3)) std::shuffle(rules.begin(), rules.end(), random_);
    if (!rules.empty()) {
      const AclRule moved = rules[upTo(rules.size() - 1)];
      rules.erase(std::find(rules.begin(), rules.end(), moved));
      rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(upTo(rules.size())), moved);
    }
    for (AclRule& rule : rules) {
      if (oneIn(8)) rule.action.vrfName = vrfs[upTo(2)];
    }
    if (!rules.empty() && !oneIn(3))
      rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(upTo(rules.size() - 1)));
    if (oneIn(3))
      rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(upTo(rules.size())),
                   ruleOn(matches_[upTo(matches_.size() - 1)], vrfs[upTo(2)]));
    return rules;
  }
  Lists anyChangeOfAll() {
    Lists wanted;
    for (const char* const intf : {"eth1", "eth2", "eth3"})
      wanted[intf] = anyChangeOf(packetHardware_->rules(intf));
    return wanted;
  }
  [[nodiscard]] bool anyClosed() const {
    const std::vector<Velo::String> intfs = packetHardware_->intfs();
    return std::any_of(intfs.begin(), intfs.end(), [this](const Velo::String& intf) {
      return packetHardware_->intfClosed(intf);
    });
  }
  void chooseLimits() {
    for (std::uint64_t& match : matches_)
      match = 1 + upTo((1 << packets) - 2);
    if (!anyClosed()) packetHardware_->whenFullIs(oneIn(2) ? WhenFull::open : WhenFull::closed);
    packetHardware_->capacity = oneIn(2) ? 1000 : packetHardware_->held() + upTo(4);
    packetHardware_->replacedReset();
    const bool refuses = oneIn(3);
    packetHardware_->refuses = [this, refuses] { return refuses && oneIn(6); };
  }

  const RandomSeed seed_;
  const ::testing::ScopedTrace trace_{__FILE__, __LINE__, seed_.replay()};
  std::mt19937 random_{seed_.value()};
  std::array<std::uint64_t, 7> matches_{};
};

TEST_F(RandomConsistency, NoPacketIsMisledByAnyChange) {
  const std::size_t histories = randomRounds(800);
  for (history_ = 0; history_ < histories && !HasFailure(); ++history_) {
    chooseLimits();
    wantedAre(anyChangeOfAll());
  }
  expectNobodyMisled(histories);
  EXPECT_GT(packetHardware_->refused, histories / 100) << "refusals were tested";
  EXPECT_GT(packetHardware_->replacements, histories / 100) << "replacements were tested";
}

// Each VRF that has a user before and after a change without refusals, on any interface, has one
// all the time.
TEST_F(RandomConsistency, AVrfThatIsUsedBeforeAndAfterAlwaysHasAUser) {
  const std::size_t histories = randomRounds(200);
  const auto used = [this] {
    std::set<std::string> names;
    for (const Velo::String& intf : packetHardware_->intfs()) {
      for (const AclRule& rule : packetHardware_->rules(intf))
        names.insert(rule.action.vrfName.str());
    }
    return names;
  };
  std::set<std::string> kept;
  packetHardware_->changed = [&](const Velo::String&) {
    std::set<std::string> still;
    const std::set<std::string> now = used();
    std::set_intersection(kept.begin(), kept.end(), now.begin(), now.end(),
                          std::inserter(still, still.end()));
    kept = still;
  };
  for (history_ = 0; history_ < histories && !HasFailure(); ++history_) {
    chooseLimits();
    const std::set<std::string> before = used();
    kept = before;
    packetHardware_->refused = 0;
    wantedAre(anyChangeOfAll());
    if (packetHardware_->refused > 0) continue;
    for (const std::string& name : used())
      EXPECT_TRUE(!before.contains(name) || kept.contains(name)) << name;
  }
}

// Each rule that is in both lists keeps its counter, if rules are not replaced in place.
TEST_F(RandomConsistency, ARuleInBothListsKeepsItsCounter) {
  const std::size_t histories = randomRounds(200);
  for (history_ = 0; history_ < histories && !HasFailure(); ++history_) {
    chooseLimits();
    packetHardware_->capacity = 1000;
    packetHardware_->refuses = [] { return false; };
    std::map<Velo::String, std::map<unsigned, AclRule>> before;
    for (const char* const intf : {"eth1", "eth2", "eth3"}) {
      for (std::size_t at = 0; at < packetHardware_->rules(intf).size(); ++at)
        before[intf][packetHardware_->counters(intf)[at]] = packetHardware_->rules(intf)[at];
    }
    wantedAre(anyChangeOfAll());
    for (const auto& [intf, rules] : before_) {
      std::size_t kept = 0;
      for (std::size_t at = 0; at < packetHardware_->rules(intf).size(); ++at) {
        const auto old = before[intf].find(packetHardware_->counters(intf)[at]);
        if (old == before[intf].end()) continue;
        EXPECT_EQ(old->second, packetHardware_->rules(intf)[at]);
        ++kept;
      }
      EXPECT_EQ(kept, commonRules(rules, after_.at(intf))) << textOf(rules);
    }
  }
}

}  // namespace
}  // namespace TrafficPolicy
