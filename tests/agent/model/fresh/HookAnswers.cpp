#include "tests/agent/model/fresh/HookAnswers.h"

#include <algorithm>
#include <sstream>

namespace ZelAgent {
namespace {

using Chips::Hook;
using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

bool isFailure(const HwStatus& status, FailureCode reason, const std::string& words) {
  return status.status() == ProgrammingResult::programmingFailure &&
         status.failureReason() == reason &&
         status.failureDescription().str().find(words) != std::string::npos;
}

// Whether the failure is the one that the chip has now.
bool isPresentFailure(const HwStatus& status, const VrfAction& action, ForwardingAgent& agent) {
  if (!vrfWithoutId(agent.chip().currentProgram(action)).empty()) {
    return isFailure(status, FailureCode::failureVrfResourceAlloc, "has no hardware VRF id");
  }
  return isFailure(status, FailureCode::failureVrfResourceExhausted, "no free VRF resource");
}

}  // namespace

void HookAnswers::take(const PlanChipFaults& plan) {
  if (!plan.vrf) {
    anyFaults_ = plan.count;
  } else {
    faults_[*plan.vrf] = plan.count;
  }
}

bool HookAnswers::isPlanned(const Chips::HookCall& call) {
  if (call.hook == Hook::deleteVrf) return false;
  std::uint32_t& ofVrf = faults_[call.action.vrfName().str()];
  std::uint32_t& faults = ofVrf != 0 ? ofVrf : anyFaults_;
  if (faults == 0) return false;
  --faults;
  return true;
}

HookAnswers::Outcome HookAnswers::outcomeOf(const VrfAction& action, ForwardingAgent& agent) {
  Outcome outcome;
  const auto statuses = agent.statuses();
  const auto status = statuses.find(action);
  if (status != statuses.end()) outcome.status = status->second;
  const Chips::VrfResource* const resource = agent.chip().resource(action);
  if (resource != nullptr) outcome.program = resource->program;
  return outcome;
}

std::string HookAnswers::differenceOf(const VrfAction& action, const Outcome& before,
                                      const Answers& answers, ForwardingAgent& agent) {
  const Outcome now = outcomeOf(action, agent);
  if (answers.last == Answer::none) {
    return now == before ? "" : "changed without a hook call";
  }
  if (answers.last == Answer::deleted) {
    return now == Outcome() ? "" : "has a status or a resource after its deletion";
  }
  if (!now.status) return "has no status after a hook call";
  if (answers.last == Answer::success && *now.status != HwStatus()) {
    return "has a failure as status; the last hook call succeeded";
  }
  if (answers.last == Answer::planned &&
      !isFailure(*now.status, FailureCode::failureVrfResourceAlloc, "a planned fault")) {
    return "does not have the planned fault of the last hook call as status";
  }
  if (answers.last == Answer::failure && !isPresentFailure(*now.status, action, agent)) {
    return "does not have the failure of the last hook call as status";
  }
  switch (answers.lastReal) {
    case Answer::success:
      if (answers.last == Answer::success && now.program &&
          now.program != agent.chip().currentProgram(action)) {
        return "has a resource with another program than its update made";
      }
      return now.program ? "" : "has no resource after a success";
    case Answer::failure:
    case Answer::deleted:
      return now.program ? "has a resource after a failure" : "";
    default:
      return now.program == before.program ? "" : "has another program after a planned fault";
  }
}

std::string HookAnswers::take(const std::vector<Chips::HookCall>& calls, ForwardingAgent& agent) {
  std::map<VrfAction, Answers> answers;
  std::string wrong;
  for (const auto& [action, outcome] : before_)
    answers[action];
  for (const Chips::HookCall& call : calls) {
    Answers& ofAction = answers[call.action];
    if (isPlanned(call)) {
      if (!call.failed) wrong = "a planned fault did not happen";
      ofAction.last = Answer::planned;
      continue;
    }
    ofAction.last = call.failed ? Answer::failure : Answer::success;
    if (call.hook == Hook::deleteVrf) ofAction.last = Answer::deleted;
    ofAction.lastReal = ofAction.last;
  }
  for (const auto& [action, ofAction] : answers) {
    const std::string difference = differenceOf(action, before_[action], ofAction, agent);
    if (!difference.empty()) {
      std::ostringstream text;
      text << action << ' ' << difference;
      wrong = text.str();
    }
  }
  before_.clear();
  for (const auto& [action, status] : agent.statuses())
    before_[action] = outcomeOf(action, agent);
  if (wrong.empty()) wrong = wrongResources(agent);
  resourcesBefore_ = agent.chip().resources().size();
  return wrong;
}

std::string HookAnswers::wrongResources(ForwardingAgent& agent) const {
  const auto& resources = agent.chip().resources();
  for (const auto& [action, resource] : resources) {
    if (!before_.contains(action)) return "the chip has a resource of an action without a status";
  }
  if (resources.size() > std::max<std::size_t>(resourcesBefore_, agent.chip().capacity())) {
    return "a full chip has got a resource";
  }
  return "";
}

}  // namespace ZelAgent
