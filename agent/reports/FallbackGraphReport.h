// Why: a graph is read as lines in a terminal and drawn by Graphviz elsewhere.
// Always: the same graph gives the same text; names are words of event files in lines, and escaped
// in DOT so that a drawing shows them as lines do.
#pragma once

#include <iosfwd>
#include <string>

#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/reports/StateJson.h"

namespace ZelAgent {

// A line per VRF, per VRF that an action names, and per cycle.
void writeTextReport(std::ostream& out, const FallbackGraph& graph);

// Graphviz's language. VRFs are ellipses, dashed where not configured; actions are boxes; cycles
// are red, and each is told in a comment line.
void writeDotReport(std::ostream& out, const FallbackGraph& graph);

// {vrfs: array of {vrfName, configured, fallbackVrfName}, actions: array of {vrfName,
// fallbackVrfName, postDecapVrfName, action}, cycles: array of arrays of names}
[[nodiscard]] OrderedJson toJson(const FallbackGraph& graph);

// "blue -> red -> blue"
[[nodiscard]] std::string toText(const FallbackCycle& cycle);

}  // namespace ZelAgent
