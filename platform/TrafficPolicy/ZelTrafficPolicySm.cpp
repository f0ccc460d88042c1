#include "TrafficPolicy/ZelTrafficPolicySm.h"

#include <algorithm>
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

std::set<std::uint32_t> sequencesOf(const std::vector<RuleKey>& rules) {
  std::set<std::uint32_t> sequences;
  for (const RuleKey& rule : rules)
    sequences.insert(rule.sequence);
  return sequences;
}

}  // namespace

// The rules that an interface should have.
struct ZelTrafficPolicySm::WantedRules {
  Velo::String intf;
  bool isServed = false;
  Velo::String policyMap;
  std::vector<RuleKey> keys;         // one for each rule of the policy map
  std::vector<RuleStatus> statuses;  // one for each key
  std::vector<AclRule> rules;        // the rules that can be programmed
  std::vector<std::size_t> places;   // the index of each rule among the keys
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
  subscriptionsAre(active);
  ServicePolicySm::hasNotificationActiveIs(active);
  everythingChanged_ = active;
  synchronize();
}

void ZelTrafficPolicySm::pausedIs(bool paused) {
  if (paused_ == paused) return;
  const Mox::Ptr<ZelTrafficPolicySm> alive(this);
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
    for (auto entry = inputs_.status->ruleStatus().iterator(); entry; ++entry) {
      intfStatus_[entry.key().intf].rules.push_back(entry.key());
      changedIntfs_.insert(entry.key().intf);
    }
  }
}

void ZelTrafficPolicySm::synchronize() {
  if (isSynchronizing_) return;
  {
    const ScopedFlag synchronizing(isSynchronizing_);
    while (isFollowing() && hasPendingChanges())
      synchronizeNext();
  }
  if (!isFollowing() || ready_ || !isProgrammed()) return;
  ready_ = true;
  publisher().publish(readyAttribute, nullptr, &ready_);
}

bool ZelTrafficPolicySm::hasPendingChanges() const noexcept {
  return everythingChanged_ || !changedIntfs_.empty() || !changedPolicyMaps_.empty();
}

void ZelTrafficPolicySm::synchronizeNext() {
  if (everythingChanged_) {
    markEverythingChanged();
    everythingChanged_ = false;
  } else if (!changedIntfs_.empty()) {
    consume(changedIntfs_, [this](const auto& intfs) { synchronizeIntfs(intfs); });
  } else {
    consume(changedPolicyMaps_, [this](const auto& names) { synchronizePolicyStatuses(names); });
  }
}

void ZelTrafficPolicySm::synchronizeIntfs(const std::set<Velo::String>& intfs) {
  std::vector<WantedRules> wanted;
  wanted.reserve(intfs.size());
  for (const Velo::String& intf : oldestRefusalFirst(intfs))
    wanted.push_back(wantedRules(intf));
  program(wanted);
  for (const WantedRules& rules : wanted)
    writeIntfStatus(rules);
}

ZelTrafficPolicySm::WantedRules ZelTrafficPolicySm::wantedRules(const Velo::String& intf) {
  WantedRules wanted;
  wanted.intf = intf;
  const IntfPolicy* const applied = inputs_.intfConfig ? inputs_.intfConfig->intf(intf) : nullptr;
  if (applied == nullptr || !isServed(applied->kind)) return wanted;
  wanted.isServed = true;
  wanted.policyMap = applied->policyMap;
  const PolicyMapRules* const rules =
      inputs_.policyConfig ? inputs_.policyConfig->policyMap(applied->policyMap) : nullptr;
  if (rules == nullptr) return wanted;
  for (const PolicyMap::PolicyMapRule& rule : *rules) {
    const MatchResolver::Result resolved = resolver_.resolve(rule.classMap, rule.action.type);
    wanted.keys.push_back({intf, applied->policyMap, rule.sequence});
    wanted.statuses.push_back({false, resolved.reason});
    if (!resolved.match) continue;
    wanted.rules.push_back({*resolved.match, rule.action});
    wanted.places.push_back(wanted.keys.size() - 1);
  }
  return wanted;
}

