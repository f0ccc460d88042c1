// Configurations of OpenConfig, built leaf by leaf where a test needs routes and matches.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "agent/config/Configuration.h"

namespace ZelAgent {

// The value of `ipv4` or `ipv6` of a rule, or of the config of its action.
using Leaves = nlohmann::json;

[[nodiscard]] Leaves toVrf(const std::string& vrf);
[[nodiscard]] Leaves toDecap(const std::string& decap, const std::string& fallback,
                             const std::string& postDecap);
[[nodiscard]] Leaves toDiscard();

// Rules match on `family`, which is "ipv4", "ipv6", or "" for every packet.
[[nodiscard]] nlohmann::json ruleOf(std::uint32_t sequenceId, const std::string& family,
                                    const Leaves& match, const Leaves& action);

class OpenConfigBuilder final {
 public:
  OpenConfigBuilder();  // only DEFAULT

  OpenConfigBuilder& vrf(const std::string& name, const std::string& fallback = {});
  OpenConfigBuilder& intf(const std::string& vrf, const std::string& interface);
  OpenConfigBuilder& route(const std::string& vrf, const std::string& prefix,
                           const std::string& interface);
  OpenConfigBuilder& gateway(const std::string& vrf, const std::string& prefix,
                             const std::string& address);
  OpenConfigBuilder& dropRoute(const std::string& vrf, const std::string& prefix);
  // A policy of the VRF, applied to these interfaces.
  OpenConfigBuilder& policy(const std::string& id, const std::vector<nlohmann::json>& rules,
                            const std::vector<std::string>& interfaces,
                            const std::string& vrf = "DEFAULT");

  [[nodiscard]] std::string text() const;
  // As the agent reads it.
  [[nodiscard]] Configuration configuration() const;

 private:
  nlohmann::json& instance(const std::string& vrf);
  void addRoute(const std::string& vrf, const std::string& prefix, nlohmann::json nextHop);

  nlohmann::json instances_ = nlohmann::json::array();
};

}  // namespace ZelAgent
