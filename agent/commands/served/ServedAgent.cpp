#include "agent/commands/served/ServedAgent.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "Duolog/OutOfMemory.h"
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

const EventEffects& effectsOf(const SlicedChange& change) {
  if (change.failure) std::rethrow_exception(change.failure);
  return change.effects;
}

struct ServedAgent::ChangeInProgress {
  ChangeInProgress(ForwardingAgent& agent, ConfigurationSource from, std::string path,
                   std::shared_ptr<SlicedChange> of)
      : source(from), file(std::move(path)), result(std::move(of)), recorder(agent) {}

  ConfigurationSource source;
  std::string file;
  std::shared_ptr<SlicedChange> result;
  EffectsRecorder recorder;
};

ServedAgent::ServedAgent(std::string file, const ChipOptions& chip,
                         std::chrono::milliseconds clientTimeout, Leniency leniency,
                         WallClock clock)
    : agent_(chip), clientTimeout_(clientTimeout), leniency_(leniency), clock_(std::move(clock)) {
  record_.file = std::move(file);
}

ServedAgent::~ServedAgent() = default;

std::vector<std::string> ServedAgent::start() {
  ReadConfiguration read = readOpenConfigFile(record_.file, leniency_);
  agent_.apply(std::move(read.configuration));
  recordInForce(record_.file, ConfigurationSource::start);
  notifyObserver();
  return std::move(read.warnings);
}

SlicedChangePtr ServedAgent::beginReload() {
  return begin(ConfigurationSource::reload, record_.file);
}

SlicedChangePtr ServedAgent::beginFile(const std::string& file) {
  return begin(ConfigurationSource::event, file);
}

EventEffects ServedAgent::reload() {
  return effectsOf(makeAll(beginReload()));
}

const SlicedChange& ServedAgent::makeAll(const SlicedChangePtr& change) {
  while (!change->isComplete)
    makeSlice();
  return *change;
}

SlicedChangePtr ServedAgent::begin(ConfigurationSource source, const std::string& file) {
  const auto result = std::make_shared<SlicedChange>();
  change_ = std::make_unique<ChangeInProgress>(agent_, source, file, result);
  makePart([this] {
    ReadConfiguration read = readFile();
    change_->result->effects.warnings = std::move(read.warnings);
    agent_.begin(std::move(read.configuration));
  });
  if (isChanging()) makeSlice();
  while (isChanging() && !sliceObserver_)
    makeSlice();
  if (isChanging()) sliceObserver_();
  return result;
}

ReadConfiguration ServedAgent::readFile() const {
  try {
    return readOpenConfigFile(change_->file, leniency_);
  } catch (const ConfigError& error) {
    if (change_->source != ConfigurationSource::event) throw;
    throw EventError(std::string("config FILE: ") + error.what());
  }
}

void ServedAgent::makeSlice() {
  makePart([this] {
    makeSteps();
    if (!agent_.isChanging()) complete();
  });
}

void ServedAgent::makeSteps() {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + sliceTime_;
  do {
    agent_.step();
  } while (agent_.isChanging() && Clock::now() < end);
}

// A failure ends the change.
template <class Make>
void ServedAgent::makePart(Make make) {
  try {
    make();
  } catch (const ConfigError& error) {
    fail(asOneLine(error.what()));
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  } catch (const std::exception& error) {
    fail("the reload failed: " + printable(error.what(), Limits::shownTextBytes) +
         "; the file may be applied in part");
  }
}

void ServedAgent::complete() {
  recordInForce(change_->file, change_->source);
  notifyObserver();
  if (change_->source == ConfigurationSource::reload) {
    ++record_.reloadsApplied;
    record_.refusal.reset();
  }
  end();
}

// Called while the failure is handled.
void ServedAgent::fail(std::string refusal) {
  if (change_->source == ConfigurationSource::reload) {
    ++record_.reloadsRefused;
    record_.refusal = std::move(refusal);
    record_.refusedAt = clock_();
  }
  change_->result->failure = std::current_exception();
  end();
}

void ServedAgent::end() {
  const auto change = std::exchange(change_, nullptr);
  EventEffects effects = change->recorder.take();
  effects.warnings = std::move(change->result->effects.warnings);
  change->result->effects = std::move(effects);
  change->result->isComplete = true;
}

EventEffects ServedAgent::play(const Event& event) {
  if (const auto* const config = std::get_if<ApplyConfig>(&event)) {
    return effectsOf(makeAll(beginFile(config->file)));
  }
  EventEffects effects = EventPlayer(agent_, {}, leniency_).play(event);
  notifyObserver();
  return effects;
}

ChangeableLimits ServedAgent::limits() noexcept {
  return {agent_.chip().capacity(), agent_.acl().capacity(), clientTimeout_};
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
