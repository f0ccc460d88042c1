#include "tests/vrf/faults/Statuses.h"

#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {

void Statuses::follow(const std::vector<FactsChip::Call>& calls) {
  for (const FactsChip::Call& call : calls) {
    if (call.threw) continue;
    if (call.outcome) {
      byAction_[shown(call.action)] = *call.outcome;
    } else {
      byAction_.erase(shown(call.action));
    }
  }
}

std::string Statuses::differenceFrom(const VrfHwStatus& table) const {
  std::string difference;
  for (auto entry = table.hwStatus().iterator(); entry; ++entry) {
    const auto expected = byAction_.find(shown(entry.key()));
    if (expected == byAction_.end()) {
      difference += shown(entry.key()) + " has a status that no hook returned\n";
    } else if (!(expected->second == entry.value())) {
      difference += shown(entry.key()) + " has not the status that the last hook returned\n";
    }
  }
  if (table.hwStatus().count() != byAction_.size()) difference += "a status is missing\n";
  return difference;
}

}  // namespace ZelVrfSelectionPolicy::Testing
