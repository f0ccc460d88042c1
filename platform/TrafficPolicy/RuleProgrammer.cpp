#include "TrafficPolicy/RuleProgrammer.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "TrafficPolicy/MergedRules.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;
using PolicyMap::PolicyMapAclHelper;
using PolicyMap::WhenFull;

// The change of one list. Why each of its calls keeps the promise: let the rules held be the old
// list and some new rules, or the new list and some old rules, all in the order of `MergedRules`.
//
// While rules are added, the new ones held are the first ones of the new list. The first rule that
// matches a packet is then the first match of the old list or of the new one.
//
// While rules are removed, the old ones held are the first ones of the old list. The same holds.
//
// A rule behind an equal one never matches first. So a rule that moves up may leave its old place
// when it gets its new one, and one that moves down may get its new place when its old one goes.
//
// A rule behind one with the same match never matches first. So a rule may be replaced by one with
// the same match when that would be added in front of it.
class Change {
 public:
  // With `inPlace`, rules that stay get the wanted action.
  Change(PolicyMapAclHelper& helper, const RuleList& wanted, MergedRules::Layout layout,
         bool inPlace = false)
      : helper_(helper), wanted_(wanted), merged_(std::move(layout)), inPlace_(inPlace) {}

  // Adds the new rules. Returns the refusal of one, after the list is as before.
  AclResult add() {
    std::size_t at = 0;
    try {
      for (; at < merged_.size(); ++at) {
        AclResult result = addEntry(at);
        if (result.accepted) continue;
        undo(at);
        return result;
      }
    } catch (...) {
      undoAfterFailure(at);
      throw;
    }
    return {};
  }

  // Removes the old rules. Returns whether there was one.
  bool removeOldRules() {
    bool removed = false;
    for (std::size_t at = merged_.size(); at-- > 0;) {
      if (!merged_[at].isOld() || !merged_.isHeld(at)) continue;
      isDifferent_ = true;
      if (merged_[at].moves()) {
        move(at, merged_[at].other);
      } else {
        remove(at);
        removed = true;
      }
    }
    return removed;
  }

  // Whether old rules are left to be removed or moved.
  [[nodiscard]] bool hasOldRules() const noexcept { return merged_.hasOldRules(); }
  // Whether any call was needed.
  [[nodiscard]] bool isDifferent() const noexcept { return isDifferent_; }
  // How many rules were added. Those that were undone count.
  [[nodiscard]] std::size_t added() const noexcept { return added_; }

 private:
  struct Replaced {
    std::size_t at;
    AclRule rule;
  };

  AclResult addEntry(std::size_t at) {
    const MergedRules::Entry& entry = merged_[at];
    if (entry.isOld()) return {};
    if (entry.stays()) return inPlace_ ? replace(at) : AclResult();
    if (!entry.moves()) return addRule(at);
    if (entry.other > at) {
      isDifferent_ = true;
      move(entry.other, at);
    }
    return {};
  }

  AclResult addRule(std::size_t at) {
    isDifferent_ = true;
    AclResult result =
        helper_.addRule(wanted_.intf, merged_.place(at), (*wanted_.rules)[merged_[at].after]);
    if (!result.accepted) return result;
    merged_.heldIs(at, true);
    ++added_;
    return result;
  }

  AclResult replace(std::size_t at) {
    const std::size_t place = merged_.place(at);
    const AclRule& next = (*wanted_.rules)[merged_[at].after];
    const AclRule& present = helper_.rules(wanted_.intf)[place];
    if (present == next) return {};
    isDifferent_ = true;
    Replaced replaced{at, present};
    AclResult result = helper_.replaceRule(wanted_.intf, place, next);
    if (result.accepted) replaced_.push_back(std::move(replaced));
    return result;
  }

  void remove(std::size_t at) {
    helper_.removeRule(wanted_.intf, merged_.place(at));
    merged_.heldIs(at, false);
  }

  void move(std::size_t from, std::size_t to) {
    const std::size_t present = merged_.place(from);
    const std::size_t next = merged_.place(to) - (from < to ? 1 : 0);
    if (present != next) helper_.moveRule(wanted_.intf, present, next);
    merged_.heldIs(from, false);
    merged_.heldIs(to, true);
  }

