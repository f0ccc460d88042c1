#include "TrafficPolicy/ZelTrafficPolicySm.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "TrafficPolicy/RuleProgrammer.h"

namespace TrafficPolicy {
namespace {

using Classification::FieldSetConfig;
using Classification::PrefixSetName;
using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::ClassMapTypeConfig;
using PolicyMap::IntfConfig;
using PolicyMap::IntfKind;
using PolicyMap::IntfPolicy;
using PolicyMap::PolicyMapRules;
using PolicyMap::PolicyMapTypeConfig;
using PolicyMap::PolicyMapTypeStatus;
using PolicyMap::PolicyStatus;
using PolicyMap::RuleKey;
using PolicyMap::RuleStatus;

const Velo::String& nameOf(const void* key) noexcept {
  return *static_cast<const Velo::String*>(key);
}

bool uses(const PolicyMap::ClassMatch& match, const PrefixSetName& set) noexcept {
  return match.family == set.family &&
         (match.sourceSet == set.name || match.destinationSet == set.name);
}

// Sets a flag during its lifetime.
class ScopedFlag {
 public:
  explicit ScopedFlag(bool& flag) noexcept : flag_(flag) { flag_ = true; }
  ScopedFlag(const ScopedFlag&) = delete;
  ScopedFlag& operator=(const ScopedFlag&) = delete;
  ~ScopedFlag() { flag_ = false; }

 private:
  bool& flag_;
};

// Removes all names from `names` and calls `use` with them. If that throws, they are added again.
template <class Use>
void consume(std::set<Velo::String>& names, Use use) {
  std::set<Velo::String> taken;
  taken.swap(names);
  try {
    use(taken);
  } catch (...) {
    names.merge(taken);
    throw;
  }
}

template <class Config>
void subscriptionIs(const Mox::Ptr<Config>& config, Velo::Subscriber& subscriber,
                    Velo::Subscriber::Dispatch dispatch, bool subscribed) {
  if (config) config->publisher().subscriptionIs(subscriber, dispatch, subscribed);
}

}  // namespace

// The rules of a policy map. The interfaces to which it is applied share them.
struct ZelTrafficPolicySm::CompiledPolicy {
  std::vector<std::uint32_t> sequences;
  RuleList::Rules rules = std::make_shared<const std::vector<AclRule>>();  // that can be programmed
  std::map<std::uint32_t, Velo::String> reasons;  // why the rule of a sequence cannot

