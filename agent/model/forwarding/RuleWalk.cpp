#include "agent/model/forwarding/RuleWalk.h"

#include <algorithm>
#include <iterator>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

RuleWalk::RuleWalk(const ForwardingAgent& agent) : agent_(agent) {}

RuleWalk::RuleWalk(const ForwardingAgent& agent, const std::string& onlyIntf)
    : agent_(agent), intf_(onlyIntf), isOneIntf_(true) {}

bool RuleWalk::read(RuleStates& rules, std::size_t most) {
  for (std::size_t left = most; left > 0;) {
    RuleStates part = agent_.rules(intf_, cursor_, left);
    left -= part.size();
    std::move(part.begin(), part.end(), std::back_inserter(rules));
    if (left > 0 && !moveToNextIntf()) return false;
  }
  return true;
}

// No interface has the empty name, where a walk of all begins.
bool RuleWalk::moveToNextIntf() {
  if (isOneIntf_) return false;
  const auto next = agent_.policyIntfs().upper_bound(intf_);
  if (next == agent_.policyIntfs().end()) return false;
  intf_ = next->first;
  cursor_ = {};
  return true;
}

}  // namespace ZelAgent
