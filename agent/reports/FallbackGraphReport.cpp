#include "agent/reports/FallbackGraphReport.h"

#include <map>
#include <nlohmann/json.hpp>
#include <ostream>

#include "agent/language/Words.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

std::string toText(const L3::VrfName& name) {
  return toWord(name.bytes());
}

// A label in DOT's quotes. Quotes and backslashes are escaped, and ampersands are entities.
std::string label(const std::string& text) {
  std::string quoted = "label=\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') quoted += '\\';
    quoted += byte;
    if (byte == '&') quoted += "amp;";
  }
  return quoted + '"';
}

class DotWriter final {
 public:
  DotWriter(std::ostream& out, const FallbackGraph& graph) : out_(out), graph_(graph) {}

  void write() {
    out_ << "digraph fallbacks {\n  rankdir=LR;\n";
    for (const FallbackCycle& cycle : graph_.cycles)
      out_ << "  // cycle: " << ZelAgent::toText(cycle) << '\n';
    for (const GraphVrf& vrf : graph_.vrfs)
      writeVrf(vrf);
    for (const GraphVrf& vrf : graph_.vrfs)
      writeFallback(vrf);
    for (const VrfAction& action : graph_.actions)
      writeAction(action);
    out_ << "}\n";
  }

 private:
  void writeVrf(const GraphVrf& vrf) {
    const std::string node = "vrf" + std::to_string(nodes_.size() + 1);
    nodes_.emplace(vrf.name, node);
    out_ << "  " << node << " [" << label(toText(vrf.name))
         << (vrf.isConfigured ? "" : ", style=dashed") << (vrf.isOnCycle ? ", color=red" : "")
         << "];\n";
  }

  // The fallback VRF of a VRF on a cycle is the next VRF on the cycle.
  void writeFallback(const GraphVrf& vrf) {
    if (vrf.fallback.empty()) return;
    out_ << "  " << nodes_.at(vrf.name) << " -> " << nodes_.at(vrf.fallback)
         << " [label=\"fallback\"" << (vrf.isOnCycle ? ", color=red, fontcolor=red" : "") << "];\n";
  }

  void writeAction(const VrfAction& action) {
    ++actions_;
    out_ << "  action" << actions_ << " [" << label(ZelAgent::toText(action)) << ", shape=box];\n";
    for (const NamedVrf& named : vrfsNamedBy(action)) {
      out_ << "  action" << actions_ << " -> " << nodes_.at(named.vrf) << " [label=\""
           << named.field << "\"];\n";
    }
  }

  std::ostream& out_;
  const FallbackGraph& graph_;
  std::map<L3::VrfName, std::string> nodes_;
  unsigned actions_ = 0;
};

}  // namespace

void writeTextReport(std::ostream& out, const FallbackGraph& graph) {
  for (const GraphVrf& vrf : graph.vrfs) {
    out << "VRF " << toText(vrf.name);
    if (!vrf.isConfigured) out << ", not configured";
    if (!vrf.fallback.empty()) out << ", fallback -> " << toText(vrf.fallback);
    out << '\n';
  }
  for (const VrfAction& action : graph.actions) {
    for (const NamedVrf& named : vrfsNamedBy(action)) {
      out << "action " << toText(action) << ", " << named.field << " -> " << toText(named.vrf)
          << '\n';
    }
  }
  for (const FallbackCycle& cycle : graph.cycles)
    out << "cycle " << toText(cycle) << '\n';
}

void writeDotReport(std::ostream& out, const FallbackGraph& graph) {
  DotWriter(out, graph).write();
}

OrderedJson toJson(const FallbackGraph& graph) {
  OrderedJson json{{"vrfs", OrderedJson::array()},
                   {"actions", OrderedJson::array()},
                   {"cycles", OrderedJson::array()}};
  for (const GraphVrf& vrf : graph.vrfs) {
    json["vrfs"].push_back({{"vrfName", vrf.name.str()},
                            {"configured", vrf.isConfigured},
                            {"fallbackVrfName", vrf.fallback.str()}});
  }
  for (const VrfAction& action : graph.actions)
    json["actions"].push_back(nameJson(action));
  for (const FallbackCycle& cycle : graph.cycles) {
    OrderedJson names = OrderedJson::array();
    for (const L3::VrfName& name : cycle)
      names.push_back(name.str());
    json["cycles"].push_back(std::move(names));
  }
  return json;
}

std::string toText(const FallbackCycle& cycle) {
  std::string text;
  for (const L3::VrfName& name : cycle)
    text += toText(name) + " -> ";
  return text + toText(cycle.front());
}

}  // namespace ZelAgent
