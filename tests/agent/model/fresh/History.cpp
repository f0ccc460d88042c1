#include "tests/agent/model/fresh/History.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Mox/QuotedString.h"
#include "tests/agent/features/RandomPackets.h"

namespace ZelAgent {
namespace {

const std::vector<std::string>& historyVrfs() {
  static const std::vector<std::string> names{defaultVrfName, "red",     "blue", "green",
                                              "grey",         "nowhere", "late"};
  return names;
}

class HistoryMaker final {
 public:
  explicit HistoryMaker(RandomChoices& choices) : choices_(choices) {}

  History make() {
    next_ = makeConfiguration();
    History history{openConfigOf(next_), {}, {}};
    const unsigned steps = 4 + choices_.below(8);
    for (unsigned step = 0; step < steps; ++step)
      addStep(history.steps);
    history.probes = makeProbes();
    return history;
  }

 private:
  Configuration makeConfiguration() { return makeWorld(choices_).configuration; }

  void addStep(std::vector<Step>& steps) {
    if (choices_.percent(40)) return addConfiguration(steps);
    if (!isCalm_ && choices_.percent(20)) {
      steps.emplace_back(SetRuleCapacity{choices_.below(20)});
    } else if (!isCalm_ && choices_.percent(15)) {
      steps.emplace_back(Recover{});
    } else {
      addEvents(steps);
    }
  }

  void addConfiguration(std::vector<Step>& steps) {
    if (choices_.percent(50)) {
      next_ = makeConfiguration();
    } else {
      changeNext();
    }
    std::string document = openConfigOf(next_);
    if (choices_.percent(10)) document.resize(document.size() / 2);
    if (choices_.percent(50)) {
      steps.emplace_back(Reload{std::move(document)});
    } else {
      steps.emplace_back(Configure{std::move(document)});
    }
  }

  // A small change of the last configuration.
  void changeNext() {
    auto& instances = next_.networkInstances;
    NetworkInstance& instance = instances[choices_.below(static_cast<unsigned>(instances.size()))];
    switch (choices_.below(8)) {
      case 0:
        if (instance.name != defaultVrfName) std::erase(instances, NetworkInstance(instance));
        break;
      case 1:
        removeOne(instance.staticRoutes);
        break;
      case 2:
        removeOne(instance.interfaces);
        break;
      case 3:
        removeOne(instance.policyBindings);
        break;
      case 4:
        instance.fallback.clear();
        break;
      default:
        removeARuleOfEachPolicy();
    }
  }

  void removeARuleOfEachPolicy() {
    for (NetworkInstance& instance : next_.networkInstances) {
      for (Policy& policy : instance.policies)
        removeOne(policy.rules);
    }
  }

  template <class List>
  void removeOne(List& list) {
    if (list.empty()) return;
    list.erase(list.begin() + choices_.below(static_cast<unsigned>(list.size())));
  }

  // Some events of a world, which may not fit to this one: then they are refused.
  void addEvents(std::vector<Step>& steps) {
    const std::vector<Event> events = makeWorld(choices_).events;
    const std::size_t first = choices_.below(static_cast<unsigned>(events.size()));
    for (std::size_t at = first; at < std::min(first + 3, events.size()); ++at) {
      if (!isCalm_ || !makesTheChipRefuse(events[at])) steps.emplace_back(events[at]);
    }
  }

  static bool makesTheChipRefuse(const Event& event) {
    return std::holds_alternative<SetChipCapacity>(event) ||
           std::holds_alternative<PlanChipFaults>(event);
  }

  Probes makeProbes() {
    Probes probes;
    for (unsigned count = 0; count < 16; ++count) {
      const IpFamily family = count % 3 == 0 ? IpFamily::v6 : IpFamily::v4;
      probes.addresses.push_back(randomAddress(choices_, family));
    }
    for (std::uint32_t vrfId = 1; vrfId < 10; ++vrfId)
      probes.vrfIds.push_back(vrfId);
    for (const std::string& interface : ingressInterfaces()) {
      for (unsigned count = 0; count < 3; ++count)
        probes.packets.push_back({interface, randomPacket(choices_)});
    }
    return probes;
  }

  RandomChoices& choices_;
  bool isCalm_ = choices_.percent(50);
  Configuration next_;
};

std::string inOneLine(const std::string& document) {
  const auto json = nlohmann::json::parse(document, nullptr, false);
  return json.is_discarded() ? Mox::quoted(document) : json.dump();
}

}  // namespace

std::vector<Event> recoveringEvents() {
  std::vector<Event> events{SetChipCapacity{roomyChip}, PlanChipFaults{{}, 0}};
  for (const std::string& vrf : historyVrfs())
    events.emplace_back(PlanChipFaults{vrf, 0});
  events.emplace_back(Retry{});
  return events;
}

History randomHistory(RandomChoices& choices) {
  return HistoryMaker(choices).make();
}

std::string textOf(const History& history) {
  struct Visitor {
    unsigned& number;
    std::string& files;

    std::string file(const std::string& document) const {
      const std::string name = "config-" + std::to_string(++number) + ".json";
      files += name + ": " + inOneLine(document) + '\n';
      return "config " + name;
    }
    std::string operator()(const Event& event) const { return toText(event); }
    std::string operator()(const Reload& reload) const { return file(reload.document); }
    std::string operator()(const Configure& configure) const { return file(configure.document); }
    std::string operator()(const SetRuleCapacity& set) const {
      return "# room for " + std::to_string(set.rules) + " rules";
    }
    std::string operator()(const Recover& /*recover*/) const {
      std::string text = "# room for every rule; the last configuration again; then:";
      for (const Event& event : recoveringEvents())
        text += '\n' + toText(event);
      return text;
    }
  };
  std::string files = "config-0.json (applied first): " + inOneLine(history.start) + '\n';
  unsigned number = 0;
  std::string lines;
  for (const Step& step : history.steps)
    lines += std::visit(Visitor{number, files}, step) + '\n';
  return "event lines:\n" + lines + "files:\n" + files;
}

}  // namespace ZelAgent
