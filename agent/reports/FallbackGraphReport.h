#pragma once

#include <iosfwd>
#include <string>

#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// Prints a line for each VRF, for each VRF that an action names, and for each cycle. Names are
/// words of event files.
void writeTextReport(std::ostream& out, const FallbackGraph& graph);

/// Prints the graph in Graphviz's language. VRFs are ellipses, dashed if not configured. Actions
/// are boxes. Cycles are red, and each has a comment line. A drawing shows names as the text report
/// does.
void writeDotReport(std::ostream& out, const FallbackGraph& graph);

/// {vrfs: array of {vrfName, configured, fallbackVrfName}, actions: array of {vrfName,
/// fallbackVrfName, postDecapVrfName, action}, cycles: array of arrays of names}
[[nodiscard]] OrderedJson toJson(const FallbackGraph& graph);

/// "blue -> red -> blue"
[[nodiscard]] std::string toText(const FallbackCycle& cycle);

}  // namespace ZelAgent
