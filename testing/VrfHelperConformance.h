#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "testing/ChipUnderTest.h"

namespace ZelVrfSelectionPolicy::Testing {

namespace Conformance {
class Bench;
}

/// Tests whether the `VrfHelper` of a chip keeps the contract in the comment of that class.
///
/// One statement in a test program runs the tests on a chip:
///
///     INSTANTIATE_TEST_SUITE_P(MyChip, VrfHelperConformance,
///                              ::testing::Values(chipUnderTest<MyChipUnderTest>()));
///
/// Pass several chips to test several sizes or settings. The tests call the hooks in the orders
/// that the contract allows, directly and by the library's `VrfSm`. They check the outcomes and the
/// resources of a chip. A failure quotes the contract. The times of the hooks are printed and
/// recorded as properties of each test; no test fails because of them.
///
/// The suite does not test the forwarding of packets.
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
