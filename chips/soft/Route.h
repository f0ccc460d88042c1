// Why: what becomes of a packet whose destination a route covers.
// Always: an interface is named exactly when the packet leaves by one.
#pragma once

#include <cstdint>
#include <string>

namespace SoftChip {

struct Route {
  enum class Kind : std::uint8_t { egress, drop, decap };

  Kind kind = Kind::drop;
  std::string intf;

  friend bool operator==(const Route&, const Route&) = default;
};

}  // namespace SoftChip