  // The status of a rule, where the result of those that can be programmed is the given one.
  [[nodiscard]] RuleStatus status(std::uint32_t sequence, const AclResult& result) const {
    const auto reason = reasons.find(sequence);
    if (reason != reasons.end()) return {false, reason->second};
    return {result.accepted, result.reason};
  }
};

// What an interface should have.
struct ZelTrafficPolicySm::WantedRules {
  Velo::String intf;
  bool isServed = false;
  Velo::String policyMap;
  std::shared_ptr<const CompiledPolicy> policy;  // never null
};

// The programming of interfaces, and then of their statuses.
struct ZelTrafficPolicySm::Change {
  std::set<Velo::String> intfs;
  std::vector<WantedRules> wanted;
  std::vector<RuleList> lists;                 // one for each of `wanted`
  std::optional<RuleProgramming> programming;  // none once it is complete
  bool wasReady = false;
  std::size_t written = 0;  // of `wanted`
};

Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySm::ZelTrafficPolicySmIs(
    const Mox::Ptr<PolicyMap::IntfConfig const>& intfConfig,
    const Mox::Ptr<PolicyMap::PolicyMapTypeConfig const>& policyConfig,
    const Mox::Ptr<PolicyMap::ClassMapTypeConfig const>& classTypeConfig,
    const Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir const>& statusRequestDir,
    const Mox::Ptr<PolicyMap::PolicyMapTypeStatus>& status,
    const Mox::Ptr<Acl::Config const>& aclConfig,
    const Mox::Ptr<Classification::FieldSetConfig const>& fieldSetConfig,
    const Mox::Ptr<Lag::Input::Config const>& lagConfig, const Mox::Ptr<Ip::Config const>& ipConfig,
    const Mox::Ptr<Ip6::Config const>& ip6Config, const Mox::Ptr<Ip::Status const>& ipStatus,
    const Mox::Ptr<Ip6::Status const>& ip6Status, const Mox::Ptr<Mox::Dir const>& routingVrfInfoDir,
    const Mox::Ptr<Mox::Dir const>& routing6VrfInfoDir,
    const Mox::Ptr<PolicyMap::PolicyMapAclHelper>& aclHelper, bool allowL2Intf, bool allowMgmtIntf,
    bool compileOnly, const Mox::Ptr<Zel::NexthopConfig>& nexthopConfig,
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
    const Mox::Ptr<TrafficPolicy::HwStatus const>& trafficPolicyHwStatus) {
  return ZelTrafficPolicySmIs(TrafficPolicyInputs{intfConfig,
                                                  policyConfig,
                                                  classTypeConfig,
                                                  statusRequestDir,
                                                  status,
                                                  aclConfig,
                                                  fieldSetConfig,
                                                  lagConfig,
                                                  ipConfig,
                                                  ip6Config,
                                                  ipStatus,
                                                  ip6Status,
                                                  routingVrfInfoDir,
                                                  routing6VrfInfoDir,
                                                  aclHelper,
                                                  allowMgmtIntf,
                                                  compileOnly,
                                                  nexthopConfig,
                                                  nexthopStatus,
                                                  timerWheel,
                                                  nexthopGroupConfig,
                                                  nexthopGroupStatus,
                                                  mirroringHwConfig,
                                                  sflowIntfCollector,
                                                  udfConfig,
                                                  zcsd,
                                                  bgpNeighborConfigDir,
                                                  expandAllRulesByVrf,
                                                  permitFragment,
                                                  expandNeighborsWhenNonPresent,
                                                  trafficPolicyHwStatus},
                              allowL2Intf);
}

Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySm::ZelTrafficPolicySmIs(
    const TrafficPolicyInputs& inputs, bool allowL2Intf) {
  return Mox::makeActivePtr<ZelTrafficPolicySm>(inputs, allowL2Intf);
}

ZelTrafficPolicySm::ZelTrafficPolicySm(const TrafficPolicyInputs& inputs, bool allowL2Intf) noexcept
    : ServicePolicySm(allowL2Intf), inputs_(inputs) {}

ZelTrafficPolicySm::~ZelTrafficPolicySm() {
  subscriptionsAre(false);
}

const Mox::Type* ZelTrafficPolicySm::fwkType() const {
  return &moxType;
}

void ZelTrafficPolicySm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
  if (!active) inSteps_ = false;
  subscriptionsAre(active);
  ServicePolicySm::hasNotificationActiveIs(active);
  everythingChanged_ = active;
  synchronize();
}

void ZelTrafficPolicySm::hasNotificationActiveInSteps() {
  inSteps_ = true;
  hasNotificationActiveIs(true);
}

bool ZelTrafficPolicySm::step() {
  if (!inSteps_ || isSynchronizing_) return false;
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
  inSteps_ = false;  // and stays false if a call throws
  if (hasPendingChanges()) {
    const ScopedFlag synchronizing(isSynchronizing_);
    synchronizeNext();
  }
  if (hasPendingChanges()) return inSteps_ = true;
  publishWhenReady();
  return false;
}

void ZelTrafficPolicySm::pausedIs(bool paused) {
  if (paused_ == paused) return;
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
  inSteps_ = false;
  paused_ = paused;
  everythingChanged_ = isFollowing();
  synchronize();
}

void ZelTrafficPolicySm::retry() {
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
  for (const auto& [intf, refusal] : refusedIntfs_)
    changedIntfs_.insert(intf);
  synchronize();
}

std::vector<Velo::String> ZelTrafficPolicySm::refusedIntfs() const {
  std::vector<Velo::String> intfs;
  for (const auto& [intf, refusal] : refusedIntfs_)
    intfs.push_back(intf);
  return intfs;
}

void ZelTrafficPolicySm::subscriptionsAre(bool subscribed) {
  subscriptionIs(inputs_.intfConfig, intfConfigSubscriber_, &intfConfigDispatch, subscribed);
  subscriptionIs(inputs_.policyConfig, policyConfigSubscriber_, &policyConfigDispatch, subscribed);
  subscriptionIs(inputs_.classTypeConfig, classTypeConfigSubscriber_, &classTypeConfigDispatch,
                 subscribed);
  subscriptionIs(inputs_.fieldSetConfig, fieldSetConfigSubscriber_, &fieldSetConfigDispatch,
                 subscribed);
}

