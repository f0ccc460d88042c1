#pragma once

#include <cstdint>
#include <string>

namespace ZelVrfSelectionPolicy::Testing {

/// The seed of a randomised test. It is random in every run, unless the environment variable
/// `ZEL_TEST_SEED` sets it, to replay a run. It is printed at once, since a test may crash.
///
///     const RandomSeed seed;
///     SCOPED_TRACE(seed.replay());
///     std::mt19937 random(seed.value());
class RandomSeed {
 public:
  /// Throws `std::invalid_argument` if the variable is set to something else than a number of 32
  /// bits.
  RandomSeed();

  [[nodiscard]] std::uint32_t value() const noexcept { return value_; }
  /// The instruction to replay the test with the same seed.
  [[nodiscard]] std::string replay() const;

 private:
  std::uint32_t value_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
