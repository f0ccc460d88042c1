#pragma once

#include "Mox/SharedValue.h"
#include "PolicyMap/HeaderMatch.h"
#include "Velo/Export.h"
#include "Velo/String.h"

namespace PolicyMap {

/// What a class map matches: the fields of a packet, and named prefix sets of the family. A packet
/// must match the fields and be in the sets. An empty name matches any address.
///
/// Precondition: without a family there is no other field.
struct ZEL_EXPORT ClassMatch : HeaderMatch {
  Velo::String sourceSet;
  Velo::String destinationSet;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const ClassMatch&) const = default;
};

/// A match that the class map and its readers share.
using SharedClassMatch = Mox::SharedValue<ClassMatch>;

}  // namespace PolicyMap
