// Why: the hardware knows VRFs by number, and numbers are few, so they are handed out densely.
// Always: a VRF keeps its id until it is given back; an id has one VRF; a new id is the lowest free
// one from 1.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace ZelAgent {

class VrfIds final {
 public:
  // The id of the VRF, taken now if it has none.
  std::uint32_t idIs(const std::string& vrf);
  // Gives the id of the VRF back; without one does nothing.
  void idDel(const std::string& vrf);

  [[nodiscard]] const std::map<std::string, std::uint32_t>& ids() const noexcept { return ids_; }

 private:
  std::map<std::string, std::uint32_t> ids_;
  std::set<std::uint32_t> freed_;  // all below next_
  std::uint32_t next_ = 1;
};

}  // namespace ZelAgent
