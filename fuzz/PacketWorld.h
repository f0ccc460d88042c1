// A software chip with rules, resources, routes and facts about VRFs. It begins as the same small
// network. The input may change it. Facts may change without an update of the chip, so resources
// may be stale.
#pragma once

#include <array>
#include <string>

#include "chips/soft/SoftForwarder.h"
#include "chips/soft/SoftVrfHelper.h"
#include "fuzz/FuzzedBytes.h"

namespace Fuzz {

class PacketWorld final {
 public:
  PacketWorld();

  // Makes one change, which it reads from the front of the input.
  void change(FuzzedBytes& input);

  // The interfaces by which packets arrive.
  static const std::array<std::string, 2>& intfs();

  [[nodiscard]] Chips::Forwarder& forwarder() noexcept { return forwarder_; }
  // How many packets matched a rule of the interface.
  [[nodiscard]] std::uint64_t packetsByRules(const std::string& intf) const;

 private:
  void ruleIs(FuzzedBytes& input);
  void routeIs(FuzzedBytes& input);
  void lengthsAre(FuzzedBytes& input);
  void addRule(const std::string& intf, const PolicyMap::AclRule& rule);
  void routeIs(const L3::VrfName& vrf, const Ip::Prefix& prefix, const Chips::Route& route);
  // Makes the chip program the action's resource by the current facts.
  void program(const PolicyMap::RuleAction& action);

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks_;
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_;
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6_;
  Mox::Ptr<Chips::SoftVrfHelper> chip_;
  Mox::Ptr<Chips::SoftAclHelper> acl_;
  Chips::SoftRouteTables tables_;
  Chips::SoftForwarder forwarder_;
};

}  // namespace Fuzz
