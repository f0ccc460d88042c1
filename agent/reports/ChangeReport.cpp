#include "agent/reports/ChangeReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/reports/EffectReport.h"

namespace ZelAgent {
namespace {

using Chips::HookCall;

bool failed(const HookCall& call) {
  return call.failed;
}

bool failed(const StatusChange& change) {
  return change.after &&
         change.after->status() == ZelVrfSelectionPolicy::ProgrammingResult::programmingFailure;
}

// At most `most` of the elements: all in their order, or those that failed first.
template <class Element>
std::vector<const Element*> firstOf(const std::vector<Element>& elements, std::size_t most) {
  std::vector<const Element*> chosen;
  for (const bool wanted : {true, false}) {
    for (const Element& element : elements) {
      const bool comesNow = elements.size() <= most ? wanted : failed(element) == wanted;
      if (comesNow && chosen.size() < most) chosen.push_back(&element);
    }
  }
  return chosen;
}

struct ShownEffects {
  std::vector<const HookCall*> calls;
  std::vector<const StatusChange*> statuses;
  std::size_t left = 0;
};

// Drops elements from the end until their texts fit. Returns the bytes that are left.
template <class Element>
std::size_t cut(std::vector<const Element*>& elements, std::size_t bytes) {
  std::size_t count = 0;
  for (; count < elements.size(); ++count) {
    const std::size_t size = toText(*elements[count]).size();
    if (size > bytes) break;
    bytes -= size;
  }
  elements.resize(count);
  return bytes;
}

ShownEffects shownOf(const EventEffects& effects) {
  constexpr std::size_t lines = changeLines;
  const std::size_t statuses = std::min(effects.statusChanges.size(), lines);
  ShownEffects shown;
  shown.calls = firstOf(effects.calls, std::max(lines - statuses, lines / 2));
  shown.statuses = firstOf(effects.statusChanges, lines - std::min(shown.calls.size(), lines));
  cut(shown.statuses, cut(shown.calls, changeBytes / 2) + changeBytes / 2);
  shown.left = effects.calls.size() - shown.calls.size() + effects.statusChanges.size() -
               shown.statuses.size();
  return shown;
}

bool changedRules(const ChangeCounts& counts) {
  return counts.rulesAdded + counts.rulesReplaced + counts.rulesMoved + counts.rulesRemoved +
             counts.rulesRefused !=
         0;
}

void writeCounts(std::ostream& out, const ChangeCounts& counts) {
  out << "  actions: " << counts.creates << " created, " << counts.updates << " updated, "
      << counts.deletes << " deleted, " << counts.failures << " failed\n"
      << "  rules: " << counts.rulesAdded << " added, " << counts.rulesReplaced << " replaced, "
      << counts.rulesMoved << " moved, " << counts.rulesRemoved << " removed, "
      << counts.rulesRefused << " refused\n"
      << "  routes: " << counts.routesSet << " set, " << counts.routesRemoved << " removed\n";
}

template <class Element>
void writeLines(std::ostream& out, const std::vector<const Element*>& elements) {
  for (const Element* const element : elements)
    out << "  " << toText(*element) << '\n';
}

template <class Element>
OrderedJson listJson(const std::vector<const Element*>& elements) {
  OrderedJson json = OrderedJson::array();
  for (const Element* const element : elements)
    json.push_back(toJson(*element));
  return json;
}

}  // namespace

void writeChangeReport(std::ostream& out, const std::string& title, const EventEffects& effects,
                       Counts counts) {
  const ShownEffects shown = shownOf(effects);
  out << printable(title, Limits::shownTextBytes) << '\n';
  if (counts == Counts::always || shown.left != 0 || changedRules(effects.counts)) {
    writeCounts(out, effects.counts);
  }
  if (effects.calls.empty()) out << "  no hook call\n";
  writeLines(out, shown.calls);
  writeLines(out, shown.statuses);
  if (shown.left != 0) {
    out << "  ... and " << shown.left << " more; show actions prints each action\n";
  }
}

void putChange(OrderedJson& report, const EventEffects& effects) {
  const ChangeCounts& counts = effects.counts;
  const ShownEffects shown = shownOf(effects);
  report["changes"] = {{"actions",
                        {{"created", counts.creates},
                         {"updated", counts.updates},
                         {"deleted", counts.deletes},
                         {"failed", counts.failures}}},
                       {"rules",
                        {{"added", counts.rulesAdded},
                         {"replaced", counts.rulesReplaced},
                         {"moved", counts.rulesMoved},
                         {"removed", counts.rulesRemoved},
                         {"refused", counts.rulesRefused}}},
                       {"routes", {{"set", counts.routesSet}, {"removed", counts.routesRemoved}}},
                       {"truncated", shown.left}};
  report["calls"] = listJson(shown.calls);
  report["statuses"] = listJson(shown.statuses);
}

std::vector<std::string> boundedWarnings(const std::vector<std::string>& warnings) {
  std::vector<std::string> shown;
  std::size_t bytes = changeBytes;
  for (const std::string& warning : warnings) {
    const std::string text = printable(warning, Limits::shownTextBytes);
    if (shown.size() == changeLines || text.size() > bytes) break;
    bytes -= text.size();
    shown.push_back(text);
  }
  const std::size_t left = warnings.size() - shown.size();
  if (left != 0) shown.push_back("... and " + std::to_string(left) + " more warnings");
  return shown;
}

}  // namespace ZelAgent
