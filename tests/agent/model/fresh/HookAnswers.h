// What the statuses and resources of actions must be after hook calls.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "agent/model/events/Event.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "chips/interface/HookCall.h"

namespace ZelAgent {

// Follows the hook calls of an agent. After each step:
//
//   no call since the last step   the status and the resource are as before
//   deleted                       there is no status and no resource
//   last call a planned fault     the status is that failure; the resource stays as it was before
//   last call failed otherwise    the status has the reason; there is no resource
//   last call succeeded           the status is success; the resource has the current program
//
// Each planned fault makes one call fail. The chip has resources only for actions with a status,
// and a full chip gets no more.
class HookAnswers final {
 public:
  // Plans faults as the event does.
  void take(const PlanChipFaults& plan);
  // Takes the calls of a step. Returns what is wrong; empty if nothing is.
  [[nodiscard]] std::string take(const std::vector<Chips::HookCall>& calls, ForwardingAgent& agent);

 private:
  struct Outcome {
    std::optional<ZelVrfSelectionPolicy::HwStatus> status;
    std::optional<Chips::VrfProgram> program;

    bool operator==(const Outcome&) const = default;
  };
  enum class Answer : std::uint8_t { none, success, planned, failure, deleted };
  // The calls of one action in a step. `last` is the last answer; `lastReal` is the last one that
  // was no planned fault.
  struct Answers {
    Answer last = Answer::none;
    Answer lastReal = Answer::none;
  };

  [[nodiscard]] bool isPlanned(const Chips::HookCall& call);
  [[nodiscard]] static Outcome outcomeOf(const VrfAction& action, ForwardingAgent& agent);
  [[nodiscard]] static std::string differenceOf(const VrfAction& action, const Outcome& before,
                                                const Answers& answers, ForwardingAgent& agent);

  [[nodiscard]] std::string wrongResources(ForwardingAgent& agent) const;

  std::map<std::string, std::uint32_t> faults_;  // by VRF
  std::uint32_t anyFaults_ = 0;
  std::map<VrfAction, Outcome> before_;
  std::size_t resourcesBefore_ = 0;
};

}  // namespace ZelAgent