void ZelTrafficPolicySm::intfConfigDispatch(Velo::Publisher* /*publisher*/,
                                            Velo::Subscriber* subscriber, short attributeId,
                                            const void* key, const void* /*value*/) {
  if (attributeId != IntfConfig::intfAttribute) return;
  const Mox::Ptr<ZelTrafficPolicySm> sm(&Subscriber::ownerOf(subscriber));
  if (sm->paused_) return;
  sm->changedIntfs_.insert(nameOf(key));
  sm->synchronize();
}

void ZelTrafficPolicySm::policyConfigDispatch(Velo::Publisher* /*publisher*/,
                                              Velo::Subscriber* subscriber, short attributeId,
                                              const void* key, const void* /*value*/) {
  if (attributeId != PolicyMapTypeConfig::policyMapAttribute) return;
  const Mox::Ptr<ZelTrafficPolicySm> sm(&Subscriber::ownerOf(subscriber));
  if (sm->paused_) return;
  // Does not use the notified value: a later one may have been notified before.
  sm->classMapUsers_.policyMapIs(nameOf(key), sm->inputs_.policyConfig->policyMap(nameOf(key)));
  sm->policyMapChanged(nameOf(key));
  sm->synchronize();
}

void ZelTrafficPolicySm::classTypeConfigDispatch(Velo::Publisher* /*publisher*/,
                                                 Velo::Subscriber* subscriber, short attributeId,
                                                 const void* key, const void* /*value*/) {
  if (attributeId != ClassMapTypeConfig::classMapAttribute) return;
  const Mox::Ptr<ZelTrafficPolicySm> sm(&Subscriber::ownerOf(subscriber));
  if (sm->paused_) return;
  sm->classMapChanged(nameOf(key));
  sm->synchronize();
}

void ZelTrafficPolicySm::fieldSetConfigDispatch(Velo::Publisher* /*publisher*/,
                                                Velo::Subscriber* subscriber, short attributeId,
                                                const void* key, const void* /*value*/) {
  if (attributeId != FieldSetConfig::prefixSetAttribute) return;
  const Mox::Ptr<ZelTrafficPolicySm> sm(&Subscriber::ownerOf(subscriber));
  if (sm->paused_ || !sm->inputs_.classTypeConfig) return;
  const auto& set = *static_cast<const PrefixSetName*>(key);
  for (auto entry = sm->inputs_.classTypeConfig->classMap().iterator(); entry; ++entry) {
    if (uses(*entry.value(), set)) sm->classMapChanged(entry.key());
  }
  sm->synchronize();
}

void ZelTrafficPolicySm::handleAllowL2Intf() {
  if (!isFollowing() || !inputs_.intfConfig) return;
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
  for (auto intf = inputs_.intfConfig->intf().iterator(); intf; ++intf) {
    if (intf.value().kind == IntfKind::l2) changedIntfs_.insert(intf.key());
  }
  synchronize();
}

void ZelTrafficPolicySm::policyMapChanged(const Velo::String& policyMap) {
  changedPolicyMaps_.insert(policyMap);
  if (!inputs_.intfConfig) return;
  for (auto intf = inputs_.intfConfig->intf().iterator(); intf; ++intf) {
    if (intf.value().policyMap == policyMap) changedIntfs_.insert(intf.key());
  }
}

void ZelTrafficPolicySm::classMapChanged(const Velo::String& classMap) {
  for (const Velo::String& policyMap : classMapUsers_.policyMaps(classMap))
    policyMapChanged(policyMap);
}

// All of the configuration, the hardware and the status may have changed.
void ZelTrafficPolicySm::markEverythingChanged() {
  classMapUsers_.clear();
  resolver_.forgetRemoved();
  intfStatus_.clear();
  if (inputs_.policyConfig) {
    for (auto entry = inputs_.policyConfig->policyMap().iterator(); entry; ++entry) {
      classMapUsers_.policyMapIs(entry.key(), &entry.value());
      changedPolicyMaps_.insert(entry.key());
    }
  }
  if (inputs_.intfConfig) {
    for (auto entry = inputs_.intfConfig->intf().iterator(); entry; ++entry)
      changedIntfs_.insert(entry.key());
  }
  if (inputs_.aclHelper) {
    for (const Velo::String& intf : inputs_.aclHelper->intfs())
      changedIntfs_.insert(intf);
  }
  for (const auto& [intf, refusal] : refusedIntfs_)
    changedIntfs_.insert(intf);
  if (inputs_.status) {
    for (auto entry = inputs_.status->policyStatus().iterator(); entry; ++entry)
      changedPolicyMaps_.insert(entry.key());
    for (const Velo::String& intf : inputs_.status->ruleStatus().intfs())
      changedIntfs_.insert(intf);
  }
}

