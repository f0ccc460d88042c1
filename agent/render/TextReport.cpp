#include "agent/render/TextReport.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>
#include <vector>

#include "agent/config/PrintableText.h"

namespace ZelAgent {
namespace {

using Row = std::array<std::string, 9>;

std::string orDash(std::string_view text) {
  return text.empty() ? "-" : printable(text, 1000);
}

std::string resourceText(const ActionState& state) {
  if (!state.resource) return "-";
  const std::string index = std::to_string(state.resource->index);
  return state.resourceIsStale() ? index + " stale" : index;
}

Row rowOf(const ActionState& state) {
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

// Characters, taking each as one column wide.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80;
  }));
}

void writeTable(std::ostream& out, const std::vector<Row>& rows) {
  std::array<std::size_t, std::tuple_size_v<Row>> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], widthOf(row[i]));
  }
  for (const Row& row : rows) {
    out << ' ';
    for (std::size_t i = 0; i + 1 < row.size(); ++i) {
      out << ' ' << row[i] << std::string(widths[i] - widthOf(row[i]) + 1, ' ');
    }
    out << ' ' << row.back() << '\n';
  }
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
    std::vector<Row> rows{{"VRF", "FALLBACK", "POST-DECAP", "ACTION", "USERS", "RESOURCE", "STATUS",
                           "REASON", "DESCRIPTION"}};
    std::transform(state.actions.begin(), state.actions.end(), std::back_inserter(rows), rowOf);
    writeTable(out, rows);
  }
  writeChip(out, state.chip);
}

}  // namespace ZelAgent
