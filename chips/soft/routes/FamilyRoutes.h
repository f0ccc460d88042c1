// Why: the routes of one VRF and family, some lengths in exact match and the rest in a
// longest-prefix structure, with lengths that move from one to the other as the chip decides.
// Always: `lengths_` holds every route, by length; `longestPrefix_` holds those of the lengths that
// are not in exact match, and no others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <unordered_map>
#include <vector>

#include "chips/soft/routes/PrefixTrie.h"
#include "chips/soft/routes/Route.h"

namespace SoftChip {

class FamilyRoutes final {
 public:
  explicit FamilyRoutes(Ip::Family family);

  // True when there was none of the prefix.
  bool routeIs(const Ip::Prefix& prefix, const Route& route);
  // True when there was one.
  bool routeDel(const Ip::Prefix& prefix);
  void exactMatchLensIs(const std::vector<unsigned char>& lengths);
  // Probes exact match for these lengths only.
  [[nodiscard]] std::optional<RouteHit> lookUp(
      const Ip::Address& address, const std::vector<unsigned char>& exactMatchLens) const;

  [[nodiscard]] std::size_t routes() const noexcept { return routes_; }

 private:
  struct AddressHash {
    std::size_t operator()(const Ip::Address& address) const noexcept;
  };
  struct Length {
    explicit Length(std::pmr::memory_resource* memory) : routes(memory) {}
    std::pmr::unordered_map<Ip::Address, Route, AddressHash> routes;
    bool exactMatch = false;
  };

  void move(std::uint8_t length, bool toExactMatch);
  [[nodiscard]] std::optional<RouteHit> longestExactMatch(
      const Ip::Address& address, const std::vector<unsigned char>& lengths) const;
  [[nodiscard]] std::optional<RouteHit> longestPrefix(const Ip::Address& address) const;

  // Routes lie in memory of their own: among them, what lookups go by would be far apart.
  std::pmr::unsynchronized_pool_resource memory_;
  std::vector<Length> lengths_;
  PrefixTrie<const Route*> longestPrefix_;
  std::size_t routes_ = 0;
};

}  // namespace SoftChip
