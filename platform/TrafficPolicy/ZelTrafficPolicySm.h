#pragma once

#include <map>
#include <set>
#include <vector>

#include "Mox/Ptr.h"
#include "PolicyMap/ServicePolicySm.h"
#include "TrafficPolicy/ClassMapUsers.h"
#include "TrafficPolicy/TrafficPolicyInputs.h"
#include "Velo/Export.h"
#include "Velo/Subscriber.h"

namespace TrafficPolicy {

/// The traffic-policy state machine of the forwarding layer: compiles the policy map that is
/// applied to each interface into classification rules, and keeps the hardware in step.
///
/// The rules of an interface are those of its policy map in their order, each with what its class
/// map matches. Management interfaces, and interfaces that forward by MAC address, are served only
/// where that is allowed; others have no rules. Every change of the configuration is followed at
/// once by the fewest additions, moves and removals of rules, and its outcome is written into the
/// status: one entry per configured policy map and one per rule and interface. A rule that cannot
/// be programmed (its class map does not exist, the hardware refuses it) leaves the others in
/// place and is tried again with the next change of its interface's policy. Of what changed
/// together, everything is added before anything is removed.
///
/// What is programmed is asked of the hardware, never remembered, so that a new machine takes over
/// from an old one without touching a rule. The end of a machine leaves the rules in place.
///
/// A change that a helper or a subscriber makes from inside a call is followed when the present one
/// is done. A machine that is switched off from inside a call completes the programming that it is
/// at, and writes nothing more.
class ZEL_EXPORT ZelTrafficPolicySm final : public PolicyMap::ServicePolicySm {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::ZelTrafficPolicySm"};
  /// Number of the attribute `ready`.
  static constexpr Mox::AttributeId readyAttribute = 283;

  /// A new machine, which has programmed what is configured. Any object may be null: without a
  /// configuration nothing is configured, without a helper or a status nothing is programmed or
  /// written.
  [[nodiscard]] static Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySmIs(
      const Mox::Ptr<PolicyMap::IntfConfig const>& intfConfig,
      const Mox::Ptr<PolicyMap::PolicyMapTypeConfig const>& policyConfig,
      const Mox::Ptr<PolicyMap::ClassMapTypeConfig const>& classTypeConfig,
      const Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir const>& statusRequestDir,
      const Mox::Ptr<PolicyMap::PolicyMapTypeStatus>& status,
      const Mox::Ptr<Acl::Config const>& aclConfig,
      const Mox::Ptr<Classification::FieldSetConfig const>& fieldSetConfig,
      const Mox::Ptr<Lag::Input::Config const>& lagConfig,
      const Mox::Ptr<Ip::Config const>& ipConfig, const Mox::Ptr<Ip6::Config const>& ip6Config,
      const Mox::Ptr<Ip::Status const>& ipStatus, const Mox::Ptr<Ip6::Status const>& ip6Status,
      const Mox::Ptr<Mox::Dir const>& routingVrfInfoDir,
      const Mox::Ptr<Mox::Dir const>& routing6VrfInfoDir,
      const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& aclHelper, bool allowL2Intf,
      bool allowMgmtIntf, bool compileOnly, const Mox::Ptr<Zel::NexthopConfig>& nexthopConfig,
      const Mox::Ptr<Zel::NexthopStatus const>& nexthopStatus,
      const Mox::Ptr<Bost::TimerWheel const>& timerWheel,
      const Mox::Ptr<Zel::NexthopGroupConfig>& nexthopGroupConfig,
      const Mox::Ptr<Zel::NexthopGroupStatus const>& nexthopGroupStatus,
      const Mox::Ptr<Mirroring::Config const>& mirroringHwConfig,
      const Mox::Ptr<Sflow::InterfaceCollector>& sflowIntfCollector,
      const Mox::Ptr<Classification::UdfConfig const>& udfConfig,
      const Mox::Ptr<Zel::ZelCommonSmData const>& zcsd,
      const Mox::Ptr<Mox::Dir const>& bgpNeighborConfigDir, bool expandAllRulesByVrf,
      bool permitFragment, bool expandNeighborsWhenNonPresent,
      const Mox::Ptr<TrafficPolicy::HwStatus const>& trafficPolicyHwStatus);
  /// The same on inputs that are together already.
  [[nodiscard]] static Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySmIs(
      const TrafficPolicyInputs& inputs, bool allowL2Intf);
  /// Use `ZelTrafficPolicySmIs`. Reads nothing from the inputs.
  ZelTrafficPolicySm(const TrafficPolicyInputs& inputs, bool allowL2Intf) noexcept;
  ~ZelTrafficPolicySm() override;

