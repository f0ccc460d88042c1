#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "chips/interface/FreeNumbers.h"

namespace ZelAgent {

/// The hardware ids of VRFs. A new id is the lowest free one from 1. A VRF keeps its id until it is
/// given back. No two VRFs have the same id.
class VrfIds final {
 public:
  /// The id of the VRF. A VRF without an id gets one.
  std::uint32_t idIs(const std::string& vrf) {
    const auto [entry, added] = ids_.try_emplace(vrf, 0);
    if (added) entry->second = numbers_.take();
    return entry->second;
  }

  /// Gives the id of the VRF back. Does nothing for a VRF without an id.
  void idDel(const std::string& vrf) {
    const auto entry = ids_.find(vrf);
    if (entry == ids_.end()) return;
    numbers_.giveBack(entry->second);
    ids_.erase(entry);
  }

  [[nodiscard]] const std::map<std::string, std::uint32_t>& ids() const noexcept { return ids_; }

 private:
  std::map<std::string, std::uint32_t> ids_;
  Chips::FreeNumbers numbers_;
};

}  // namespace ZelAgent
