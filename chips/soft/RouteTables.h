// Why: a chip looks destinations up in one table per VRF and family. Prefixes of lengths that a
// table has very many of it holds in exact match, one hash table per length, and all others in a
// longest-prefix structure.
// Always: a route is in exact match exactly while its length is one of the VRF's exact-match
// lengths; a lookup finds the longest prefix of those that are where it was told to look.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Ip/Prefix.h"
#include "chips/soft/routes/Route.h"

namespace SoftChip {

class FamilyRoutes;

class RouteTables final {
 public:
  RouteTables();
  RouteTables(const RouteTables&) = delete;
  RouteTables& operator=(const RouteTables&) = delete;
  ~RouteTables();

  // Adds a route, or replaces that of the same prefix. Precondition of all: `vrfId` is not 0, which
  // stands for a VRF that has no table yet.
  void routeIs(std::uint32_t vrfId, const Ip::Prefix& prefix, const Route& route);
  // True when there was one.
  bool routeDel(std::uint32_t vrfId, const Ip::Prefix& prefix);
  // From now on these lengths of the VRF are held in exact match, and no others. Lengths that the
  // family does not have are left out.
  void exactMatchLensIs(std::uint32_t vrfId, Ip::Family family,
                        const std::vector<unsigned char>& lengths);
  // Takes the VRF's routes and exact-match lengths away.
  void vrfDel(std::uint32_t vrfId);

  using Hit = RouteHit;

  // Probes exact match for the given lengths only, which are those that whoever looks up was
  // programmed with, and all of the longest-prefix structure; gives the longer hit. Routes of other
  // lengths that are in exact match are missed.
  [[nodiscard]] std::optional<Hit> lookUp(std::uint32_t vrfId, const Ip::Address& address,
                                          const std::vector<unsigned char>& exactMatchLens) const;

  // In all VRFs.
  [[nodiscard]] std::size_t routes() const noexcept { return routes_; }

 private:
  struct Vrf {
    std::unique_ptr<FamilyRoutes> v4;
    std::unique_ptr<FamilyRoutes> v6;
  };

  [[nodiscard]] FamilyRoutes& routesOf(std::uint32_t vrfId, Ip::Family family);
  [[nodiscard]] const FamilyRoutes* routesIn(std::uint32_t vrfId, Ip::Family family) const;

  std::unordered_map<std::uint32_t, Vrf> vrfs_;
  std::size_t routes_ = 0;
};

}  // namespace SoftChip