void ZelTrafficPolicySm::program(std::vector<WantedRules>& wanted) {
  std::vector<RuleList> lists;
  lists.reserve(wanted.size());
  for (const WantedRules& rules : wanted) {
    lists.push_back(
        {rules.intf, rules.rules,
         std::vector<AclResult>(rules.rules.size(), {false, "rules are compiled only"})});
  }
  if (inputs_.aclHelper && !inputs_.compileOnly) {
    const bool wasReady = std::exchange(ready_, false);  // and stays false if a call throws
    const RuleChanges changes = programOrMarkRefused(lists);
    if (!changes.isDifferent) ready_ = wasReady;
    for (std::size_t list = 0; list < lists.size(); ++list)
      noteResult(wanted[list], lists[list].isRefused());
    if (changes.madeRoom) retryOthers(wanted);
  }
  for (std::size_t list = 0; list < lists.size(); ++list) {
    const std::vector<AclResult>& results = lists[list].results;
    for (std::size_t at = 0; at < results.size(); ++at)
      wanted[list].statuses[wanted[list].places[at]] = {results[at].accepted, results[at].reason};
  }
}

RuleChanges ZelTrafficPolicySm::programOrMarkRefused(std::vector<RuleList>& lists) {
  try {
    return programRules(*inputs_.aclHelper, lists);
  } catch (...) {
    retryOthers({});  // rules may have been removed before
    throw;
  }
}

void ZelTrafficPolicySm::noteResult(const WantedRules& wanted, bool isRefused) {
  if (isRefused) {
    if (refusedIntfs_.emplace(wanted.intf, refusals_).second) ++refusals_;
  } else {
    refusedIntfs_.erase(wanted.intf);
  }
}

// There may be room for the refused rules of interfaces that were not programmed now.
void ZelTrafficPolicySm::retryOthers(const std::vector<WantedRules>& programmed) {
  std::set<Velo::String> others;
  for (const auto& [intf, refusal] : refusedIntfs_)
    others.insert(intf);
  for (const WantedRules& rules : programmed)
    others.erase(rules.intf);
  changedIntfs_.merge(others);
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

void ZelTrafficPolicySm::writeIntfStatus(const WantedRules& wanted) {
  const IntfStatus before = std::exchange(intfStatus_[wanted.intf], {});
  changedPolicyMaps_.insert(before.policyMap);
  changedPolicyMaps_.insert(wanted.policyMap);
  const auto programmed = std::count_if(wanted.statuses.begin(), wanted.statuses.end(),
                                        [](const RuleStatus& status) { return status.programmed; });
  if (wanted.isServed) {
    intfStatus_[wanted.intf] = {wanted.policyMap, wanted.keys, static_cast<unsigned>(programmed)};
  } else {
    intfStatus_.erase(wanted.intf);
  }
  if (static_cast<std::size_t>(programmed) < wanted.keys.size()) ready_ = false;
  writeRuleStatuses(before.rules, wanted);
}

void ZelTrafficPolicySm::writeRuleStatuses(const std::vector<RuleKey>& before,
                                           const WantedRules& wanted) {
  if (!inputs_.status) return;
  const Mox::Ptr<PolicyMapTypeStatus>& status = inputs_.status;
  const std::set<std::uint32_t> sequences = sequencesOf(wanted.keys);
  // If a notification switches this machine off, another one may write the status.
  for (const RuleKey& rule : before) {
    if (!isFollowing()) return;
    if (rule.policyMap != wanted.policyMap || !sequences.contains(rule.sequence))
      status->ruleStatusDel(rule);
  }
  for (std::size_t at = 0; at < wanted.keys.size() && isFollowing(); ++at)
    status->ruleStatusIs(wanted.keys[at], wanted.statuses[at]);
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
    status.rules += static_cast<unsigned>(present.rules.size());
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
