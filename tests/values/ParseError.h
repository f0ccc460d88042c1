#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "Mox/Exceptions.h"
#include "Mox/Strep.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Why `text` does not parse as a `Record`; empty when it does. Any exception but a
/// `Mox::RangeException`, one derived from it included, fails the test.
template <class Record>
[[nodiscard]] std::string parseError(const std::string& text) {
  try {
    static_cast<void>(Mox::strepToValue<Record>(text));
    return {};
  } catch (const std::exception& error) {
    EXPECT_EQ(typeid(error), typeid(Mox::RangeException)) << error.what();
    EXPECT_STRNE(error.what(), "");
    return error.what();
  }
}

}  // namespace ZelVrfSelectionPolicy::Testing
