#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "Mox/Ptr.h"
#include "PolicyMap/ServicePolicySm.h"
#include "TrafficPolicy/ClassMapUsers.h"
#include "TrafficPolicy/MatchResolver.h"
#include "TrafficPolicy/TrafficPolicyInputs.h"
#include "Velo/Export.h"
#include "Velo/Subscriber.h"

namespace TrafficPolicy {

struct RuleList;

/// The traffic-policy state machine of the forwarding layer. It compiles the policy map of each
/// interface into classification rules, and programs them into the hardware.
///
/// The rules of an interface are those of its policy map, in order, each with the match of its
/// class map. A rule whose class map or prefix set does not exist is left out: it matches nothing,
/// and its status names what is missing. Management interfaces, and interfaces that forward by MAC
/// address, have rules only if they are allowed. The machine writes the result into the status: one
/// entry per configured policy map, and one per rule and interface.
///
/// The hardware gets the prefixes of the sets, not their names. A change of a set is a change of
/// the rules that name it, on all their interfaces together. Other interfaces get no call.
///
/// The hardware has all rules of an interface or none. If it refuses one, the interface keeps the
/// rules that it had, and the status of each rule contains the reason. If it had none,
/// `PolicyMapAclHelper::whenFull` decides. Such an interface is programmed again, the oldest one
/// first, at the next change of its policy, when rules of another interface are removed, and by
/// `retry`.
///
/// What a packet meets during a change: let its treatment be the action of the first rule that
/// matches it, or the VRF of its interface without a match. After each call of the helper, whatever
/// it refuses, each packet has its treatment by the rules before or by the rules after the change.
/// So a packet with the same treatment by both has no other. The only exception is an interface
/// without rules that is closed, since its policy does not fit. A helper keeps the promise if
/// each of its calls is one step for packets, as `PolicyMapAclHelper` requires.
///
/// Without a refusal a change costs the fewest additions, moves and removals of rules, and rules
/// are added on every interface before they are removed on any. So an action that is used before
/// and after always has a user. A rule that is in both lists keeps its counter.
///
/// The machine reads the programmed rules from the hardware and keeps no copy, so a new machine
/// replaces an old one without a change of rules. The destructor leaves the rules in place.
///
/// A change that a helper or a subscriber makes during a call is handled after the present change.
/// A machine that is switched off during a call completes the programming in progress, and writes
/// no more statuses.
class ZEL_EXPORT ZelTrafficPolicySm final : public PolicyMap::ServicePolicySm {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::ZelTrafficPolicySm"};
  /// Number of the attribute `ready`.
  static constexpr Mox::AttributeId readyAttribute = 283;

  /// Creates a machine and programs the present configuration. Any object may be null. Without a
  /// configuration nothing is configured. Without a helper nothing is programmed, and without a
  /// status nothing is written.
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
  /// The same, with all inputs in one structure.
  [[nodiscard]] static Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySmIs(
      const TrafficPolicyInputs& inputs, bool allowL2Intf);
  /// Use `ZelTrafficPolicySmIs`. The constructor does not read the inputs.
  ZelTrafficPolicySm(const TrafficPolicyInputs& inputs, bool allowL2Intf) noexcept;
  ~ZelTrafficPolicySm() override;

  /// Switches notifications on or off. When switched on, the machine programs the present
  /// configuration.
  void hasNotificationActiveIs(bool active) override;
  /// Switches notifications on. The machine programs the present configuration by `step`.
  void hasNotificationActiveInSteps();
  /// Makes one step of what `hasNotificationActiveInSteps` began: reads the configuration, compiles
  /// it, makes a step of `RuleProgramming`, or writes the statuses of one interface. The calls and
  /// their order are the same as without steps. Changes of the meantime are handled after it.
  /// Returns whether a step is left. Between two steps, switching the machine off or pausing it
  /// completes the programming in progress.
  bool step();
  /// Pauses or resumes the machine. A paused machine stays subscribed, but does nothing, while its
  /// successor is created. It can be resumed if that fails.
  void pausedIs(bool paused);
  [[nodiscard]] bool isPaused() const noexcept { return paused_; }
  /// Programs each interface again whose rules were refused. To be called when the hardware may
  /// have room for more rules.
  void retry();
  /// The interfaces whose rules were refused, in alphabetical order.
  [[nodiscard]] std::vector<Velo::String> refusedIntfs() const;
  [[nodiscard]] const Mox::Type* fwkType() const override;

