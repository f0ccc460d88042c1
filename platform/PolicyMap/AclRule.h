#pragma once

#include "PolicyMap/ClassMatch.h"
#include "PolicyMap/RuleAction.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// A rule as classification hardware holds it. Its place in the list of its interface is not part
/// of it: rules are tried from the first on, and the first that matches decides.
struct ZEL_EXPORT AclRule {
  ClassMatch match;
  RuleAction action;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const AclRule&) const = default;
};

}  // namespace PolicyMap
