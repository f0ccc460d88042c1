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

/// The routes of all VRFs: one table for each VRF and family.
///
/// Prefixes of lengths that a table has very many of can be held in exact match, one hash table for
/// each length. All others are in a longest-prefix structure. A route is in exact match exactly
/// while its length is one of the VRF's exact-match lengths.
///
/// The VRF id 0 stands for a VRF without a table. It is a precondition of all functions that the id
/// is not 0.
class RouteTables final {
 public:
  RouteTables();
  RouteTables(const RouteTables&) = delete;
  RouteTables& operator=(const RouteTables&) = delete;
  ~RouteTables();

  /// Adds a route, or replaces that of the same prefix.
  void routeIs(std::uint32_t vrfId, const Ip::Prefix& prefix, const Route& route);
  /// Returns whether there was one.
  bool routeDel(std::uint32_t vrfId, const Ip::Prefix& prefix);
  /// From now on exactly these lengths of the VRF are in exact match. Lengths that the family does
  /// not have are ignored.
  void exactMatchLensIs(std::uint32_t vrfId, Ip::Family family,
                        const std::vector<unsigned char>& lengths);
  /// Removes the VRF's routes and exact-match lengths.
  void vrfDel(std::uint32_t vrfId);

  using Hit = RouteHit;

  /// The longest route for the address in the longest-prefix structure and, of exact match, in the
  /// given lengths only. These are the lengths that the caller was programmed with. Routes of other
  /// lengths in exact match are missed.
  [[nodiscard]] std::optional<Hit> lookUp(std::uint32_t vrfId, const Ip::Address& address,
                                          const std::vector<unsigned char>& exactMatchLens) const;

  /// The number of routes in all VRFs.
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
