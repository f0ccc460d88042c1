#include "tests/agent/features/RandomCaptures.h"

#include <tuple>

#include "tests/agent/features/RandomPackets.h"

namespace ZelAgent {
namespace {

constexpr unsigned framesOfACapture = 60;
constexpr std::size_t smallestFrame = 60;

PacketBytes vlanTags(RandomChoices& choices) {
  PacketBytes tags;
  while (choices.percent(25)) {
    append(tags, choices.percent(50) ? PacketBytes{0x81, 0x00} : PacketBytes{0x88, 0xa8});
    append(tags, {static_cast<std::uint8_t>(choices.below(256)),
                  static_cast<std::uint8_t>(choices.below(256))});
  }
  return tags;
}

// Frames are padded to their least length, as they are on a wire.
RandomArrival ethernetArrival(RandomChoices& choices) {
  const PacketBytes addresses{0x02, 0, 0, 0, 0, 1, 0x02, 0, 0, 0, 0, 2};
  RandomArrival arrival;
  PacketBytes& frame = arrival.frame.bytes;
  frame = addresses;
  append(frame, vlanTags(choices));
  if (choices.percent(6)) {
    append(frame, {0x08, 0x06, 0, 1, 0x08, 0, 6, 4, 0, 1});
    frame.resize(smallestFrame);
    return arrival;
  }
  PacketBytes packet;
  while (packet.empty())
    packet = randomPacket(choices);
  append(frame, packet[0] / 16 == 6 ? PacketBytes{0x86, 0xdd} : PacketBytes{0x08, 0x00});
  append(frame, packet);
  while (frame.size() < smallestFrame && choices.percent(95)) {
    frame.push_back(0);
    packet.push_back(0);
  }
  arrival.packet = packet;
  return arrival;
}

RandomArrival rawArrival(RandomChoices& choices) {
  RandomArrival arrival;
  while (arrival.frame.bytes.empty())
    arrival.frame.bytes = randomPacket(choices);
  arrival.packet = arrival.frame.bytes;
  return arrival;
}

RandomCapture randomCapture(RandomChoices& choices, const std::string& interface) {
  RandomCapture capture{interface, CaptureLink::ethernet, {}};
  if (choices.percent(40)) capture.link = CaptureLink::rawIp;
  std::int64_t time = 1000;
  for (unsigned count = 0; count < framesOfACapture; ++count) {
    const bool isEthernet = capture.link == CaptureLink::ethernet;
    RandomArrival arrival = isEthernet ? ethernetArrival(choices) : rawArrival(choices);
    arrival.interface = interface;
    time += choices.below(3);
    if (choices.percent(5)) time -= 2;
    arrival.frame.seconds = 1'700'000'000 + time / 10;
    arrival.frame.nanoseconds = time % 10;
    capture.arrivals.push_back(arrival);
  }
  return capture;
}

bool isEarlier(const CaptureFrame& a, const CaptureFrame& b) {
  return std::tie(a.seconds, a.nanoseconds) < std::tie(b.seconds, b.nanoseconds);
}

}  // namespace

std::vector<RandomCapture> randomCaptures(RandomChoices& choices) {
  std::vector<RandomCapture> captures;
  for (const std::string& interface : ingressInterfaces())
    captures.push_back(randomCapture(choices, interface));
  return captures;
}

std::vector<RandomArrival> inOrderOfTimes(std::vector<RandomCapture> captures) {
  std::vector<RandomArrival> ordered;
  while (true) {
    RandomCapture* next = nullptr;
    for (RandomCapture& capture : captures) {
      if (capture.arrivals.empty()) continue;
      if (next == nullptr ||
          isEarlier(capture.arrivals.front().frame, next->arrivals.front().frame)) {
        next = &capture;
      }
    }
    if (next == nullptr) return ordered;
    ordered.push_back(next->arrivals.front());
    next->arrivals.erase(next->arrivals.begin());
  }
}

}  // namespace ZelAgent