  /// Begins to follow the configuration, which is programmed first, or ends it.
  void hasNotificationActiveIs(bool active) override;
  /// The same, but it stays subscribed, so that it can always go on, if only with the next change:
  /// what its successor needs while it is built.
  void pausedIs(bool paused);
  [[nodiscard]] bool isPaused() const noexcept { return paused_; }
  [[nodiscard]] const Mox::Type* fwkType() const override;

  /// What it was built with.
  [[nodiscard]] const TrafficPolicyInputs& inputs() const noexcept { return inputs_; }

  /// Whether what is programmed matches what is configured. Published when it does so again after
  /// a change, or after a failure; a failure is told by the status.
  [[nodiscard]] bool ready() const noexcept { return ready_; }

 private:
  using Subscriber = Velo::MemberSubscriber<ZelTrafficPolicySm>;
  struct WantedRules;

  // What the status says of an interface, by what was last programmed on it.
  struct IntfStatus {
    Velo::String policyMap;
    std::vector<PolicyMap::RuleKey> rules;
    unsigned programmed = 0;

    [[nodiscard]] bool isComplete() const noexcept { return rules.size() == programmed; }
  };

  ZEL_HIDDEN static void intfConfigDispatch(Velo::Publisher* publisher,
                                            Velo::Subscriber* subscriber, short attributeId,
                                            const void* key, const void* value);
  ZEL_HIDDEN static void policyConfigDispatch(Velo::Publisher* publisher,
                                              Velo::Subscriber* subscriber, short attributeId,
                                              const void* key, const void* value);
  ZEL_HIDDEN static void classTypeConfigDispatch(Velo::Publisher* publisher,
                                                 Velo::Subscriber* subscriber, short attributeId,
                                                 const void* key, const void* value);
  ZEL_HIDDEN void subscriptionsAre(bool subscribed);
  ZEL_HIDDEN void handleAllowL2Intf() override;
  ZEL_HIDDEN void policyMapChanged(const Velo::String& policyMap);
  ZEL_HIDDEN void takeOver();

  [[nodiscard]] bool isFollowing() const noexcept { return hasNotificationActive() && !paused_; }
  ZEL_HIDDEN void synchronize();
  [[nodiscard]] ZEL_HIDDEN bool isBehind() const noexcept;
  ZEL_HIDDEN void synchronizeNext();
  ZEL_HIDDEN void synchronizeIntfs(const std::set<Velo::String>& intfs);
  ZEL_HIDDEN void synchronizePolicyStatuses(const std::set<Velo::String>& policyMaps);
  [[nodiscard]] ZEL_HIDDEN bool isServed(PolicyMap::IntfKind kind) const noexcept;
  [[nodiscard]] ZEL_HIDDEN PolicyMap::PolicyStatus policyStatus(
      const Velo::String& policyMap) const;
  [[nodiscard]] ZEL_HIDDEN WantedRules wantedRules(const Velo::String& intf) const;
  ZEL_HIDDEN void program(std::vector<WantedRules>& wanted);
  ZEL_HIDDEN void writeIntfStatus(const WantedRules& wanted);
  ZEL_HIDDEN void writeRuleStatuses(const std::vector<PolicyMap::RuleKey>& before,
                                    const WantedRules& wanted);
  [[nodiscard]] ZEL_HIDDEN bool isProgrammed() const noexcept;

  const TrafficPolicyInputs inputs_;
  bool ready_ = false;
  bool isSynchronizing_ = false;
  bool paused_ = false;
  bool takesOver_ = false;  // it has been switched on and has looked at nothing yet
  std::set<Velo::String> changedIntfs_;
  std::set<Velo::String> changedPolicyMaps_;
  ClassMapUsers classMapUsers_;
  std::map<Velo::String, IntfStatus> intfStatus_;
  Subscriber intfConfigSubscriber_{*this};
  Subscriber policyConfigSubscriber_{*this};
  Subscriber classTypeConfigSubscriber_{*this};
};

}  // namespace TrafficPolicy
