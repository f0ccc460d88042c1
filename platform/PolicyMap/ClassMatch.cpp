#include "PolicyMap/ClassMatch.h"

namespace PolicyMap {

unsigned ClassMatch::hash(unsigned seed) const noexcept {
  Mox::Hash running(seed, HeaderMatch::hash(seed));
  running.hashMix(sourceSet.hash(seed));
  running.hashMix(destinationSet.hash(seed));
  return running.result();
}

}  // namespace PolicyMap
