#include "agent/reports/TextReport.h"

#include <algorithm>
#include <ostream>
#include <string_view>
#include <vector>

#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"

namespace ZelAgent {
namespace {

std::string resourceText(const ActionState& state) {
  if (!state.resource) return "-";
  const std::string index = std::to_string(state.resource->index);
  return state.resourceIsStale() ? index + " stale" : index;
}

std::vector<std::string> rowOf(const ActionState& state) {
  return {orDash(state.action.vrfName().bytes()),
          orDash(state.action.fallbackVrfName().bytes()),
          orDash(state.action.postDecapVrfName().bytes()),
          stringValue(state.action.action()).str(),
          std::to_string(state.users),
          resourceText(state),
          stringValue(state.status.status()).str(),
          stringValue(state.status.failureReason()).str(),
          orDash(state.status.failureDescription().bytes())};
}

void writeChip(std::ostream& out, const ChipState& chip) {
  out << "  chip: " << chip.used << " of " << chip.capacity << " VRF resources in use; "
      << chip.hookCounts.creates << " creates, " << chip.hookCounts.updates << " updates, "
      << chip.hookCounts.deletes << " deletes, " << chip.hookCounts.failures << " failed\n";
}

}  // namespace

void writeTextReport(std::ostream& out, const std::string& title, const AgentState& state) {
  out << title << '\n';
  if (state.actions.empty()) {
    out << "  no VRF actions\n";
  } else {
    TextTable rows{{"VRF", "FALLBACK", "POST-DECAP", "ACTION", "USERS", "RESOURCE", "STATUS",
                    "REASON", "DESCRIPTION"}};
    std::transform(state.actions.begin(), state.actions.end(), std::back_inserter(rows), rowOf);
    writeTable(out, rows);
  }
  writeChip(out, state.chip);
}

}  // namespace ZelAgent
