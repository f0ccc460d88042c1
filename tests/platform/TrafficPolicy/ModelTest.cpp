// The traffic-policy machine against a plain model of it, through random changes, refusals and
// failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "TrafficPolicyFixture.h"
#include "testing/RandomSeed.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::IntfKind;
using PolicyMap::PolicyMapRule;
using PolicyMap::PolicyMapRules;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

/// What is configured, and what must have become of it. It is written without any of the ways in
/// which the machine finds out what has changed: each change names the interfaces that it reaches.
struct Model {
  struct Intf {
    IntfKind kind = IntfKind::routed;
    std::string policyMap;
    bool operator==(const Intf&) const = default;
  };
  struct Outcome {
    Rules held;
    // By sequence, what is told of the rule; "programmed" or a reason.
    std::map<std::uint32_t, std::string> rules;
    std::string policyMap;  // where the interface is served
    bool isServed = false;
    bool isRefused = false;

    [[nodiscard]] bool isComplete() const {
      return std::all_of(rules.begin(), rules.end(),
                         [](const auto& rule) { return rule.second == "programmed"; });
    }
  };

  std::map<std::string, Intf> intfs;
  std::map<std::string, PolicyMapRules> policies;
  std::map<std::string, unsigned> classMaps;  // to the protocol that they match
  std::set<std::string> refused;              // VRFs whose rules are not taken
  bool allowL2Intf = false;
  bool allowMgmtIntf = false;
  std::map<std::string, Outcome> outcomes;
  bool ready = false;
  unsigned readies = 0;

  [[nodiscard]] bool isServed(const std::string& intf) const {
    const auto applied = intfs.find(intf);
    if (applied == intfs.end()) return false;
    return applied->second.kind == IntfKind::routed ||
           (applied->second.kind == IntfKind::l2 && allowL2Intf) ||
           (applied->second.kind == IntfKind::mgmt && allowMgmtIntf);
  }

  /// The interface is programmed for what is configured now. Returns whether rules were removed.
  bool program(const std::string& intf) {
    Outcome& outcome = outcomes[intf];
    const Rules before = outcome.held;
    outcome = {};
    Rules wanted;
    outcome.isServed = isServed(intf);
    if (outcome.isServed) {
      outcome.policyMap = intfs[intf].policyMap;
      const auto policy = policies.find(outcome.policyMap);
      if (policy != policies.end()) {
        for (const PolicyMapRule& rule : policy->second)
          programRule(rule, before, wanted, outcome);
      }
    }
    if (outcome.held != wanted) refuse(before, outcome);
    if (before != wanted || !outcome.isComplete()) ready = false;
    return std::any_of(before.begin(), before.end(), [&](const AclRule& rule) {
      return std::find(outcome.held.begin(), outcome.held.end(), rule) == outcome.held.end();
    });
  }

  /// Rules were removed somewhere, so the refused rules of all other interfaces are tried again.
  void programRefused(const std::vector<std::string>& except) {
    for (auto& [intf, outcome] : outcomes) {
      const bool isExcepted = std::find(except.begin(), except.end(), intf) != except.end();
      if (!isExcepted && outcome.isRefused) program(intf);
    }
  }

  /// All interfaces that a change reached have been programmed.
  void settle() {
    const bool isComplete = std::all_of(outcomes.begin(), outcomes.end(), [](const auto& entry) {
      return entry.second.isComplete();
    });
    if (ready || !isComplete) return;
    ready = true;
    ++readies;
  }

  void programAll() {
    std::set<std::string> names;
    for (const auto& [intf, applied] : intfs)
      names.insert(intf);
    for (const auto& [intf, outcome] : outcomes)
      names.insert(intf);
    for (const std::string& intf : names)
      program(intf);
  }

 private:
  void programRule(const PolicyMapRule& rule, const Rules& before, Rules& wanted,
                   Outcome& outcome) {
    std::string& told = outcome.rules[rule.sequence];
    const auto classMap = classMaps.find(rule.classMap.str());
    if (classMap == classMaps.end()) {
      told = "class map '" + rule.classMap.str() + "' does not exist";
      return;
    }
    AclRule acl{{}, rule.action};
    PolicyMap::AclMatch aclMatch;
    aclMatch.family = Ip::Family::v4;
    aclMatch.protocol = static_cast<std::uint8_t>(classMap->second);
    acl.match = aclMatch;
    wanted.push_back(acl);
    const bool isHeld = std::find(before.begin(), before.end(), acl) != before.end();
    if (!isHeld && refused.contains(acl.action.vrfName.str())) {
      told = "refused";
      return;
    }
    told = "programmed";
    outcome.held.push_back(acl);
  }

  /// One rule is refused, so all are.
  static void refuse(const Rules& before, Outcome& outcome) {
    outcome.held = before;
    outcome.isRefused = true;
    for (auto& [sequence, told] : outcome.rules) {
      if (told == "programmed" || told == "refused")
        told = before.empty() ? "refused; all packets of the interface are dropped"
                              : "refused; the previous rules stay in force";
    }
  }
};

