#include "testing/RandomSeed.h"

#include <charconv>
#include <cstdlib>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string_view>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

constexpr const char* variable = "ZEL_TEST_SEED";

std::uint32_t parse(std::string_view text) {
  std::uint32_t seed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw std::invalid_argument(std::string(variable) + " is '" + std::string(text) +
                                "', expected a number from 0 to 4294967295");
  }
  return seed;
}

std::uint32_t drawnOrReplayed() {
  const char* replayed = std::getenv(variable);
  return replayed == nullptr ? std::random_device()() : parse(replayed);
}

}  // namespace

RandomSeed::RandomSeed() : value_(drawnOrReplayed()) {
  std::cout << replay() << '\n' << std::flush;
}

std::string RandomSeed::replay() const {
  return std::string(variable) + "=" + std::to_string(value_) + " replays this run";
}

}  // namespace ZelVrfSelectionPolicy::Testing
