#include "agent/commands/served/ServedCommands.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "Blinklog/Ring.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"
#include "agent/language/TimeText.h"
#include "agent/language/Version.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/reports/CounterReport.h"
#include "agent/reports/FallbackGraphReport.h"
#include "agent/reports/LimitsReport.h"
#include "agent/reports/RuleReport.h"
#include "agent/reports/StateReport.h"
#include "agent/reports/TraceReport.h"

namespace ZelAgent {
namespace {

const char* sourceText(ConfigurationSource source) {
  switch (source) {
    case ConfigurationSource::start:
      return "start";
    case ConfigurationSource::reload:
      return "reload";
    case ConfigurationSource::event:
      break;
  }
  return "config";
}

std::string whenText(ConfigurationSource source) {
  const std::string text = sourceText(source);
  return (source == ConfigurationSource::start ? "at " : "by ") + text;
}

void writeRecord(std::ostream& out, const ConfigurationRecord& record) {
  out << "file         " << printable(record.file, Limits::shownTextBytes) << '\n'
      << "in force     " << printable(record.inForce, Limits::shownTextBytes) << ", applied "
      << whenText(record.source) << ", " << timeText(record.appliedAt) << '\n'
      << "reloads      " << record.reloadsApplied << " applied, " << record.reloadsRefused
      << " refused\n";
  if (!record.refusal) return;
  out << "last reload  refused, " << timeText(record.refusedAt) << ": " << *record.refusal << '\n';
}

template <class Value>
OrderedJson orNull(const std::optional<Value>& value) {
  return value ? OrderedJson(*value) : OrderedJson();
}

OrderedJson recordJson(const ConfigurationRecord& record) {
  return {{"file", record.file},
          {"inForce",
           {{"file", record.inForce},
            {"by", sourceText(record.source)},
            {"at", timeText(record.appliedAt)}}},
          {"reloads",
           {{"applied", record.reloadsApplied},
            {"refused", record.reloadsRefused},
            {"lastRefusal", orNull(record.refusal)},
            {"lastRefusalAt",
             record.refusal ? OrderedJson(timeText(record.refusedAt)) : OrderedJson()}}}};
}

template <class Shown>
CommandOutput show(const CommandCall& call, const Shown& shown) {
  return outputOf(
      call, [&](std::ostream& out) { writeTextReport(out, shown); }, [&] { return toJson(shown); });
}

using Routing::Hardware::PrefixLensInExactMatch;
using Routing::Hardware::RouteStatusBase;
using Lengths = std::vector<unsigned>;

struct VrfRow {
  L3::VrfName name;
  std::optional<std::uint32_t> id;  // none if the hardware does not know the VRF
  L3::VrfName fallback;
  std::optional<Lengths> lengthsV4;  // none if the hardware has reported none
  std::optional<Lengths> lengthsV6;
  bool isConfigured = false;
};

std::optional<Lengths> lengthsOf(const RouteStatusBase& routes, const L3::VrfName& vrf) {
  const auto present = routes.vrfPrefixLensInExactMatch(vrf.str());
  if (!present) return std::nullopt;
  Lengths lengths;
  for (unsigned length = 0; length <= PrefixLensInExactMatch::longest; ++length) {
    if (present->prefixLenHas(static_cast<unsigned char>(length))) lengths.push_back(length);
  }
  return lengths;
}

std::vector<VrfRow> rowsOf(ForwardingAgent& agent) {
  const std::set<L3::VrfName> configured = configuredVrfs(agent);
  std::vector<VrfRow> rows;
  for (const L3::VrfName& name : knownVrfs(agent)) {
    VrfRow row;
    row.name = name;
    if (const auto status = agent.routeStatus().vrfStatus(name)) row.id = status->vrfId();
    row.fallback = agent.fallbackConfig().fallbackVrf(name);
    row.lengthsV4 = lengthsOf(agent.routeStatus(), name);
    row.lengthsV6 = lengthsOf(agent.routeStatusV6(), name);
    row.isConfigured = configured.contains(name);
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string toText(const std::optional<Lengths>& lengths) {
  if (!lengths) return "-";
  if (lengths->empty()) return "none";
  std::vector<std::string> texts;
  for (const unsigned length : *lengths)
    texts.push_back(std::to_string(length));
  return joined(texts, ",");
}

void writeRows(std::ostream& out, const std::vector<VrfRow>& rows) {
  TextTable table{{"VRF", "ID", "FALLBACK", "IPV4-LENS", "IPV6-LENS", "CONFIGURED"}};
  for (const VrfRow& row : rows) {
    table.push_back({orDash(row.name.bytes()), row.id ? std::to_string(*row.id) : "-",
                     orDash(row.fallback.bytes()), toText(row.lengthsV4), toText(row.lengthsV6),
                     row.isConfigured ? "yes" : "no"});
  }
  writeTable(out, table);
}

OrderedJson rowsJson(const std::vector<VrfRow>& rows) {
  OrderedJson json = OrderedJson::array();
  for (const VrfRow& row : rows) {
    json.push_back({{"vrfName", row.name.str()},
                    {"vrfId", orNull(row.id)},
                    {"fallbackVrfName", row.fallback.str()},
                    {"exactMatchLens", orNull(row.lengthsV4)},
                    {"exactMatchLensV6", orNull(row.lengthsV6)},
                    {"configured", row.isConfigured}});
  }
  return json;
}

constexpr std::uint32_t defaultCount = 20;

std::uint32_t countOf(EventLine& arguments) {
  const std::optional<Word> word = arguments.next();
  if (!word) return defaultCount;
  const std::uint32_t number = arguments.numberOf(word, "N", UINT32_MAX, " or the end of the line");
  arguments.needEnd();
  return number;
}

std::vector<Blinklog::Record> lastRecords(std::size_t number) {
  std::vector<Blinklog::Record> records = Blinklog::ring().dump();
  if (number < records.size()) {
    records.erase(records.begin(), records.end() - static_cast<std::ptrdiff_t>(number));
  }
  return records;
}

}  // namespace

CommandOutput showConfig(const CommandCall& call) {
  const ConfigurationRecord& record = call.served.record();
  return outputOf(
      call, [&](std::ostream& out) { writeRecord(out, record); },
      [&] { return recordJson(record); });
}

CommandOutput showVrfs(const CommandCall& call) {
  const std::vector<VrfRow> rows = rowsOf(call.served.agent());
  return outputOf(
      call, [&](std::ostream& out) { writeRows(out, rows); }, [&] { return rowsJson(rows); });
}

CommandOutput showFallback(const CommandCall& call) {
  const FallbackGraph graph = fallbackGraphOf(call.served.agent());
  return outputOf(
      call, [&](std::ostream& out) { writeTextReport(out, graph); }, [&] { return toJson(graph); });
}

CommandOutput showLimits(const CommandCall& call) {
  return show(call, limitTable(call.served.limits()));
}

CommandOutput showVersion(const CommandCall& call) {
  return outputOf(
      call, [](std::ostream& out) { out << versionText() << '\n'; },
      [] {
        return OrderedJson{{"version", versionNumber()}};
      });
}

CommandOutput showTrace(const CommandCall& call) {
  const auto records = lastRecords(countOf(call.arguments));
  return outputOf(
      call, [&](std::ostream& out) { writeTrace(out, records); },
      [&] { return traceJson(records); });
}

}  // namespace ZelAgent
