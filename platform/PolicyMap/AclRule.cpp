#include "PolicyMap/AclRule.h"

namespace PolicyMap {

unsigned AclRule::hash(unsigned seed) const noexcept {
  Mox::Hash hash(seed, static_cast<std::uint32_t>(action.type));
  hash.hashMix(match.hash());
  hash.hashMix(action.vrfName.hash(seed));
  hash.hashMix(action.fallbackVrfName.hash(seed));
  hash.hashMix(action.postDecapVrfName.hash(seed));
  return hash.result();
}

}  // namespace PolicyMap