  /// The inputs that it was created with.
  [[nodiscard]] const TrafficPolicyInputs& inputs() const noexcept { return inputs_; }

  /// Whether the programmed rules match the configuration. Published when it becomes true again
  /// after a change or a failure. The status reports failures.
  [[nodiscard]] bool ready() const noexcept { return ready_; }

 private:
  using Subscriber = Velo::MemberSubscriber<ZelTrafficPolicySm>;
  struct CompiledPolicy;
  struct WantedRules;
  struct Change;
  using CompiledPolicies = std::map<Velo::String, std::shared_ptr<const CompiledPolicy>>;

  // The last written status of an interface.
  struct IntfStatus {
    Velo::String policyMap;
    unsigned rules = 0;
    unsigned programmed = 0;

    [[nodiscard]] bool isComplete() const noexcept { return rules == programmed; }
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
  ZEL_HIDDEN static void fieldSetConfigDispatch(Velo::Publisher* publisher,
                                                Velo::Subscriber* subscriber, short attributeId,
                                                const void* key, const void* value);
  ZEL_HIDDEN void subscriptionsAre(bool subscribed);
  ZEL_HIDDEN void handleAllowL2Intf() override;
  ZEL_HIDDEN void policyMapChanged(const Velo::String& policyMap);
  ZEL_HIDDEN void classMapChanged(const Velo::String& classMap);
  ZEL_HIDDEN void markEverythingChanged();

  [[nodiscard]] bool isFollowing() const noexcept { return hasNotificationActive() && !paused_; }
  ZEL_HIDDEN void synchronize();
  [[nodiscard]] ZEL_HIDDEN bool hasPendingChanges() const noexcept;
  ZEL_HIDDEN void synchronizeNext();
  ZEL_HIDDEN void publishWhenReady();
  ZEL_HIDDEN void startChange();
  ZEL_HIDDEN void continueChange();
  ZEL_HIDDEN void noteResults();
  ZEL_HIDDEN void synchronizePolicyStatuses(const std::set<Velo::String>& policyMaps);
  [[nodiscard]] ZEL_HIDDEN bool isServed(PolicyMap::IntfKind kind) const noexcept;
  [[nodiscard]] ZEL_HIDDEN PolicyMap::PolicyStatus policyStatus(
      const Velo::String& policyMap) const;
  [[nodiscard]] ZEL_HIDDEN std::shared_ptr<const CompiledPolicy> compiled(
      const Velo::String& policyMap);
  [[nodiscard]] ZEL_HIDDEN WantedRules wantedRules(const Velo::String& intf,
                                                   CompiledPolicies& policies);
  [[nodiscard]] ZEL_HIDDEN std::vector<Velo::String> oldestRefusalFirst(
      const std::set<Velo::String>& intfs) const;
  ZEL_HIDDEN void noteResult(const RuleList& list);
  ZEL_HIDDEN void retryOthers(const std::set<Velo::String>& programmed);
  ZEL_HIDDEN void writeIntfStatus(const WantedRules& wanted, const RuleList& list);
  ZEL_HIDDEN void writeRuleStatuses(const WantedRules& wanted, const PolicyMap::AclResult& result);
  [[nodiscard]] ZEL_HIDDEN bool isProgrammed() const noexcept;

  const TrafficPolicyInputs inputs_;
  MatchResolver resolver_{inputs_};
  bool ready_ = false;
  bool isSynchronizing_ = false;
  bool paused_ = false;
  bool everythingChanged_ = false;  // switched on, and the present state is not read yet
  bool inSteps_ = false;            // `step` handles the changes
  std::unique_ptr<Change> change_;  // the interfaces that are being programmed; null for none
  std::set<Velo::String> changedIntfs_;
  std::set<Velo::String> changedPolicyMaps_;
  ClassMapUsers classMapUsers_;
  std::map<Velo::String, IntfStatus> intfStatus_;
  std::map<Velo::String, std::uint64_t> refusedIntfs_;  // with the number of the refusal
  std::uint64_t refusals_ = 0;
  Subscriber intfConfigSubscriber_{*this};
  Subscriber policyConfigSubscriber_{*this};
  Subscriber classTypeConfigSubscriber_{*this};
  Subscriber fieldSetConfigSubscriber_{*this};
};

}  // namespace TrafficPolicy
