#include "agent/ForwardingAgent.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ZelAgent {
namespace {

using PolicyMap::PolicyMapAclHelper;
using Routing6RouteStatus = Routing6::Hardware::RouteStatus;
using RoutingRouteStatus = Routing::Hardware::RouteStatus;
using SoftChip::SoftVrfHelper;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;

const std::set<ActionUser>& usersIn(const ActionUsers& users, const VrfAction& action) {
  static const std::set<ActionUser> nobody;
  const auto found = users.find(action);
  return found == users.end() ? nobody : found->second;
}

// Calls `visit` with each action and user of `these` that `those` do not have.
template <class Visit>
void forEachMissing(const ActionUsers& these, const ActionUsers& those, Visit visit) {
  for (const auto& [action, users] : these) {
    const std::set<ActionUser>& others = usersIn(those, action);
    for (const ActionUser& user : users) {
      if (!others.contains(user)) visit(action);
    }
  }
}

}  // namespace

ForwardingAgent::ForwardingAgent(std::uint32_t chipCapacity)
    : fallbackConfig_(VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs()),
      routeStatus_(RoutingRouteStatus::RouteStatusIs()),
      routeStatusV6_(Routing6RouteStatus::RouteStatusIs()),
      vrfHwConfig_(ZelVrfSelectionPolicy::vrfHwConfigFactory()),
      vrfHwStatus_(ZelVrfSelectionPolicy::vrfHwStatusFactory()),
      chip_(Mox::makeActivePtr<SoftVrfHelper>(
          Velo::String("softChip"),
          SoftChip::ProgramInputs{fallbackConfig_, routeStatus_, routeStatusV6_}, chipCapacity)),
      policySm_(ZelVrfSelectionPolicy::zelVrfSelectionPolicySmFactory(
          PolicyMapAclHelper::PolicyMapAclHelperIs("softChip"),
          ZelVrfSelectionPolicy::policySmMountsFactory(), chip_, fallbackConfig_, routeStatus_,
          routeStatusV6_)) {
  policySm_->vrfSmIs(vrfHwConfig_, vrfHwStatus_, chip_, fallbackConfig_, routeStatus_,
                     routeStatusV6_);
}

void ForwardingAgent::apply(const Configuration& next) {
  FallbackByInstance instances;
  for (const NetworkInstance& instance : next.networkInstances)
    instances.emplace(instance.name, instance.fallback);
  ActionUsers users = usersOfActions(next);
  bringUpInstances(next);
  changeFallbacks(next);
  raiseCounts(users);
  lowerCounts(users);
  takeDownInstances(instances);
  users_ = std::move(users);
  instances_ = std::move(instances);
  configuration_ = next;
}

void ForwardingAgent::removeAll() {
  apply({});
  fallbackConfig_->fallbackVrfDelAll();
  routeStatus_->vrfStatusDelAll();
  routeStatus_->vrfPrefixLensInExactMatchDelAll();
  routeStatusV6_->vrfPrefixLensInExactMatchDelAll();
}

std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus> ForwardingAgent::statuses() const {
  std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus> statuses;
  const auto& present = vrfHwStatus_->hwStatus();
  for (auto entry = present.iterator(); entry; ++entry) {
    statuses.emplace(entry.key(), entry.value());
  }
  return statuses;
}

AgentState ForwardingAgent::state() const {
  AgentState state;
  const auto& counts = vrfHwConfig_->vrfRefCount();
  for (auto entry = counts.iterator(); entry; ++entry) {
    state.actions.push_back(stateOf(entry.key(), entry.value()));
  }
  std::sort(state.actions.begin(), state.actions.end(),
            [](const ActionState& a, const ActionState& b) { return a.action < b.action; });
  state.chip = {chip_->capacity(), static_cast<std::uint32_t>(chip_->resources().size()),
                chip_->hookCounts()};
  return state;
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

void ForwardingAgent::raiseCounts(const ActionUsers& next) {
  forEachMissing(next, users_,
                 [this](const VrfAction& action) { vrfHwConfig_->vrfRefCountInc(action, 1); });
}

void ForwardingAgent::lowerCounts(const ActionUsers& next) {
  forEachMissing(users_, next,
                 [this](const VrfAction& action) { vrfHwConfig_->vrfRefCountDec(action, 1); });
}

void ForwardingAgent::takeDownInstances(const FallbackByInstance& next) {
  std::vector<std::string> gone;
  for (const auto& [name, fallback] : instances_) {
    if (!next.contains(name)) gone.push_back(name);
  }
  for (const std::string& name : gone)
    fallbackConfig_->fallbackVrfDel(name);
  for (const std::string& name : gone) {
    routeStatus_->vrfStatusDel(name);
    vrfIds_.idDel(name);
  }
}

ActionState ForwardingAgent::stateOf(const VrfAction& action, std::uint32_t users) const {
  ActionState state;
  state.action = action;
  state.users = users;
  state.usedBy = usersIn(users_, action);
  state.status = vrfHwStatus_->hwStatus(action);
  state.currentProgram = chip_->currentProgram(action);
  const SoftChip::VrfResource* const resource = chip_->resource(action);
  if (resource != nullptr) state.resource = *resource;
  return state;
}

}  // namespace ZelAgent
