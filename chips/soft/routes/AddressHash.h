#pragma once

#include <cstddef>
#include <string_view>

#include "Ip/Prefix.h"
#include "Mox/Hash.h"

namespace Chips {

/// The hash of an address, by the seed of the process. Which addresses collide is therefore not
/// known outside the process.
struct AddressHash {
  unsigned seed = Mox::HashHelper::hashSeed32();

  [[nodiscard]] std::size_t operator()(const Ip::Address& address) const noexcept {
    const auto* const bytes = reinterpret_cast<const char*>(address.bytes.data());
    return Mox::hashSingleAttr(seed, {bytes, Ip::addressBits(address.family) / 8});
  }
};

}  // namespace Chips
