// A software chip with its rules, resources and routes, and the facts that they depend on, to send
// packets through.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "chips/soft/SoftForwarder.h"
#include "chips/soft/SoftVrfHelper.h"
#include "tests/chips/packet/TestPacket.h"

namespace Chips {

class ForwardWorld final {
 public:
  // Gives the VRF an id, the next one, or the given one.
  void vrfIs(const std::string& name);
  void vrfIdIs(const std::string& name, std::uint32_t id);
  void fallbackIs(const std::string& vrf, const std::string& fallback);
  // Says so to the facts and, unless only they are to know, to the tables.
  enum class Told : std::uint8_t { both, tablesOnly };
  void exactMatchLenIs(const std::string& vrf, std::uint8_t length, Told told = Told::both);
  void exactMatchLenV6Is(const std::string& vrf, std::uint8_t length);

  // "drop" and "decap" are routes of these kinds; anything else is an interface.
  void routeIs(const std::string& vrf, const std::string& prefix, const std::string& to);

  // Adds a rule at the end of the interface's; programs the resource of its action.
  void ruleIs(const std::string& intf, const PolicyMap::AclRule& rule);
  // The same without the resource.
  void ruleWithoutResourceIs(const std::string& intf, const PolicyMap::AclRule& rule);

  [[nodiscard]] Verdict forward(const Bytes& packet, const std::string& intf = "in");
  [[nodiscard]] Verdict explain(const Bytes& packet, PacketWay& way);
  // The same, shown.
  [[nodiscard]] std::string where(const TestPacket& packet, const std::string& intf = "in");
  [[nodiscard]] std::string where(const std::string& destination);

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<SoftVrfHelper> chip = Mox::makeActivePtr<SoftVrfHelper>(
      Velo::String("chip"), ProgramInputs{fallbacks, routes, routesV6}, 100U);
  Mox::Ptr<SoftAclHelper> acl = Mox::makeActivePtr<SoftAclHelper>(Velo::String("acl"), 1000U);
  SoftRouteTables tables;
  SoftForwarder forwarder{*acl, *chip, tables, {fallbacks, routes, routesV6}};

 private:
  [[nodiscard]] std::uint32_t idOf(const std::string& vrf) const;

  std::uint32_t nextId_ = 1;
};

[[nodiscard]] PolicyMap::RuleAction lookUpIn(const std::string& vrf);
[[nodiscard]] PolicyMap::RuleAction decapsulateIn(const std::string& vrf,
                                                  const std::string& fallback,
                                                  const std::string& postDecap);
[[nodiscard]] ZelVrfSelectionPolicy::VrfAction resourceOf(const PolicyMap::RuleAction& action);
// Matches all.
[[nodiscard]] PolicyMap::AclRule always(const PolicyMap::RuleAction& action);

// The interface by which the packet leaves, or the name of the reason of its drop.
[[nodiscard]] std::string shown(const Verdict& verdict);

}  // namespace Chips
