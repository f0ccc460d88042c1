// A client, and the reference for how a daemon must treat it.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include "tests/agent/serve/daemon/ScriptedClient.h"
#include "tests/agent/serve/simulator/ExpectedAnswer.h"
#include "tests/agent/serve/simulator/SimulatedDaemon.h"
#include "tests/agent/serve/simulator/SimulatedRequest.h"

namespace ZelAgent {

class SimulatedClient;
// The clients that wait for a turn, in their order.
using ExpectedTurns = std::deque<SimulatedClient*>;

// A client that sends requests in pieces and takes answers in pieces. It may disconnect and connect
// again.
//
// The daemon must read while it has no whole request of the client, give a turn to each request,
// and not read while an answer waits. Each request has one answer, in the order of the requests.
class SimulatedClient final {
 public:
  SimulatedClient(std::string name, ExpectedTurns& turns) : name_(std::move(name)), turns_(turns) {}

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] bool isConnected() const { return state_ != State::closed; }
  [[nodiscard]] bool waitsForTurn() const { return state_ == State::waitsForTurn; }
  [[nodiscard]] bool answerWaits() const { return state_ == State::answerWaits; }
  // Whether the daemon has a connection to it.
  [[nodiscard]] bool isServed() const { return client_ != nullptr && client_->isConnected(); }
  // Whether the client may send something.
  [[nodiscard]] bool maySend() const { return isConnected() && !hasEnded_; }
  [[nodiscard]] std::size_t unsent() const { return unsent_.size(); }

  // Precondition: it is not connected.
  void connect(SimulatedDaemon& daemon);
  // The client will send the request after all others. Precondition: `maySend`.
  void add(SimulatedRequest request);
  // Sends the next bytes, and returns them.
  std::string send(std::size_t bytes);
  // What was sent arrives, if the daemon reads.
  void deliver();
  // Sends no more. What has not been sent is left out.
  void endSending();
  // The connection breaks. Precondition: it is connected and does not wait for a turn.
  void breakConnection();
  // How many bytes the system accepts until `take`.
  void roomIs(std::size_t bytes) { client_->roomIs(bytes); }
  // Precondition: `answerWaits`.
  void take(std::size_t bytes);

  // The request whose turn it is.
  [[nodiscard]] SimulatedRequest beginTurn();
  // The daemon has given the turn, and must have sent the answer.
  void endTurn(const ExpectedAnswer& answer);
  // Time has passed. The daemon must have disconnected a client that took nothing for too long.
  void passed(std::chrono::milliseconds time);

  // Returns what is wrong with the daemon; empty if nothing is.
  [[nodiscard]] std::string check();

 private:
  enum class State { closed, read, waitsForTurn, answerWaits };

  [[nodiscard]] bool hasRequest() const;
  // The daemon neither reads nor writes, and begins what comes next.
  void proceed();
  void lose();
  void cutRequests();
  [[nodiscard]] std::string checkAnswers();
  [[nodiscard]] std::string checkState() const;

  std::string name_;
  ExpectedTurns& turns_;
  std::unique_ptr<ScriptedClient> client_;
  State state_ = State::closed;
  std::string unsent_;
  std::deque<SimulatedRequest> requests_;  // without an answer
  std::size_t sent_ = 0;                   // bytes of `requests_`
  std::size_t arrived_ = 0;                // of `sent_`
  bool hasEnded_ = false;
  bool hasEndArrived_ = false;
  std::deque<ExpectedAnswer> answers_;  // not complete
  std::string received_;
  std::chrono::milliseconds quiet_{0};    // since the client took something
  std::chrono::milliseconds waiting_{0};  // since the answer waits
  std::string wrong_;
};

}  // namespace ZelAgent
