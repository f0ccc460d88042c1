#include "agent/model/events/RuleChangeCounter.h"

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {
namespace {

using Kind = RuleCall::Kind;

std::uint64_t& countOf(Kind kind, ChangeCounts& counts) {
  switch (kind) {
    case Kind::add:
      return counts.rulesAdded;
    case Kind::replace:
      return counts.rulesReplaced;
    case Kind::move:
      return counts.rulesMoved;
    case Kind::remove:
      break;
  }
  return counts.rulesRemoved;
}

}  // namespace

void RuleChangeCounter::take(const RuleCall& call) {
  OfIntf& intf = intfs_[call.intf];
  const bool isReplacement = call.kind == Kind::replace;
  if (!call.accepted) {
    intf.wasRefused = true;
  } else if (undoesLast(intf, call)) {
    intf.steps.pop_back();
    if (isReplacement) intf.replaced.pop_back();
  } else {
    intf.steps.push_back({call.kind, call.place, call.to});
    if (isReplacement) intf.replaced.push_back(*call.replaced);
  }
}

bool RuleChangeCounter::undoesLast(const OfIntf& intf, const RuleCall& call) {
  if (intf.steps.empty()) return false;
  const Step& last = intf.steps.back();
  switch (last.kind) {
    case Kind::add:
      return call.kind == Kind::remove && call.place == last.place;
    case Kind::replace:
      return call.kind == Kind::replace && call.place == last.place &&
             call.rule == intf.replaced.back();
    case Kind::move:
      return call.kind == Kind::move && call.place == last.to && call.to == last.place;
    case Kind::remove:
      break;
  }
  return false;
}

void RuleChangeCounter::addTo(ChangeCounts& counts, const ForwardingAgent& agent) const {
  for (const auto& [name, intf] : intfs_) {
    for (const Step& step : intf.steps)
      ++countOf(step.kind, counts);
    if (intf.wasRefused) counts.rulesRefused += agent.ruleCounts(name.str()).refused;
  }
}

}  // namespace ZelAgent
