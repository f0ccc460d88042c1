// Captures at random, of several interfaces at once.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/agent/CaptureFile.h"
#include "tests/agent/features/RandomWorld.h"

namespace ZelAgent {

struct RandomArrival {
  std::string interface;
  CaptureFrame frame;
  std::optional<PacketBytes> packet;  // none where the frame carries no IP
};

struct RandomCapture {
  std::string interface;
  CaptureLink link = CaptureLink::ethernet;
  std::vector<RandomArrival> arrivals;
};

// Times within a capture mostly go up; some are those of other captures, too.
[[nodiscard]] std::vector<RandomCapture> randomCaptures(RandomChoices& choices);

// The frames of all in the order in which they are to be taken: always the earliest of those that
// are first in what is left of their captures, and of several the one of the first capture.
[[nodiscard]] std::vector<RandomArrival> inOrderOfTimes(std::vector<RandomCapture> captures);

}  // namespace ZelAgent
