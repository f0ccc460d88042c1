#include "tests/agent/serve/simulator/ReferenceAgent.h"

#include "tests/agent/FixedClock.h"
#include "tests/agent/serve/simulator/NameOracle.h"

namespace ZelAgent {
namespace {

const char* nameOf(ConfigurationSource source) {
  switch (source) {
    case ConfigurationSource::start:
      return "at start";
    case ConfigurationSource::reload:
      return "by reload";
    case ConfigurationSource::event:
      break;
  }
  return "by config";
}

}  // namespace

// Applies a request, and completes the answer to it.
class ReferenceAgent::Answerer final {
 public:
  Answerer(ReferenceAgent& agent, ExpectedAnswer& answer) : agent_(agent), answer_(answer) {}

  void operator()(const Event& event) const {
    if (std::holds_alternative<ApplyConfig>(event)) return applyOther(event);
    if (!namesOnlyKnown(event, agent_.facts_) || !agent_.facts_.take(event)) return refuse("must");
    answer_.event = toText(event);
    ++agent_.changes_;
  }
  void operator()(const ReloadCommand& /*reload*/) const {
    if (!agent_.reload()) return refuse(agent_.served_.error());
    answer_.part = agent_.inForce_;
  }
  void operator()(const ShowConfig& /*show*/) const { answer_.part = agent_.shownConfig(); }
  void operator()(const ShowActions& /*show*/) const { answer_.part = agent_.inForce_; }
  void operator()(const OtherCommand& command) const { answer_.part = command.part; }
  void operator()(const NoCommand& /*command*/) const { answer_.isEmpty = true; }
  void operator()(const WrongRequest& wrong) const { refuse(wrong.part); }
  void operator()(const TooLongLine& /*line*/) const { refuse("a request must be a line of"); }
  void operator()(const UnfinishedLine& /*line*/) const {
    refuse("a request must end with a newline");
  }

 private:
  void applyOther(const Event& event) const {
    if (!agent_.other_.configuration()) return refuse(agent_.other_.error());
    agent_.configurationIs(agent_.other_, ConfigurationSource::event);
    answer_.event = toText(event);
  }

  void refuse(const std::string& part) const {
    answer_.status = ExitStatus::badInput;
    answer_.part = part;
  }

  ReferenceAgent& agent_;
  ExpectedAnswer& answer_;
};

ReferenceAgent::ReferenceAgent(const SimulatedFile& served, const SimulatedFile& other,
                               std::uint32_t chipCapacity)
    : served_(served), other_(other), facts_(chipCapacity) {}

void ReferenceAgent::start() {
  configurationIs(served_, ConfigurationSource::start);
}

bool ReferenceAgent::reload() {
  if (!served_.configuration()) {
    ++refused_;
    refusal_ = served_.error();
    return false;
  }
  configurationIs(served_, ConfigurationSource::reload);
  ++applied_;
  refusal_.clear();
  return true;
}

ExpectedAnswer ReferenceAgent::answer(const SimulatedRequest& request) {
  ExpectedAnswer answer;
  answer.request = request.bytes.substr(0, 200);
  answer.framing = request.framing;
  answer.asJson = request.asJson;
  std::visit(Answerer(*this, answer), request.kind);
  return answer;
}

std::string ReferenceAgent::differenceOf(const ConfigurationRecord& record) const {
  if (record.reloadsApplied != applied_ || record.reloadsRefused != refused_) {
    return std::to_string(record.reloadsApplied) + " reloads are recorded as applied and " +
           std::to_string(record.reloadsRefused) + " as refused, expected " +
           std::to_string(applied_) + " and " + std::to_string(refused_);
  }
  if (record.inForce != inForce_ || record.source != source_) {
    return record.inForce + " is recorded as in force, expected " + inForce_ + ", applied " +
           nameOf(source_);
  }
  if (record.refusal.has_value() == refusal_.empty() ||
      record.refusal.value_or("").find(refusal_) == std::string::npos) {
    return "the last refusal is recorded as '" + record.refusal.value_or("") + "', expected '" +
           refusal_ + "'";
  }
  return "";
}

std::string ReferenceAgent::printed() const {
  return refusal_.empty() ? served_.path() + " applied" : "error: " + refusal_;
}

void ReferenceAgent::configurationIs(const SimulatedFile& file, ConfigurationSource source) {
  facts_.configurationIs(file.configuration().value());
  ++changes_;
  inForce_ = file.path();
  source_ = source;
}

std::string ReferenceAgent::shownConfig() const {
  return "file         " + served_.path() + "\nin force     " + inForce_ + ", applied " +
         nameOf(source_) + ", " + fixedTimeText + "\nreloads      " + std::to_string(applied_) +
         " applied, " + std::to_string(refused_) + " refused\n" +
         (refusal_.empty()
              ? ""
              : std::string("last reload  refused, ") + fixedTimeText + ": " + refusal_);
}

}  // namespace ZelAgent
