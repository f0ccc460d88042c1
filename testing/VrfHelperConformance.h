#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "testing/ChipUnderTest.h"

namespace ZelVrfSelectionPolicy::Testing {

namespace Conformance {
class Bench;
}

/// Tells the author of a chip whether its `VrfHelper` keeps the contract that stands at that class.
///
/// The tests are in the kit. One statement in a test of yours runs them on your chip:
///
///     INSTANTIATE_TEST_SUITE_P(MyChip, VrfHelperConformance,
///                              ::testing::Values(chipUnderTest<MyChipUnderTest>()));
///
/// Give it several chips to test several sizes or settings. The tests call the hooks themselves, in
/// the orders that the contract allows, and let the library's own `VrfSm` call them. They look at
/// what a chip reports and at what it holds, never at how it does it, and a failure quotes the
/// contract. How long hooks take is printed and recorded as properties of each test, and is never
/// the reason that one fails.
///
/// What the suite cannot see is whether packets go the right way.
class VrfHelperConformance : public ::testing::TestWithParam<ChipMaker> {
 protected:
  VrfHelperConformance();
  ~VrfHelperConformance() override;
  void SetUp() override;
  void TearDown() override;

  /// The chip of the running test.
  [[nodiscard]] Conformance::Bench& bench() const noexcept { return *bench_; }

 private:
  std::unique_ptr<Conformance::Bench> bench_;
};

}  // namespace ZelVrfSelectionPolicy::Testing
