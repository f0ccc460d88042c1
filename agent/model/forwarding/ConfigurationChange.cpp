#include "agent/model/forwarding/ConfigurationChange.h"

#include <utility>

#include "agent/model/forwarding/Reprogrammer.h"

namespace ZelAgent {
namespace {

// Adds a part that calls `remove` with each key of `before` that `after` does not have.
template <class Map, class Remove>
void addEachGone(ApplySteps& steps, const Map& before, const Map& after, Remove remove) {
  steps.addEach(before, [&after, remove](const auto& entry) {
    if (!after.contains(entry.first)) remove(entry.first);
  });
}

}  // namespace

ForwardingAgent::Change::Change(ForwardingAgent& agent, Configuration next)
    : agent_(agent), next_(std::move(next)) {
  addInstances();
  addRoutes();
  addInterfaces();
  addPolicies();
  addEndOfInstances();
  addEnd();
}

// The failure of the step is the one to report.
void ForwardingAgent::Change::abandon() noexcept {
  agent_.rules_.reached().end();
  if (arePoliciesSet_) agent_.rules_.policiesAre(std::move(policies_));
  try {
    policySm().hasNotificationActiveIs(true);
  } catch (...) {  // NOLINT(bugprone-empty-catch): as above
  }
}

void ForwardingAgent::Change::addInstances() {
  for (const NetworkInstance& instance : next_.networkInstances)
    instances_.emplace(instance.name, instance.fallback);
  steps_.addEach(next_.networkInstances, [this](const NetworkInstance& instance) {
    if (agent_.instances_.contains(instance.name)) return;
    agent_.routeStatus_->vrfStatusIs(instance.name)->vrfIdIs(agent_.vrfIds_.idIs(instance.name));
  });
}

void ForwardingAgent::Change::addRoutes() {
  steps_.addOne([this] { agent_.routes_.configuredIs(next_); });
  steps_.addOne([this] { agent_.routes_.add(); });
  steps_.addEach(next_.networkInstances,
                 [this](const NetworkInstance& instance) { changeFallback(instance); });
}

void ForwardingAgent::Change::changeFallback(const NetworkInstance& instance) {
  const auto before = agent_.instances_.find(instance.name);
  if (instance.fallback == (before == agent_.instances_.end() ? "" : before->second)) return;
  if (instance.fallback.empty()) {
    agent_.fallbackConfig_->fallbackVrfDel(instance.name);
  } else {
    agent_.fallbackConfig_->fallbackVrfIs(instance.name, instance.fallback);
  }
}

void ForwardingAgent::Change::addInterfaces() {
  for (const NetworkInstance& instance : next_.networkInstances) {
    for (const std::string& interface : instance.interfaces)
      interfaceVrfs_.emplace(interface, instance.name);
  }
  addEachGone(steps_, agent_.interfaceVrfs_, interfaceVrfs_,
              [this](const std::string& interface) { agent_.forwarder().intfVrfDel(interface); });
  steps_.addEach(interfaceVrfs_, [this](const auto& entry) {
    agent_.forwarder().intfVrfIs(entry.first, entry.second);
  });
  steps_.addOne([this] { agent_.interfaceVrfs_ = std::move(interfaceVrfs_); });
}

// The state machine is off while its configuration changes, so it programs no half of a change.
// Then its steps program the rules. Between two steps a packet has its old treatment or its new
// one, which may differ from interface to interface.
void ForwardingAgent::Change::addPolicies() {
  const PolicyObjects& before = agent_.rules_.policies();
  steps_.addOne([this] { policies_ = policyObjectsOf(next_); });
  steps_.addOne([this] { policySm().hasNotificationActiveIs(false); });
  steps_.addEach(policies_.prefixSets, [this](const auto& entry) {
    agent_.fieldSetConfig_->prefixSetIs(entry.first, entry.second);
  });
  steps_.addEach(policies_.classMaps, [this](const auto& entry) {
    agent_.classMapConfig_->classMapIs(entry.first, entry.second);
  });
  steps_.addEach(policies_.policyMaps, [this](const auto& entry) {
    agent_.policyConfig_->policyMapIs(entry.first, entry.second);
  });
  steps_.addEach(policies_.intfs, [this](const auto& entry) {
    agent_.intfConfig_->intfIs(entry.first, entry.second);
  });
  addEachGone(steps_, before.intfs, policies_.intfs,
              [this](const auto& intf) { agent_.intfConfig_->intfDel(intf); });
  addEachGone(steps_, before.policyMaps, policies_.policyMaps,
              [this](const auto& name) { agent_.policyConfig_->policyMapDel(name); });
  addEachGone(steps_, before.classMaps, policies_.classMaps,
              [this](const auto& name) { agent_.classMapConfig_->classMapDel(name); });
  addEachGone(steps_, before.prefixSets, policies_.prefixSets,
              [this](const auto& name) { agent_.fieldSetConfig_->prefixSetDel(name); });
  steps_.addOne([this] {
    arePoliciesSet_ = true;
    policySm().hasNotificationActiveInSteps();
  });
  steps_.add([this] { return programRules(); });
}

// The configuration comes into force with the last step, when the statuses are those of the new
// policies.
bool ForwardingAgent::Change::programRules() {
  if (policySm().step()) return true;
  takePolicies();
  agent_.configuration_ = std::move(next_);
  agent_.names_.reset();
  return false;
}

void ForwardingAgent::Change::takePolicies() {
  arePoliciesSet_ = false;
  agent_.rules_.reached().end();
  agent_.rules_.policiesAre(std::move(policies_));
  agent_.rules_.recordInForce(policySm().refusedIntfs());
}

void ForwardingAgent::Change::addEndOfInstances() {
  addEachGone(steps_, agent_.instances_, instances_,
              [this](const std::string& name) { agent_.fallbackConfig_->fallbackVrfDel(name); });
  addEachGone(steps_, agent_.instances_, instances_, [this](const std::string& name) {
    agent_.routeStatus_->vrfStatusDel(name);
    agent_.vrfIds_.idDel(name);
  });
}

void ForwardingAgent::Change::addEnd() {
  steps_.addOne([this] {
    agent_.instances_ = std::move(instances_);
    agent_.reprogrammer_->stepOfConfiguration();
  });
  steps_.addOne([this] { agent_.routes_.program(); });
}

TrafficPolicy::ZelTrafficPolicySm& ForwardingAgent::Change::policySm() const {
  return *agent_.policySm_->policySm();
}

}  // namespace ZelAgent
