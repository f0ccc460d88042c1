#include "TrafficPolicy/RuleListChange.h"

#include <algorithm>

#include "Mox/HashMap2018.h"

namespace TrafficPolicy {
namespace {

using PolicyMap::AclRule;
using Places = std::vector<std::size_t>;

constexpr std::size_t none = RuleListChange::none;

// Limit of comparisons for a rule that the other list has many times.
constexpr std::size_t maxPairsPerRule = 64;

// The places of a rule in the old list, and how often it was found in the new list.
struct Occurrences {
  Places places;
  std::size_t met = 0;
};
using OccurrencesByRule = Mox::HashMap2018<AclRule, Occurrences, 0x64c9b03f>;

// A rule of the old list that equals one of the new list, and the previous pair of the best
// subsequence.
struct Pair {
  std::size_t before;
  std::size_t after;
  std::size_t previous;
};

// The part of two lists between their equal beginnings and ends.
struct Middle {
  std::size_t first = 0;
  std::size_t lastBefore = 0;
  std::size_t lastAfter = 0;
};

Middle middleOf(std::span<const AclRule> before, std::span<const AclRule> after) {
  const auto [differs, other] =
      std::mismatch(before.begin(), before.end(), after.begin(), after.end());
  Middle middle{static_cast<std::size_t>(differs - before.begin()), before.size(), after.size()};
  while (middle.lastBefore > middle.first && middle.lastAfter > middle.first &&
         before[middle.lastBefore - 1] == after[middle.lastAfter - 1]) {
    --middle.lastBefore;
    --middle.lastAfter;
  }
  return middle;
}

// The longest common subsequence by the method of Hunt and Szymanski: `ends[n]` is the pair with
// the lowest old place by which a common subsequence of n + 1 rules can end.
class LongestCommon {
 public:
  // Call it with new places ascending and, for each of them, with old places descending, so that
  // one new place is in a subsequence at most once.
  void consider(std::size_t before, std::size_t after) {
    const auto end = std::lower_bound(
        ends_.begin(), ends_.end(), before,
        [this](std::size_t pair, std::size_t place) { return pairs_[pair].before < place; });
    const std::size_t previous = end == ends_.begin() ? none : *(end - 1);
    pairs_.push_back({before, after, previous});
    if (end == ends_.end()) {
      ends_.push_back(pairs_.size() - 1);
    } else {
      *end = pairs_.size() - 1;
    }
  }

  template <class Visit>
  void visit(Visit use) const {
    std::size_t at = ends_.empty() ? none : ends_.back();
    for (; at != none; at = pairs_[at].previous)
      use(pairs_[at]);
  }

 private:
  std::vector<Pair> pairs_;
  std::vector<std::size_t> ends_;
};

void keep(RuleListChange& change, std::size_t before, std::size_t after) {
  change.from[after] = before;
  change.stays[before] = true;
}

void keepLongestCommon(std::span<const AclRule> after, const Middle& middle, OccurrencesByRule& old,
                       RuleListChange& change) {
  LongestCommon common;
  for (std::size_t at = middle.first; at < middle.lastAfter; ++at) {
    Occurrences* const equal = old.find(after[at]);
    if (equal == nullptr) continue;
    const std::size_t count = equal->places.size();
    const std::size_t last = std::min(equal->met++ + maxPairsPerRule / 2, count);
    const std::size_t first = last - std::min(last, maxPairsPerRule);
    for (std::size_t occurrence = last; occurrence > first; --occurrence)
      common.consider(equal->places[occurrence - 1], at);
  }
  common.visit([&](const Pair& pair) { keep(change, pair.before, pair.after); });
}

void moveOthers(std::span<const AclRule> after, const Middle& middle, OccurrencesByRule& old,
                RuleListChange& change) {
  for (std::size_t at = middle.first; at < middle.lastAfter; ++at) {
    if (change.from[at] != none) continue;
    Occurrences* const equal = old.find(after[at]);
    if (equal == nullptr) continue;
    Places& places = equal->places;
    while (!places.empty() && change.stays[places.back()])
      places.pop_back();
    if (places.empty()) continue;
    change.from[at] = places.back();
    places.pop_back();
  }
}

std::vector<AclRule> withoutActions(std::span<const AclRule> rules) {
  std::vector<AclRule> matches(rules.begin(), rules.end());
  for (AclRule& rule : matches)
    rule.action = {};
  return matches;
}

}  // namespace

RuleListChange changeOfRules(std::span<const AclRule> before, std::span<const AclRule> after) {
  RuleListChange change{Places(after.size(), none), std::vector<bool>(before.size(), false)};
  const Middle middle = middleOf(before, after);
  for (std::size_t at = 0; at < middle.first; ++at)
    keep(change, at, at);
  for (std::size_t at = middle.lastBefore; at < before.size(); ++at)
    keep(change, at, at - middle.lastBefore + middle.lastAfter);

  OccurrencesByRule old;
  for (std::size_t at = middle.first; at < middle.lastBefore; ++at)
    old.value(old.insert(before[at]).first).places.push_back(at);
  keepLongestCommon(after, middle, old, change);
  moveOthers(after, middle, old, change);
  return change;
}

RuleListChange changeOfRulesInPlace(std::span<const AclRule> before,
                                    std::span<const AclRule> after) {
  RuleListChange change = changeOfRules(withoutActions(before), withoutActions(after));
  for (std::size_t at = 0; at < after.size(); ++at) {
    std::size_t& from = change.from[at];
    if (from != none && !change.stays[from] && before[from] != after[at]) from = none;
  }
  return change;
}

}  // namespace TrafficPolicy
