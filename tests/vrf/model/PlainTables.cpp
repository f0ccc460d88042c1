#include "PlainTables.h"

namespace VrfModel {

bool PlainTables::countIs(const Action& action, unsigned count) {
  const auto [entry, inserted] = counts_.try_emplace(action, count);
  if (!inserted && entry->second == count) return false;
  entry->second = count;
  expected_.notice(Table::counts, action);
  return true;
}

bool PlainTables::countDel(const Action& action) {
  if (counts_.erase(action) == 0) return false;
  expected_.notice(Table::counts, action);
  return true;
}

const unsigned* PlainTables::count(const Action& action) const {
  const auto found = counts_.find(action);
  return found == counts_.end() ? nullptr : &found->second;
}

bool PlainTables::statusIs(const Action& action, const Status& status) {
  const auto [entry, inserted] = statuses_.try_emplace(action, status);
  if (!inserted && entry->second == status) return false;
  entry->second = status;
  expected_.notice(Table::statuses, action);
  return true;
}

bool PlainTables::statusDel(const Action& action) {
  if (statuses_.erase(action) == 0) return false;
  expected_.notice(Table::statuses, action);
  return true;
}

}  // namespace VrfModel
