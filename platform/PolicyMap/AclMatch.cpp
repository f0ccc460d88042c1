#include "PolicyMap/AclMatch.h"

namespace PolicyMap {
namespace {

std::uint32_t hashOf(const std::optional<Classification::SharedPrefixSet>& set) noexcept {
  return set ? set->hash() : 0xffffffff;
}

}  // namespace

unsigned AclMatch::hash(unsigned seed) const noexcept {
  Mox::Hash running(seed, HeaderMatch::hash(seed));
  running.hashMix(hashOf(sourceSet));
  running.hashMix(hashOf(destinationSet));
  running.hashMix(matchesLaterFragments ? 1 : 0);
  return running.result();
}

}  // namespace PolicyMap
