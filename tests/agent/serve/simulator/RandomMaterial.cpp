#include "tests/agent/serve/simulator/RandomMaterial.h"

#include <utility>

namespace ZelAgent {

RandomMaterial::RandomMaterial(RandomChoices& choices) : choices_(choices) {
  refill();
}

void RandomMaterial::refill() {
  History history = randomHistory(choices_);
  if (start_.empty()) {
    start_ = std::move(history.start);
    probes_ = std::move(history.probes);
  }
  steps_.insert(steps_.end(), history.steps.begin(), history.steps.end());
}

Step RandomMaterial::nextStep() {
  while (steps_.empty())
    refill();
  Step step = std::move(steps_.front());
  steps_.pop_front();
  return step;
}

RequestKind RandomMaterial::request() {
  const unsigned kind = choices_.below(100);
  if (kind < 30) return fault();
  if (kind < 40) return Event(Retry{});
  if (kind < 50) return ReloadCommand{};
  if (kind < 65) return ShowConfig{};
  if (kind < 80) return otherCommand();
  return wrongRequest();
}

SimulatedRequest RandomMaterial::framed(RequestKind kind) {
  const bool isLine = std::holds_alternative<TooLongLine>(kind);
  const bool isJson = !isLine && choices_.percent(40);
  // The reference knows the record as text only.
  const bool asJson = isJson && !std::holds_alternative<ShowConfig>(kind) && choices_.percent(50);
  return requestOf(std::move(kind), isJson ? Framing::json : Framing::text, asJson);
}

RequestKind RandomMaterial::fault() {
  switch (choices_.below(5)) {
    case 0:
      return Event(PlanChipFaults{{}, choices_.below(60)});
    case 1:
      return Event(SetChipCapacity{choices_.percent(50) ? roomyChip : choices_.below(6)});
    case 2:
      return Event(SetChipRules{choices_.percent(50) ? roomForRules : choices_.below(20)});
    case 3:
      return Event(SetVrfId{"red", choices_.percent(50) ? 0U : 50U});  // 50 is no other's
    default:
      return Event(PlanChipFaults{"blue", choices_.below(4)});
  }
}

RequestKind RandomMaterial::otherCommand() {
  static const std::vector<OtherCommand> commands{
      {"show vrfs", "default"}, {"show rules", ""},    {"show users", ""},
      {"show fallback", ""},    {"show counters", ""}, {"show limits", "chip"},
      {"help show", "config"},
  };
  if (choices_.percent(10)) return ShowActions{};
  if (choices_.percent(15)) return NoCommand{choices_.percent(50) ? "" : "# nothing"};
  return choices_.oneOf(commands);
}

// The answer repeats the wrong word, which no other request has.
RequestKind RandomMaterial::wrongRequest() {
  if (choices_.percent(3)) return TooLongLine{};
  const std::string word = "wrong" + std::to_string(++number_);
  if (choices_.percent(50)) return WrongRequest{word, word};
  return WrongRequest{"chip capacity " + word, word};
}

}  // namespace ZelAgent
