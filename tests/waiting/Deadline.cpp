#include "tests/waiting/Deadline.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace Waiting {
namespace {

using std::chrono::ceil;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

#ifdef ZEL_TESTS_HAVE_SANITIZERS
constexpr int usualFactor = 6;
#else
constexpr int usualFactor = 1;
#endif
constexpr int largestFactor = 1000;
constexpr std::size_t longestShown = 500;

int factor() {
  const char* const wanted = std::getenv("ZEL_TEST_WAIT_FACTOR");
  if (wanted == nullptr) return usualFactor;
  const std::string_view text(wanted);
  int number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
  if (error != std::errc() || end != text.end() || number < 1 || number > largestFactor) {
    throw std::invalid_argument("ZEL_TEST_WAIT_FACTOR must be a number from 1 to 1000, not '" +
                                std::string(text) + "'");
  }
  return number;
}

std::string onOneLine(std::string_view text) {
  std::string line = text.size() > longestShown ? "..." : "";
  for (const char character : text.substr(text.size() - std::min(text.size(), longestShown))) {
    if (character == '\n') {
      line += "\\n";
    } else {
      line += character >= ' ' && character <= '~' ? character : '?';
    }
  }
  return line;
}

}  // namespace

Deadline::Deadline(milliseconds limit) : limit_(limit * factor()) {
  end_ = steady_clock::now() + limit_;
}

bool Deadline::hasPassed() const noexcept {
  return steady_clock::now() >= end_;
}

int Deadline::millisecondsLeft() const noexcept {
  const auto left = ceil<milliseconds>(end_ - steady_clock::now());
  return std::max(0, static_cast<int>(left.count()));
}

std::string Deadline::expiry(std::string_view awaited, std::string_view seen) const {
  std::array<char, 32> seconds{};
  std::snprintf(seconds.data(), seconds.size(), "%.2f", static_cast<double>(limit_.count()) / 1000);
  return "waited " + std::string(seconds.data()) + " s for " + std::string(awaited) +
         "; seen so far: '" + onOneLine(seen) + "'";
}

}  // namespace Waiting
