#include "chips/soft/routes/FamilyRoutes.h"

#include <algorithm>

namespace Chips {

FamilyRoutes::FamilyRoutes(Ip::Family family) {
  const std::size_t lengths = Ip::addressBits(family) + 1;
  lengths_.reserve(lengths);
  while (lengths_.size() < lengths)
    lengths_.emplace_back(&memory_);
}

bool FamilyRoutes::routeIs(const Ip::Prefix& prefix, const Route& route) {
  Length& length = lengths_[prefix.length];
  const auto [present, isNew] = length.routes.insert_or_assign(prefix.address, route);
  if (!isNew) return false;
  ++routes_;
  if (!length.exactMatch) longestPrefix_.valueIs(prefix, &present->second);
  return true;
}

bool FamilyRoutes::routeDel(const Ip::Prefix& prefix) {
  Length& length = lengths_[prefix.length];
  const auto present = length.routes.find(prefix.address);
  if (present == length.routes.end()) return false;
  if (!length.exactMatch) longestPrefix_.valueDel(prefix);
  length.routes.erase(present);
  --routes_;
  return true;
}

void FamilyRoutes::exactMatchLensIs(const std::vector<unsigned char>& lengths) {
  for (std::size_t at = 0; at < lengths_.size(); ++at) {
    const auto length = static_cast<std::uint8_t>(at);
    const bool exactMatch = std::find(lengths.begin(), lengths.end(), length) != lengths.end();
    if (lengths_[at].exactMatch != exactMatch) move(length, exactMatch);
  }
}

void FamilyRoutes::move(std::uint8_t length, bool toExactMatch) {
  lengths_[length].exactMatch = toExactMatch;
  for (const auto& [address, route] : lengths_[length].routes) {
    const Ip::Prefix prefix{address, length};
    if (toExactMatch) {
      longestPrefix_.valueDel(prefix);
    } else {
      longestPrefix_.valueIs(prefix, &route);
    }
  }
}

std::optional<RouteHit> FamilyRoutes::lookUp(
    const Ip::Address& address, const std::vector<unsigned char>& exactMatchLens) const {
  std::optional<RouteHit> exact = longestExactMatch(address, exactMatchLens);
  std::optional<RouteHit> covering = longestPrefix(address);
  if (!exact) return covering;
  if (!covering) return exact;
  return exact->prefix.length > covering->prefix.length ? exact : covering;
}

std::optional<RouteHit> FamilyRoutes::longestExactMatch(
    const Ip::Address& address, const std::vector<unsigned char>& lengths) const {
  std::optional<RouteHit> longest;
  for (const unsigned char length : lengths) {
    if (length >= lengths_.size() || !lengths_[length].exactMatch) continue;
    if (longest && longest->prefix.length >= length) continue;
    const Ip::Prefix prefix{Ip::firstBits(address, length), length};
    const auto found = lengths_[length].routes.find(prefix.address);
    if (found != lengths_[length].routes.end()) longest = RouteHit{prefix, &found->second, true};
  }
  return longest;
}

std::optional<RouteHit> FamilyRoutes::longestPrefix(const Ip::Address& address) const {
  const auto match = longestPrefix_.longestMatch(address);
  if (!match) return std::nullopt;
  return RouteHit{{Ip::firstBits(address, match->length), static_cast<std::uint8_t>(match->length)},
                  match->value,
                  false};
}

}  // namespace Chips
