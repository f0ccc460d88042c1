#pragma once

#include "Mox/SharedValue.h"
#include "PolicyMap/AclMatch.h"
#include "PolicyMap/RuleAction.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// A rule of classification hardware. Its place in the list of its interface is not a part of it.
/// The rules of a list are tried in order, and the first that matches applies.
///
/// A copy shares the match, so it is cheap however many fields, ranges and prefixes that has.
struct ZEL_EXPORT AclRule {
  Mox::SharedValue<AclMatch> match;
  RuleAction action;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const AclRule&) const = default;
};

}  // namespace PolicyMap
