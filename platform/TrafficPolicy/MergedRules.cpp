#include "TrafficPolicy/MergedRules.h"

namespace TrafficPolicy {
namespace {

constexpr std::size_t none = MergedRules::none;

// Connects the two entries of each rule that moves.
void linkMoves(const RuleListChange& change, MergedRules::Entries& entries) {
  std::vector<std::size_t> oldEntries(change.stays.size(), none);
  for (std::size_t at = 0; at < entries.size(); ++at) {
    if (entries[at].before != none) oldEntries[entries[at].before] = at;
  }
  for (std::size_t at = 0; at < entries.size(); ++at) {
    MergedRules::Entry& entry = entries[at];
    if (entry.before != none || change.from[entry.after] == none) continue;
    entry.other = oldEntries[change.from[entry.after]];
    entries[entry.other].other = at;
  }
}

}  // namespace

MergedRules::Layout MergedRules::layoutOf(const RuleListChange& change) {
  const std::size_t oldCount = change.stays.size();
  const std::size_t newCount = change.from.size();
  auto entries = std::make_shared<Entries>();
  std::size_t before = 0;
  std::size_t after = 0;
  // Adds the old rules up to `lastBefore`, then the new ones up to `lastAfter`.
  const auto addUpTo = [&](std::size_t lastBefore, std::size_t lastAfter) {
    for (; before < lastBefore; ++before)
      entries->push_back({before, none, none});
    for (; after < lastAfter; ++after)
      entries->push_back({none, after, none});
  };
  for (std::size_t at = 0; at < newCount; ++at) {
    const std::size_t from = change.from[at];
    if (from == none || !change.stays[from]) continue;
    addUpTo(from, at);
    entries->push_back({before++, after++, none});
  }
  addUpTo(oldCount, newCount);
  linkMoves(change, *entries);
  return entries;
}

MergedRules::MergedRules(Layout layout)
    : layout_(std::move(layout)), held_(size(), false), sums_(size() + 1) {
  for (std::size_t at = 0; at < size(); ++at) {
    if ((*this)[at].before != none) heldIs(at, true);
  }
}

void MergedRules::heldIs(std::size_t at, bool held) {
  if (held_[at] == held) return;
  held_[at] = held;
  if ((*this)[at].isOld()) held ? ++oldRules_ : --oldRules_;
  for (std::size_t node = at + 1; node < sums_.size(); node += node & (~node + 1))
    held ? ++sums_[node] : --sums_[node];
}

std::size_t MergedRules::place(std::size_t at) const {
  std::size_t count = 0;
  for (std::size_t node = at; node > 0; node &= node - 1)
    count += sums_[node];
  return count;
}

}  // namespace TrafficPolicy
