#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "agent/model/calls/ChipCalls.h"
#include "agent/model/events/ChangeCounts.h"

namespace ZelAgent {

class ForwardingAgent;

/// Counts how the calls of one change alter the rules of the chip.
///
/// A call that undoes the last call of its interface counts as little as that one. So a policy that
/// is refused in its middle and taken back counts nothing.
class RuleChangeCounter final {
 public:
  void take(const RuleCall& call);

  /// Adds the counts of the calls so far. An interface with a refused call has refused rules if the
  /// agent does not hold the rules of its policy now.
  void addTo(ChangeCounts& counts, const ForwardingAgent& agent) const;

 private:
  struct Step {
    RuleCall::Kind kind = RuleCall::Kind::add;
    std::size_t place = 0;
    std::size_t to = 0;
  };
  struct OfIntf {
    std::vector<Step> steps;                   // that are not undone
    std::vector<PolicyMap::AclRule> replaced;  // by the replacements among them
    bool wasRefused = false;
  };

  [[nodiscard]] static bool undoesLast(const OfIntf& intf, const RuleCall& call);

  std::map<Velo::String, OfIntf> intfs_;
};

}  // namespace ZelAgent
