#pragma once

#include <string>

namespace ZelVrfSelectionPolicy::Testing::Conformance {

/// The last line of a failure: the clause of the contract that is violated.
[[nodiscard]] inline std::string contract(const std::string& clause) {
  return "The contract of VrfHelper says: " + clause + ".";
}

/// Clauses that several tests check.
inline constexpr const char* freeResourcesAreAvailable =
    "a resource that is free can be had by the next action that is created";
inline constexpr const char* deletionFrees = "deleting an action frees all that it holds";

}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
