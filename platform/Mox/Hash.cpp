#include "Mox/Hash.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "Mox/QuotedString.h"

namespace Mox {
namespace {

constexpr const char* variable = "MOX_HASH_SEED";

// 0 when the environment sets none.
unsigned seedFromEnvironment() noexcept {
  const char* text = std::getenv(variable);
  if (text == nullptr) return 0;
  const std::string_view digits(text);
  unsigned seed = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), seed);
  if (error == std::errc() && end == digits.end() && seed != 0) return seed;
  std::fprintf(stderr, "%s is ignored: %s: expected a number from 1 to 4294967295\n", variable,
               quoted(digits).c_str());
  return 0;
}

}  // namespace

constinit unsigned HashHelper::seed_ = 0;

void HashHelper::drawSeed() noexcept {
  seed_ = seedFromEnvironment();
  std::random_device random;
  while (seed_ == 0)
    seed_ = random();
}

namespace {

// Chosen while the platform is loaded, before there is a second thread.
[[maybe_unused]] const unsigned drawnAtLoad = HashHelper::hashSeed32();

}  // namespace
}  // namespace Mox
