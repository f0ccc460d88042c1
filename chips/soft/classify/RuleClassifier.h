// Why: the rules of one interface, compiled so that a packet is classified without trying them one
// by one.
// Always: answers by the rules as they were when it was made.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "chips/soft/classify/FamilyClassifier.h"

namespace SoftChip {

class RuleClassifier final {
 public:
  explicit RuleClassifier(std::span<const PolicyMap::AclRule> rules)
      : v4_(rules, Ip::Family::v4), v6_(rules, Ip::Family::v6) {}

  // The place of the first rule that matches.
  [[nodiscard]] std::optional<std::size_t> firstMatch(const PacketHeader& header) const {
    return (header.family == Ip::Family::v4 ? v4_ : v6_).firstMatch(header);
  }

 private:
  FamilyClassifier v4_;
  FamilyClassifier v6_;
};

}  // namespace SoftChip
