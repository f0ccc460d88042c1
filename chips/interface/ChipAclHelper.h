#pragma once

#include <cstddef>
#include <cstdint>

#include "PolicyMap/PolicyMapAclHelper.h"
#include "chips/interface/PacketCounter.h"

namespace Chips {

/// Classification hardware of limited size: it holds the rules of policies and counts the packets
/// of each.
///
/// There are never more rules than the capacity was when the last of them was added. A rule keeps
/// its counter when it is moved.
class ChipAclHelper : public PolicyMap::PolicyMapAclHelper {
 public:
  using PolicyMapAclHelper::PolicyMapAclHelper;

  /// The number of rules of all interfaces together that the chip has room for.
  [[nodiscard]] virtual std::uint32_t capacity() const = 0;
  /// A capacity below the number of rules removes none. It only admits no more.
  virtual void capacityIs(std::uint32_t capacity) = 0;
  [[nodiscard]] virtual std::size_t rulesInUse() const = 0;
  /// The highest number of rules that were in use at one time.
  [[nodiscard]] virtual std::size_t mostRulesInUse() const = 0;

  /// The packets that the rule at `place` has matched. Precondition: there is a rule.
  [[nodiscard]] virtual PacketCounter counter(const Velo::String& intf,
                                              std::size_t place) const = 0;
  /// All counters start again from 0.
  virtual void countersReset() = 0;
};

}  // namespace Chips
