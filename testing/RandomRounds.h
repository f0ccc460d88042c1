#pragma once

#include <cstddef>

namespace ZelVrfSelectionPolicy::Testing {

/// The number of rounds of a randomised test: `usual`, which should take about a second. The
/// environment variable `ZEL_TEST_PERCENT` scales it, in per cent. The result is at least 1.
///
/// Throws `std::invalid_argument` if the variable is set to something else than a number from 1 to
/// 1000000.
///
///     for (std::size_t round = 0; round < randomRounds(100); ++round) check(random);
[[nodiscard]] std::size_t randomRounds(std::size_t usual);

}  // namespace ZelVrfSelectionPolicy::Testing
