// Tests that need root and a kernel that takes the chip's program.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <system_error>

#include "tests/chips/kernel/TwoChips.h"

namespace KernelChip {

class KernelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) return skip("it needs root");
    try {
      chips_ = std::make_unique<TwoChips>();
    } catch (const std::system_error& error) {
      const int code = error.code().value();
      if (code != EPERM && code != ENOSYS && code != EOPNOTSUPP) throw;
      skip(error.what());
    }
  }
  [[nodiscard]] TwoChips& chips() { return *chips_; }

 private:
  // ctest counts the program as skipped by this line.
  static void skip(const std::string& reason) {
    std::cout << "not run: " << reason << '\n';
    GTEST_SKIP() << reason;
  }

  std::unique_ptr<TwoChips> chips_;
};

}  // namespace KernelChip
