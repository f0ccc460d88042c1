// Fuzzes the event reader and the event player. The input is an event file.
//
// The reader refuses a line by one printable line that begins with its place, or returns an event
// whose text is read as an equal event. The events are played on an agent with a configuration, up
// to the first refused line. An event that cannot be played is refused in the same way and changes
// nothing. After each event `checkAgent` holds. At the end of one input in eight the agent is as a
// fresh one with the facts that are kept: at once without its resources, and wholly after the
// faults are over and `retry`.

#include <cstdint>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <variant>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/model/events/Event.h"
#include "agent/model/events/EventReader.h"
#include "fuzz/AgentChecks.h"
#include "fuzz/Must.h"

namespace {

using Fuzz::must;
using namespace ZelAgent;  // NOLINT(google-build-using-namespace): all checked names are in it

constexpr const char* fileName = "FILE";
constexpr std::uint32_t smallChip = 4;
constexpr std::uint32_t roomyChip = 10000;

const Configuration& startingConfiguration() {
  static const Configuration read =
      readOpenConfigFile(ZEL_EXAMPLES_DIR "/decap.json").configuration;
  return read;
}

// The event, with a configuration that a fuzzer may read in place of the one that it names.
Event withReadableConfiguration(Event event) {
  if (auto* const config = std::get_if<ApplyConfig>(&event)) {
    config->file = Fuzz::configurationFor(config->file);
  }
  return event;
}

class Player final {
 public:
  Player() {
    served_.agent().apply(startingConfiguration());
    facts_.configurationIs(startingConfiguration());
  }

  void play(const Event& event) {
    must(readEvent(toText(event)) == event, "the text of an event is read as the same event");
    const auto before = served_.agent().statuses();
    const Event readable = withReadableConfiguration(event);
    try {
      static_cast<void>(served_.play(readable));
    } catch (const EventError&) {
      must(served_.agent().statuses() == before, "an event that is refused changes nothing");
      must(isMissingFile(readable) || !facts_.take(readable), "a right event is not refused");
      throw;
    }
    take(readable);
    Fuzz::checkAgent(served_.agent(), served_.agent().chip());
  }

  void end() {
    play(SetChipRules{Limits::chipRules});  // programs rules that were refused
    Fuzz::checkAsFresh(served_, facts_, Scope::rules);
    for (const std::optional<std::string>& vrf : vrfsWithFaults_)
      play(PlanChipFaults{vrf, 0});
    play(SetChipCapacity{roomyChip});
    play(Retry{});
    Fuzz::checkAsFresh(served_, facts_, Scope::everything);
  }

 private:
  static bool isMissingFile(const Event& event) {
    return std::holds_alternative<ApplyConfig>(event);
  }

  void take(const Event& event) {
    must(facts_.take(event), "a wrong event is refused");
    if (const auto* const config = std::get_if<ApplyConfig>(&event)) {
      facts_.configurationIs(readOpenConfigFile(config->file).configuration);
    }
    if (const auto* const plan = std::get_if<PlanChipFaults>(&event)) {
      vrfsWithFaults_.insert(plan->vrf);
    }
  }

  ServedAgent served_{fileName, smallChip};
  KeptFacts facts_{smallChip};
  std::set<std::optional<std::string>> vrfsWithFaults_;
};

// The comparison costs more than most inputs. The choice depends on the input alone.
bool isOneInEight(const std::uint8_t* data, std::size_t size) {
  return std::accumulate(data, data + size, 0U) % 8 == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Player player;
  try {
    forEachEvent(std::string(data, data + size), fileName,
                 [&](const EventPlace& /*place*/, const Event& event) { player.play(event); });
  } catch (const EventError& error) {
    Fuzz::checkError(error.what(), std::string(fileName) + ":");
  }
  if (isOneInEight(data, size)) player.end();
  return 0;
}
