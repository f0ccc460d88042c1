#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "TrafficPolicy/Status.h"
#include "TrafficPolicy/TrafficPolicyConfig.h"
#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/config/Configuration.h"
#include "agent/language/Limits.h"
#include "agent/model/calls/ChipCalls.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/model/forwarding/AppliedRules.h"
#include "agent/model/forwarding/ConfiguredNames.h"
#include "agent/model/forwarding/VrfIds.h"
#include "agent/model/policies/VrfActions.h"
#include "agent/model/routes/RouteProgrammer.h"
#include "chips/interface/Chip.h"

namespace ZelAgent {

/// The size of the chip's tables, and what it does if the rules of a policy do not fit.
struct ChipOptions {
  std::uint32_t capacity = Limits::chipResources;
  std::uint32_t ruleCapacity = Limits::chipRules;
  PolicyMap::WhenFull whenFull = PolicyMap::WhenFull::closed;
};

class Reprogrammer;

/// The agent. It owns the inputs and outputs of the library (policies, tables, route status,
/// fallback configuration, chip). It changes them in an order that the library and the chip can
/// follow.
///
/// The chip holds the rules of the configuration that was applied last. If it has no room for all
/// rules of an interface, it holds the previous ones of that interface, or none. The counted users
/// are exactly the rules that it holds. A change of configuration reaches the library and the
/// chip as differences. An action that stays in use has users throughout the change. A value that
/// is equal in two consecutive configurations is not set again, even if an event has changed it.
class ForwardingAgent final {
 public:
  explicit ForwardingAgent(const ChipOptions& chip);
  explicit ForwardingAgent(std::uint32_t chipCapacity)
      : ForwardingAgent(ChipOptions{.capacity = chipCapacity}) {}
  ForwardingAgent(const ForwardingAgent&) = delete;
  ForwardingAgent& operator=(const ForwardingAgent&) = delete;
  ~ForwardingAgent();

  /// Makes `next` the configuration in force. The order is: statuses and hardware ids of new
  /// instances; new and changed routes; new and changed fallback VRFs; the VRFs of interfaces; new
  /// rules with their users; rules that are gone; fallback VRFs and statuses of instances that are
  /// gone; what the library did not program; routes that are gone.
  void apply(Configuration next);
  /// Begins the same change. It is made by `step`. Until it is complete, no other member that
  /// changes the agent may be called but `apply` and `removeAll`, which complete it first. The
  /// rules of an interface are either those before, or they are being changed. When those of all
  /// interfaces are programmed, `rules` and `configuration` become the new ones in the same step.
  /// Later steps remove what is gone. Precondition: no change is in progress.
  void begin(Configuration next);
  /// Makes a step of the change. A step handles all routes, or converts or compiles all policies,
  /// or handles the rules of one interface or one other thing. If it throws, the rest of the change
  /// is dropped. Precondition: a change is in progress.
  void step();
  /// Whether a change has steps left.
  [[nodiscard]] bool isChanging() const noexcept { return change_ != nullptr; }
  /// Applies the empty configuration, then removes every other route, VRF status, fallback VRF and
  /// prefix length.
  void removeAll();
  /// Makes a step of the recovery that Reprogrammer.h describes. Call it after each change of facts
  /// or of the chip. `apply` makes a step, too.
  void complete();
  /// Whether `complete` has something to do, even if nothing changes until then.
  [[nodiscard]] bool isRecovering() const;
  /// Asks the chip again for every action and then for every rule that it has refused.
  void retry();
  /// Changes the number of the chip's rule entries, then asks again for refused rules.
  void ruleCapacityIs(std::uint32_t capacity);

  /// The configuration in force.
  [[nodiscard]] const Configuration& configuration() const noexcept { return configuration_; }
  /// The names in the configuration in force. The first call after a change collects them.
  [[nodiscard]] const ConfiguredNames& names();
  [[nodiscard]] AgentState state(UserLists lists = UserLists::all) const;
  [[nodiscard]] std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus> statuses() const;
  /// The status of one action. None if it has none.
  [[nodiscard]] std::optional<ZelVrfSelectionPolicy::HwStatus> status(
      const VrfAction& action) const;
  /// Who uses each action: the rules that the chip holds.
  [[nodiscard]] ActionUsers users() const;
  /// Every rule of an applied policy, by interface, in the order in which rules are tried. If the
  /// chip refused them, the rules that it holds instead follow. Rules that are being changed have
  /// no place.
  [[nodiscard]] RuleStates rules() const;
  [[nodiscard]] RuleStates rules(const std::string& intf) const;
  /// The next rules of one interface after the cursor, at most so many. Moves the cursor to the
  /// last of them.
  [[nodiscard]] RuleStates rules(const Velo::String& intf, RuleCursor& cursor,
                                 std::size_t most) const;
  [[nodiscard]] RuleCounts ruleCounts(const std::string& intf) const;
  /// The ids of the policies whose rules the chip holds. The configuration may not have them any
  /// more.
  [[nodiscard]] std::set<std::string> policiesInForce() const { return rules_.policiesInForce(); }
  /// Whether a change in progress has reached the rules of the interface.
  [[nodiscard]] bool isBeingChanged(const std::string& intf) const {
    return rules_.isBeingChanged(intf);
  }
  /// The interfaces that a policy is applied to, and their policy maps.
  [[nodiscard]] const std::map<Velo::String, PolicyMap::IntfPolicy>& policyIntfs() const noexcept {
    return rules_.policies().intfs;
  }
  /// Sends packets through the chip.
  [[nodiscard]] Chips::Forwarder& forwarder() noexcept { return chip_->forwarder(); }

