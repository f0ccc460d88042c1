#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "PolicyMap/AclMatch.h"
#include "chips/tables/GraceClock.h"
#include "chips/tables/RuleConditions.h"
#include "chips/tables/RuleElements.h"
#include "chips/tables/RuleFields.h"
#include "chips/tables/RuleNumbers.h"
#include "chips/tables/RuleSets.h"
#include "chips/tables/Stores.h"
#include "chips/tables/layout/Classifier.h"

namespace ChipTables {

/// Writes a list of rules that packets search, one change at a time.
///
/// A change is one step for packets, whatever it consists of. First the new rules are written under
/// numbers that no packet obeys. Then one store of the epoch puts them in force and replaced ones
/// out of force. A packet obeys the rules of the epoch that it began with. So the numbers of
/// replaced rules stay readable for a grace period, and are used again after a second one.
///
/// No call waits for a grace period, unless numbers or sets are used up.
class RuleList final {
 public:
  static constexpr std::size_t capacity = RuleNumbers::capacity;

  /// `classifier` is zero, and is the one with the number `index` in keys of elements. `rules` has
  /// `zelRules` rules, which are zero. All must outlive the list.
  RuleList(ZelClassifier& classifier, std::uint32_t index, std::span<ZelRule> rules, RuleSets& sets,
           RuleElements& elements, GraceClock& clock, Stores stores = Stores());
  RuleList(const RuleList&) = delete;
  RuleList& operator=(const RuleList&) = delete;
  ~RuleList() = default;

  /// Inserts a rule in front of the rule at `place`. Returns false if there is no room. Then
  /// nothing has changed. The action is not 0.
  [[nodiscard]] bool addRule(std::size_t place, const PolicyMap::AclMatch& match,
                             std::uint64_t action);
  void removeRule(std::size_t place);
  /// Moves the rule at `from` so that its place is `to` afterwards.
  void moveRule(std::size_t from, std::size_t to);
  void replaceRule(std::size_t place, std::uint64_t action);

  /// Removes the replaced rules that no packet obeys any more. Searches pass over them until then.
  /// Changes do the same first.
  void tidy();
  /// Whether there are such rules, so that waiting for a grace period and `tidy` are of use.
  [[nodiscard]] bool isTidy() const noexcept { return replaced_.empty() && removed_.empty(); }

  [[nodiscard]] std::size_t size() const noexcept { return list_.size(); }
  [[nodiscard]] std::uint64_t action(std::size_t place) const noexcept {
    return list_[place].action;
  }

 private:
  using Conditions = std::shared_ptr<const RuleConditions>;

  struct Rule {
    Conditions conditions;
    std::uint64_t action;
    std::uint32_t number;
  };
  struct Replaced {
    std::uint32_t number;
    Conditions conditions;
    std::uint64_t period;
  };
  struct Removed {
    std::uint32_t number;
    std::uint64_t period;
  };

  [[nodiscard]] bool insert(std::size_t place, Rule rule);
  [[nodiscard]] RuleNumbers::Plan planFor(std::size_t place);
  [[nodiscard]] bool write(const Rule& rule);
  void endsNext(const Rule& rule);
  void nextEpoch();
  void awaitAll();

  ZelClassifier& classifier_;
  std::span<ZelRule> rules_;
  GraceClock& clock_;
  Stores stores_;
  RuleFields fields_;
  RuleNumbers numbers_;
  std::vector<Rule> list_;         // by place
  std::deque<Replaced> replaced_;  // still readable, in the order of their periods
  std::deque<Removed> removed_;    // no longer in any set, in the order of their periods
};

}  // namespace ChipTables
