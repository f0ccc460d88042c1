#pragma once

#include <optional>

#include "Classification/PrefixSet.h"
#include "PolicyMap/HeaderMatch.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// What classification hardware matches: the fields of a packet, and the prefixes of the sets that
/// its addresses must be in. An absent set matches any address.
struct ZEL_EXPORT AclMatch : HeaderMatch {
  std::optional<Classification::SharedPrefixSet> sourceSet;
  std::optional<Classification::SharedPrefixSet> destinationSet;
  /// Whether ports and TCP flags are not compared for fragments that are not the first. Otherwise
  /// such a fragment matches no port and no TCP flags.
  bool matchesLaterFragments = false;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const AclMatch&) const = default;
};

}  // namespace PolicyMap
