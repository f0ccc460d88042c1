#include "agent/reports/ResourceReport.h"

#include <ostream>
#include <sstream>

#include "agent/language/PrintableText.h"
#include "agent/reports/ActionText.h"

namespace ZelAgent {
namespace {

std::string inFull(const SoftChip::VrfProgram& program) {
  std::ostringstream text;
  text << program;
  return printable(text.str(), std::string_view::npos);
}

}  // namespace

void writeResourceReport(std::ostream& out, const AgentState& state) {
  for (const ActionState& action : state.actions) {
    if (!action.resource) continue;
    const bool isStale = action.resourceIsStale();
    out << "  resource " << action.resource->index << " of " << toText(action.action)
        << (isStale ? ", stale" : "") << ":\n"
        << "    " << inFull(action.resource->program) << '\n';
    if (isStale) out << "    would be now: " << inFull(action.currentProgram) << '\n';
  }
}

}  // namespace ZelAgent
