// Tests that need root and a kernel that takes the chip's program. main.cpp says what is missing.
#pragma once

#include <gtest/gtest.h>

#include "tests/chips/kernel/TwoChips.h"

namespace KernelChip {

class KernelTest : public ::testing::Test {
 protected:
  [[nodiscard]] TwoChips& chips() { return chips_; }

 private:
  TwoChips chips_;
};

}  // namespace KernelChip
