// After any history an agent is as if it had been started fresh.
//
// After every step the agent is compared with a new one, which is given the configuration in force
// and the facts that are kept by design. KeptFacts.h lists these, VisibleState.h what is compared.
//
//   always                     the kept facts; `show config`; Scope::facts; the status and the
//                              resource of each action are those of the last hook calls
//                              (HookAnswers.h); a rule is missing on the chip only if there was no
//                              room when the last configuration was applied, and then has that
//                              reason as status; the users are the rules on the chip
//   if every rule had room     Scope::rules
//   if no hook call had to fail by a planned fault or for lack of room
//                              Scope::everything
//   at the end of a history    Scope::everything, after the faults are over, the chip has room, it
//                              was asked again, and the configuration was applied again
//   after `removeAll`          Scope::everything, without a configuration, and with the last one
//                              again
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "agent/commands/served/CommandDispatch.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/agent/FixedClock.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/model/HeldRule.h"
#include "tests/agent/model/fresh/History.h"
#include "tests/agent/model/fresh/HookAnswers.h"
#include "tests/agent/model/fresh/KeptFacts.h"

namespace ZelAgent {
namespace {

using Chips::HookCall;
using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr std::size_t historiesByDefault = 12;

// One agent during a history, and all that it is compared with.
class AgedAgent final {
 public:
  AgedAgent(const History& history, std::string folder)
      : probes_(history.probes), folder_(std::move(folder)) {
    writeDocument(agentFile(), history.start);
    observe([&] { static_cast<void>(served_.start()); });
    configurationIs(configurationIn(history.start).value(), agentFile() + ", applied at start");
  }

  // Plays the step. Returns what is wrong afterwards; empty if nothing is.
  [[nodiscard]] std::string play(const Step& step) {
    wrong_.clear();
    calls_.clear();
    std::visit([this](const auto& action) { (*this)(action); }, step);
    return wrong_.empty() ? check() : wrong_;
  }

  [[nodiscard]] std::string check() {
    if (facts_.text() != KeptFacts::textOf(agent())) {
      return firstDifference("== facts\n" + KeptFacts::textOf(agent()),
                             "== facts\n" + facts_.text());
    }
    for (const std::string& wrong :
         {answers_.take(calls_, agent()), wrongShowConfig(), wrongRules()}) {
      if (!wrong.empty()) return wrong;
    }
    return differenceFromFresh();
  }

  // Removes everything, and applies the configuration that was in force again.
  [[nodiscard]] std::string checkRemoval() {
    const Configuration last = facts_.configuration();
    agent().removeAll();
    facts_.removeAll();
    const std::string difference = differenceFromFresh();
    if (!difference.empty()) return difference;
    agent().apply(last);
    facts_.configurationIs(last);
    return differenceFromFresh();
  }

 private:
  using Statuses = std::map<VrfAction, ZelVrfSelectionPolicy::HwStatus>;

  [[nodiscard]] ForwardingAgent& agent() { return served_.agent(); }
  [[nodiscard]] std::string agentFile() const { return folder_ + "agent.json"; }
  [[nodiscard]] std::string eventFile() const { return folder_ + "event.json"; }

  static void writeDocument(const std::string& file, const std::string& document) {
    std::ofstream(file, std::ios::binary) << document;
  }

  static std::optional<Configuration> configurationIn(const std::string& document) {
    try {
      return readOpenConfig(document, "document").configuration;
    } catch (const ConfigError&) {
      return std::nullopt;
    }
  }

  // Records the hook calls while `work` runs. Events record them themselves.
  template <class Work>
  void observe(const Work& work) {
    agent().chip().hookObserverIs([this](const HookCall& call) { calls_.push_back(call); });
    work();
    agent().chip().hookObserverIs({});
  }

  void operator()(const Event& event) {
    try {
      const EventEffects effects = served_.play(event);
      calls_.insert(calls_.end(), effects.calls.begin(), effects.calls.end());
      if (!facts_.take(event)) wrong_ = "an event was not refused: " + toText(event);
    } catch (const EventError& error) {
      if (facts_.take(event)) wrong_ = error.what();
    }
    if (const auto* const plan = std::get_if<PlanChipFaults>(&event)) {
      answers_.take(*plan);
      if (plan->count > 0) callsMayFail_ = true;
    }
    if (const auto* const set = std::get_if<SetChipCapacity>(&event)) {
      if (set->capacity < roomyChip) callsMayFail_ = true;
    }
  }

  void operator()(const Reload& reload) {
    writeDocument(agentFile(), reload.document);
    const auto configuration = configurationIn(reload.document);
    refusal_.reset();
    try {
      calls_ = served_.reload().calls;
    } catch (const ConfigError& error) {
      refusal_ = error.what();
    }
    if (configuration.has_value() == refusal_.has_value()) wrong_ = "a reload was judged wrongly";
    ++(configuration ? applied_ : refused_);
    if (!configuration) return;
    configurationIs(*configuration, agentFile() + ", applied by reload");
  }

  void operator()(const Configure& configure) {
    writeDocument(eventFile(), configure.document);
    const auto configuration = configurationIn(configure.document);
    bool isRefused = false;
    try {
      calls_ = served_.play(ApplyConfig{eventFile()}).calls;
    } catch (const EventError&) {
      isRefused = true;
    }
    if (configuration.has_value() == isRefused) wrong_ = "a configuration was judged wrongly";
    if (!configuration) return;
    configurationIs(*configuration, eventFile() + ", applied by config");
  }

