// The reference for "an agent is as if it had been started fresh".
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "agent/commands/served/ServedAgent.h"

namespace ZelAgent {

// What an agent keeps from its past besides the configuration in force. It is computed from the
// configurations and events alone.
//
// Events set these, and configurations change them only as described:
//
//   flags of decapsulation   kept
//   prefix lengths           kept, also those of VRFs that are not configured
//   routes of events         kept, also those of VRFs that are not configured; they hide configured
//                            routes to the same prefix
//   capacity of the chip     kept
//   statuses and ids of VRFs kept while the VRF is configured, or not configured, before and after.
//                            A VRF that is new in a configuration gets a status with the lowest
//                            number that no configured VRF was given. A VRF that is gone loses its
//                            status and gives its number back after all new VRFs got one.
//   fallback VRFs            kept while the configured value stays the same. A changed value
//                            replaces that of an event; a value that is removed removes it. A VRF
//                            that is new without a fallback keeps that of an event. A VRF that is
//                            gone loses its fallback.
//
// Everything else comes from the configuration in force. An event or a file that is refused changes
// nothing.
class KeptFacts final {
 public:
  explicit KeptFacts(std::uint32_t chipCapacity) : chipCapacity_(chipCapacity) {}

  // Applies the configuration.
  void configurationIs(const Configuration& next);
  // Applies the event. Returns false if it must be refused. An `ApplyConfig` has no effect.
  [[nodiscard]] bool take(const Event& event);
  // Without a configuration, after `ForwardingAgent::removeAll`.
  void removeAll();

  [[nodiscard]] const Configuration& configuration() const { return configuration_; }

  [[nodiscard]] bool hasStatus(const std::string& vrf) const { return vrfIds_.contains(vrf); }

  // The facts, and the same read from an agent.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] static std::string textOf(ForwardingAgent& agent);

  // A new agent with the configuration in force and these facts. Actions are created when all facts
  // are present.
  [[nodiscard]] std::unique_ptr<ServedAgent> freshAgent() const;

 private:
  using LengthsKey = std::pair<IpFamily, std::string>;
  using RouteKey = std::pair<std::string, IpPrefix>;

  [[nodiscard]] bool isConfigured(const std::string& vrf) const;
  void bringUp(const NetworkInstance& instance);
  void takeDown(const std::string& vrf);
  [[nodiscard]] bool takeId(const std::string& vrf, std::uint32_t id);
  void playVrfs(ServedAgent& agent) const;
  void playFallbacks(ServedAgent& agent) const;

  Configuration configuration_;
  bool decapNh_ = false;
  bool decapNhFallback_ = false;
  std::map<LengthsKey, std::set<std::uint8_t>> prefixLens_;
  std::map<RouteKey, Event> routes_;
  std::uint32_t chipCapacity_;
  std::map<std::string, std::uint32_t> vrfIds_;    // of VRFs with a status
  std::map<std::string, std::uint32_t> givenIds_;  // by configurations
  std::map<std::string, std::string> fallbacks_;
};

}  // namespace ZelAgent
