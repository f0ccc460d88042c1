#include "Classification/FieldSetConfig.h"

#include "Mox/Hash.h"

namespace Classification {

unsigned PrefixSetName::hash(unsigned seed) const noexcept {
  Mox::Hash running(seed, static_cast<std::uint32_t>(family));
  running.hashMix(name.hash(seed));
  return running.result();
}

}  // namespace Classification
