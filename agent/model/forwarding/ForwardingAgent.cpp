#include "agent/model/forwarding/ForwardingAgent.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "agent/language/Limits.h"
#include "agent/model/calls/ObservedAclHelper.h"
#include "agent/model/forwarding/Reprogrammer.h"
#include "agent/model/policies/UserCountingAclHelper.h"

namespace ZelAgent {
namespace {

using PolicyMap::PolicyMapRules;
using PolicyMap::RuleStatus;
using Routing6RouteStatus = Routing6::Hardware::RouteStatus;
using RoutingRouteStatus = Routing::Hardware::RouteStatus;
using SoftChip::SoftAclHelper;
using SoftChip::SoftVrfHelper;
using TrafficPolicy::ZelTrafficPolicySm;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;

// Suspends the notifications of a state machine. `end` resumes them, and the machine then handles
// all changes of the pause together. That may throw. The destructor resumes them too, when another
// exception ends the scope, and ignores a second failure.
class Pause {
 public:
  explicit Pause(Mox::Ptr<ZelTrafficPolicySm> sm) : sm_(std::move(sm)) {
    sm_->hasNotificationActiveIs(false);
  }
  Pause(const Pause&) = delete;
  Pause& operator=(const Pause&) = delete;
  ~Pause() {
    try {
      end();
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first failure is the one to report
    }
  }
  // Only the first call has an effect, whether it succeeds or not.
  void end() {
    if (const auto sm = std::exchange(sm_, nullptr)) sm->hasNotificationActiveIs(true);
  }

