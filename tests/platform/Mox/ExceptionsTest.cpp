#include "Mox/Exceptions.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Mox {
namespace {

TEST(Exceptions, ARangeExceptionIsTheStandardRangeError) {
  try {
    throw RangeException("too long");
  } catch (const std::range_error& error) {
    EXPECT_STREQ(error.what(), "too long");
  }
}

TEST(Exceptions, ANullArgumentNamesItsAttribute) {
  try {
    throw NullArgumentException("vrfInstance");
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "null argument to the mutator of attribute 'vrfInstance'");
  }
}

}  // namespace
}  // namespace Mox
