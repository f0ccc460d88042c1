// A daemon, two clients, two files and a chip, under one seed.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/agent/features/RandomWorld.h"
#include "tests/agent/model/fresh/VisibleState.h"
#include "tests/agent/serve/simulator/RandomMaterial.h"
#include "tests/agent/serve/simulator/ReferenceAgent.h"
#include "tests/agent/serve/simulator/SimulatedClient.h"
#include "tests/agent/serve/simulator/SimulatedDaemon.h"
#include "tests/agent/serve/simulator/SimulatedFile.h"

namespace ZelAgent {

// One history of a daemon. Each step is one of these:
//
//   a client      connects, sends a piece of its requests, takes a piece of its answer, has no room
//                 for answers, sends no more, or loses its connection
//   a file        gets another configuration, a wrong one, or one that cannot be read
//   the daemon    gets hang-ups, makes a round of its loop, or time passes
//
// After each step these hold:
//
//   requests      each one is answered once, in order, to its client (SimulatedClient.h), with what
//                 it must report (ReferenceAgent.h)
//   configuration the agent has wholly one configuration, the last right one, and the facts that
//                 are kept, as if it had been started fresh (VisibleState.h). The rules are
//                 compared if the chip holds all of them, and everything if every action is
//                 programmed too.
//   promise       Promise.h
//   loop          it sleeps exactly while nothing is requested. A timer runs for each client that
//                 does not take its answer, and one while the agent has something to recover.
//
// At the end the faults are over and the chip has room. Then every used action is programmed and
// every rule is on the chip after the number of seconds that Reprogrammer.h promises.
class Simulation final {
 public:
  // Writes its files to the folder.
  Simulation(std::uint32_t seed, const std::string& folder);

  // Makes random steps, and then ends the faults and the daemon. Returns what is wrong first; empty
  // if nothing is.
  [[nodiscard]] std::string run(unsigned steps);

  // The steps so far, one in each line.
  [[nodiscard]] const std::string& text() const { return text_; }
  // How many seconds the agent needed at the end.
  [[nodiscard]] unsigned recoverySeconds() const { return recoverySeconds_; }
  // How many requests were answered.
  [[nodiscard]] unsigned answers() const { return answers_; }
  // The reloads.
  [[nodiscard]] const ConfigurationRecord& record() { return daemon_.served().record(); }

 private:
  void step();
  void clientStep(SimulatedClient& client);
  void connect(SimulatedClient& client);
  void addRequest(SimulatedClient& client);
  void addRequest(SimulatedClient& client, SimulatedRequest request);
  void deliver(SimulatedClient& client);
  void sendPiece(SimulatedClient& client, std::size_t bytes);
  void makeRoom(SimulatedClient& client);
  void loseClient(SimulatedClient& client);
  void loseConnection(SimulatedClient& client);
  void takeMaterial();
  void documentIs(SimulatedFile& file, const std::string& document);
  void breakFile();
  void hangUp();
  void round();
  void pass(std::chrono::milliseconds time);

  void closeClients();
  // The chip refuses every action, and some time passes.
  void refuseAll();
  void endFaults();
  // Sends the events, and waits for the answers.
  void request(SimulatedClient& client, const std::vector<Event>& events);
  void recover();
  void finish();

  [[nodiscard]] SimulatedClient& anyClient();
  void write(const std::string& line);
  [[nodiscard]] std::string withoutFolder(std::string text) const;
  // Checks everything, and records what is wrong.
  void check();
  [[nodiscard]] std::string firstWrong();
  [[nodiscard]] std::string wrongSleep();
  [[nodiscard]] std::string differenceFromFresh();

  std::string folder_;
  RandomChoices choices_;
  RandomMaterial material_{choices_};
  SimulatedFile served_;
  SimulatedFile other_;
  ExpectedTurns turns_;
  std::vector<SimulatedClient> clients_;  // outlive the daemon
  SimulatedDaemon daemon_;
  ReferenceAgent reference_;
  bool isReloadRequested_ = false;
  bool hasRun_ = true;  // since the last check
  // What the daemon is compared with, and the number of changes by which it was made.
  std::unique_ptr<ServedAgent> fresh_;
  unsigned freshChanges_ = 0;
  std::map<Scope, std::string> freshState_;
  unsigned recoverySeconds_ = 0;
  unsigned answers_ = 0;
  std::string text_;
  std::string wrong_;
};

}  // namespace ZelAgent
