// Runs the tests of the chip in the kernel, or says why this machine cannot.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <string>
#include <system_error>

#include "tests/chips/kernel/TwoChips.h"

namespace {

constexpr int notRun = 77;  // ctest counts the program as skipped

// Empty if the kernel takes the program from this process.
std::string missing() {
  if (geteuid() != 0) return "it needs root";
  try {
    const KernelChip::TwoChips chips;
    return {};
  } catch (const std::system_error& error) {
    const int code = error.code().value();
    if (code == EPERM || code == ENOSYS || code == EOPNOTSUPP) return error.what();
    throw;
  }
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (const std::string reason = missing(); !reason.empty()) {
    std::cout << "not run: " << reason << '\n';
    return notRun;
  }
  return RUN_ALL_TESTS();
}
