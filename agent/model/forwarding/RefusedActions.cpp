#include "agent/model/forwarding/RefusedActions.h"

#include <algorithm>

#include "agent/language/Limits.h"

namespace ZelAgent {

void RefusedActions::actionIs(const VrfAction& action, WaitsFor waitsFor, Step now) {
  const auto [at, isNew] = entries_.try_emplace(action);
  Entry& entry = at->second;
  if (isNew) {
    entry.age = nextAge_++;
  } else if (entry.waitsFor == waitsFor) {
    return;
  }
  unlink(entry);
  entry.waitsFor = waitsFor;
  entry.pause = 1;
  entry.due = now + entry.pause;
  link(action, entry);
}

void RefusedActions::actionDel(const VrfAction& action) {
  const auto found = entries_.find(action);
  if (found == entries_.end()) return;
  unlink(found->second);
  entries_.erase(found);
}

void RefusedActions::postpone(const VrfAction& action, Step now) {
  if (!waitsForTime(action)) return;
  Entry& entry = entries_.at(action);
  unlink(entry);
  entry.pause = std::min(2 * entry.pause, Limits::pauseSteps);
  entry.due = now + entry.pause;
  link(action, entry);
}

bool RefusedActions::waitsForTime(const VrfAction& action) const {
  const auto found = entries_.find(action);
  return found != entries_.end() && found->second.waitsFor == WaitsFor::time;
}

std::vector<RefusedActions::VrfAction> RefusedActions::waitingForRoom(std::size_t most) const {
  std::vector<VrfAction> actions;
  for (auto at = forRoom_.begin(); at != forRoom_.end() && actions.size() < most; ++at)
    actions.push_back(at->second);
  return actions;
}

std::vector<RefusedActions::VrfAction> RefusedActions::due(Step now, std::size_t most) const {
  std::vector<VrfAction> actions;
  for (const auto& [dueAndAge, action] : forTime_) {
    if (dueAndAge.first > now || actions.size() == most) break;
    actions.push_back(action);
  }
  return actions;
}

std::vector<RefusedActions::VrfAction> RefusedActions::all() const {
  std::map<Age, VrfAction> byAge;
  for (const auto& [action, entry] : entries_)
    byAge.emplace(entry.age, action);
  std::vector<VrfAction> actions;
  actions.reserve(byAge.size());
  for (const auto& [age, action] : byAge)
    actions.push_back(action);
  return actions;
}

void RefusedActions::link(const VrfAction& action, const Entry& entry) {
  if (entry.waitsFor == WaitsFor::room) forRoom_.emplace(entry.age, action);
  if (entry.waitsFor == WaitsFor::time) forTime_.emplace(DueAndAge{entry.due, entry.age}, action);
}

void RefusedActions::unlink(const Entry& entry) {
  if (entry.waitsFor == WaitsFor::room) forRoom_.erase(entry.age);
  if (entry.waitsFor == WaitsFor::time) forTime_.erase({entry.due, entry.age});
}

}  // namespace ZelAgent