void ZelTrafficPolicySm::synchronize() {
  if (isSynchronizing_ || inSteps_) return;
  {
    const ScopedFlag synchronizing(isSynchronizing_);
    while (hasPendingChanges())
      synchronizeNext();
  }
  publishWhenReady();
}

void ZelTrafficPolicySm::publishWhenReady() {
  if (!isFollowing() || ready_ || !isProgrammed()) return;
  ready_ = true;
  publisher().publish(readyAttribute, nullptr, &ready_);
}

// A machine that is switched off completes only the programming in progress.
bool ZelTrafficPolicySm::hasPendingChanges() const noexcept {
  if (change_) return true;
  return isFollowing() &&
         (everythingChanged_ || !changedIntfs_.empty() || !changedPolicyMaps_.empty());
}

void ZelTrafficPolicySm::synchronizeNext() {
  if (change_) {
    continueChange();
  } else if (everythingChanged_) {
    markEverythingChanged();
    everythingChanged_ = false;
  } else if (!changedIntfs_.empty()) {
    startChange();
  } else {
    consume(changedPolicyMaps_, [this](const auto& names) { synchronizePolicyStatuses(names); });
  }
}

void ZelTrafficPolicySm::startChange() {
  auto change = std::make_unique<Change>();
  CompiledPolicies policies;
  for (const Velo::String& intf : oldestRefusalFirst(changedIntfs_)) {
    change->wanted.push_back(wantedRules(intf, policies));
    change->lists.push_back(
        {intf, change->wanted.back().policy->rules, {false, "rules are compiled only"}});
  }
  if (inputs_.aclHelper && !inputs_.compileOnly) {
    change->wasReady = std::exchange(ready_, false);  // and stays false if a call throws
    change->programming.emplace(*inputs_.aclHelper, change->lists);
  }
  change->intfs.swap(changedIntfs_);
  change_ = std::move(change);
}

// Makes the next step. If it throws, the interfaces are programmed again at the next change.
void ZelTrafficPolicySm::continueChange() {
  Change& change = *change_;
  try {
    if (change.programming) {
      if (!change.programming->step()) noteResults();
    } else if (change.written < change.wanted.size()) {
      const std::size_t at = change.written++;
      writeIntfStatus(change.wanted[at], change.lists[at]);
    } else {
      change_.reset();
    }
  } catch (...) {
    if (change.programming) retryOthers({});  // rules may have been removed before
    changedIntfs_.merge(change.intfs);
    change_.reset();
    throw;
  }
}

void ZelTrafficPolicySm::noteResults() {
  const RuleChanges changes = change_->programming->changes();
  change_->programming.reset();
  if (!changes.isDifferent) ready_ = change_->wasReady;
  for (const RuleList& list : change_->lists)
    noteResult(list);
  if (changes.madeRoom) retryOthers(change_->intfs);
}

ZelTrafficPolicySm::WantedRules ZelTrafficPolicySm::wantedRules(const Velo::String& intf,
                                                                CompiledPolicies& policies) {
  static const auto none = std::make_shared<const CompiledPolicy>();
  WantedRules wanted{intf, false, {}, none};
  const IntfPolicy* const applied = inputs_.intfConfig ? inputs_.intfConfig->intf(intf) : nullptr;
  if (applied == nullptr || !isServed(applied->kind)) return wanted;
  wanted.isServed = true;
  wanted.policyMap = applied->policyMap;
  std::shared_ptr<const CompiledPolicy>& policy = policies[applied->policyMap];
  if (!policy) policy = compiled(applied->policyMap);
  wanted.policy = policy;
  return wanted;
}

std::shared_ptr<const ZelTrafficPolicySm::CompiledPolicy> ZelTrafficPolicySm::compiled(
    const Velo::String& policyMap) {
  auto policy = std::make_shared<CompiledPolicy>();
  const PolicyMapRules* const rules =
      inputs_.policyConfig ? inputs_.policyConfig->policyMap(policyMap) : nullptr;
  if (rules == nullptr) return policy;
  std::vector<AclRule> programmable;
  for (const PolicyMap::PolicyMapRule& rule : *rules) {
    const MatchResolver::Result resolved = resolver_.resolve(rule.classMap, rule.action.type);
    policy->sequences.push_back(rule.sequence);
    if (resolved.match) {
      programmable.push_back({*resolved.match, rule.action});
    } else {
      policy->reasons.emplace(rule.sequence, resolved.reason);
    }
  }
  policy->rules = std::make_shared<const std::vector<AclRule>>(std::move(programmable));
  return policy;
}

