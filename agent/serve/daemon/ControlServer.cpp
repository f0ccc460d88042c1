#include "agent/serve/daemon/ControlServer.h"

#include <algorithm>
#include <string>
#include <utility>

#include "agent/serve/protocol/Answer.h"

namespace ZelAgent {

ControlServer::ControlServer(Scheduler& scheduler, ServedAgent& served, const ServerLimits& limits)
    : scheduler_(scheduler),
      limits_(limits),
      service_(served, limits.unsentBytes),
      room_(std::max(limits.totalUnsentBytes, limits.unsentBytes)),
      turns_(scheduler),
      slices_(scheduler, served) {}

void ControlServer::accept(std::unique_ptr<Stream> stream) {
  if (connections_.size() >= limits_.clients) return refuse(*stream);
  ConnectionOwner& owner = *this;  // converted here: the base is private
  connections_.emplace_back(std::move(stream), scheduler_, service_, room_, owner, limits_);
}

void ControlServer::wantsTurn(Connection& connection) {
  turns_.add(connection);
}

void ControlServer::isDone(Connection& connection) {
  connections_.remove_if([&](const Connection& other) { return &other == &connection; });
}

// The framing of the client is not known yet. Any client can read a line of JSON.
void ControlServer::refuse(Stream& stream) const {
  const Answer tooMany{ExitStatus::failure, std::to_string(limits_.clients) +
                                                " clients are connected, which is the limit; "
                                                "try again later"};
  static_cast<void>(stream.write(toBytes(tooMany, Framing::json)));
}

}  // namespace ZelAgent
