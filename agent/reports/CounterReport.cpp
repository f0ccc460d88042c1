#include "agent/reports/CounterReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {
namespace {

using SoftChip::DropReason;
using SoftChip::PacketCounter;

void addCounter(std::vector<std::string>& row, const PacketCounter& counter) {
  row.push_back(std::to_string(counter.packets));
  row.push_back(std::to_string(counter.bytes));
}

TextTable ruleTable(const RuleStates& rules) {
  TextTable table{{"INTERFACE", "POLICY", "RULE", "MATCH", "ACTION", "PACKETS", "BYTES"}};
  for (const RuleState& rule : rules) {
    table.push_back(nameCells(rule));
    addCounter(table.back(), rule.counter);
  }
  return table;
}

TextTable vrfTable(const ForwardCounters& counters) {
  TextTable table{{"VRF", "PACKETS", "BYTES"}};
  for (const auto& [vrf, counter] : counters.vrfs) {
    table.push_back({printable(vrf.bytes(), Limits::shownTextBytes)});
    addCounter(table.back(), counter);
  }
  return table;
}

TextTable dropTable(const ForwardCounters& counters) {
  TextTable table{{"DROPPED", "PACKETS", "BYTES"}};
  for (const DropCount& drop : counters.drops) {
    table.push_back({std::string(nameOf(drop.reason))});
    addCounter(table.back(), drop.counter);
  }
  return table;
}

void writeUnlessEmpty(std::ostream& out, const TextTable& table) {
  if (table.size() > 1) writeTable(out, table);
}

void putCounter(OrderedJson& json, const PacketCounter& counter) {
  json["packets"] = counter.packets;
  json["bytes"] = counter.bytes;
}

}  // namespace

ForwardCounters countersOf(ForwardingAgent& agent, std::uint64_t notIp) {
  ForwardCounters counters{agent.rules(), agent.forwarder().vrfCounters(), {}, notIp};
  for (std::size_t reason = 0; reason < SoftChip::dropReasons; ++reason) {
    const auto drop = static_cast<DropReason>(reason);
    const PacketCounter& counter = agent.forwarder().dropCounter(drop);
    if (counter.packets != 0) counters.drops.push_back({drop, counter});
  }
  return counters;
}

void writeTextReport(std::ostream& out, const ForwardCounters& counters) {
  writeUnlessEmpty(out, ruleTable(counters.rules));
  writeUnlessEmpty(out, vrfTable(counters));
  writeUnlessEmpty(out, dropTable(counters));
  if (counters.vrfs.empty() && counters.drops.empty()) out << "  no packets\n";
  if (counters.notIp != 0) out << "  frames without IP: " << counters.notIp << '\n';
}

void writeJsonReport(std::ostream& out, const ForwardCounters& counters) {
  out << oneLine(toJson(counters)) << '\n';
}

OrderedJson toJson(const ForwardCounters& counters) {
  OrderedJson report{{"rules", OrderedJson::array()},
                     {"vrfs", OrderedJson::array()},
                     {"drops", OrderedJson::array()},
                     {"notIp", counters.notIp}};
  for (const RuleState& rule : counters.rules) {
    OrderedJson json = ruleJson(rule);
    putCounter(json, rule.counter);
    report["rules"].push_back(std::move(json));
  }
  for (const auto& [vrf, counter] : counters.vrfs) {
    OrderedJson json{{"vrfName", vrf.str()}};
    putCounter(json, counter);
    report["vrfs"].push_back(std::move(json));
  }
  for (const DropCount& drop : counters.drops) {
    OrderedJson json{{"reason", std::string(nameOf(drop.reason))}};
    putCounter(json, drop.counter);
    report["drops"].push_back(std::move(json));
  }
  return report;
}

}  // namespace ZelAgent
