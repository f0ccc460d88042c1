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

TEST(Exceptions, AFalseMemberNamesItsSetAndIsAWrongArgument) {
  try {
    throw FalseMemberException("dependentVrfs");
  } catch (const ArgumentException& error) {
    EXPECT_STREQ(error.what(),
                 "a member of the set 'dependentVrfs' cannot be set to false, only deleted");
  }
}

TEST(Exceptions, AWrongArgumentIsTheStandardOne) {
  try {
    throw ArgumentException("colour: expected 1 argument, found 0");
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "colour: expected 1 argument, found 0");
  }
}

}  // namespace
}  // namespace Mox
