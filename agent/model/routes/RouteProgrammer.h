#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "agent/model/calls/ChipCalls.h"
#include "agent/model/routes/RoutingTable.h"
#include "chips/interface/RouteTables.h"
#include "chips/programs/VrfProgram.h"

namespace ZelAgent {

/// Programs the routes of VRFs into the chip.
///
/// Routes belong to VRFs by name. The chip keeps them by hardware VRF id, which may change or go
/// away at any time. After `program`, the table of each id holds exactly the routes of the VRFs
/// that have the id. If two VRFs share an id, the routes of the later name win. A VRF without an id
/// has no table.
///
/// A change of one route costs no visit to the routes that it does not affect. A table is compared
/// as a whole only when its VRFs or its prefix lengths change.
class RouteProgrammer final {
 public:
  /// The chip and the observer must outlive this. The observer receives each change of a route.
  RouteProgrammer(Chips::RouteTables& chip, Chips::ProgramInputs inputs,
                  const ChipObserver& observer = noObserver())
      : chip_(chip), inputs_(std::move(inputs)), observer_(observer) {}

  /// Sets the static routes of each VRF.
  void configuredIs(const Configuration& configuration);
  void routeIs(const std::string& vrf, const IpPrefix& prefix, const Chips::Route& route);
  /// Removes the route of an event. Returns whether there was one.
  bool routeDel(const std::string& vrf, const IpPrefix& prefix);
  /// The prefixes of the routes of the VRF.
  [[nodiscard]] std::set<IpPrefix> prefixesOf(const std::string& vrf) const;
  /// Removes every route, also from the chip.
  void clear();

  /// The routes of each VRF that has or had any.
  [[nodiscard]] const std::map<std::string, RoutingTable>& tables() const noexcept { return vrfs_; }
  /// The hardware id of the VRF; 0 for none.
  [[nodiscard]] std::uint32_t vrfId(const std::string& vrf) const;
  /// The route that the chip holds. Null for none.
  [[nodiscard]] const Chips::Route* programmed(std::uint32_t vrfId, const IpPrefix& prefix) const;

  /// Programs what is new or different. Removes nothing from the chip.
  void add();
  /// Makes the chip agree with the routes, the ids and the prefix lengths in exact match.
  void program();

 private:
  [[nodiscard]] static const ChipObserver& noObserver();
  void observe(std::uint32_t vrfId, const IpPrefix& prefix, const Chips::Route* route) const;

  // What a table is made from, besides the routes of the VRFs.
  struct Content {
    std::vector<std::string> vrfs;  // that have the id, by name
    std::vector<unsigned char> exactMatchLens;
    std::vector<unsigned char> exactMatchLensV6;

    bool operator==(const Content&) const = default;
  };
  struct Table {
    Content content;
    RoutingTable::Routes routes;
  };

  [[nodiscard]] std::map<std::uint32_t, Content> wantedContents() const;
  // The prefixes at which the table may differ from what is wanted.
  [[nodiscard]] RoutingTable::Prefixes affected(const Table& present, const Content& wanted) const;
  void add(std::uint32_t vrfId, Table& present, const Content& wanted,
           const RoutingTable::Prefixes& prefixes);
  void removeOthers(std::uint32_t vrfId, Table& present, const Content& wanted,
                    const RoutingTable::Prefixes& prefixes);
  // The route of the table with this content. Null if there is none.
  [[nodiscard]] const Chips::Route* routeTo(const IpPrefix& prefix, const Content& content) const;

  Chips::RouteTables& chip_;
  Chips::ProgramInputs inputs_;
  const ChipObserver& observer_;
  std::map<std::string, RoutingTable> vrfs_;
  std::map<std::uint32_t, Table> programmed_;
};

}  // namespace ZelAgent
