#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/vrf/faults/World.h"

namespace ZelVrfSelectionPolicy::Testing {

/// One thing that an agent does.
struct Step {
  std::string name;
  std::function<void(World&)> work;
  /// It calls the machine itself. If the chip throws, nobody remembers that but the caller, who has
  /// to call again.
  bool isRequest = false;
};

/// A history that calls hooks in every way, also of two machines that follow the same.
[[nodiscard]] std::vector<Step> historyOfHooks();

}  // namespace ZelVrfSelectionPolicy::Testing
