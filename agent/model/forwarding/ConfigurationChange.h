#pragma once

#include "agent/model/forwarding/ApplySteps.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

/// The change of an agent to another configuration. The parts are in the order that
/// `ForwardingAgent::apply` describes.
class ForwardingAgent::Change final {
 public:
  /// Changes nothing yet. The agent must outlive this.
  Change(ForwardingAgent& agent, Configuration next);

  /// Makes the next step. Returns whether steps are left.
  bool step() { return steps_.step(); }
  /// To be called when a step has thrown. The agent keeps what the steps have done.
  void abandon() noexcept;

 private:
  void addInstances();
  void addRoutes();
  void addInterfaces();
  void addPolicies();
  void addEndOfInstances();
  void addEnd();

  void changeFallback(const NetworkInstance& instance);
  [[nodiscard]] bool programRules();
  void takePolicies();
  [[nodiscard]] TrafficPolicy::ZelTrafficPolicySm& policySm() const;

  ForwardingAgent& agent_;
  Configuration next_;
  FallbackByInstance instances_;
  VrfByInterface interfaceVrfs_;
  PolicyObjects policies_;
  bool arePoliciesSet_ = false;  // in the inputs of the state machine, and not taken yet
  ApplySteps steps_;
};

}  // namespace ZelAgent