void ZelTrafficPolicySm::noteResult(const RuleList& list) {
  if (list.isRefused()) {
    if (refusedIntfs_.emplace(list.intf, refusals_).second) ++refusals_;
  } else {
    refusedIntfs_.erase(list.intf);
  }
}

// There may be room for the refused rules of interfaces that were not programmed now.
void ZelTrafficPolicySm::retryOthers(const std::set<Velo::String>& programmed) {
  for (const auto& [intf, refusal] : refusedIntfs_) {
    if (!programmed.contains(intf)) changedIntfs_.insert(intf);
  }
}

std::vector<Velo::String> ZelTrafficPolicySm::oldestRefusalFirst(
    const std::set<Velo::String>& intfs) const {
  std::multimap<std::uint64_t, Velo::String> byAge;
  for (const Velo::String& intf : intfs) {
    const auto refused = refusedIntfs_.find(intf);
    byAge.emplace(refused == refusedIntfs_.end() ? refusals_ : refused->second, intf);
  }
  std::vector<Velo::String> ordered;
  ordered.reserve(byAge.size());
  for (const auto& [age, intf] : byAge)
    ordered.push_back(intf);
  return ordered;
}

void ZelTrafficPolicySm::writeIntfStatus(const WantedRules& wanted, const RuleList& list) {
  const std::size_t rules = wanted.policy->sequences.size();
  const std::size_t programmed = list.programmed();
  changedPolicyMaps_.insert(intfStatus_[wanted.intf].policyMap);
  changedPolicyMaps_.insert(wanted.policyMap);
  if (wanted.isServed) {
    intfStatus_[wanted.intf] = {wanted.policyMap, static_cast<unsigned>(rules),
                                static_cast<unsigned>(programmed)};
  } else {
    intfStatus_.erase(wanted.intf);
  }
  if (programmed < rules) ready_ = false;
  writeRuleStatuses(wanted, list.result);
}

// If a notification switches this machine off, another one may write the status.
void ZelTrafficPolicySm::writeRuleStatuses(const WantedRules& wanted, const AclResult& result) {
  if (!inputs_.status) return;
  const Mox::Ptr<PolicyMapTypeStatus>& status = inputs_.status;
  const std::vector<std::uint32_t>& sequences = wanted.policy->sequences;
  for (const RuleKey& rule :
       status->ruleStatus().others(wanted.intf, wanted.policyMap, sequences)) {
    if (!isFollowing()) return;
    status->ruleStatusDel(rule);
  }
  for (const std::uint32_t sequence : sequences) {
    if (!isFollowing()) return;
    status->ruleStatusIs({wanted.intf, wanted.policyMap, sequence},
                         wanted.policy->status(sequence, result));
  }
}

void ZelTrafficPolicySm::synchronizePolicyStatuses(const std::set<Velo::String>& policyMaps) {
  if (!inputs_.status) return;
  for (const Velo::String& policyMap : policyMaps) {
    if (!isFollowing()) return;
    if (inputs_.policyConfig && inputs_.policyConfig->policyMap(policyMap) != nullptr) {
      inputs_.status->policyStatusIs(policyMap, policyStatus(policyMap));
    } else {
      inputs_.status->policyStatusDel(policyMap);
    }
  }
}

PolicyStatus ZelTrafficPolicySm::policyStatus(const Velo::String& policyMap) const {
  PolicyStatus status;
  for (const auto& [intf, present] : intfStatus_) {
    if (present.policyMap != policyMap) continue;
    ++status.intfs;
    status.rules += present.rules;
    status.rulesProgrammed += present.programmed;
  }
  return status;
}

bool ZelTrafficPolicySm::isServed(IntfKind kind) const noexcept {
  switch (kind) {
    case IntfKind::routed:
      return true;
    case IntfKind::l2:
      return allowL2Intf();
    case IntfKind::mgmt:
      return inputs_.allowMgmtIntf;
  }
  return false;
}

bool ZelTrafficPolicySm::isProgrammed() const noexcept {
  return std::all_of(intfStatus_.begin(), intfStatus_.end(),
                     [](const auto& entry) { return entry.second.isComplete(); });
}

}  // namespace TrafficPolicy
