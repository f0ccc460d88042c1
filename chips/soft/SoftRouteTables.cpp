#include "chips/soft/SoftRouteTables.h"

#include "chips/soft/routes/FamilyRoutes.h"

namespace Chips {

SoftRouteTables::SoftRouteTables() = default;

SoftRouteTables::~SoftRouteTables() = default;

void SoftRouteTables::routeIs(std::uint32_t vrfId, const Ip::Prefix& prefix, const Route& route) {
  if (routesOf(vrfId, prefix.address.family).routeIs(prefix, route)) ++routes_;
}

bool SoftRouteTables::routeDel(std::uint32_t vrfId, const Ip::Prefix& prefix) {
  if (routesIn(vrfId, prefix.address.family) == nullptr) return false;
  const bool deleted = routesOf(vrfId, prefix.address.family).routeDel(prefix);
  if (deleted) --routes_;
  return deleted;
}

void SoftRouteTables::exactMatchLensIs(std::uint32_t vrfId, Ip::Family family,
                                       const std::vector<unsigned char>& lengths) {
  routesOf(vrfId, family).exactMatchLensIs(lengths);
}

void SoftRouteTables::vrfDel(std::uint32_t vrfId) {
  for (const Ip::Family family : {Ip::Family::v4, Ip::Family::v6}) {
    const FamilyRoutes* const present = routesIn(vrfId, family);
    if (present != nullptr) routes_ -= present->routes();
  }
  vrfs_.erase(vrfId);
}

std::optional<RouteHit> SoftRouteTables::lookUp(
    std::uint32_t vrfId, const Ip::Address& address,
    const std::vector<unsigned char>& exactMatchLens) const {
  const FamilyRoutes* const present = routesIn(vrfId, address.family);
  if (present == nullptr) return std::nullopt;
  return present->lookUp(address, exactMatchLens);
}

FamilyRoutes& SoftRouteTables::routesOf(std::uint32_t vrfId, Ip::Family family) {
  Vrf& vrf = vrfs_[vrfId];
  std::unique_ptr<FamilyRoutes>& routes = family == Ip::Family::v4 ? vrf.v4 : vrf.v6;
  if (!routes) routes = std::make_unique<FamilyRoutes>(family);
  return *routes;
}

const FamilyRoutes* SoftRouteTables::routesIn(std::uint32_t vrfId, Ip::Family family) const {
  const auto vrf = vrfs_.find(vrfId);
  if (vrf == vrfs_.end()) return nullptr;
  return (family == Ip::Family::v4 ? vrf->second.v4 : vrf->second.v6).get();
}

}  // namespace Chips
