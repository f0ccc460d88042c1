// Why: routes belong to VRFs by name, and the chip keeps them by hardware VRF id, of which a VRF
// may get another, or none, at any time.
// Always: once everything is programmed, the table of each id holds exactly the routes of the VRFs
// that have it now; of two that share an id, the later name wins. A VRF without an id has no table.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "agent/model/routes/RoutingTable.h"
#include "chips/soft/VrfProgram.h"

namespace ZelAgent {

class RouteProgrammer final {
 public:
  // The chip outlives this.
  RouteProgrammer(SoftChip::RouteTables& chip, SoftChip::ProgramInputs inputs)
      : chip_(chip), inputs_(std::move(inputs)) {}

  // The static routes of each VRF.
  void configuredIs(const Configuration& configuration);
  void routeIs(const std::string& vrf, const IpPrefix& prefix, const SoftChip::Route& route);
  // Takes the route of an event back; whether there was one.
  bool routeDel(const std::string& vrf, const IpPrefix& prefix);
  // Forgets every route, and takes them off the chip.
  void clear();

  // Brings to the chip what is new or different, and takes nothing off it.
  void add();
  // Brings the chip in step with the routes, the ids, and the prefix lengths in exact match.
  void program();

 private:
  struct Vrf {
    RoutingTable routes;
    std::uint64_t version = 0;  // counts the changes of the routes
  };
  // What makes the table of an id: the same content makes the same table.
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
