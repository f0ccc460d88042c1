#include "agent/reports/JsonReport.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/reports/StateJson.h"

namespace ZelAgent {

void writeJsonReport(std::ostream& out, const std::optional<std::string>& configuration,
                     const AgentState& state) {
  OrderedJson report;
  report["configuration"] = configuration ? OrderedJson(*configuration) : OrderedJson(nullptr);
  putState(report, state);
  out << oneLine(report) << '\n';
}

}  // namespace ZelAgent
