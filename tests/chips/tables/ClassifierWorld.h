// A rule list in plain memory, and packets that search it at once or step by step.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "chips/packet/PacketHeader.h"
#include "chips/tables/RuleList.h"
#include "chips/tables/layout/Classify.h"
#include "tests/chips/tables/PlainElements.h"

namespace ChipTables {

[[nodiscard]] ZelPacketFields fieldsOf(const Chips::PacketHeader& header);

// Sizes of the memory, and who looks at it.
struct ClassifierSizes {
  std::size_t sets = 4000;
  std::size_t elements = 4000;
};

class ClassifierWorld {
 public:
  // `look` is called after each store, and `wait` when a grace period is waited for.
  explicit ClassifierWorld(
      std::function<void()> look = [] {}, ClassifierSizes sizes = {},
      std::function<void()> wait = [] {});

  // The action of the first rule that the packet matches, 0 for none.
  [[nodiscard]] std::uint64_t actionFor(const ZelPacketFields& packet) const;
  [[nodiscard]] std::uint64_t epoch() const { return classifier->epoch; }

  std::unique_ptr<ZelClassifier> classifier = std::make_unique<ZelClassifier>();
  std::vector<ZelRule> rules = std::vector<ZelRule>(zelRules);
  std::vector<ZelRuleSet> setMemory;
  GraceClock clock;
  PlainElements elements;
  RuleSets sets;
  RuleList list;

  static constexpr std::uint32_t index = 7;
};

// A packet on its way: each step is one lookup or one step of the search.
class PacketOnItsWay {
 public:
  PacketOnItsWay(const ClassifierWorld& world, const ZelPacketFields& packet);

  // Returns whether it is at its end.
  bool step();
  [[nodiscard]] std::uint64_t epoch() const noexcept { return scan_.epoch; }
  // At its end: the action that it found.
  [[nodiscard]] std::uint64_t action() const noexcept { return scan_.action; }

 private:
  const ClassifierWorld* world_;
  ZelPacketFields packet_;
  ZelScan scan_{};
  std::uint32_t field_ = 0;
};

}  // namespace ChipTables
