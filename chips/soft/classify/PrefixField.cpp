#include "chips/soft/classify/PrefixField.h"

#include <algorithm>
#include <compare>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Chips {
namespace {

using Classification::SharedPrefixSet;
using Members = RuleSets::Members;
using Groups = std::vector<std::uint32_t>;  // ascending

struct SetHash {
  std::size_t operator()(const SharedPrefixSet& set) const noexcept { return set.hash(); }
};

// A prefix of the set that the rules of a group have.
struct Use {
  Ip::Prefix prefix;
  bool isExcluded;
  std::uint32_t group;

  auto operator<=>(const Use&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

// A prefix that covers the current one.
struct Open {
  Ip::Prefix prefix;
  RuleSet set;
  Groups excluded;
};

bool has(const Groups& groups, std::uint32_t group) {
  return std::binary_search(groups.begin(), groups.end(), group);
}

// Computes the set of each prefix. Prefixes come in an order in which each is after all prefixes
// that cover it.
class Sweep {
 public:
  Sweep(RuleSets& sets, RuleSet any, const std::vector<Members>& members)
      : sets_(sets), any_(any), members_(members) {}

  // The set of a prefix that the groups name in this way.
  RuleSet setOf(const Ip::Prefix& prefix, Groups included, Groups excluded) {
    while (!open_.empty() && !open_.back().prefix.contains(prefix.address))
      open_.pop_back();
    std::erase_if(included, [&](std::uint32_t group) {
      return has(excluded, group) || isExcludedAbove(group);
    });
    const RuleSet set = changed(open_.empty() ? any_ : open_.back().set, included, excluded);
    open_.push_back({prefix, set, std::move(excluded)});
    return set;
  }

 private:
  [[nodiscard]] bool isExcludedAbove(std::uint32_t group) const {
    return std::any_of(open_.begin(), open_.end(),
                       [group](const Open& open) { return has(open.excluded, group); });
  }

  // Prefixes of one set that lie beside each other share a set.
  RuleSet changed(RuleSet base, const Groups& included, const Groups& excluded) {
    const auto [made, isNew] = made_.try_emplace({base, included, excluded}, base);
    if (isNew) made->second = sets_.setIs(base, membersOf(excluded), membersOf(included));
    return made->second;
  }

  [[nodiscard]] Members membersOf(const Groups& groups) const {
    Members members;
    for (const std::uint32_t group : groups)
      members.insert(members.end(), members_[group].begin(), members_[group].end());
    return members;
  }

  RuleSets& sets_;
  RuleSet any_;
  const std::vector<Members>& members_;  // by group
  std::vector<Open> open_;               // the shortest first
  std::map<std::tuple<RuleSet, Groups, Groups>, RuleSet> made_;
};

}  // namespace

void PrefixField::compile(RuleSets& sets, std::uint32_t rules, const PrefixSetOf& prefixSetOf) {
  Members any;
  std::unordered_map<SharedPrefixSet, std::uint32_t, SetHash> groups;
  std::vector<Members> members;  // by group
  for (std::uint32_t rule = 0; rule < rules; ++rule) {
    if (const auto set = prefixSetOf(rule)) {
      const auto [group, isNew] =
          groups.try_emplace(*set, static_cast<std::uint32_t>(members.size()));
      if (isNew) members.emplace_back();
      members[group->second].push_back(rule);
    } else {
      any.push_back(rule);
    }
  }
  isUsed_ = !groups.empty();
  any_ = sets.setIs(emptyRuleSet, any);

  std::vector<Use> uses;
  for (const auto& [set, group] : groups) {
    for (const Ip::Prefix& prefix : set->prefixes)
      uses.push_back({prefix, false, group});
    for (const Ip::Prefix& prefix : set->excluded)
      uses.push_back({prefix, true, group});
  }
  std::sort(uses.begin(), uses.end());
  Sweep sweep(sets, any_, members);
  for (auto use = uses.begin(); use != uses.end();) {
    const Ip::Prefix prefix = use->prefix;
    Groups included;
    Groups excluded;
    for (; use != uses.end() && use->prefix == prefix; ++use)
      (use->isExcluded ? excluded : included).push_back(use->group);
    sets_.valueIs(prefix, sweep.setOf(prefix, std::move(included), std::move(excluded)));
  }
}

}  // namespace Chips
