#include "chips/tables/RuleList.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ChipTables {
namespace {

constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t notYet = never;  // the period of a rule that the next epoch replaces

}  // namespace

RuleList::RuleList(ZelClassifier& classifier, std::uint32_t index, std::span<ZelRule> rules,
                   RuleSets& sets, RuleElements& elements, GraceClock& clock, Stores stores)
    : classifier_(classifier),
      rules_(rules),
      clock_(clock),
      stores_(std::move(stores)),
      fields_(classifier, index, sets, elements, stores_) {}

bool RuleList::addRule(std::size_t place, const PolicyMap::AclMatch& match, std::uint64_t action) {
  if (list_.size() >= capacity) return false;
  const Rule rule{std::make_shared<const RuleConditions>(match), action, 0};
  tidy();
  const bool waitingHelps = !isTidy();
  bool fits = insert(place, rule);
  if (!fits && waitingHelps) {
    awaitAll();
    fits = insert(place, rule);
  }
  if (fits) nextEpoch();
  return fits;
}

void RuleList::removeRule(std::size_t place) {
  tidy();
  endsNext(list_[place]);
  list_.erase(list_.begin() + static_cast<std::ptrdiff_t>(place));
  nextEpoch();
}

void RuleList::moveRule(std::size_t from, std::size_t to) {
  const Rule rule = list_[from];
  list_.erase(list_.begin() + static_cast<std::ptrdiff_t>(from));
  static_cast<void>(insert(to, rule));
  endsNext(rule);
  nextEpoch();
}

void RuleList::replaceRule(std::size_t place, std::uint64_t action) {
  const Rule rule = list_[place];
  list_.erase(list_.begin() + static_cast<std::ptrdiff_t>(place));
  static_cast<void>(insert(place, {rule.conditions, action, 0}));
  endsNext(rule);
  nextEpoch();
}

// Writes the rule, and the rules that get new numbers for it, for the next epoch. Cannot fail for a
// rule that the list has under another number.
bool RuleList::insert(std::size_t place, Rule rule) {
  tidy();
  const RuleNumbers::Plan plan = planFor(place);
  rule.number = plan.numbers[place - plan.first];
  if (!write(rule)) return false;
  list_.insert(list_.begin() + static_cast<std::ptrdiff_t>(place), rule);
  for (std::size_t at = plan.first; at < plan.first + plan.numbers.size(); ++at) {
    if (at == place) continue;
    endsNext(list_[at]);
    list_[at].number = plan.numbers[at - plan.first];
    static_cast<void>(write(list_[at]));
  }
  return true;
}

RuleNumbers::Plan RuleList::planFor(std::size_t place) {
  RuleNumbers::Numbers present;
  present.reserve(list_.size());
  for (const Rule& rule : list_)
    present.push_back(rule.number);
  auto plan = numbers_.planFor(present, place);
  if (!plan) {
    awaitAll();
    plan = numbers_.planFor(present, place);
  }
  return std::move(plan).value();
}

// Writes the rule under its number, in force from the next epoch on.
bool RuleList::write(const Rule& rule) {
  ZelRule& entry = rules_[rule.number];
  numbers_.take(rule.number);
  stores_.store(entry.action, rule.action);
  stores_.store(entry.until, never);
  stores_.store(entry.from, classifier_.epoch + 1);
  if (fields_.ruleIs(rule.number, *rule.conditions)) return true;
  stores_.store(entry.from, never);
  removed_.push_back({rule.number, clock_.current()});
  return false;
}

// The rule is in force up to the next epoch.
void RuleList::endsNext(const Rule& rule) {
  stores_.store(rules_[rule.number].until, classifier_.epoch + 1);
  replaced_.push_back({rule.number, rule.conditions, notYet});
}

// One store puts all changes since the last one in force. What they replaced is readable until a
// grace period from now.
void RuleList::nextEpoch() {
  stores_.store(classifier_.epoch, classifier_.epoch + 1);
  for (auto replaced = replaced_.rbegin();
       replaced != replaced_.rend() && replaced->period == notYet; ++replaced)
    replaced->period = clock_.current();
}

void RuleList::tidy() {
  for (; !replaced_.empty() && clock_.hasEnded(replaced_.front().period); replaced_.pop_front()) {
    fields_.ruleDel(replaced_.front().number, *replaced_.front().conditions);
    removed_.push_back({replaced_.front().number, clock_.current()});
  }
  for (; !removed_.empty() && clock_.hasEnded(removed_.front().period); removed_.pop_front())
    numbers_.giveBack(removed_.front().number);
}

void RuleList::awaitAll() {
  clock_.waitNow();
  tidy();
  clock_.waitNow();
  tidy();
}

}  // namespace ChipTables
