#pragma once

#include <functional>
#include <string>
#include <vector>

#include "testing/ChipUnderTest.h"

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// A change of a fact that a chip reads, and its reversal.
struct FactChange {
  std::string what;
  std::function<void(const ChipFacts&)> make;
  std::function<void(const ChipFacts&)> undo;
};

/// Changes of each kind of fact, for the VRFs that a `Bench` has at the beginning.
[[nodiscard]] const std::vector<FactChange>& factChanges();

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
