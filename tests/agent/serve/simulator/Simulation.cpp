#include "tests/agent/serve/simulator/Simulation.h"

#include <algorithm>
#include <utility>

#include "Mox/QuotedString.h"
#include "tests/agent/serve/simulator/Promise.h"

namespace ZelAgent {

using std::chrono::milliseconds;

Simulation::Simulation(std::uint32_t seed, const std::string& folder)
    : folder_(folder),
      choices_(seed),
      served_(folder + "served.json"),
      other_(folder + "other.json"),
      daemon_(served_.path(), roomyChip),
      reference_(served_, other_, roomyChip) {
  clients_.reserve(2);
  clients_.emplace_back("client 1", turns_);
  clients_.emplace_back("client 2", turns_);
  documentIs(served_, material_.start());
  documentIs(other_, material_.start());
  daemon_.start();
  reference_.start();
  for (SimulatedClient& client : clients_)
    connect(client);
  check();
}

std::string Simulation::run(unsigned steps) {
  for (unsigned made = 0; made < steps && wrong_.empty(); ++made) {
    step();
    check();
  }
  closeClients();
  if (wrong_.empty() && choices_.percent(50)) refuseAll();
  if (wrong_.empty()) endFaults();
  if (wrong_.empty()) recover();
  if (wrong_.empty()) finish();
  return withoutFolder(wrong_);
}

void Simulation::step() {
  const unsigned kind = choices_.below(100);
  if (kind < 50) return clientStep(anyClient());
  if (kind < 77) return round();
  if (kind < 87) return takeMaterial();
  if (kind < 89) return breakFile();
  if (kind < 93) return hangUp();
  pass(milliseconds(choices_.percent(70) ? 1 + choices_.below(3000) : choices_.below(20000)));
}

void Simulation::clientStep(SimulatedClient& client) {
  if (!client.isConnected()) return connect(client);
  const unsigned kind = choices_.below(100);
  if (kind < 2) return loseClient(client);
  if (kind < 12 || client.answerWaits()) return makeRoom(client);
  if (!client.maySend()) return deliver(client);
  if (kind < 60 || client.unsent() == 0) addRequest(client);
  if (kind >= 30) sendPiece(client, choices_.percent(50) ? client.unsent() : choices_.below(40));
}

void Simulation::connect(SimulatedClient& client) {
  write(client.name() + " connects");
  client.connect(daemon_);
}

void Simulation::addRequest(SimulatedClient& client) {
  addRequest(client, material_.framed(material_.request()));
}

void Simulation::addRequest(SimulatedClient& client, SimulatedRequest request) {
  write(client.name() + " has the request " + Mox::quoted(request.bytes.substr(0, 300)));
  client.add(std::move(request));
}

void Simulation::sendPiece(SimulatedClient& client, std::size_t bytes) {
  const std::string piece = client.send(bytes);
  write(client.name() + " sends " + std::to_string(piece.size()) + " bytes");
}

void Simulation::deliver(SimulatedClient& client) {
  write("what " + client.name() + " has sent arrives");
  client.deliver();
}

void Simulation::makeRoom(SimulatedClient& client) {
  const unsigned bytes = choices_.percent(50) ? 1 + choices_.below(100) : 100000;
  if (client.answerWaits()) {
    write(client.name() + " takes " + std::to_string(bytes) + " bytes");
    client.take(bytes);
  } else {
    write(client.name() + " has room for " + std::to_string(bytes) + " bytes");
    client.roomIs(bytes);
  }
  deliver(client);
}

void Simulation::loseClient(SimulatedClient& client) {
  if (client.waitsForTurn() || choices_.percent(70)) {
    write(client.name() + " sends no more");
    return client.endSending();
  }
  loseConnection(client);
}

void Simulation::loseConnection(SimulatedClient& client) {
  write(client.name() + " loses its connection");
  client.breakConnection();
}

void Simulation::takeMaterial() {
  struct Visitor {
    Simulation& simulation;

    void operator()(const Event& event) const { request(event); }
    void operator()(const Reload& reload) const {
      simulation.documentIs(simulation.served_, reload.document);
      if (simulation.choices_.percent(50)) return simulation.hangUp();
      request(ReloadCommand{});
    }
    void operator()(const Configure& configure) const {
      simulation.documentIs(simulation.other_, configure.document);
      request(Event(ApplyConfig{simulation.other_.path()}));
    }
    void operator()(const SetRuleCapacity& set) const { request(Event(SetChipRules{set.rules})); }
    void operator()(const Recover& /*recover*/) const { request(Event(Retry{})); }

    void request(const RequestKind& kind) const {
      SimulatedClient& client = simulation.anyClient();
      if (client.maySend()) {
        simulation.addRequest(client, simulation.material_.framed(kind));
      }
    }
  };
  std::visit(Visitor{*this}, material_.nextStep());
}

void Simulation::documentIs(SimulatedFile& file, const std::string& document) {
  file.documentIs(document);
  write(file.path() + " has " + (file.configuration() ? "a right" : "a wrong") + " document of " +
        std::to_string(document.size()) + " bytes");
}

void Simulation::breakFile() {
  SimulatedFile& file = choices_.percent(50) ? served_ : other_;
  const auto fault = static_cast<FileFault>(choices_.below(fileFaults));
  file.faultIs(fault);
  write(file.path() + ' ' + toText(fault));
}

void Simulation::hangUp() {
  const unsigned times = choices_.percent(50) ? 1 : 60;
  write("the daemon gets " + std::to_string(times) + " hang-ups");
  for (unsigned time = 0; time < times; ++time)
    daemon_.hangUp();
  isReloadRequested_ = true;
}

// A reload comes first, then each client that waits has one turn.
void Simulation::round() {
  write("a round");
  const bool isReload = std::exchange(isReloadRequested_, false);
  if (isReload) reference_.reload();
  const std::string lastReload = isReload ? reference_.printed() : "";
  std::vector<std::pair<SimulatedClient*, ExpectedAnswer>> answers;
  for (SimulatedClient* const client : std::exchange(turns_, {}))
    answers.emplace_back(client, reference_.answer(client->beginTurn()));
  daemon_.scheduler().round();
  const std::vector<std::string> printed = daemon_.printed();
  const bool isPrinted =
      isReload ? !printed.empty() && printed.back().starts_with(lastReload) : printed.empty();
  if (!isPrinted) {
    wrong_ = "the daemon printed " + Mox::quoted(printed.empty() ? "" : printed.back()) +
             ", expected " + Mox::quoted(lastReload);
  }
  for (const auto& [client, answer] : answers)
    client->endTurn(answer);
  answers_ += static_cast<unsigned>(answers.size());
  hasRun_ = hasRun_ || isReload || !answers.empty();
}

void Simulation::pass(milliseconds time) {
  write(std::to_string(time.count()) + " ms pass");
  daemon_.scheduler().pass(time);
  for (SimulatedClient& client : clients_)
    client.passed(time);
  hasRun_ = true;
}

// Nothing is left to do that was requested before.
void Simulation::closeClients() {
  while (wrong_.empty() && (isReloadRequested_ || !turns_.empty())) {
    round();
    check();
  }
  for (SimulatedClient& client : clients_) {
    if (wrong_.empty() && client.isConnected()) loseConnection(client);
  }
}

void Simulation::refuseAll() {
  SimulatedClient& client = clients_.front();
  connect(client);
  const bool isOn = daemon_.served().agent().routeStatus().decapNhEnabled();
  request(client, {PlanChipFaults{{}, 100 + choices_.below(200)}, SetDecapNh{!isOn}});
  pass(milliseconds(choices_.below(60000)));
  check();
}

// A client requests room, no planned faults, and an id for each VRF that has none.
void Simulation::endFaults() {
  write("the faults end");
  SimulatedClient& client = clients_.front();
  if (!client.isConnected()) connect(client);
  std::vector<Event> events = recoveringEvents();
  std::erase_if(events, [](const Event& event) { return std::holds_alternative<Retry>(event); });
  events.emplace_back(SetChipRules{roomForRules});
  for (std::uint32_t id = 100; !events.empty() && wrong_.empty(); ++id) {
    request(client, std::exchange(events, {}));
    for (const ActionState& action : daemon_.served().agent().state().actions) {
      const L3::VrfName vrf = vrfWithoutId(action.currentProgram);
      if (!vrf.empty()) events = {AddVrf{vrf.str(), id}};
    }
  }
}

void Simulation::request(SimulatedClient& client, const std::vector<Event>& events) {
  for (const Event& event : events)
    addRequest(client, requestOf(event));
  sendPiece(client, client.unsent());
  while (client.waitsForTurn() && wrong_.empty()) {
    round();
    check();
  }
}

// Only time passes.
void Simulation::recover() {
  ForwardingAgent& agent = daemon_.served().agent();
  const auto mostSeconds = static_cast<unsigned>(Limits::pauseSteps) + 1;
  for (std::string left = missing(agent); !left.empty() && wrong_.empty(); left = missing(agent)) {
    if (recoverySeconds_++ == mostSeconds) {
      wrong_ = std::to_string(mostSeconds) + " seconds after the faults have ended: " + left;
      return;
    }
    pass(RecoveryTimer::period);
    check();
  }
  if (agent.isRecovering() && wrong_.empty()) wrong_ = "the agent recovers from nothing";
}

void Simulation::finish() {
  write("the daemon is terminated");
  daemon_.terminate();
  ForwardingAgent& agent = daemon_.served().agent();
  if (!agent.chip().resources().empty() || agent.acl().rulesInUse() != 0) {
    wrong_ = "the chip holds something after the end";
  }
  for (const SimulatedClient& client : clients_) {
    if (client.isServed()) wrong_ = client.name() + " is connected after the end";
  }
}

SimulatedClient& Simulation::anyClient() {
  return clients_[choices_.below(static_cast<unsigned>(clients_.size()))];
}

void Simulation::write(const std::string& line) {
  text_ += withoutFolder(line) + '\n';
}

// Lines are then short, and equal in each run of the seed.
std::string Simulation::withoutFolder(std::string text) const {
  for (std::size_t at = text.find(folder_); at != std::string::npos; at = text.find(folder_, at))
    text.erase(at, folder_.size());
  return text;
}

void Simulation::check() {
  if (wrong_.empty()) wrong_ = firstWrong();
}

std::string Simulation::firstWrong() {
  for (SimulatedClient& client : clients_) {
    std::string wrong = client.check();
    if (!wrong.empty()) return wrong;
  }
  std::string wrong = wrongSleep();
  if (!wrong.empty() || !std::exchange(hasRun_, false)) return wrong;
  ServedAgent& served = daemon_.served();
  std::string wrongRecord = reference_.differenceOf(served.record());
  if (!wrongRecord.empty()) return wrongRecord;
  const std::string facts = KeptFacts::textOf(served.agent());
  if (facts != reference_.facts().text()) {
    return firstDifference("== facts\n" + facts, "== facts\n" + reference_.facts().text());
  }
  std::string broken = brokenPromise(served.agent());
  return broken.empty() ? differenceFromFresh() : broken;
}

// The loop sleeps while nothing is requested, and is woken only by those who wait for time.
std::string Simulation::wrongSleep() {
  const ManualScheduler& scheduler = daemon_.scheduler();
  if (scheduler.isIdle() != (turns_.empty() && !isReloadRequested_)) {
    return scheduler.isIdle() ? "the loop sleeps, and something is requested"
                              : "the loop does not sleep, and nothing is requested";
  }
  const auto slowClients =
      std::count_if(clients_.begin(), clients_.end(),
                    [](const SimulatedClient& client) { return client.answerWaits(); });
  const std::size_t wanted =
      static_cast<std::size_t>(slowClients) + (daemon_.served().agent().isRecovering() ? 1 : 0);
  if (scheduler.running() == wanted) return "";
  return std::to_string(scheduler.running()) + " timers run, expected " + std::to_string(wanted);
}

// What the chip refuses depends on the past, so only the rest is compared.
std::string Simulation::differenceFromFresh() {
  ServedAgent& served = daemon_.served();
  if (freshChanges_ != reference_.changes()) {
    freshChanges_ = reference_.changes();
    fresh_ = reference_.facts().freshAgent();
    freshState_.clear();
  }
  const AgentState state = served.agent().state();
  Scope scope = Scope::facts;
  if (state.ruleTable.refused == 0) scope = Scope::rules;
  if (isProgrammed(state) && isProgrammed(fresh_->agent().state())) scope = Scope::everything;
  std::string& wanted = freshState_[scope];
  if (wanted.empty()) wanted = visibleState(*fresh_, material_.probes(), scope);
  return firstDifference(visibleState(served, material_.probes(), scope), wanted);
}

}  // namespace ZelAgent
