#include "Mox/Hash.h"

#include <random>

namespace Mox {

unsigned HashHelper::hashSeed32() noexcept {
  static const unsigned seed = std::random_device{}();
  return seed;
}

}  // namespace Mox
