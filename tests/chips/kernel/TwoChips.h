// The software chip and the program in the kernel with the same rules, resources and routes.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "chips/kernel/KernelPlane.h"
#include "chips/tables/Ipv4Trie.h"
#include "chips/tables/RuleList.h"
#include "tests/chips/soft/ForwardWorld.h"

namespace KernelChip {

// What became of an IP packet. `verdict` is the name of the drop reason, or "by" and the interface.
struct Outcome {
  std::string verdict;
  Chips::Bytes packet;

  friend bool operator==(const Outcome&, const Outcome&) = default;
};

class TwoChips {
 public:
  TwoChips();

  // Facts first, then routes and rules; all before the first packet.
  void routeIs(const std::string& vrf, const std::string& prefix, const std::string& to);
  void exactMatchLenIs(const std::string& vrf, Ip::Family family, std::uint8_t length);
  void ruleIs(const std::string& intf, const PolicyMap::AclRule& rule, bool hasResource);
  // `vlan` is the tag of frames that come in by the interface.
  void intfIs(const std::string& intf, std::uint16_t vlan, const std::string& vrf, bool isClosed);
  // Writes the programs of resources and interfaces to the kernel.
  void programsIs();

  [[nodiscard]] Outcome softOutcome(const std::string& intf, const Chips::Bytes& packet);
  [[nodiscard]] Outcome kernelOutcome(const std::string& intf, const Chips::Bytes& packet);

  // All counters that both chips have, as text.
  [[nodiscard]] std::string softCounters();
  [[nodiscard]] std::string kernelCounters();

  Chips::ForwardWorld soft;
  KernelPlane kernel;

 private:
  struct Intf {
    std::uint16_t vlan;
    std::string vrf;
    bool isClosed;
    std::uint32_t classifier;
    std::unique_ptr<ChipTables::RuleList> rules;
    std::vector<std::uint32_t> counters;  // of the rules, by place
  };

  [[nodiscard]] std::uint32_t idOf(const std::string& vrf) const;
  [[nodiscard]] std::uint32_t hopTo(const std::string& to);
  [[nodiscard]] std::uint32_t resourceOf(const PolicyMap::RuleAction& action);
  [[nodiscard]] std::uint32_t programIs(const Chips::VrfProgram& program);
  [[nodiscard]] std::uint32_t rootOf(std::uint32_t vrf);
  void routeIs(std::uint32_t vrf, const Ip::Prefix& prefix, std::uint32_t hop, bool isExact);
  [[nodiscard]] std::array<ZelCounter, zelReasons> reasons() const;
  [[nodiscard]] std::string reasonSince(const std::array<ZelCounter, zelReasons>& before) const;

  ChipTables::GraceClock clock_{[] {}};
  ChipTables::RuleSets sets_{kernel.ruleSets.values(), clock_};
  ChipTables::Ipv4Trie trie_{kernel.trieNodes.values(), clock_};
  std::map<std::string, Intf> intfs_;
  std::map<std::string, std::uint32_t> hops_;
  std::vector<std::string> egresses_{""};  // by next hop
  std::map<ZelVrfSelectionPolicy::VrfAction, std::uint32_t> resources_;
  std::map<std::tuple<std::string, Ip::Family, std::uint8_t>, bool> exactLengths_;
  std::uint32_t nextProgram_ = 1;
  std::uint32_t nextCounter_ = 1;
};

}  // namespace KernelChip
