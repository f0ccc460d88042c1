// Why: somebody must own what the library is given (tables, route status, fallback configuration,
// chip) and change it in an order that the library and the chip can follow.
// Always: the users counted are exactly those that the configuration applied last needs; a change
// of configuration reaches the library as its differences, one user at a time, and an action that
// stays in use is never without users on the way. What a configuration does not change stays as it
// is, also where somebody else has changed it meanwhile.
#pragma once

#include <cstdint>
#include <map>
#include <string>

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

  // Makes `next` the configuration in force. In order: statuses and hardware ids of instances that
  // are new, and fallback VRFs that are new or changed; new users; users that are gone; the
  // fallback VRFs and statuses of instances that are gone.
  void apply(const Configuration& next);
  // Applies the configuration without anything in it, then removes every other VRF status, fallback
  // VRF and prefix length.
  void removeAll();

  // The configuration in force.
  [[nodiscard]] const Configuration& configuration() const noexcept { return configuration_; }
  [[nodiscard]] AgentState state() const;
  [[nodiscard]] std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus> statuses() const;

  // The facts that the hardware reports and others configure are open to those who play these.
  [[nodiscard]] Routing::Hardware::RouteStatus& routeStatus() noexcept { return *routeStatus_; }
  [[nodiscard]] Routing6::Hardware::RouteStatus& routeStatusV6() noexcept {
    return *routeStatusV6_;
  }
  [[nodiscard]] VrfSelectionPolicy::VrfSelectionFallbackVrf& fallbackConfig() noexcept {
    return *fallbackConfig_;
  }

  // The chip is open to those who wish it ill.
  [[nodiscard]] SoftChip::SoftVrfHelper& chip() noexcept { return *chip_; }

 private:
  // The fallback VRF of each configured instance; empty where it has none.
  using FallbackByInstance = std::map<std::string, std::string>;

  void bringUpInstances(const Configuration& next);
  void changeFallbacks(const Configuration& next);
  void raiseCounts(const ActionUsers& next);
  void lowerCounts(const ActionUsers& next);
  void takeDownInstances(const FallbackByInstance& next);
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
  FallbackByInstance instances_;
  Configuration configuration_;
};

}  // namespace ZelAgent