 private:
  Mox::Ptr<ZelTrafficPolicySm> sm_;
};

// The users of each action among the rules that the chip holds.
ActionUsers usersOf(const RuleStates& rules) {
  ActionUsers users;
  for (const RuleState& rule : rules) {
    const auto action = vrfActionOf(rule.rule.action);
    if (rule.place && action) users[*action].insert(rule.user);
  }
  return users;
}

// Calls `remove` with each key of `before` that `after` does not have.
template <class Map, class Remove>
void forEachGone(const Map& before, const Map& after, Remove remove) {
  for (const auto& [key, value] : before) {
    if (!after.contains(key)) remove(key);
  }
}

}  // namespace

ForwardingAgent::ForwardingAgent(const ChipOptions& chip)
    : fallbackConfig_(VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs()),
      routeStatus_(RoutingRouteStatus::RouteStatusIs()),
      routeStatusV6_(Routing6RouteStatus::RouteStatusIs()),
      vrfHwConfig_(ZelVrfSelectionPolicy::vrfHwConfigFactory()),
      vrfHwStatus_(ZelVrfSelectionPolicy::vrfHwStatusFactory()),
      intfConfig_(PolicyMap::IntfConfig::IntfConfigIs("intfConfig")),
      policyConfig_(TrafficPolicy::TrafficPolicyConfig::TrafficPolicyConfigIs("policyConfig")),
      classMapConfig_(PolicyMap::ClassMapTypeConfig::ClassMapTypeConfigIs("classMapConfig")),
      fieldSetConfig_(Classification::FieldSetConfig::FieldSetConfigIs("fieldSetConfig")),
      policyStatus_(TrafficPolicy::Status::StatusIs("policyStatus")),
      mounts_(ZelVrfSelectionPolicy::policySmMountsFactory()),
      chip_(Mox::makeActivePtr<SoftVrfHelper>(Velo::String("softChip"), inputs(), chip.capacity)),
      acl_(Mox::makeActivePtr<SoftAclHelper>(Velo::String("softChip"), chip.ruleCapacity)),
      countingAcl_(Mox::makeActivePtr<UserCountingAclHelper>(
          Velo::String("userCounting"),
          Mox::makeActivePtr<ObservedAclHelper>(Velo::String("observed"), acl_, chipObserver_),
          vrfHwConfig_)),
      forwarder_(*acl_, *chip_, routeTables_, inputs()),
      routes_(routeTables_, inputs(), chipObserver_),
      policySm_(ZelVrfSelectionPolicy::zelVrfSelectionPolicySmFactory(
          countingAcl_, mounts_, chip_, fallbackConfig_, routeStatus_, routeStatusV6_)) {
  countingAcl_->whenFullIs(chip.whenFull);
  mounts_->intfConfigIs(intfConfig_);
  mounts_->policyConfigIs(policyConfig_);
  mounts_->policyStatusIs(policyStatus_);
  mounts_->fieldSetConfigIs(fieldSetConfig_);
  policySm_->vrfSmIs(vrfHwConfig_, vrfHwStatus_, chip_, fallbackConfig_, routeStatus_,
                     routeStatusV6_);
  reprogrammer_ = std::make_unique<Reprogrammer>(chip_, inputs(), policySm_->vrfSm());
  bindPolicySm();
}

ForwardingAgent::~ForwardingAgent() = default;

void ForwardingAgent::apply(const Configuration& next) {
  FallbackByInstance instances;
  for (const NetworkInstance& instance : next.networkInstances)
    instances.emplace(instance.name, instance.fallback);
  bringUpInstances(next);
  routes_.configuredIs(next);
  routes_.add();
  changeFallbacks(next);
  changeInterfaces(next);
  changePolicies(next);
  takeDownInstances(instances);
  instances_ = std::move(instances);
  configuration_ = next;
  names_.reset();
  reprogrammer_->stepOfConfiguration();
  routes_.program();
}

void ForwardingAgent::complete() {
  reprogrammer_->step();
}

bool ForwardingAgent::isRecovering() const {
  return reprogrammer_->isPending();
}

void ForwardingAgent::retry() {
  reprogrammer_->retry();
  retryRules();
}

void ForwardingAgent::removeAll() {
  apply({});
  fallbackConfig_->fallbackVrfDelAll();
  routeStatus_->vrfStatusDelAll();
  routeStatus_->vrfPrefixLensInExactMatchDelAll();
  routeStatusV6_->vrfPrefixLensInExactMatchDelAll();
  routes_.clear();
}

const ConfiguredNames& ForwardingAgent::names() {
  if (!names_) names_ = configuredNames(configuration_);
  return *names_;
}

std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus> ForwardingAgent::statuses() const {
  std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus> statuses;
  const auto& present = vrfHwStatus_->hwStatus();
  for (auto entry = present.iterator(); entry; ++entry) {
    statuses.emplace(entry.key(), entry.value());
  }
  return statuses;
}

std::optional<ZelVrfSelectionPolicy::HwStatus> ForwardingAgent::status(
    const VrfAction& action) const {
  if (!vrfHwStatus_->hwStatusHas(action)) return std::nullopt;
  return vrfHwStatus_->hwStatus(action);
}

void ForwardingAgent::chipObserverIs(ChipObserver observer) {
  chipObserver_ = std::move(observer);
  if (chipObserver_) {
    chip_->hookObserverIs([this](const SoftChip::HookCall& call) { chipObserver_(call); });
  } else {
    chip_->hookObserverIs({});
  }
}

AgentState ForwardingAgent::state(UserLists lists) const {
  AgentState state;
  const auto& counts = vrfHwConfig_->vrfRefCount();
  for (auto entry = counts.iterator(); entry; ++entry)
    state.actions.push_back(stateOf(entry.key(), entry.value()));
  std::sort(state.actions.begin(), state.actions.end(),
            [](const ActionState& a, const ActionState& b) { return a.action < b.action; });
  if (lists == UserLists::all) {
    ActionUsers all = users();
    for (ActionState& action : state.actions)
      action.usedBy = std::move(all[action.action]);
  }
  state.chip = {chip_->capacity(), static_cast<std::uint32_t>(chip_->resources().size()),
                chip_->hookCounts()};
  state.ruleTable = {acl_->capacity(), acl_->rulesInUse(), acl_->mostRulesInUse(), refusedRules()};
  return state;
}

ActionUsers ForwardingAgent::users() const {
  return usersOf(rules());
}

RuleStates ForwardingAgent::rules() const {
  RuleStates states;
  for (const auto& [intf, applied] : policies_.intfs) {
    RuleStates ofIntf = rules(intf.str());
    std::move(ofIntf.begin(), ofIntf.end(), std::back_inserter(states));
  }
  return states;
}

RuleStates ForwardingAgent::rules(const std::string& intf) const {
  RuleCursor cursor;
  return rules(intf, cursor, std::numeric_limits<std::size_t>::max());
}

RuleStates ForwardingAgent::rules(const Velo::String& intf, RuleCursor& cursor,
                                  std::size_t most) const {
  if (!policies_.intfs.contains(intf)) return {};
  RuleStates states;
  if (!cursor.isInPrevious) states = rulesOf(intf, cursor, most);
  if (states.size() == most) return states;
  if (!std::exchange(cursor.isInPrevious, true)) cursor.nextSequence = 0;
  RuleStates previous = previousRulesOf(intf, cursor, most - states.size());
  std::move(previous.begin(), previous.end(), std::back_inserter(states));
  return states;
}

RuleCounts ForwardingAgent::ruleCounts(const std::string& intf) const {
  RuleCounts counts{acl_->rules(intf).size(), 0, acl_->intfClosed(intf)};
  const auto applied = policies_.intfs.find(intf);
  if (applied != policies_.intfs.end() && !holdsRulesOf(intf, applied->second.policyMap))
    counts.refused = policies_.policyMaps.at(applied->second.policyMap).size();
  return counts;
}

std::size_t ForwardingAgent::refusedRules() const {
  std::size_t rules = 0;
  for (const auto& [intf, applied] : policies_.intfs)
    rules += policies_.policyMaps.at(applied.policyMap).size();
  std::size_t programmed = 0;
  for (const auto& [policyMap, mapRules] : policies_.policyMaps) {
    const PolicyMap::PolicyStatus* const status = policyStatus_->policyStatus(policyMap);
    if (status != nullptr) programmed += status->rulesProgrammed;
  }
  return rules - std::min(rules, programmed);
}

bool ForwardingAgent::holdsRulesOf(const Velo::String& intf, const Velo::String& policyMap) const {
  const PolicyMapRules& rules = policies_.policyMaps.at(policyMap);
  return std::any_of(rules.begin(), rules.end(), [&](const PolicyMap::PolicyMapRule& rule) {
    const RuleStatus* const status = policyStatus_->ruleStatus({intf, policyMap, rule.sequence});
    return status != nullptr && status->programmed;
  });
}

// The chip holds all rules of the policy or none, so the place of a rule is its index.
RuleState ForwardingAgent::ruleStateOf(const Velo::String& intf, const Velo::String& policyMap,
                                       std::size_t index) const {
  const PolicyMapOrigin& origin = *policies_.origins.at(policyMap);
  const PolicyMapOrigin::Rule& from = origin.rules[index];
  const PolicyMap::PolicyMapRule& rule = policies_.policyMaps.at(policyMap)[index];
  const RuleStatus* const status = policyStatus_->ruleStatus({intf, policyMap, rule.sequence});
  RuleState state{{intf.str(), origin.networkInstance, origin.policyOf(from), from.sequence},
                  {from.match, rule.action},
                  {},
                  status == nullptr ? "not programmed yet" : status->reason.str(),
                  {}};
  const auto& counters = acl_->counters(intf);
  if (status != nullptr && status->programmed && index < counters.size()) {
    state.counter = counters[index];
    state.place = index;
  }
  return state;
}

// The rules of the policy that is applied to the interface.
RuleStates ForwardingAgent::rulesOf(const Velo::String& intf, RuleCursor& cursor,
                                    std::size_t most) const {
  RuleStates states;
  const Velo::String& policyMap = policies_.intfs.at(intf).policyMap;
  const PolicyMapRules& rules = policies_.policyMaps.at(policyMap);
  auto rule = std::lower_bound(rules.begin(), rules.end(), cursor.nextSequence,
                               [](const PolicyMap::PolicyMapRule& other, std::uint64_t sequence) {
                                 return other.sequence < sequence;
                               });
  for (; rule != rules.end() && states.size() < most; ++rule) {
    states.push_back(ruleStateOf(intf, policyMap, static_cast<std::size_t>(rule - rules.begin())));
    cursor.nextSequence = std::uint64_t{rule->sequence} + 1;
  }
  return states;
}

// The rules that the chip holds for the interface although its policy is another one.
RuleStates ForwardingAgent::previousRulesOf(const Velo::String& intf, RuleCursor& cursor,
                                            std::size_t most) const {
  RuleStates states;
  const auto found = rulesInForce_.find(intf);
  if (found == rulesInForce_.end() || holdsRulesOf(intf, policies_.intfs.at(intf).policyMap))
    return states;
  const PolicyMapOrigin& origin = *found->second;
  const auto& rules = acl_->rules(intf);
  const std::size_t count = std::min(rules.size(), origin.rules.size());
  const auto first = std::lower_bound(
      origin.rules.begin(), origin.rules.end(), cursor.nextSequence,
      [](const PolicyMapOrigin::Rule& rule, std::uint64_t number) { return rule.number < number; });
  for (auto place = static_cast<std::size_t>(first - origin.rules.begin());
       place < count && states.size() < most; ++place) {
    const PolicyMapOrigin::Rule& from = origin.rules[place];
    states.push_back({{intf.str(), origin.networkInstance, origin.policyOf(from), from.sequence},
                      {from.match, rules[place].action},
                      place,
                      "",
                      acl_->counters(intf)[place],
                      true});
    cursor.nextSequence = std::uint64_t{from.number} + 1;
  }
  return states;
}

// An interface whose rules were refused keeps its record.
void ForwardingAgent::recordRulesInForce() {
  std::erase_if(rulesInForce_,
                [this](const auto& entry) { return !policies_.intfs.contains(entry.first); });
  const std::vector<Velo::String> refused = policySm_->policySm()->refusedIntfs();
  for (const auto& [intf, applied] : policies_.intfs) {
    if (!std::binary_search(refused.begin(), refused.end(), intf))
      rulesInForce_[intf] = policies_.origins.at(applied.policyMap);
  }
}

std::set<std::string> ForwardingAgent::policiesInForce() const {
  std::set<PolicyMapOriginPtr> origins;
  for (const auto& [intf, origin] : rulesInForce_)
    origins.insert(origin);
  std::set<std::string> policies;
  for (const PolicyMapOriginPtr& origin : origins)
    policies.insert(origin->policyIds.begin(), origin->policyIds.end());
  return policies;
}

void ForwardingAgent::retryRules() {
  policySm_->policySm()->retry();
  recordRulesInForce();
}

void ForwardingAgent::ruleCapacityIs(std::uint32_t capacity) {
  acl_->capacityIs(capacity);
  retryRules();
}

SoftChip::ProgramInputs ForwardingAgent::inputs() const {
  return {fallbackConfig_, routeStatus_, routeStatusV6_};
}

// Inputs of a switch that the agent does not model are null or empty. The state machine does not
// need them.
void ForwardingAgent::bindPolicySm() {
  constexpr bool allowL2Intf = false;
  constexpr bool allowMgmtIntf = false;
  constexpr bool expandAllRulesByVrf = false;
  constexpr bool permitFragment = false;  // a rule never matches more than is configured
  constexpr bool expandNeighborsWhenNonPresent = false;
  policySm_->policySmIs(mounts_->intfConfig(), policyConfig_, classMapConfig_,
                        mounts_->statusRequestDir(), policyStatus_, mounts_->aclConfig(),
                        mounts_->fieldSetConfig(), mounts_->lagInputConfig(), nullptr, nullptr,
                        mounts_->ipStatus(), mounts_->ip6Status(), mounts_->routingVrfInfoDir(),
                        mounts_->routing6VrfInfoDir(), countingAcl_, allowL2Intf, allowMgmtIntf,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, mounts_->bgpNeighborConfigDir(), expandAllRulesByVrf,
                        permitFragment, expandNeighborsWhenNonPresent, nullptr);
}

void ForwardingAgent::bringUpInstances(const Configuration& next) {
  for (const NetworkInstance& instance : next.networkInstances) {
    if (instances_.contains(instance.name)) continue;
    routeStatus_->vrfStatusIs(instance.name)->vrfIdIs(vrfIds_.idIs(instance.name));
  }
}

void ForwardingAgent::changeFallbacks(const Configuration& next) {
  for (const NetworkInstance& instance : next.networkInstances) {
    const auto before = instances_.find(instance.name);
    if (instance.fallback == (before == instances_.end() ? "" : before->second)) continue;
    if (instance.fallback.empty()) {
      fallbackConfig_->fallbackVrfDel(instance.name);
    } else {
      fallbackConfig_->fallbackVrfIs(instance.name, instance.fallback);
    }
  }
}

void ForwardingAgent::changeInterfaces(const Configuration& next) {
  VrfByInterface vrfs;
  for (const NetworkInstance& instance : next.networkInstances) {
    for (const std::string& interface : instance.interfaces)
      vrfs.emplace(interface, instance.name);
  }
  forEachGone(interfaceVrfs_, vrfs,
              [this](const std::string& interface) { forwarder_.intfVrfDel(interface); });
  for (const auto& [interface, vrf] : vrfs)
    forwarder_.intfVrfIs(interface, vrf);
  interfaceVrfs_ = std::move(vrfs);
}

// The rules change only at the end of the pause, so no packet is classified by half of a change.
void ForwardingAgent::changePolicies(const Configuration& next) {
  PolicyObjects policies = policyObjectsOf(next);
  Pause pause(policySm_->policySm());
  for (const auto& [name, set] : policies.prefixSets)
    fieldSetConfig_->prefixSetIs(name, set);
  for (const auto& [name, match] : policies.classMaps)
    classMapConfig_->classMapIs(name, match);
  for (const auto& [name, rules] : policies.policyMaps)
    policyConfig_->policyMapIs(name, rules);
  for (const auto& [intf, policy] : policies.intfs)
    intfConfig_->intfIs(intf, policy);
  forEachGone(policies_.intfs, policies.intfs,
              [this](const Velo::String& intf) { intfConfig_->intfDel(intf); });
  forEachGone(policies_.policyMaps, policies.policyMaps,
              [this](const Velo::String& name) { policyConfig_->policyMapDel(name); });
  forEachGone(policies_.classMaps, policies.classMaps,
              [this](const Velo::String& name) { classMapConfig_->classMapDel(name); });
  forEachGone(policies_.prefixSets, policies.prefixSets,
              [this](const auto& name) { fieldSetConfig_->prefixSetDel(name); });
  policies_ = std::move(policies);
  pause.end();
  recordRulesInForce();
}

void ForwardingAgent::takeDownInstances(const FallbackByInstance& next) {
  std::vector<std::string> gone;
  forEachGone(instances_, next, [&gone](const std::string& name) { gone.push_back(name); });
  for (const std::string& name : gone)
    fallbackConfig_->fallbackVrfDel(name);
  for (const std::string& name : gone) {
    routeStatus_->vrfStatusDel(name);
    vrfIds_.idDel(name);
  }
}

ActionState ForwardingAgent::stateOf(const VrfAction& action, std::uint32_t count) const {
  ActionState state;
  state.action = action;
  state.users = count;
  state.status = vrfHwStatus_->hwStatus(action);
  state.currentProgram = chip_->currentProgram(action);
  const SoftChip::VrfResource* const resource = chip_->resource(action);
  if (resource != nullptr) state.resource = *resource;
  return state;
}

}  // namespace ZelAgent
