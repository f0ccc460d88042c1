#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <unordered_map>
#include <vector>

#include "chips/interface/Route.h"
#include "chips/soft/routes/AddressHash.h"
#include "chips/soft/routes/PrefixTrie.h"

namespace Chips {

/// The routes of one VRF and family: some lengths in exact match, the others in a longest-prefix
/// structure. A length can move from one to the other.
class FamilyRoutes final {
 public:
  explicit FamilyRoutes(Ip::Family family);

  /// Returns whether there was no route of the prefix.
  bool routeIs(const Ip::Prefix& prefix, const Route& route);
  /// Returns whether there was one.
  bool routeDel(const Ip::Prefix& prefix);
  void exactMatchLensIs(const std::vector<unsigned char>& lengths);
  /// Searches these lengths only of exact match.
  [[nodiscard]] std::optional<RouteHit> lookUp(
      const Ip::Address& address, const std::vector<unsigned char>& exactMatchLens) const;

  [[nodiscard]] std::size_t routes() const noexcept { return routes_; }

 private:
  struct Length {
    explicit Length(std::pmr::memory_resource* memory) : routes(memory) {}
    std::pmr::unordered_map<Ip::Address, Route, AddressHash> routes;
    bool exactMatch = false;
  };

  void move(std::uint8_t length, bool toExactMatch);
  [[nodiscard]] std::optional<RouteHit> longestExactMatch(
      const Ip::Address& address, const std::vector<unsigned char>& lengths) const;
  [[nodiscard]] std::optional<RouteHit> longestPrefix(const Ip::Address& address) const;

  // `lengths_` holds every route. `longestPrefix_` holds those that are not in exact match.
  // Routes have their own memory, so that what a lookup reads is close together.
  std::pmr::unsynchronized_pool_resource memory_;
  std::vector<Length> lengths_;
  PrefixTrie<const Route*> longestPrefix_;
  std::size_t routes_ = 0;
};

}  // namespace Chips
