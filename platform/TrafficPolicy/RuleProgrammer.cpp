#include "TrafficPolicy/RuleProgrammer.h"

#include <algorithm>
#include <numeric>

#include "TrafficPolicy/RuleListChange.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::PolicyMapAclHelper;
constexpr std::size_t none = RuleListChange::none;

// Programs the change of one list, and records the places of the old rules during it.
class Change {
 public:
  Change(PolicyMapAclHelper& helper, RuleList& wanted) : helper_(helper), wanted_(wanted) {
    const PolicyMapAclHelper::Rules& present = helper.rules(wanted.intf);
    change_ = changeOfRules(present, wanted.rules);
    list_.resize(present.size());
    std::iota(list_.begin(), list_.end(), std::size_t{0});
    unplaced_ = change_.stays;
    unplaced_.flip();
    wanted_.results.assign(wanted.rules.size(), {});
  }

  // Returns whether a rule was added or moved.
  bool addAndMove() {
    std::size_t place = 0;
    for (std::size_t at = 0; at < wanted_.rules.size(); ++at) {
      while (place < list_.size() && isUnplaced(list_[place]))
        ++place;
      place = programRule(at, place);
    }
    return isDifferent_;
  }

  // Returns whether a rule was removed.
  bool removeOldRules() {
    bool removed = false;
    for (std::size_t place = list_.size(); place-- > 0;) {
      if (!isUnplaced(list_[place])) continue;
      helper_.removeRule(wanted_.intf, place);
      removed = true;
    }
    return removed;
  }

 private:
  // Programs the wanted rule `at` at `place`. Returns the next place.
  std::size_t programRule(std::size_t at, std::size_t place) {
    const std::size_t from = change_.from[at];
    if (from != none && change_.stays[from]) return place + 1;
    isDifferent_ = true;
    return from == none ? add(at, place) : move(from, place);
  }

  std::size_t add(std::size_t at, std::size_t place) {
    AclResult& result = wanted_.results[at];
    result = helper_.addRule(wanted_.intf, place, wanted_.rules[at]);
    if (!result.accepted) return place;
    list_.insert(list_.begin() + static_cast<std::ptrdiff_t>(place), none);
    return place + 1;
  }

  std::size_t move(std::size_t old, std::size_t place) {
    const auto present = std::find(list_.begin(), list_.end(), old);
    const auto from = static_cast<std::size_t>(present - list_.begin());
    const std::size_t to = from < place ? place - 1 : place;
    unplaced_[old] = false;
    if (from != to) helper_.moveRule(wanted_.intf, from, to);
    list_.erase(present);
    list_.insert(list_.begin() + static_cast<std::ptrdiff_t>(to), old);
    return to + 1;
  }

  // Whether the rule is an old one that has no new place yet.
  [[nodiscard]] bool isUnplaced(std::size_t old) const { return old != none && unplaced_[old]; }

  PolicyMapAclHelper& helper_;
  RuleList& wanted_;
  RuleListChange change_;
  std::vector<std::size_t> list_;  // old places of the rules that the hardware holds now
  std::vector<bool> unplaced_;     // by old place
  bool isDifferent_ = false;
};

bool isRefused(const AclResult& result) {
  return !result.accepted;
}

bool hasRefusal(const RuleList& list) {
  return std::any_of(list.results.begin(), list.results.end(), isRefused);
}

}  // namespace

bool programRules(PolicyMapAclHelper& helper, std::vector<RuleList>& lists) {
  std::vector<Change> changes;
  changes.reserve(lists.size());
  for (RuleList& list : lists)
    changes.emplace_back(helper, list);
  bool different = false;
  for (Change& change : changes)
    different |= change.addAndMove();
  bool removed = false;
  for (Change& change : changes)
    removed |= change.removeOldRules();
  if (removed) {
    for (RuleList& list : lists) {
      if (hasRefusal(list)) Change(helper, list).addAndMove();
    }
  }
  return different || removed;
}

}  // namespace TrafficPolicy
