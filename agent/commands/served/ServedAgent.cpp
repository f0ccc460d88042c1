#include "agent/commands/served/ServedAgent.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/events/EventPlayer.h"

namespace ZelAgent {
namespace {

// The first line, and how many follow.
std::string asOneLine(const std::string& errors) {
  const auto others = std::count(errors.begin(), errors.end(), '\n');
  std::string line = errors.substr(0, errors.find('\n'));
  if (others == 0) return line;
  return line + " (" + std::to_string(others) + " more " + (others == 1 ? "line" : "lines") + ')';
}

}  // namespace

ServedAgent::ServedAgent(std::string file, const ChipOptions& chip,
                         std::chrono::milliseconds clientTimeout, Leniency leniency,
                         WallClock clock)
    : agent_(chip), clientTimeout_(clientTimeout), leniency_(leniency), clock_(std::move(clock)) {
  record_.file = std::move(file);
}

std::vector<std::string> ServedAgent::start() {
  return applyFile(ConfigurationSource::start);
}

std::vector<std::string> ServedAgent::reload() {
  const auto refused = [this](const std::string& why) {
    ++record_.reloadsRefused;
    record_.refusal = why;
    record_.refusedAt = clock_();
  };
  try {
    std::vector<std::string> warnings = applyFile(ConfigurationSource::reload);
    ++record_.reloadsApplied;
    record_.refusal.reset();
    return warnings;
  } catch (const ConfigError& error) {
    refused(asOneLine(error.what()));
    throw;
  } catch (const std::exception& error) {
    refused("the reload failed: " + printable(error.what(), Limits::shownTextBytes) +
            "; the file may be applied in part");
    throw;
  }
}

EventEffects ServedAgent::play(const Event& event) {
  EventEffects effects = EventPlayer(agent_, {}, leniency_).play(event);
  if (const auto* const config = std::get_if<ApplyConfig>(&event)) {
    recordInForce(config->file, ConfigurationSource::event);
  }
  notifyObserver();
  return effects;
}

ChangeableLimits ServedAgent::limits() noexcept {
  return {agent_.chip().capacity(), agent_.acl().capacity(), clientTimeout_};
}

std::vector<std::string> ServedAgent::applyFile(ConfigurationSource source) {
  ReadConfiguration read = readOpenConfigFile(record_.file, leniency_);
  agent_.apply(read.configuration);
  recordInForce(record_.file, source);
  notifyObserver();
  return std::move(read.warnings);
}

void ServedAgent::recordInForce(const std::string& file, ConfigurationSource source) {
  record_.inForce = file;
  record_.source = source;
  record_.appliedAt = clock_();
}

void ServedAgent::notifyObserver() const {
  if (changeObserver_) changeObserver_();
}

}  // namespace ZelAgent
