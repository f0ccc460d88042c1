#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "agent/model/routes/RoutingTable.h"
#include "chips/soft/VrfProgram.h"

namespace ZelAgent {

/// Programs the routes of VRFs into the chip.
///
/// Routes belong to VRFs by name. The chip keeps them by hardware VRF id, which may change or go
/// away at any time. After `program`, the table of each id holds exactly the routes of the VRFs
/// that have the id. If two VRFs share an id, the routes of the later name win. A VRF without an id
/// has no table.
class RouteProgrammer final {
 public:
  /// The chip must outlive this.
  RouteProgrammer(SoftChip::RouteTables& chip, SoftChip::ProgramInputs inputs)
      : chip_(chip), inputs_(std::move(inputs)) {}

  /// Sets the static routes of each VRF.
  void configuredIs(const Configuration& configuration);
  void routeIs(const std::string& vrf, const IpPrefix& prefix, const SoftChip::Route& route);
  /// Removes the route of an event. Returns whether there was one.
  bool routeDel(const std::string& vrf, const IpPrefix& prefix);
  /// Removes every route, also from the chip.
  void clear();

  /// Programs what is new or different. Removes nothing from the chip.
  void add();
  /// Makes the chip agree with the routes, the ids and the prefix lengths in exact match.
  void program();

 private:
  struct Vrf {
    RoutingTable routes;
    std::uint64_t version = 0;  // counts the changes of the routes
  };
  // The content of the table of an id. Equal contents give equal tables.
  struct Content {
    std::map<std::string, std::uint64_t> versions;  // of the VRFs that have the id
    std::vector<unsigned char> exactMatchLens;
    std::vector<unsigned char> exactMatchLensV6;

    bool operator==(const Content&) const = default;
  };
  struct Table {
    Content content;
    RoutingTable::Routes routes;
  };

  [[nodiscard]] std::map<std::uint32_t, Content> wantedContents() const;
  void addRoutes(std::uint32_t vrfId, Table& present, const Content& wanted);
  void removeOthers(std::uint32_t vrfId, Table& present, const Content& wanted);
  [[nodiscard]] RoutingTable::Routes routesOf(const Content& content) const;

  SoftChip::RouteTables& chip_;
  SoftChip::ProgramInputs inputs_;
  std::map<std::string, Vrf> vrfs_;
  std::map<std::uint32_t, Table> programmed_;
};

}  // namespace ZelAgent
