#include "chips/packet/EcnCombination.h"

namespace Chips {

std::optional<std::uint8_t> ecnAfterDecap(std::uint8_t inner, std::uint8_t outer) noexcept {
  if (inner == ecnNotEct) {
    if (outer == ecnCe) return std::nullopt;
    return ecnNotEct;
  }
  if (inner == ecnCe || outer == ecnCe) return ecnCe;
  // A tunnel that replaces ECT(0) by ECT(1) reports lesser congestion.
  return outer == ecnEct1 ? ecnEct1 : inner;
}

}  // namespace Chips
