#include "agent/reports/CounterReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {
namespace {

using Chips::DropReason;
using Chips::PacketCounter;

template <class Counted>
std::vector<std::string> withCounter(std::vector<std::string> cells, const Counted& counted) {
  cells.push_back(std::to_string(counted.counter.packets));
  cells.push_back(std::to_string(counted.counter.bytes));
  return cells;
}

template <class Counted>
std::string withCounter(OrderedJson json, const Counted& counted) {
  json["packets"] = counted.counter.packets;
  json["bytes"] = counted.counter.bytes;
  return oneLine(json);
}

const RowFormat<RuleState> ruleFormat{
    {"INTERFACE", "POLICY", "RULE", "MATCH", "ACTION", "PACKETS", "BYTES"},
    "",
    [](const RuleState& rule) { return withCounter(nameCells(rule), rule); },
    [](const RuleState& rule) { return withCounter(ruleJson(rule), rule); }};

const RowFormat<VrfCount> vrfFormat{
    {"VRF", "PACKETS", "BYTES"},
    "",
    [](const VrfCount& count) {
      return withCounter(
          std::vector<std::string>{printable(count.vrf.bytes(), Limits::shownTextBytes)}, count);
    },
    [](const VrfCount& count) {
      return withCounter(OrderedJson{{"vrfName", count.vrf.str()}}, count);
    }};

const RowFormat<DropCount> dropFormat{
    {"DROPPED", "PACKETS", "BYTES"},
    "",
    [](const DropCount& count) {
      return withCounter(std::vector<std::string>{std::string(nameOf(count.reason))}, count);
    },
    [](const DropCount& count) {
      return withCounter(OrderedJson{{"reason", std::string(nameOf(count.reason))}}, count);
    }};

std::vector<VrfCount> vrfCountsOf(const ForwardCounters& counters) {
  std::vector<VrfCount> counts;
  for (const auto& [vrf, counter] : counters.vrfs)
    counts.push_back({vrf, counter});
  return counts;
}

std::string lastLines(const ForwardCounters& counters) {
  std::string lines;
  if (counters.vrfs.empty() && counters.drops.empty()) lines = "  no packets\n";
  if (counters.notIp != 0) lines += "  frames without IP: " + std::to_string(counters.notIp) + '\n';
  return lines;
}

// Adds the member, and its rows as pages.
template <class Row>
void addMember(std::vector<ReportPagesPtr>& pages, const char* beginning,
               const RowFormat<Row>& format, ReadRows<Row> rows) {
  pages.push_back(onePage(beginning));
  pages.push_back(pagesOf(format, std::move(rows), true));
}

}  // namespace

ReportPagesPtr counterPages(ReadRows<RuleState> rules, const ForwardCounters& others, bool asJson) {
  std::vector<ReportPagesPtr> pages;
  auto vrfs = rowsOfList(vrfCountsOf(others));
  auto drops = rowsOfList(others.drops);
  if (asJson) {
    addMember(pages, R"({"rules":)", ruleFormat, std::move(rules));
    addMember(pages, R"(,"vrfs":)", vrfFormat, std::move(vrfs));
    addMember(pages, R"(,"drops":)", dropFormat, std::move(drops));
    pages.push_back(onePage(R"(,"notIp":)" + std::to_string(others.notIp) + '}'));
  } else {
    pages.push_back(pagesOf(ruleFormat, std::move(rules), false));
    pages.push_back(pagesOf(vrfFormat, std::move(vrfs), false));
    pages.push_back(pagesOf(dropFormat, std::move(drops), false));
    pages.push_back(onePage(lastLines(others)));
  }
  return pagesInOrder(std::move(pages));
}

ReportPagesPtr counterPages(ReadRows<RuleState> rules, std::vector<VrfCount> vrfs, bool asJson) {
  std::vector<ReportPagesPtr> pages;
  auto vrfRows = rowsOfList(std::move(vrfs));
  if (asJson) {
    addMember(pages, R"({"rules":)", ruleFormat, std::move(rules));
    addMember(pages, R"(,"vrfs":)", vrfFormat, std::move(vrfRows));
    pages.push_back(onePage("}"));
  } else {
    pages.push_back(pagesOf(ruleFormat, std::move(rules), false));
    pages.push_back(pagesOf(vrfFormat, std::move(vrfRows), false));
  }
  return pagesInOrder(std::move(pages));
}

ForwardCounters countersWithoutRules(ForwardingAgent& agent, std::uint64_t notIp) {
  ForwardCounters counters{{}, agent.forwarder().vrfCounters(), {}, notIp};
  for (std::size_t reason = 0; reason < Chips::dropReasons; ++reason) {
    const auto drop = static_cast<DropReason>(reason);
    const PacketCounter& counter = agent.forwarder().dropCounter(drop);
    if (counter.packets != 0) counters.drops.push_back({drop, counter});
  }
  return counters;
}

ForwardCounters countersOf(ForwardingAgent& agent, std::uint64_t notIp) {
  ForwardCounters counters = countersWithoutRules(agent, notIp);
  counters.rules = agent.rules();
  return counters;
}

void writeTextReport(std::ostream& out, const ForwardCounters& counters) {
  out << wholeText(*counterPages(rowsOfList(counters.rules), counters, false));
}

void writeJsonReport(std::ostream& out, const ForwardCounters& counters) {
  out << wholeText(*counterPages(rowsOfList(counters.rules), counters, true)) << '\n';
}

}  // namespace ZelAgent
