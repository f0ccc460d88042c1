#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/reports/ReportPages.h"

namespace ZelAgent {

class ForwardingAgent;

/// An interface of the configuration: its VRF, its policies, and what the chip holds for it.
struct InterfaceState {
  std::string name;
  std::string vrf;
  std::string policyInstance;      // the network instance of its policies; empty without one
  std::string policyId;            // of VRF selection; empty for none
  std::string forwardingPolicyId;  // empty for none
  std::size_t programmed = 0;      // rules that the chip holds
  std::size_t refused = 0;         // rules of its policies that the chip does not hold
  bool isClosed = false;           // all its packets are dropped
};

/// The interfaces by name.
[[nodiscard]] std::vector<InterfaceState> interfaceStates(const ForwardingAgent& agent);

/// As JSON it is an array of {interface, vrfName, networkInstance, vrfSelectionPolicy,
/// forwardingPolicy, programmed, refused, closed}. The policies, and their network instance, are
/// null for none.
[[nodiscard]] ReportPagesPtr interfacePages(std::vector<InterfaceState> interfaces, bool asJson);

/// A policy of the configuration, and the interfaces to which it is applied.
struct PolicyState {
  std::string networkInstance;
  std::string policyId;
  PolicyType type = PolicyType::vrfSelection;
  std::size_t rules = 0;
  std::vector<std::string> interfaces;
};

/// The policies in the order of the configuration.
[[nodiscard]] std::vector<PolicyState> policyStates(const Configuration& configuration);

/// As JSON it is an array of {networkInstance, policy, type, rules, interfaces}; type is
/// "vrf-selection" or "forwarding". The table has the first interfaces and the number of the
/// others.
[[nodiscard]] ReportPagesPtr policyPages(std::vector<PolicyState> policies, bool asJson);

}  // namespace ZelAgent