  // Undoes the calls for the entries in front of `last`, in the opposite order.
  void undo(std::size_t last) {
    for (std::size_t at = last; at-- > 0;) {
      const MergedRules::Entry& entry = merged_[at];
      if (entry.stays()) {
        restore(at);
      } else if (!entry.isOld() && merged_.isHeld(at)) {
        entry.moves() ? move(at, entry.other) : remove(at);
      }
    }
  }

  void restore(std::size_t at) {
    if (replaced_.empty() || replaced_.back().at != at) return;
    // The hardware accepts the action that it had before.
    static_cast<void>(helper_.replaceRule(wanted_.intf, merged_.place(at), replaced_.back().rule));
    replaced_.pop_back();
  }

  void undoAfterFailure(std::size_t last) noexcept {
    try {
      undo(last);
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first failure is the one to report
    }
  }

  PolicyMapAclHelper& helper_;
  const RuleList& wanted_;
  MergedRules merged_;
  const bool inPlace_;
  std::vector<Replaced> replaced_;  // in the order of the entries
  std::size_t added_ = 0;
  bool isDifferent_ = false;
};

// An interface whose rules do not fit, and what is known from the last attempt.
struct Refused {
  RuleList* list;
  AclResult reason;
  std::size_t removals;  // so far
  std::size_t room;      // for rules, with those that other interfaces had added so far
};

std::size_t additionsOf(const RuleListChange& change) {
  const auto count = std::count(change.from.begin(), change.from.end(), RuleListChange::none);
  return static_cast<std::size_t>(count);
}

// The layouts of the changes that were computed last, one for each list of wanted rules. Interfaces
// with the same policy mostly have the same rules before the change, too.
class Layouts {
 public:
  // The layout of the change of `before` into the rules of the list.
  MergedRules::Layout of(const PolicyMapAclHelper::Rules& before, const RuleList& list) {
    Known& known = known_[list.rules.get()];
    if (!known.layout || known.before != before) {
      known.before = before;
      known.layout = MergedRules::layoutOf(changeOfRules(before, *list.rules));
    }
    return known.layout;
  }
  void clear() noexcept { known_.clear(); }

 private:
  struct Known {
    PolicyMapAclHelper::Rules before;
    MergedRules::Layout layout;
  };
  std::map<const std::vector<AclRule>*, Known> known_;
};

}  // namespace

class RuleProgramming::Steps final {
 public:
  Steps(PolicyMapAclHelper& helper, std::vector<RuleList>& lists) : helper_(helper), lists_(lists) {
    accepted_.reserve(lists.size());
  }

  bool step() {
    if (begun_ < lists_.size()) {
      begin(lists_[begun_++]);
      return true;
    }
    if (completed_ < accepted_.size()) {
      completeNext();
      return true;
    }
    return retryNext() || leaveNext();
  }

  [[nodiscard]] RuleChanges changes() const noexcept { return {isDifferent_, removals_ > 0}; }

 private:
  struct Accepted {
    RuleList* list;
    std::optional<Change> change;  // none if no old rules are left
  };

  void begin(RuleList& list) {
    list.result = {};
    const PolicyMapAclHelper::Rules& before = helper_.rules(list.intf);
    if (before == *list.rules) {
      accepted_.push_back({&list, std::nullopt});
      return;
    }
    Change change(helper_, list, layouts_.of(before, list));
    AclResult result = change.add();
    isDifferent_ |= change.isDifferent();
    if (!result.accepted) {
      refused_.push_back({&list, std::move(result), removals_, added_ + change.added()});
      return;
    }
    added_ += change.added();
    accepted_.push_back({&list, std::nullopt});
    if (change.hasOldRules()) accepted_.back().change.emplace(std::move(change));
  }

  void completeNext() {
    Accepted& next = accepted_[completed_++];
    complete(*next.list, next.change);
    next.change.reset();
    layouts_.clear();
  }

  // Completes what `add` began. Then the rules are those of the list.
  void complete(const RuleList& list, std::optional<Change>& change) {
    if (helper_.intfClosed(list.intf)) {
      isDifferent_ = true;
      helper_.intfClosedIs(list.intf, false);
    }
    if (!change) return;
    if (change->removeOldRules()) ++removals_;
    isDifferent_ |= change->isDifferent();
  }

