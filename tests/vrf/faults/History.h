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

/// A history in which everything happens that the library follows or offers, some of it twice: in
/// an empty world, and in one where collections have to grow.
[[nodiscard]] const std::vector<Step>& history();

/// The part of it that concerns hooks only.
[[nodiscard]] std::vector<Step> historyOfHooks();

}  // namespace ZelVrfSelectionPolicy::Testing