  void operator()(const SetRuleCapacity& set) {
    agent().acl().capacityIs(set.rules);
    rulesMayBeMissing_ = true;
  }

  // The agent has applied the configuration.
  void configurationIs(const Configuration& configuration, const std::string& inForce) {
    facts_.configurationIs(configuration);
    inForce_ = inForce;
  }

  void operator()(const Recover& /*recover*/) {
    agent().acl().capacityIs(roomForRules);
    for (const Event& event : recoveringEvents())
      (*this)(event);
    observe([&] { agent().apply(facts_.configuration()); });
    rulesMayBeMissing_ = false;
    callsMayFail_ = false;
  }

  [[nodiscard]] std::string wrongShowConfig() {
    std::string wanted = "== show config\nfile         " + agentFile() + "\nin force     " +
                         inForce_ + ", " + fixedTimeText + "\nreloads      " +
                         std::to_string(applied_) + " applied, " + std::to_string(refused_) +
                         " refused\n";
    if (refusal_)
      wanted += std::string("last reload  refused, ") + fixedTimeText + ": " + *refusal_ + '\n';
    const CommandOutput shown = runCommand(served_, "show config", false);
    return firstDifference("== show config\n" + shown.get_ref<const std::string&>(), wanted);
  }

  // The rules of the configuration in force, the users among them, and what is missing.
  [[nodiscard]] std::string wrongRules() {
    const ActionUsers wanted = usersOfActions(facts_.configuration());
    for (const auto& [action, users] : agent().users()) {
      const auto counts = agent().policySm().vrfSm()->vrfHwConfig();
      if (counts->vrfRefCount(action) != users.size()) return "a count is not that of the users";
      for (const ActionUser& user : users) {
        const bool isWanted = wanted.contains(action) && wanted.at(action).contains(user);
        if (!isWanted && !rulesMayBeMissing_) {
          return "a user is not configured: rule " + std::to_string(user.sequenceId) + " of " +
                 user.policyId + " on " + user.interface;
        }
      }
    }
    return wrongPlaces();
  }

  [[nodiscard]] std::string wrongPlaces() {
    std::size_t held = 0;
    for (const RuleState& rule : agent().rules()) {
      const std::string name = rule.user.interface + ' ' + std::to_string(rule.user.sequenceId);
      if (!rule.place) {
        if (!rulesMayBeMissing_) return "a rule is missing: " + name;
        if (rule.reason.find("the rules do not fit into the ") != 0) {
          return "the status of a missing rule is \"" + rule.reason + "\": " + name;
        }
        continue;
      }
      ++held;
      const auto& rules = agent().acl().rules(rule.user.interface);
      if (*rule.place >= rules.size() || !isRule(rules[*rule.place], rule.rule)) {
        return "the chip does not hold the rule at its place: " + name;
      }
    }
    return held == agent().acl().rulesInUse() ? "" : "the chip holds other rules";
  }

  [[nodiscard]] Scope scope() const {
    if (rulesMayBeMissing_) return Scope::facts;
    return callsMayFail_ ? Scope::rules : Scope::everything;
  }

  [[nodiscard]] std::string differenceFromFresh() {
    const auto fresh = facts_.freshAgent();
    return firstDifference(visibleState(served_, probes_, scope()),
                           visibleState(*fresh, probes_, scope()));
  }

  const Probes& probes_;
  const std::string folder_;
  ServedAgent served_{agentFile(), ChipOptions{.capacity = roomyChip}, Limits::clientTimeout,
                      Leniency::strict, fixedTime};
  KeptFacts facts_{roomyChip};
  HookAnswers answers_;
  std::vector<HookCall> calls_;
  std::string wrong_;
  bool callsMayFail_ = false;
  bool rulesMayBeMissing_ = false;
  // What `show config` prints.
  std::string inForce_;
  unsigned applied_ = 0;
  unsigned refused_ = 0;
  std::optional<std::string> refusal_;
};

// Returns what is wrong first; empty if nothing is.
std::string firstFailure(const History& history, const std::string& folder) {
  AgedAgent agent(history, folder);
  std::string wrong = agent.check();
  for (std::size_t at = 0; at < history.steps.size() && wrong.empty(); ++at)
    wrong = agent.play(history.steps[at]);
  if (wrong.empty()) wrong = agent.play(Recover{});
  return wrong.empty() ? agent.checkRemoval() : wrong;
}

// Leaves out every step without which the history still fails.
History smallestThatFails(History history, const std::string& folder) {
  for (std::size_t at = history.steps.size(); at-- > 0;) {
    History smaller = history;
    smaller.steps.erase(smaller.steps.begin() + static_cast<std::ptrdiff_t>(at));
    if (!firstFailure(smaller, folder).empty()) history = std::move(smaller);
  }
  return history;
}

TEST(AsIfStartedFresh, AfterEveryStepOfManyHistories) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  const std::string folder = pathInTestFolder("");
  RandomChoices choices(seed.value());
  for (std::size_t round = 0; round < randomRounds(historiesByDefault); ++round) {
    const History history = randomHistory(choices);
    const std::string failure = firstFailure(history, folder);
    if (failure.empty()) continue;
    const History smallest = smallestThatFails(history, folder);
    FAIL() << failure << "\nin history " << round << "; made smaller:\n"
           << firstFailure(smallest, folder) << '\n'
           << textOf(smallest);
  }
}

}  // namespace
}  // namespace ZelAgent
