#pragma once

#include <cstddef>

namespace ZelVrfSelectionPolicy::Testing {

/// How many rounds a randomised test runs: `usual`, which takes about a second, or as many per cent
/// of that as the environment variable `ZEL_TEST_PERCENT` says, at least one.
///
/// Throws `std::invalid_argument` when the variable is set, but not to a number from 1 to 1000000.
///
///     for (std::size_t round = 0; round < randomRounds(100); ++round) check(random);
[[nodiscard]] std::size_t randomRounds(std::size_t usual);

}  // namespace ZelVrfSelectionPolicy::Testing
