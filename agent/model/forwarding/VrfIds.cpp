#include "agent/model/forwarding/VrfIds.h"

namespace ZelAgent {

std::uint32_t VrfIds::idIs(const std::string& vrf) {
  const auto [entry, added] = ids_.try_emplace(vrf, 0);
  if (added) {
    entry->second = freed_.empty() ? next_++ : freed_.extract(freed_.begin()).value();
  }
  return entry->second;
}

void VrfIds::idDel(const std::string& vrf) {
  const auto entry = ids_.find(vrf);
  if (entry == ids_.end()) return;
  freed_.insert(entry->second);
  ids_.erase(entry);
}

}  // namespace ZelAgent