class ModelTest : public TrafficPolicyFixture {
 protected:
  static constexpr unsigned classMapCount = 8;

  ModelTest() {
    hardware_->onAdd = [this](const Velo::String&, const AclRule& rule) {
      failIfDue();
      const bool refused = model_.refused.contains(rule.action.vrfName.str());
      return AclResult{!refused, refused ? "refused" : ""};
    };
    hardware_->onReplace = [this](const Velo::String& intf, const AclRule& rule) {
      const Rules& present = hardware_->held(intf);
      replaced_.insert(replaced_.end(), present.begin(), present.end());
      if (std::find(replaced_.begin(), replaced_.end(), rule) != replaced_.end())
        return AclResult();
      return hardware_->onAdd(intf, rule);
    };
    hardware_->onRemove = [this](const Velo::String&, const AclRule&) { failIfDue(); };
    hardware_->onMove = hardware_->onRemove;
    restart();
  }

  std::size_t upTo(std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(random_);
  }
  bool oneIn(std::size_t chances) { return upTo(chances - 1) == 0; }
  std::string anyIntf() { return "eth" + std::to_string(upTo(4)); }
  std::string anyPolicy() { return std::string(1, static_cast<char>('P' + upTo(3))); }
  std::string anyClassMap() {
    return std::string(1, static_cast<char>('a' + upTo(classMapCount - 1)));
  }
  // No class map is named twice, so that no two rules are equal.
  PolicyMapRules anyRules() {
    std::string letters = "abcdefgh";
    std::shuffle(letters.begin(), letters.end(), random_);
    letters.resize(upTo(classMapCount));
    PolicyMapRules rules = rulesOn(letters);
    for (PolicyMapRule& rule : rules) {
      if (oneIn(4)) rule.action.vrfName = L3::VrfName(rule.classMap.str() + "2");
    }
    return rules;
  }

  // A call of the helper throws, at random.
  void failIfDue() {
    if (callsToFailure_ == 0 || --callsToFailure_ != 0) return;
    throw std::runtime_error("hardware lost");
  }
  // Makes a change; if the helper throws, another change of no consequence has to mend it.
  template <class Change>
  void make(Change change) {
    replaced_.clear();
    callsToFailure_ = oneIn(5) ? 1 + upTo(5) : 0;
    try {
      change();
    } catch (const std::runtime_error&) {
      threw_ = true;
      classMaps_->classMapIs("unused", protocol(++unused_));
    }
    callsToFailure_ = 0;
  }

  void changeIntf() {
    const std::string intf = anyIntf();
    if (oneIn(4)) {
      const bool was = model_.intfs.erase(intf) != 0;
      make([&] { EXPECT_EQ(intfs_->intfDel(intf), was); });
      if (was) reached({intf});
      return;
    }
    const Model::Intf applied{static_cast<IntfKind>(upTo(2)), anyPolicy()};
    const auto present = model_.intfs.find(intf);
    const bool same = present != model_.intfs.end() && present->second == applied;
    model_.intfs[intf] = applied;
    make([&] { intfs_->intfIs(intf, {applied.kind, applied.policyMap}); });
    if (!same) reached({intf});
  }
  void changePolicy() {
    const std::string policyMap = anyPolicy();
    const bool was = model_.policies.contains(policyMap);
    if (oneIn(4)) {
      model_.policies.erase(policyMap);
      make([&] { EXPECT_EQ(policies_->policyMapDel(policyMap), was); });
      if (was) reached(intfsOf({policyMap}));
      return;
    }
    const PolicyMapRules rules = anyRules();
    const bool same = was && model_.policies[policyMap] == rules;
    model_.policies[policyMap] = rules;
    make([&] { policies_->policyMapIs(policyMap, rules); });
    if (!same) reached(intfsOf({policyMap}));
  }
  void changeClassMap() {
    const std::string classMap = anyClassMap();
    std::set<std::string> users;
    for (const auto& [policyMap, rules] : model_.policies) {
      for (const PolicyMapRule& rule : rules) {
        if (rule.classMap == classMap) users.insert(policyMap);
      }
    }
    if (oneIn(3)) {
      const bool was = model_.classMaps.erase(classMap) != 0;
      make([&] { EXPECT_EQ(classMaps_->classMapDel(classMap), was); });
      if (was) reached(intfsOf(users));
      return;
    }
    const auto matched = static_cast<unsigned>(upTo(3));
    const auto present = model_.classMaps.find(classMap);
    const bool same = present != model_.classMaps.end() && present->second == matched;
    model_.classMaps[classMap] = matched;
    make([&] { classMaps_->classMapIs(classMap, protocol(matched)); });
    if (!same) reached(intfsOf(users));
  }
  void changeRefusals() {
    const std::string vrf = anyClassMap();
    if (model_.refused.erase(vrf) == 0) model_.refused.insert(vrf);
  }
  void changeAllowL2Intf() {
    const bool allow = oneIn(2);
    const bool same = model_.allowL2Intf == allow;
    model_.allowL2Intf = allow;
    make([&] { sm_->allowL2IntfIs(allow); });
    if (same) return;
    std::vector<std::string> l2;
    for (const auto& [intf, applied] : model_.intfs) {
      if (applied.kind == IntfKind::l2) l2.push_back(intf);
    }
    reached(l2);
  }
  void switchOffOrOn() {
    const bool active = !sm_->hasNotificationActive();
    make([&] { sm_->hasNotificationActiveIs(active); });
    if (!active) return;
    model_.programAll();
    model_.settle();
  }
  void restart() {
    listener_ = nullptr;
    sm_ = nullptr;
    model_.allowL2Intf = oneIn(2);
    model_.allowMgmtIntf = oneIn(2);
    sm_ = makeSm({.allowL2Intf = model_.allowL2Intf, .allowMgmtIntf = model_.allowMgmtIntf});
    readies_ = 0;
    listener_ = std::make_unique<Listener>(sm_->publisher(),
                                           [this](short, const void*, const void*) { ++readies_; });
    model_.ready = false;
    model_.programAll();
    model_.settle();
    model_.readies = 0;  // nobody was there to be told
  }
  void changeAnything() {
    switch (upTo(12)) {
      case 0:
      case 1:
      case 2:
        return changeIntf();
      case 3:
      case 4:
      case 5:
        return changePolicy();
      case 6:
      case 7:
      case 8:
        return changeClassMap();
      case 9:
        return changeRefusals();
      case 10:
        return changeAllowL2Intf();
      case 11:
        return switchOffOrOn();
      default:
        if (oneIn(4)) restart();
    }
  }

