#include "TrafficPolicy/RuleProgrammer.h"

#include <algorithm>

#include "TrafficPolicy/RuleListChange.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::PolicyMapAclHelper;
using Results = std::vector<AclResult>;

constexpr std::size_t none = RuleListChange::none;

// Carries a change out on the hardware, and keeps book of which old rule is where meanwhile.
class Change {
 public:
  Change(PolicyMapAclHelper& helper, const Velo::String& intf, std::span<const AclRule> wanted)
      : helper_(helper), intf_(intf), wanted_(wanted), results_(wanted.size()) {
    const PolicyMapAclHelper::Rules& present = helper.rules(intf);
    change_ = changeOfRules(present, wanted);
    list_.reserve(std::max(present.size(), wanted.size()));
    for (std::size_t at = 0; at < present.size(); ++at)
      list_.push_back(at);
    leaves_ = change_.stays;
    leaves_.flip();
  }

  void addAndMove() {
    std::size_t place = 0;
    for (std::size_t at = 0; at < wanted_.size(); ++at) {
      while (place < list_.size() && isLeaving(list_[place]))
        ++place;
      place = settle(at, place);
    }
  }

  // Whether there was anything to remove.
  bool removeTheRest() {
    bool removed = false;
    for (std::size_t place = list_.size(); place-- > 0;) {
      if (!isLeaving(list_[place])) continue;
      helper_.removeRule(intf_, place);
      removed = true;
    }
    return removed;
  }

  [[nodiscard]] bool isRefusal() const {
    return std::any_of(results_.begin(), results_.end(),
                       [](const AclResult& result) { return !result.accepted; });
  }
  [[nodiscard]] Results takeResults() { return std::move(results_); }

 private:
  // Sees to it that the wanted rule `at` is at `place`; gives the place after it.
  std::size_t settle(std::size_t at, std::size_t place) {
    const std::size_t from = change_.from[at];
    if (from == none) return add(at, place);
    return change_.stays[from] ? place + 1 : move(from, place);
  }

  std::size_t add(std::size_t at, std::size_t place) {
    results_[at] = helper_.addRule(intf_, place, wanted_[at]);
    if (!results_[at].accepted) return place;
    list_.insert(list_.begin() + static_cast<std::ptrdiff_t>(place), none);
    return place + 1;
  }

  std::size_t move(std::size_t old, std::size_t place) {
    const auto present = std::find(list_.begin(), list_.end(), old);
    const auto from = static_cast<std::size_t>(present - list_.begin());
    const std::size_t to = from < place ? place - 1 : place;
    leaves_[old] = false;
    if (from == to) return to + 1;
    helper_.moveRule(intf_, from, to);
    list_.erase(present);
    list_.insert(list_.begin() + static_cast<std::ptrdiff_t>(to), old);
    return to + 1;
  }

  // Whether the rule is an old one that has not got a place yet.
  [[nodiscard]] bool isLeaving(std::size_t old) const { return old != none && leaves_[old]; }

  PolicyMapAclHelper& helper_;
  const Velo::String& intf_;
  std::span<const AclRule> wanted_;
  RuleListChange change_;
  std::vector<std::size_t> list_;  // old places of the rules that the hardware holds now
  std::vector<bool> leaves_;       // by old place
  Results results_;
};

}  // namespace

Results programRules(PolicyMapAclHelper& helper, const Velo::String& intf,
                     std::span<const AclRule> wanted) {
  Change change(helper, intf, wanted);
  change.addAndMove();
  const bool removed = change.removeTheRest();
  if (removed && change.isRefusal()) return programRules(helper, intf, wanted);
  return change.takeResults();
}

}  // namespace TrafficPolicy