  /// Route status, fallback configuration and routes. Events change them.
  [[nodiscard]] Routing::Hardware::RouteStatus& routeStatus() noexcept { return *routeStatus_; }
  [[nodiscard]] Routing6::Hardware::RouteStatus& routeStatusV6() noexcept {
    return *routeStatusV6_;
  }
  [[nodiscard]] VrfSelectionPolicy::VrfSelectionFallbackVrf& fallbackConfig() noexcept {
    return *fallbackConfig_;
  }
  [[nodiscard]] RouteProgrammer& routes() noexcept { return routes_; }

  /// The chip. Events change its capacity and make it fail.
  [[nodiscard]] Chips::ChipVrfHelper& chip() noexcept { return *chip_->vrfHelper(); }
  [[nodiscard]] Chips::ChipAclHelper& acl() noexcept { return *chip_->aclHelper(); }
  /// Replaces the observer of the calls that change the chip. An empty one ends observation.
  void chipObserverIs(ChipObserver observer);
  /// The routes that the chip holds.
  [[nodiscard]] const Chips::RouteTables& routeTables() const noexcept { return chip_->routes(); }

  /// The status of each action, and of each rule on each interface. They notify of each change.
  [[nodiscard]] const ZelVrfSelectionPolicy::VrfHwStatus& actionStatus() const noexcept {
    return *vrfHwStatus_;
  }
  [[nodiscard]] const TrafficPolicy::Status& ruleStatus() const noexcept { return *policyStatus_; }

  /// The library's top object, to read.
  [[nodiscard]] const ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm& policySm() const noexcept {
    return *policySm_;
  }

 private:
  // The fallback VRF of each configured instance, empty for none.
  using FallbackByInstance = std::map<std::string, std::string>;
  using VrfByInterface = std::map<std::string, std::string>;
  class Change;

  [[nodiscard]] Chips::ProgramInputs inputs() const;
  void bindPolicySm();
  void retryRules();
  void completeChange();
  void observeRule(const ChipCall& call);
  [[nodiscard]] ActionState stateOf(const VrfAction& action, std::uint32_t count) const;

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbackConfig_;
  Mox::Ptr<Routing::Hardware::RouteStatus> routeStatus_;
  Mox::Ptr<Routing6::Hardware::RouteStatus> routeStatusV6_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> vrfHwConfig_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> vrfHwStatus_;
  Mox::Ptr<PolicyMap::IntfConfig> intfConfig_;
  Mox::Ptr<TrafficPolicy::TrafficPolicyConfig> policyConfig_;
  Mox::Ptr<PolicyMap::ClassMapTypeConfig> classMapConfig_;
  Mox::Ptr<Classification::FieldSetConfig> fieldSetConfig_;
  Mox::Ptr<TrafficPolicy::Status> policyStatus_;
  Mox::Ptr<ZelVrfSelectionPolicy::PolicySmMounts> mounts_;
  std::unique_ptr<Chips::Chip> chip_;
  ChipObserver chipObserver_;
  ChipObserver ruleObserver_;  // of rules only
  Mox::Ptr<PolicyMap::PolicyMapAclHelper> countingAcl_;
  RouteProgrammer routes_;
  AppliedRules rules_;
  Mox::Ptr<ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm> policySm_;
  std::unique_ptr<Reprogrammer> reprogrammer_;
  VrfIds vrfIds_;
  FallbackByInstance instances_;
  VrfByInterface interfaceVrfs_;
  Configuration configuration_;
  std::optional<ConfiguredNames> names_;  // none after a change
  std::unique_ptr<Change> change_;        // null if there is none in progress
};

}  // namespace ZelAgent