  std::vector<std::string> intfsOf(const std::set<std::string>& policyMaps) const {
    std::vector<std::string> intfs;
    for (const auto& [intf, applied] : model_.intfs) {
      if (policyMaps.contains(applied.policyMap)) intfs.push_back(intf);
    }
    return intfs;
  }
  void reached(const std::vector<std::string>& intfs) {
    if (!sm_->hasNotificationActive()) return;
    bool removed = std::exchange(threw_, false);
    for (const std::string& intf : intfs)
      removed |= model_.program(intf);
    if (removed) model_.programRefused(intfs);
    model_.settle();
  }

  void expectAsModel() {
    std::size_t rules = 0;
    std::map<std::string, PolicyMap::PolicyStatus> policies;
    for (const auto& [intf, outcome] : model_.outcomes) {
      EXPECT_EQ(hardware_->held(intf), outcome.held) << intf;
      if (outcome.isServed) ++policies[outcome.policyMap].intfs;
      for (const auto& [sequence, told] : outcome.rules) {
        ++rules;
        const auto* status = status_->ruleStatus({intf, outcome.policyMap, sequence});
        ASSERT_NE(status, nullptr) << intf << " " << sequence;
        EXPECT_EQ(status->programmed ? "programmed" : status->reason.str(), told);
        ++policies[outcome.policyMap].rules;
        policies[outcome.policyMap].rulesProgrammed += told == "programmed" ? 1 : 0;
      }
    }
    EXPECT_EQ(status_->ruleStatus().count(), rules) << "no status of any other rule";
    if (sm_->hasNotificationActive()) expectPolicyStatuses(policies);
    EXPECT_EQ(sm_->ready(), model_.ready);
    EXPECT_EQ(readies_, model_.readies);
  }
  void expectPolicyStatuses(std::map<std::string, PolicyMap::PolicyStatus>& policies) {
    EXPECT_EQ(status_->policyStatus().count(), model_.policies.size());
    for (const auto& [policyMap, rules] : model_.policies) {
      const PolicyMap::PolicyStatus* status = status_->policyStatus(policyMap);
      ASSERT_NE(status, nullptr) << policyMap;
      EXPECT_TRUE(*status == policies[policyMap]) << policyMap;
    }
  }

  const RandomSeed seed_;
  const ::testing::ScopedTrace trace_{__FILE__, __LINE__, seed_.replay()};
  std::mt19937 random_{seed_.value()};
  Model model_;
  Mox::Ptr<ZelTrafficPolicySm> sm_;
  std::unique_ptr<Listener> listener_;
  unsigned readies_ = 0;
  Rules replaced_;  // rules whose actions are accepted again
  bool threw_ = false;
  std::size_t callsToFailure_ = 0;  // none is due at 0
  unsigned unused_ = 0;
};

TEST_F(ModelTest, HoldsThroughRandomChangesRefusalsAndFailures) {
  for (unsigned step = 0; step < 3000 && !HasFailure(); ++step) {
    SCOPED_TRACE("step " + std::to_string(step));
    changeAnything();
    expectAsModel();
    forgetJournal();
  }
}

}  // namespace
}  // namespace TrafficPolicy
