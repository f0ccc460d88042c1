// Configurations and events at random, as plain values, dense enough that rules, prefixes, ids and
// fallbacks meet each other often.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/model/events/Event.h"

namespace ZelAgent {

class RandomChoices final {
 public:
  explicit RandomChoices(std::uint32_t seed) : random_(seed) {}

  [[nodiscard]] unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }
  // True in so many of a hundred cases.
  [[nodiscard]] bool percent(unsigned share) { return below(100) < share; }
  template <class Value>
  [[nodiscard]] const Value& oneOf(const std::vector<Value>& values) {
    return values[below(static_cast<unsigned>(values.size()))];
  }
  template <class Value>
  void shuffle(std::vector<Value>& values) {
    for (std::size_t left = values.size(); left > 1; --left)
      std::swap(values[left - 1], values[below(static_cast<unsigned>(left))]);
  }

 private:
  std::mt19937 random_;
};

struct RandomWorld {
  Configuration configuration;
  std::vector<Event> events;
  std::uint32_t chipCapacity = 1024;
};

[[nodiscard]] RandomWorld makeWorld(RandomChoices& choices);

// Interfaces by which packets come in: with policies and without, with VRFs of their own, unknown.
[[nodiscard]] const std::vector<std::string>& ingressInterfaces();

// Out of few, so that prefixes cover them and they meet again.
[[nodiscard]] IpAddress randomAddress(RandomChoices& choices, IpFamily family);
[[nodiscard]] std::uint8_t randomProtocol(RandomChoices& choices);
[[nodiscard]] std::uint8_t randomDscp(RandomChoices& choices);

// As operators write them.
[[nodiscard]] std::string openConfigOf(const Configuration& configuration);
[[nodiscard]] std::string eventLinesOf(const std::vector<Event>& events);

}  // namespace ZelAgent
