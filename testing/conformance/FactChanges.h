#pragma once

#include <functional>
#include <string>
#include <vector>

#include "testing/ChipUnderTest.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// One thing that can happen to what a chip reads, and how it is undone.
struct FactChange {
  std::string what;
  std::function<void(const ChipFacts&)> make;
  std::function<void(const ChipFacts&)> undo;
};

/// Changes of each kind of fact, of the VRFs that a bench begins with.
[[nodiscard]] const std::vector<FactChange>& factChanges();

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
