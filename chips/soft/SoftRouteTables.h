#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Ip/Prefix.h"
#include "chips/interface/RouteTables.h"

namespace Chips {

class FamilyRoutes;

/// The routes of a chip in software.
class SoftRouteTables final : public RouteTables {
 public:
  SoftRouteTables();
  SoftRouteTables(const SoftRouteTables&) = delete;
  SoftRouteTables& operator=(const SoftRouteTables&) = delete;
  ~SoftRouteTables() override;

  void routeIs(std::uint32_t vrfId, const Ip::Prefix& prefix, const Route& route) override;
  bool routeDel(std::uint32_t vrfId, const Ip::Prefix& prefix) override;
  void exactMatchLensIs(std::uint32_t vrfId, Ip::Family family,
                        const std::vector<unsigned char>& lengths) override;
  void vrfDel(std::uint32_t vrfId) override;
  [[nodiscard]] std::optional<RouteHit> lookUp(
      std::uint32_t vrfId, const Ip::Address& address,
      const std::vector<unsigned char>& exactMatchLens) const override;
  [[nodiscard]] std::size_t routes() const override { return routes_; }

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

}  // namespace Chips
