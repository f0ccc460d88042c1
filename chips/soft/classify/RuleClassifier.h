#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "chips/soft/classify/FamilyClassifier.h"

namespace Chips {

/// The rules of one interface, compiled, so that a packet is classified without a comparison with
/// each. It does not follow later changes of the rules.
class RuleClassifier final {
 public:
  explicit RuleClassifier(std::span<const PolicyMap::AclRule> rules)
      : v4_(rules, Ip::Family::v4), v6_(rules, Ip::Family::v6) {}

  /// The place of the first rule that matches.
  [[nodiscard]] std::optional<std::size_t> firstMatch(const PacketHeader& header) const {
    return (header.family == Ip::Family::v4 ? v4_ : v6_).firstMatch(header);
  }

 private:
  FamilyClassifier v4_;
  FamilyClassifier v6_;
};

}  // namespace Chips
