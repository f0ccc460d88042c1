// Rules and packets of few values, so that they match and overlap often.
#pragma once

#include <array>
#include <cstdint>
#include <random>

#include "PolicyMap/AclMatch.h"
#include "chips/packet/PacketHeader.h"

namespace ChipTables {

class RandomRules {
 public:
  explicit RandomRules(std::uint32_t seed) : random_(seed) {}

  [[nodiscard]] PolicyMap::AclMatch match();
  [[nodiscard]] Chips::PacketHeader packet();
  [[nodiscard]] std::uint32_t below(std::uint32_t bound) {
    return static_cast<std::uint32_t>(random_() % bound);
  }
  [[nodiscard]] bool oneIn(std::uint32_t count) { return below(count) == 0; }

 private:
  [[nodiscard]] Ip::Family family() { return oneIn(3) ? Ip::Family::v6 : Ip::Family::v4; }
  [[nodiscard]] Ip::Address address(Ip::Family family);
  [[nodiscard]] Ip::Prefix prefix(Ip::Family family);
  [[nodiscard]] Classification::PrefixSet prefixSet(Ip::Family family);
  [[nodiscard]] std::uint8_t byte();
  [[nodiscard]] std::uint16_t number();
  [[nodiscard]] std::vector<PolicyMap::NumberRange> ranges();
  void addUpperLayer(PolicyMap::AclMatch& match);

  std::mt19937 random_;
};

}  // namespace ChipTables