  // Returns whether there was an interface to try again.
  bool retryNext() {
    if (!isInRound_ && !startRound()) return false;
    Refused& next = refused_[retried_];
    if ((rounds_ == 1 || next.removals != removals_) && tryAgain(next)) {
      refused_.erase(refused_.begin() + static_cast<std::ptrdiff_t>(retried_));
    } else {
      ++retried_;
    }
    isInRound_ = retried_ < refused_.size();
    return true;
  }

  // A round tries each refused interface. Another one follows if there may be room now that was not
  // there before.
  bool startRound() {
    if (refused_.empty() || (rounds_ > 0 && removals_ == removalsBeforeRound_)) return false;
    ++rounds_;
    removalsBeforeRound_ = removals_;
    retried_ = 0;
    isInRound_ = true;
    return true;
  }

  // Tries by additions if there may be more room than before. Then it tries with actions replaced
  // in place, if there is room for the rest. To replace actions and then undo that would do harm:
  // the rules in force would lose their counters, and their actions may lose their resources.
  bool tryAgain(Refused& refused) {
    RuleList& list = *refused.list;
    if (refused.removals != removals_) {
      refused.removals = removals_;
      if (succeeds(refused, changeOfRules(helper_.rules(list.intf), *list.rules), false))
        return true;
    }
    const RuleListChange inPlace = changeOfRulesInPlace(helper_.rules(list.intf), *list.rules);
    return added_ + additionsOf(inPlace) <= refused.room && hasReplacement(inPlace, list) &&
           succeeds(refused, inPlace, true);
  }

  bool succeeds(Refused& refused, const RuleListChange& steps, bool inPlace) {
    std::optional<Change> change(std::in_place, helper_, *refused.list,
                                 MergedRules::layoutOf(steps), inPlace);
    AclResult result = change->add();
    if (!result.accepted) {
      refused.reason = std::move(result);
      refused.room = added_ + change->added();
      return false;
    }
    added_ += change->added();
    complete(*refused.list, change);
    return true;
  }

  [[nodiscard]] bool hasReplacement(const RuleListChange& change, const RuleList& list) const {
    const PolicyMapAclHelper::Rules& present = helper_.rules(list.intf);
    for (std::size_t at = 0; at < list.rules->size(); ++at) {
      const std::size_t from = change.from[at];
      if (from != RuleListChange::none && change.stays[from] && present[from] != (*list.rules)[at])
        return true;
    }
    return false;
  }

  // Returns whether there was a refused interface.
  bool leaveNext() {
    if (left_ == refused_.size()) return false;
    leave(refused_[left_++]);
    return true;
  }

  // The rules do not fit. What is held stays.
  void leave(const Refused& refused) {
    RuleList& list = *refused.list;
    std::string outcome = "the previous rules stay in force";
    if (helper_.rules(list.intf).empty()) {
      const bool closed = helper_.whenFull() == WhenFull::closed;
      if (helper_.intfClosed(list.intf) != closed) helper_.intfClosedIs(list.intf, closed);
      outcome = closed ? "all packets of the interface are dropped"
                       : "the interface has no rules in force";
    }
    list.result = {false, refused.reason.reason.str() + "; " + outcome};
  }

  PolicyMapAclHelper& helper_;
  std::vector<RuleList>& lists_;
  std::size_t begun_ = 0;  // of lists_
  Layouts layouts_;
  std::vector<Accepted> accepted_;
  std::size_t completed_ = 0;  // of accepted_
  std::vector<Refused> refused_;
  std::size_t rounds_ = 0;
  bool isInRound_ = false;
  std::size_t retried_ = 0;  // of refused_, in this round
  std::size_t removalsBeforeRound_ = 0;
  std::size_t left_ = 0;      // of refused_
  std::size_t removals_ = 0;  // interfaces on which rules were removed
  std::size_t added_ = 0;     // rules of accepted lists
  bool isDifferent_ = false;
};

RuleProgramming::RuleProgramming(PolicyMapAclHelper& helper, std::vector<RuleList>& lists)
    : steps_(std::make_unique<Steps>(helper, lists)) {}

RuleProgramming::~RuleProgramming() = default;

bool RuleProgramming::step() {
  return steps_->step();
}

RuleChanges RuleProgramming::changes() const noexcept {
  return steps_->changes();
}

RuleChanges programRules(PolicyMapAclHelper& helper, std::vector<RuleList>& lists) {
  RuleProgramming programming(helper, lists);
  while (programming.step()) {
  }
  return programming.changes();
}

}  // namespace TrafficPolicy
