#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/vrf/faults/World.h"

namespace ZelVrfSelectionPolicy::Testing {

/// What the table of statuses has to hold, by nothing but what the hooks returned.
class Statuses {
 public:
  void follow(const std::vector<FactsChip::Call>& calls);
  /// How the table differs; empty when it does not.
  [[nodiscard]] std::string differenceFrom(const VrfHwStatus& table) const;

 private:
  std::map<std::string, HwStatus> byAction_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
