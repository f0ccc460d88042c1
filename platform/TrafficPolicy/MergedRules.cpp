#include "TrafficPolicy/MergedRules.h"

namespace TrafficPolicy {

MergedRules::MergedRules(const RuleListChange& change) {
  const std::size_t oldCount = change.stays.size();
  const std::size_t newCount = change.from.size();
  std::size_t before = 0;
  std::size_t after = 0;
  // Adds the old rules up to `lastBefore`, then the new ones up to `lastAfter`.
  const auto addUpTo = [&](std::size_t lastBefore, std::size_t lastAfter) {
    for (; before < lastBefore; ++before)
      add({before, none, none});
    for (; after < lastAfter; ++after)
      add({none, after, none});
  };
  for (std::size_t at = 0; at < newCount; ++at) {
    const std::size_t from = change.from[at];
    if (from == none || !change.stays[from]) continue;
    addUpTo(from, at);
    add({before++, after++, none});
  }
  addUpTo(oldCount, newCount);
  linkMoves(change);
  sums_.resize(size() + 1);
  for (std::size_t at = 0; at < size(); ++at) {
    if (entries_[at].before != none) heldIs(at, true);
  }
}

void MergedRules::heldIs(std::size_t at, bool held) {
  if (held_[at] == held) return;
  held_[at] = held;
  for (std::size_t node = at + 1; node < sums_.size(); node += node & (~node + 1))
    held ? ++sums_[node] : --sums_[node];
}

std::size_t MergedRules::place(std::size_t at) const {
  std::size_t count = 0;
  for (std::size_t node = at; node > 0; node &= node - 1)
    count += sums_[node];
  return count;
}

void MergedRules::add(const Entry& entry) {
  entries_.push_back(entry);
  held_.push_back(false);
}

void MergedRules::linkMoves(const RuleListChange& change) {
  std::vector<std::size_t> oldEntries(change.stays.size(), none);
  for (std::size_t at = 0; at < size(); ++at) {
    if (entries_[at].before != none) oldEntries[entries_[at].before] = at;
  }
  for (std::size_t at = 0; at < size(); ++at) {
    Entry& entry = entries_[at];
    if (entry.before != none || change.from[entry.after] == none) continue;
    entry.other = oldEntries[change.from[entry.after]];
    entries_[entry.other].other = at;
  }
}

}  // namespace TrafficPolicy
