#include "agent/model/forwarding/ForwardingAgent.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "agent/language/Limits.h"
#include "agent/model/calls/ObservedAclHelper.h"
#include "agent/model/forwarding/ConfigurationChange.h"
#include "agent/model/forwarding/Reprogrammer.h"
#include "agent/model/policies/UserCountingAclHelper.h"
#include "chips/choice/ChipChoice.h"

namespace ZelAgent {
namespace {

using Routing6RouteStatus = Routing6::Hardware::RouteStatus;
using RoutingRouteStatus = Routing::Hardware::RouteStatus;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;

// The users of each action among the rules that the chip holds.
ActionUsers usersOf(const RuleStates& rules) {
  ActionUsers users;
  for (const RuleState& rule : rules) {
    const auto action = vrfActionOf(rule.rule.action);
    if (rule.place && action) users[*action].insert(rule.user);
  }
  return users;
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
      chip_(Chips::makeChip(inputs(), {chip.capacity, chip.ruleCapacity})),
      ruleObserver_([this](const ChipCall& call) { observeRule(call); }),
      countingAcl_(Mox::makeActivePtr<UserCountingAclHelper>(
          Velo::String("userCounting"),
          Mox::makeActivePtr<ObservedAclHelper>(Velo::String("observed"), chip_->aclHelper(),
                                                ruleObserver_),
          vrfHwConfig_)),
      routes_(chip_->routes(), inputs(), chipObserver_),
      rules_(chip_->aclHelper(), policyStatus_),
      policySm_(ZelVrfSelectionPolicy::zelVrfSelectionPolicySmFactory(
          countingAcl_, mounts_, chip_->vrfHelper(), fallbackConfig_, routeStatus_,
          routeStatusV6_)) {
  countingAcl_->whenFullIs(chip.whenFull);
  mounts_->intfConfigIs(intfConfig_);
  mounts_->policyConfigIs(policyConfig_);
  mounts_->policyStatusIs(policyStatus_);
  mounts_->fieldSetConfigIs(fieldSetConfig_);
  policySm_->vrfSmIs(vrfHwConfig_, vrfHwStatus_, chip_->vrfHelper(), fallbackConfig_, routeStatus_,
                     routeStatusV6_);
  reprogrammer_ = std::make_unique<Reprogrammer>(chip_->vrfHelper(), inputs(), policySm_->vrfSm());
  bindPolicySm();
}

ForwardingAgent::~ForwardingAgent() = default;

void ForwardingAgent::apply(Configuration next) {
  completeChange();
  change_ = std::make_unique<Change>(*this, std::move(next));
  completeChange();
}

void ForwardingAgent::begin(Configuration next) {
  rules_.reached().begin();
  change_ = std::make_unique<Change>(*this, std::move(next));
}

void ForwardingAgent::step() {
  try {
    if (change_->step()) return;
  } catch (...) {
    std::exchange(change_, nullptr)->abandon();
    throw;
  }
  change_.reset();
}

void ForwardingAgent::completeChange() {
  while (isChanging())
    step();
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
    chip_->vrfHelper()->hookObserverIs(
        [this](const Chips::HookCall& call) { chipObserver_(call); });
  } else {
    chip_->vrfHelper()->hookObserverIs({});
  }
}

void ForwardingAgent::observeRule(const ChipCall& call) {
  rules_.reached().add(std::get<RuleCall>(call).intf);
  if (chipObserver_) chipObserver_(call);
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
  const Chips::ChipVrfHelper& vrfHelper = *chip_->vrfHelper();
  state.chip = {vrfHelper.capacity(), static_cast<std::uint32_t>(vrfHelper.resources().size()),
                vrfHelper.hookCounts()};
  const Chips::ChipAclHelper& acl = *chip_->aclHelper();
  state.ruleTable = {acl.capacity(), acl.rulesInUse(), acl.mostRulesInUse(), rules_.refused()};
  return state;
}

ActionUsers ForwardingAgent::users() const {
  return usersOf(rules());
}

RuleStates ForwardingAgent::rules() const {
  return rules_.rules();
}

RuleStates ForwardingAgent::rules(const std::string& intf) const {
  return rules_.rules(intf);
}

RuleStates ForwardingAgent::rules(const Velo::String& intf, RuleCursor& cursor,
                                  std::size_t most) const {
  return rules_.rules(intf, cursor, most);
}

RuleCounts ForwardingAgent::ruleCounts(const std::string& intf) const {
  return rules_.counts(intf);
}

void ForwardingAgent::retryRules() {
  policySm_->policySm()->retry();
  rules_.recordInForce(policySm_->policySm()->refusedIntfs());
}

void ForwardingAgent::ruleCapacityIs(std::uint32_t capacity) {
  chip_->aclHelper()->capacityIs(capacity);
  retryRules();
}

Chips::ProgramInputs ForwardingAgent::inputs() const {
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

ActionState ForwardingAgent::stateOf(const VrfAction& action, std::uint32_t count) const {
  ActionState state;
  state.action = action;
  state.users = count;
  state.status = vrfHwStatus_->hwStatus(action);
  state.currentProgram = chip_->vrfHelper()->currentProgram(action);
  const Chips::VrfResource* const resource = chip_->vrfHelper()->resource(action);
  if (resource != nullptr) state.resource = *resource;
  return state;
}

}  // namespace ZelAgent
