// Fuzzes the event reader and the event player. The input is an event file.
//
// The reader refuses a line by one printable line that begins with its place, or returns an event
// whose text is read as an equal event. The events are played on an agent with a configuration, up
// to the first refused line. An event that cannot be played is refused in the same way and changes
// nothing. After each event `checkAgent` holds.

#include <string>
#include <variant>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/model/events/Event.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "fuzz/AgentChecks.h"
#include "fuzz/Must.h"

namespace {

using Fuzz::must;
using namespace ZelAgent;  // NOLINT(google-build-using-namespace): all checked names are in it

constexpr const char* fileName = "FILE";
constexpr std::uint32_t smallChip = 4;

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
  Player() { agent_.apply(startingConfiguration()); }

  void play(const Event& event) {
    must(readEvent(toText(event)) == event, "the text of an event is read as the same event");
    const auto before = agent_.statuses();
    try {
      static_cast<void>(player_.play(withReadableConfiguration(event)));
    } catch (const EventError&) {
      must(agent_.statuses() == before, "an event that is refused changes nothing");
      throw;
    }
    Fuzz::checkAgent(agent_, agent_.chip());
  }

 private:
  ForwardingAgent agent_{smallChip};
  EventPlayer player_{agent_, {}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Player player;
  try {
    forEachEvent(std::string(data, data + size), fileName,
                 [&](const EventPlace& /*place*/, const Event& event) { player.play(event); });
  } catch (const EventError& error) {
    Fuzz::checkError(error.what(), std::string(fileName) + ":");
  }
  return 0;
}
