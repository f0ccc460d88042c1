#pragma once

#include <cstdint>
#include <string>

namespace ZelVrfSelectionPolicy::Testing {

/// The seed of a randomised test: drawn anew in every run, unless the environment variable
/// `ZEL_TEST_SEED` gives the one of a run that is to be replayed. It is printed, since a test that
/// dies has no other way to tell it.
///
///     const RandomSeed seed;
///     SCOPED_TRACE(seed.replay());
///     std::mt19937 random(seed.value());
class RandomSeed {
 public:
  /// Throws `std::invalid_argument` when the variable is set, but not to a number of 32 bits.
  RandomSeed();

  [[nodiscard]] std::uint32_t value() const noexcept { return value_; }
  /// How to run the same test with the same choices.
  [[nodiscard]] std::string replay() const;

 private:
  std::uint32_t value_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
