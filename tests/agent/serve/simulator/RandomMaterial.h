// What happens to a simulated daemon, at random.
#pragma once

#include <deque>

#include "tests/agent/model/fresh/History.h"
#include "tests/agent/serve/simulator/SimulatedRequest.h"

namespace ZelAgent {

// Configurations, events and requests without an end. They come from random histories.
class RandomMaterial final {
 public:
  explicit RandomMaterial(RandomChoices& choices);

  // The first document, which is right.
  [[nodiscard]] const std::string& start() const { return start_; }
  [[nodiscard]] const Probes& probes() const { return probes_; }
  [[nodiscard]] Step nextStep();
  // A request that changes nothing, or a reload, or an event by which the chip refuses something.
  [[nodiscard]] RequestKind request();
  // The request in a random framing.
  [[nodiscard]] SimulatedRequest framed(RequestKind kind);

 private:
  void refill();
  [[nodiscard]] RequestKind fault();
  [[nodiscard]] RequestKind otherCommand();
  [[nodiscard]] RequestKind wrongRequest();

  RandomChoices& choices_;
  std::string start_;
  Probes probes_;
  std::deque<Step> steps_;
  unsigned number_ = 0;  // of the last wrong request
};

}  // namespace ZelAgent
