#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PolicySmArguments.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "testing/Journal.h"
#include "testing/RecordingAclHelper.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/TableJournal.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A line of text trace.
[[nodiscard]] inline std::string trace(unsigned level, unsigned line, const std::string& function,
                                       const std::string& text) {
  return "ZelVrfSelection " + std::to_string(level) +
         " /src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:" + std::to_string(line) + " " +
         function + " " + text;
}

// What the VRF state machine traces of a VRF, by what happens to it.
[[nodiscard]] inline std::string initialized() {
  return trace(5, 289, "handleInitialized",
               "VrfSm::VrfInstanceSm::handleInitialized Initialize VRF SM");
}
[[nodiscard]] inline std::string instanceInitialized(const std::string& vrf, unsigned id) {
  return trace(
      5, 227, "handleInitialized",
      "VrfSm::VrfInstanceSm::handleInitialized: VRF:" + vrf + " vrfId:" + std::to_string(id));
}
[[nodiscard]] inline std::string instanceRemoved(const std::string& vrf, unsigned id) {
  return trace(
      5, 219, "handleVrfRemove",
      "VrfSm::VrfInstanceSm::handleVrfRemove: VRF:" + vrf + " vrfId:" + std::to_string(id));
}
[[nodiscard]] inline std::string lensInitialized(const std::string& vrf) {
  return trace(5, 242, "handleInitialized",
               "VrfSm::MoxVrfPrefixLensInExactMatch::handleInitialized: VRF:" + vrf);
}
[[nodiscard]] inline std::string lensChanged(const std::string& vrf) {
  return trace(5, 235, "handlePrefixLen",
               "VrfSm::MoxVrfPrefixLensInExactMatch::handlePrefixLen: VRF:" + vrf);
}
[[nodiscard]] inline std::string lens6Initialized(const std::string& vrf) {
  return trace(5, 257, "handleInitialized",
               "VrfSm::MoxVrfPrefixLensInExactMatchV6::handleInitialized: VRF:" + vrf);
}
[[nodiscard]] inline std::string lens6Changed(const std::string& vrf) {
  return trace(5, 249, "handlePrefixLen",
               "VrfSm::MoxVrfPrefixLensInExactMatchV6::handlePrefixLen: VRF:" + vrf);
}
[[nodiscard]] inline std::string updateAll(const std::string& vrf) {
  return trace(5, 130, "updateAllVrfActions",
               "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions " + vrf);
}
[[nodiscard]] inline std::string updating(const std::string& vrf) {
  return trace(
      5, 137, "updateAllVrfActions",
      "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW instance for: " + vrf);
}
[[nodiscard]] inline std::string alreadyInUse(const std::string& vrf, unsigned count) {
  return trace(7, 59, "handleVrfRefCountChange",
               "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: VRF HW resource already in "
               "use for VRF:" +
                   vrf + " refCount:" + std::to_string(count));
}
[[nodiscard]] inline std::string deleting(const std::string& vrf) {
  return trace(7, 35, "handleVrfRefCountChange",
               "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Deleting VRF Hw resource. "
               "VRF:" +
                   vrf);
}
[[nodiscard]] inline std::string policyReady() {
  return trace(7, 302, "handlePolicySmReady", "handlePolicySmReady");
}

/// Everything that an agent has, and the library's top object on it. The tables' journal is
/// subscribed before any state machine, so a change is written before what follows from it.
/// One rule is configured, for one interface.
class PolicyFixture : public ::testing::Test {
 protected:
  PolicyFixture() {
    arguments_.aclHelper = policyHelper_;
    arguments_.classTypeConfig->classMapIs("class", {});
    arguments_.intfConfig->intfIs("eth1", {PolicyMap::IntfKind::routed, "policy"});
    changeRule();
  }

  using TrafficPolicySm = TrafficPolicy::ZelTrafficPolicySm;
  using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;
  using Lines = std::vector<std::string>;

  template <class Top>
  [[nodiscard]] Mox::Ptr<Top> makeTop() {
    return Mox::makeActivePtr<Top>(policyHelper_, mounts_, helper_, fallback_, routes_, routes6_);
  }
  Mox::Ptr<VrfSm> bindVrf() {
    return top_->vrfSmIs(users_, statuses_, helper_, fallback_, routes_, routes6_);
  }
  Mox::Ptr<TrafficPolicySm> bindPolicy() { return arguments_.bindTo(*top_); }
  /// Changes the one rule that is configured, which the traffic-policy machine follows: it is ready
  /// again, once.
  void changeRule() {
    const L3::VrfName vrf("red" + std::to_string(++ruleChanges_));
    arguments_.policyConfig->policyMapIs(
        "policy", {{10, "class", {PolicyMap::ActionType::vrf, vrf, {}, {}}}});
  }
  /// What that writes, when it is the change of that number.
  [[nodiscard]] static Lines ruleChanged(unsigned change) {
    return {"addRule eth1 1 any->red" + std::to_string(change),
            "removeRule eth1 0 any->red" + std::to_string(change - 1)};
  }
  /// Publishes what a traffic-policy machine publishes when it is ready again, whatever it is.
  static void publishReady(const TrafficPolicySm& policySm) {
    policySm.publisher().publish(TrafficPolicySm::readyAttribute, nullptr, nullptr);
  }
  /// Leaves the journal to what happens from now on.
  void forgetJournal() { static_cast<void>(journal_.take()); }
  /// VRF "red" with an id and with prefix lengths of both families.
  void configureRed() {
    routes_->vrfStatusIs("red")->vrfIdIs(7);
    routes_->vrfPrefixLensInExactMatchIs("red");
    routes6_->vrfPrefixLensInExactMatchIs("red");
  }

  const VrfAction red_{"red", PolicyMap::ActionType::vrf};
  Journal journal_;
  Mox::Ptr<RecordingAclHelper> policyHelper_ = Mox::makePtr<RecordingAclHelper>(journal_);
  PolicySmArguments arguments_;
  Mox::Ptr<PolicySmMounts> mounts_ = policySmMountsFactory();
  Mox::Ptr<FallbackVrf> fallback_ = FallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<RecordingVrfHelper> helper_ =
      Mox::makePtr<RecordingVrfHelper>(journal_, fallback_, routes_, routes6_);
  Mox::Ptr<VrfHwConfig> users_ = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses_ = vrfHwStatusFactory();
  TableJournal tables_{journal_, users_, statuses_};
  Mox::Ptr<ZelVrfSelectionPolicySm> top_ = makeTop<ZelVrfSelectionPolicySm>();

 private:
  unsigned ruleChanges_ = 0;
};

}  // namespace ZelVrfSelectionPolicy::Testing
