#include "tests/agent/serve/simulator/SimulatedClient.h"

#include <algorithm>
#include <utility>

#include "Mox/QuotedString.h"

namespace ZelAgent {

using std::chrono::milliseconds;

void SimulatedClient::connect(SimulatedDaemon& daemon) {
  client_ = std::make_unique<ScriptedClient>();
  unsent_.clear();
  requests_.clear();
  answers_.clear();
  received_.clear();
  sent_ = arrived_ = 0;
  hasEnded_ = hasEndArrived_ = false;
  state_ = State::read;
  daemon.accept(*client_);
}

void SimulatedClient::add(SimulatedRequest request) {
  unsent_ += request.bytes;
  requests_.push_back(std::move(request));
}

std::string SimulatedClient::send(std::size_t bytes) {
  std::string piece = unsent_.substr(0, bytes);
  unsent_.erase(0, piece.size());
  sent_ += piece.size();
  client_->send(piece);
  deliver();
  return piece;
}

void SimulatedClient::deliver() {
  client_->deliver();
  if (state_ != State::read) return;
  arrived_ = sent_;
  if (!hasRequest()) hasEndArrived_ = hasEnded_;
  proceed();
}

void SimulatedClient::endSending() {
  unsent_.clear();
  cutRequests();
  hasEnded_ = true;
  client_->endSending();
  deliver();
}

// Leaves out the requests that were not sent. A request that was sent in part is an unfinished
// line.
void SimulatedClient::cutRequests() {
  std::size_t left = sent_;
  for (std::size_t at = 0; at < requests_.size(); ++at) {
    SimulatedRequest& request = requests_[at];
    if (left >= request.bytes.size()) {
      left -= request.bytes.size();
      continue;
    }
    const std::size_t whole = left == 0 ? at : at + 1;
    if (left > 0 && left <= RequestLines::longest) {
      request.bytes.resize(left);
      request.kind = UnfinishedLine{};
      request.asJson = false;
    }
    requests_.resize(whole);
    return;
  }
}

void SimulatedClient::breakConnection() {
  client_->fail();
  lose();
}

void SimulatedClient::take(std::size_t bytes) {
  client_->take(bytes);
  quiet_ = milliseconds(0);
  if (client_->waiting() == 0) proceed();
}

bool SimulatedClient::hasRequest() const {
  if (requests_.empty()) return false;
  const SimulatedRequest& next = requests_.front();
  if (std::holds_alternative<TooLongLine>(next.kind)) return arrived_ > RequestLines::longest;
  if (std::holds_alternative<UnfinishedLine>(next.kind)) return hasEndArrived_;
  return arrived_ >= next.bytes.size();
}

void SimulatedClient::proceed() {
  if (hasRequest()) {
    state_ = State::waitsForTurn;
    turns_.push_back(this);
  } else if (hasEndArrived_) {
    state_ = State::closed;
  } else {
    state_ = State::read;
  }
}

// The connection is lost with all that is on its way.
void SimulatedClient::lose() {
  state_ = State::closed;
  answers_.clear();
  received_.clear();
}

SimulatedRequest SimulatedClient::beginTurn() {
  SimulatedRequest request = std::move(requests_.front());
  requests_.pop_front();
  sent_ -= std::min(sent_, request.bytes.size());
  arrived_ -= std::min(arrived_, request.bytes.size());
  if (std::holds_alternative<TooLongLine>(request.kind)) {
    requests_.clear();
    hasEnded_ = hasEndArrived_ = true;
  }
  return request;
}

void SimulatedClient::endTurn(const ExpectedAnswer& answer) {
  answers_.push_back(answer);
  if (client_->waiting() == 0) return proceed();
  state_ = State::answerWaits;
  quiet_ = waiting_ = milliseconds(0);
}

void SimulatedClient::passed(milliseconds time) {
  if (state_ != State::answerWaits) return;
  constexpr milliseconds timeout = SimulatedDaemon::clientTimeout;
  quiet_ += time;
  waiting_ += time;
  const bool mayLeave = quiet_ >= timeout || waiting_ >= timeout * Limits::answerTimeouts;
  const bool mustLeave = 2 * quiet_ >= 3 * timeout || waiting_ >= timeout * Limits::answerTimeouts;
  const bool hasLeft = !client_->isConnected();
  if (hasLeft && !mayLeave) wrong_ = "was disconnected although it took its answer in time";
  if (!hasLeft && mustLeave) wrong_ = "is connected although it did not take its answer in time";
  if (hasLeft) lose();
}

std::string SimulatedClient::check() {
  if (client_ == nullptr) return "";
  std::string wrong = std::exchange(wrong_, {});
  if (wrong.empty()) wrong = checkAnswers();
  if (wrong.empty()) wrong = checkState();
  return wrong.empty() ? "" : name_ + ' ' + wrong;
}

std::string SimulatedClient::checkAnswers() {
  received_ += client_->received();
  while (!answers_.empty()) {
    const std::optional<std::size_t> size = sizeOfAnswer(received_, answers_.front().framing);
    if (!size) break;
    const std::string wrong = differenceOf(received_.substr(0, *size), answers_.front());
    if (!wrong.empty()) return "sent a request: " + wrong;
    received_.erase(0, *size);
    answers_.pop_front();
  }
  if (answers_.empty()) {
    return received_.empty() ? ""
                             : "received bytes that answer no request: " + Mox::quoted(received_);
  }
  if (answers_.size() == 1 && client_->waiting() > 0) return "";
  return "has no whole answer to the request " + Mox::quoted(answers_.front().request);
}

std::string SimulatedClient::checkState() const {
  if (client_->isConnected() != isConnected()) {
    return isConnected() ? "was disconnected" : "was not disconnected";
  }
  if (!isConnected()) return "";
  if (client_->isRead() != (state_ == State::read)) {
    return client_->isRead() ? "is read while it has a request" : "is not read";
  }
  return (client_->waiting() > 0) == answerWaits() ? "" : "has an answer that waits unexpectedly";
}

}  // namespace ZelAgent
