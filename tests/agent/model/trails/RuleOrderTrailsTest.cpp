// The promises of models/rule_order.pml hold along the model's trails: before and after each call
// to the chip each packet meets its old or its new treatment, and the old or the new list is in
// force at the end.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "TrafficPolicy/RuleProgrammer.h"
#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/model/policies/UserCountingAclHelper.h"
#include "agent/model/policies/VrfActions.h"
#include "testing/RecordingAclHelper.h"
#include "testing/RecordingVrfHelper.h"
#include "tests/agent/model/trails/TrailFile.h"

namespace ZelAgent {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::Testing::Journal;
using ZelVrfSelectionPolicy::Testing::RecordingAclHelper;
using ZelVrfSelectionPolicy::Testing::RecordingVrfHelper;
using Rules = std::vector<AclRule>;
// By packet class: the VRF in which a packet is looked up, "own" without a rule, or "dropped".
using Treatments = std::map<char, std::string>;

constexpr const char* interface = "eth1";

// The packet classes p and q are two values of DSCP.
std::uint64_t dscpsOf(char packetClass) {
  return std::uint64_t{1} << (packetClass == 'p' ? 10U : 20U);
}

// "pqy" is the rule that matches p and q and has the treatment y.
AclRule aclRuleNamed(const std::string& name) {
  AclRule rule;
  PolicyMap::AclMatch match;
  match.family = Ip::Family::v4;
  match.dscps = 0;
  for (const char packetClass : name.substr(0, name.size() - 1))
    *match.dscps |= dscpsOf(packetClass);
  rule.match = match;
  rule.action = {PolicyMap::ActionType::vrf, L3::VrfName(name.substr(name.size() - 1)), {}, {}};
  return rule;
}

Rules rulesIn(const std::string& line) {
  Rules rules;
  const std::vector<std::string> words = wordsOf(line);
  for (std::size_t at = 1; at < words.size(); ++at)
    rules.push_back(aclRuleNamed(words[at]));
  return rules;
}

// A chip with rules and resources, driven as in the agent.
class RuleChip final {
 public:
  RuleChip() {
    const auto routes = Routing::Hardware::RouteStatus::RouteStatusIs();
    const auto routesV6 = Routing6::Hardware::RouteStatus::RouteStatusIs();
    const auto fallbacks = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
    vrfSm_ = ZelVrfSelectionPolicy::VrfSm::VrfSmIs(users_, statuses_, resourceChip_, fallbacks,
                                                   routes, routesV6);
    hardware_->onAdd = [this](const Velo::String&, const AclRule&) {
      check("addRule");
      return AclResult();
    };
    hardware_->onRemove = [this](const Velo::String&, const AclRule&) { check("removeRule"); };
    hardware_->onMove = [this](const Velo::String&, const AclRule&) { check("moveRule"); };
    resourceChip_->onCreate = [this](const VrfAction& action) {
      check("createVrf");
      resources_.insert(action);
      return HwStatus();
    };
    resourceChip_->onDelete = [this](const VrfAction& action) {
      check("deleteVrf");
      resources_.erase(action);
    };
  }

  void roomIs(std::size_t rules) { hardware_->capacity = rules; }
  [[nodiscard]] const Rules& held() const { return hardware_->held(interface); }

  void programWithoutChecks(const Rules& rules) { program(rules); }

  // Returns which calls found a packet with a third treatment. The last one is "end".
  [[nodiscard]] std::string programAndCheck(const Rules& rules) {
    old_ = treatments(held(), true);
    new_ = treatments(rules, true);
    isChecked_ = true;
    program(rules);
    check("end");
    isChecked_ = false;
    return std::exchange(misled_, {});
  }

 private:
  void program(const Rules& rules) {
    std::vector<TrafficPolicy::RuleList> lists{
        {interface, std::make_shared<const Rules>(rules), {}}};
    static_cast<void>(TrafficPolicy::programRules(*counting_, lists));
  }

  [[nodiscard]] Treatments treatments(const Rules& rules, bool withAllResources) const {
    Treatments treatments;
    for (const char packetClass : {'p', 'q'}) {
      const auto first = std::find_if(rules.begin(), rules.end(), [&](const AclRule& rule) {
        return (*rule.match->dscps & dscpsOf(packetClass)) != 0;
      });
      if (first == rules.end()) {
        treatments[packetClass] = "own";
      } else if (withAllResources || resources_.contains(*vrfActionOf(first->action))) {
        treatments[packetClass] = first->action.vrfName.str();
      } else {
        treatments[packetClass] = "dropped";
      }
    }
    return treatments;
  }

  // The state that the previous calls have left.
  void check(const std::string& call) {
    if (!isChecked_) return;
    for (const auto& [packetClass, met] : treatments(held(), false)) {
      if (met == old_[packetClass] || met == new_[packetClass]) continue;
      misled_ += std::string("at ") + call + ' ' + packetClass + " meets " + met + '\n';
    }
  }

  Journal journal_;
  Mox::Ptr<RecordingAclHelper> hardware_ = Mox::makePtr<RecordingAclHelper>(journal_);
  Mox::Ptr<RecordingVrfHelper> resourceChip_ = Mox::makePtr<RecordingVrfHelper>(journal_);
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_ = ZelVrfSelectionPolicy::vrfHwConfigFactory();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_ =
      ZelVrfSelectionPolicy::vrfHwStatusFactory();
  Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm_;
  Mox::Ptr<UserCountingAclHelper> counting_ =
      Mox::makePtr<UserCountingAclHelper>("counting", hardware_, users_);
  std::set<VrfAction> resources_;
  bool isChecked_ = false;
  Treatments old_;
  Treatments new_;
  std::string misled_;
};

void expectPromisesIn(const Trail& trail) {
  const Rules before = rulesIn(trail.at(0));
  const Rules after = rulesIn(trail.at(1));
  const std::size_t room = std::stoul(wordsOf(trail.at(2)).at(1));
  RuleChip chip;
  chip.programWithoutChecks(before);
  ASSERT_EQ(chip.held(), before);
  chip.roomIs(room);
  EXPECT_EQ(chip.programAndCheck(after), "") << textOf(trail);
  const bool hasRoomForBoth = room >= before.size() + after.size();
  const bool isOld = chip.held() == before;
  EXPECT_TRUE(chip.held() == after || (isOld && !hasRoomForBoth)) << textOf(trail);
}

void expectPromisesInTrailsOf(const std::string& file) {
  const std::vector<Trail> trails = trailsIn(file);
  EXPECT_GE(trails.size(), 8U) << file;
  for (const Trail& trail : trails)
    expectPromisesIn(trail);
}

TEST(RuleOrderTrails, ARuleIsOnTheChipOnlyWhileItsResourceIsThere) {
  expectPromisesInTrailsOf("rule-before-resource.lists");
}

TEST(RuleOrderTrails, ARuleThatMovesMisleadsNoPacket) {
  expectPromisesInTrailsOf("moved-too-early.lists");
}

TEST(RuleOrderTrails, APolicyThatDoesNotFitLeavesTheOldOneInForce) {
  expectPromisesInTrailsOf("truncated.lists");
}

}  // namespace
}  // namespace ZelAgent
