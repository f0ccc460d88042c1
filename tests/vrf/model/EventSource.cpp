#include "EventSource.h"

#include <numeric>

namespace VrfModel {
namespace {

// The relative frequency of each kind, in the order of the kinds.
constexpr std::array<unsigned, kinds> weights{
    70, 60, 30, 20, 1,          // counts
    60, 25, 1,                  // fallbacks
    30, 12, 18, 1,  50,         // VRF statuses
    24, 10, 16, 1,  20, 12, 2,  // prefix lengths
    8,  8,                      // decapsulation
    6,  6,  4,  12, 3,          // the machine as a whole
    2,  2,  2,  3,  6,  1,  1,  // calls
};
constexpr unsigned allWeights = std::accumulate(weights.begin(), weights.end(), 0U);

constexpr unsigned ids = 3;
constexpr unsigned lengths = 4;
constexpr unsigned counts = 4;

bool isOneOf(Kind kind, Kind first, Kind last) {
  return first <= kind && kind <= last;
}

}  // namespace

Event EventSource::next() {
  const auto index = [&](std::size_t limit) {
    return static_cast<std::uint8_t>(choices_.below(static_cast<unsigned>(limit)));
  };
  Event event;
  event.kind = kind();
  event.action = index(cast_.actions.size());
  event.name = index(cast_.names.size());
  event.other = index(cast_.names.size());
  const bool isOfStatuses = isOneOf(event.kind, Kind::statusMake, Kind::statusId);
  event.family = choices_.once(isOfStatuses ? 12 : 3) ? v6 : v4;
  event.set = followed(event);
  if (choices_.once(10)) event.set ^= 1;
  event.retired = choices_.once(8);
  event.on = choices_.once(2);
  event.number = number(event.kind);
  if (event.kind == Kind::machineBuild) event.inputs = inputs();
  remember(event);
  return event;
}

// Ends inactive and zombie states and the absence of a machine early.
Kind EventSource::kind() {
  if (!isThere_ && choices_.once(6)) return Kind::machineBuild;
  if (isInactive_ && choices_.once(8))
    return choices_.once(2) ? Kind::topActive : Kind::machineActive;
  if (isZombie_ && choices_.once(8)) return Kind::machineZombie;
  unsigned drawn = choices_.below(allWeights);
  std::size_t kind = 0;
  while (drawn >= weights[kind])
    drawn -= weights[kind++];
  return static_cast<Kind>(kind);
}

Inputs EventSource::inputs() {
  const auto set = [&] { return static_cast<std::uint8_t>(choices_.below(sets)); };
  Inputs inputs = inputs_;
  if (choices_.once(2)) inputs.routes = set();
  if (choices_.once(2)) inputs.routes6 = set();
  if (choices_.once(4)) inputs.fallback = set();
  if (choices_.once(12)) inputs.routes = noSet;
  if (choices_.once(12)) inputs.routes6 = noSet;
  inputs.withCounts = !choices_.once(12);
  return inputs;
}

std::uint32_t EventSource::number(Kind kind) {
  switch (kind) {
    case Kind::countRaise:
    case Kind::countLower:
      return choices_.once(16) ? choices_.below(3) : 1;
    case Kind::countSet:
      return choices_.once(40) ? 0xffffffff : choices_.below(counts);
    case Kind::lenAdd:
    case Kind::lenDelete:
      return choices_.below(lengths) * 8;
    default:
      return choices_.below(ids);
  }
}

std::uint8_t EventSource::followed(const Event& event) const {
  if (isOneOf(event.kind, Kind::fallbackSet, Kind::fallbackDeleteAll)) return inputs_.fallback;
  const std::uint8_t routes = event.family == v4 ? inputs_.routes : inputs_.routes6;
  return routes == noSet ? 0 : routes;
}

void EventSource::remember(const Event& event) {
  if (event.kind == Kind::topActive || event.kind == Kind::machineActive) isInactive_ = !event.on;
  if (event.kind == Kind::machineZombie) isZombie_ = event.on;
  if (event.kind != Kind::machineBuild && event.kind != Kind::machineDrop) return;
  isThere_ = event.kind == Kind::machineBuild;
  isInactive_ = isZombie_ = false;
  if (isThere_) inputs_ = event.inputs;
}

std::vector<Event> historyOf(const Cast& cast, Choices& choices, std::size_t length) {
  Event build;
  build.kind = Kind::machineBuild;
  std::vector<Event> history{build};
  EventSource source(cast, choices);
  while (history.size() < length)
    history.push_back(source.next());
  return history;
}

}  // namespace VrfModel
