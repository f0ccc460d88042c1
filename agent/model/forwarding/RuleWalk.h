#pragma once

#include <string>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

class ForwardingAgent;

/// Reads the rules of all interfaces, or of one, in parts. The rules come as
/// `ForwardingAgent::rules` returns them.
///
/// A rule is read as it is at that time. Between two reads the rules may change. A rule that exists
/// all the time is read exactly once.
class RuleWalk final {
 public:
  /// All interfaces. The agent must outlive this.
  explicit RuleWalk(const ForwardingAgent& agent);
  RuleWalk(const ForwardingAgent& agent, const std::string& onlyIntf);

  /// Adds the next rules, at most so many. Returns false after the last.
  bool read(RuleStates& rules, std::size_t most);

 private:
  // Returns false after the last interface.
  bool moveToNextIntf();

  const ForwardingAgent& agent_;
  Velo::String intf_;
  RuleCursor cursor_;
  bool isOneIntf_ = false;
};

}  // namespace ZelAgent
