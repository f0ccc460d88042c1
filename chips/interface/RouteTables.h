#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Ip/Prefix.h"
#include "chips/interface/Route.h"

namespace Chips {

/// The routes of all VRFs in a chip: one table for each VRF and family.
///
/// Prefixes of lengths that a table has very many of can be held in exact match, one hash table for
/// each length. All others are in a longest-prefix structure. A route is in exact match exactly
/// while its length is one of the VRF's exact-match lengths. A lookup finds the longest route in
/// the longest-prefix structure and, of exact match, in the lengths that the program of the lookup
/// names. Routes of other lengths in exact match are missed.
///
/// The VRF id 0 stands for a VRF without a table. It is a precondition of all functions that the id
/// is not 0.
class RouteTables {
 public:
  virtual ~RouteTables() = default;

  /// Adds a route, or replaces that of the same prefix.
  virtual void routeIs(std::uint32_t vrfId, const Ip::Prefix& prefix, const Route& route) = 0;
  /// Returns whether there was one.
  virtual bool routeDel(std::uint32_t vrfId, const Ip::Prefix& prefix) = 0;
  /// From now on exactly these lengths of the VRF are in exact match. Lengths that the family does
  /// not have are ignored.
  virtual void exactMatchLensIs(std::uint32_t vrfId, Ip::Family family,
                                const std::vector<unsigned char>& lengths) = 0;
  /// Removes the VRF's routes and exact-match lengths.
  virtual void vrfDel(std::uint32_t vrfId) = 0;

  /// The longest route for the address in the longest-prefix structure and, of exact match, in the
  /// given lengths only.
  [[nodiscard]] virtual std::optional<RouteHit> lookUp(
      std::uint32_t vrfId, const Ip::Address& address,
      const std::vector<unsigned char>& exactMatchLens) const = 0;
  /// The number of routes in all VRFs.
  [[nodiscard]] virtual std::size_t routes() const = 0;

 protected:
  RouteTables() = default;
  RouteTables(const RouteTables&) = default;
  RouteTables& operator=(const RouteTables&) = default;
};

}  // namespace Chips
