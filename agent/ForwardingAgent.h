// Why: somebody must own what the library is given (tables, route status, fallback configuration,
// chip) and change it in an order that the library and the chip can follow.
// Always: the tables hold exactly what the configuration applied last needs; a change reaches the
// library as its differences, one user at a time, and an action that stays in use is never without
// users on the way.
#pragma once

#include <cstdint>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "agent/AgentState.h"
#include "agent/VrfActions.h"
#include "agent/VrfIds.h"
#include "agent/config/Configuration.h"
#include "chips/soft/SoftVrfHelper.h"

namespace ZelAgent {

class ForwardingAgent final {
 public:
  explicit ForwardingAgent(std::uint32_t chipCapacity);

  // Makes `next` the configuration in force. In order: hardware ids and fallback VRFs of the
  // instances of `next`; new users; users that are gone; what is left of instances that are gone.
  void apply(const Configuration& next);
  // Applies the configuration without anything in it.
  void removeAll() { apply({}); }

  [[nodiscard]] AgentState state() const;

  // The chip is open to those who wish it ill.
  [[nodiscard]] SoftChip::SoftVrfHelper& chip() noexcept { return *chip_; }

 private:
  void bringUpInstances(const Configuration& next);
  void raiseCounts(const ActionUsers& next);
  void lowerCounts(const ActionUsers& next);
  void takeDownInstances(const Configuration& next);
  [[nodiscard]] ActionState stateOf(const VrfAction& action, std::uint32_t users) const;

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbackConfig_;
  Mox::Ptr<Routing::Hardware::RouteStatus> routeStatus_;
  Mox::Ptr<Routing6::Hardware::RouteStatus> routeStatusV6_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> vrfHwConfig_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> vrfHwStatus_;
  Mox::Ptr<SoftChip::SoftVrfHelper> chip_;
  Mox::Ptr<ZelVrfSelectionPolicy::ZelVrfSelectionPolicySm> policySm_;
  VrfIds vrfIds_;
  ActionUsers users_;
};

}  // namespace ZelAgent
