#pragma once

#include <vector>

#include "Ip/Prefix.h"
#include "Mox/SharedValue.h"
#include "Velo/Export.h"

namespace Classification {

/// A set of addresses of one family: those in one of `prefixes` and in none of `excluded`. A set
/// without prefixes has no address.
struct ZEL_EXPORT PrefixSet {
  std::vector<Ip::Prefix> prefixes;
  std::vector<Ip::Prefix> excluded;

  [[nodiscard]] bool contains(const Ip::Address& address) const noexcept;
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const PrefixSet&) const = default;
};

/// A prefix set that the rules with it share.
using SharedPrefixSet = Mox::SharedValue<PrefixSet>;

}  // namespace Classification
