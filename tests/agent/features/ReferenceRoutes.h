// The routes of VRFs as a list that is searched from front to back.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "agent/config/Configuration.h"

namespace ZelAgent {

enum class ReferenceWay : std::uint8_t { leaves, drops, decapsulates };

struct ReferenceRoute {
  IpPrefix prefix;
  ReferenceWay way = ReferenceWay::drops;
  std::string interface;  // by which a packet leaves
};

using ReferenceTable = std::vector<ReferenceRoute>;

[[nodiscard]] bool covers(const IpPrefix& prefix, const IpAddress& address);

// The routes of one VRF, as they are configured and as events have set them.
class ReferenceRoutes final {
 public:
  void configure(const std::vector<StaticRoute>& routes) { configured_ = routes; }
  void set(const ReferenceRoute& route);
  void takeBack(const IpPrefix& prefix);

  // Those that can be used.
  [[nodiscard]] ReferenceTable usable() const;

 private:
  using Passed = std::set<IpPrefix>;

  [[nodiscard]] std::vector<IpPrefix> prefixes() const;
  [[nodiscard]] std::optional<ReferenceRoute> resolve(const IpPrefix& prefix, Passed passed) const;
  [[nodiscard]] std::optional<ReferenceRoute> reach(const IpAddress& gateway, const IpPrefix& from,
                                                    const Passed& passed) const;

  std::vector<StaticRoute> configured_;
  ReferenceTable fromEvents_;
};

// The route of the longest prefix that covers the address. Of the lengths that the table holds in
// exact match only those are seen that were asked for.
[[nodiscard]] const ReferenceRoute* longestFor(const IpAddress& address,
                                               const ReferenceTable& table,
                                               const std::set<std::uint8_t>& inExactMatch,
                                               const std::set<std::uint8_t>& askedFor);

}  // namespace ZelAgent
