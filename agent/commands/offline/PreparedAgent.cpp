#include "agent/commands/offline/PreparedAgent.h"

#include <filesystem>
#include <ostream>
#include <vector>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/TextFile.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"

namespace ZelAgent {
namespace {

void warn(std::ostream& err, const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings)
    err << "warning: " << warning << '\n';
}

}  // namespace

std::unique_ptr<ForwardingAgent> prepareAgent(const std::string& configuration,
                                              const std::optional<std::string>& events,
                                              std::ostream& err) {
  const ReadConfiguration read = readOpenConfigFile(configuration);
  warn(err, read.warnings);
  auto agent = std::make_unique<ForwardingAgent>(usualChipCapacity);
  agent->apply(read.configuration);
  if (!events) return agent;
  EventPlayer player(*agent, std::filesystem::path(*events).parent_path());
  forEachEvent(readTextFile(*events, "a readable file of events"), *events,
               [&](const EventPlace& /*place*/, const Event& event) {
                 warn(err, player.play(event).warnings);
               });
  return agent;
}

}  // namespace ZelAgent
