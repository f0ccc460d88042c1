#include "testing/RandomRounds.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

constexpr const char* variable = "ZEL_TEST_PERCENT";
constexpr std::size_t most = 1'000'000;

std::size_t percent() {
  const char* text = std::getenv(variable);
  if (text == nullptr) return 100;
  const std::string_view digits(text);
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text, text + digits.size(), number);
  if (error == std::errc() && end == text + digits.size() && number >= 1 && number <= most) {
    return number;
  }
  throw std::invalid_argument(std::string(variable) + " is '" + text +
                              "', expected a number from 1 to " + std::to_string(most));
}

}  // namespace

std::size_t randomRounds(std::size_t usual) {
  return std::max<std::size_t>(usual * percent() / 100, 1);
}

}  // namespace ZelVrfSelectionPolicy::Testing
