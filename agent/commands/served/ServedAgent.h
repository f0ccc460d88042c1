// Why: an agent that runs for long is configured again and again, and its operator asks from what
// file, and whether the last attempt was taken.
// Always: a configuration that is wrong changes nothing but the record of the attempt.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "agent/model/events/Event.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

// Where the configuration in force came from.
enum class ConfigurationSource : std::uint8_t { start, reload, event };

struct ConfigurationRecord {
  std::string file;  // what start and reload read
  std::string inForce;
  ConfigurationSource source = ConfigurationSource::start;
  std::uint64_t reloadsApplied = 0;
  std::uint64_t reloadsRefused = 0;
  std::optional<std::string> refusal;  // of the last reload, where that was refused
};

class ServedAgent final {
 public:
  ServedAgent(std::string file, std::uint32_t chipCapacity);

  // Applies the file for the first time; gives warnings. Throws a ConfigError.
  std::vector<std::string> start();
  // Applies the file as it is now, in place of what is in force. As above.
  std::vector<std::string> reload();
  // Throws an EventError.
  EventEffects play(const Event& event);

  [[nodiscard]] ForwardingAgent& agent() noexcept { return agent_; }
  [[nodiscard]] const ConfigurationRecord& record() const noexcept { return record_; }

 private:
  std::vector<std::string> applyFile(ConfigurationSource source);

  ForwardingAgent agent_;
  ConfigurationRecord record_;
};

}  // namespace ZelAgent
