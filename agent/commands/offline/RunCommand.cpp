#include "agent/commands/offline/OfflineCommands.h"

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <ostream>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Progress.h"
#include "agent/language/TextFile.h"
#include "agent/model/events/EventNames.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/forwarding/ApplyProgress.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/EventReport.h"
#include "agent/reports/MissingReport.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

class Run final {
 public:
  Run(const RunOptions& options, std::ostream& out, std::ostream& err)
      : options_(options), out_(out), err_(err), agent_(options.chip) {}

  [[nodiscard]] ExitStatus runAll() {
    try {
      applyAll();
    } catch (const ConfigError& error) {
      reportBadInput(error.what());
    } catch (const EventError& error) {
      reportBadInput(error.what());
    }
    if (options_.strict) reportMissing();
    agent_.removeAll();
    report(std::nullopt);
    raiseStatus(finishOutput(out_, err_));
    return status_;
  }

 private:
  // The event file is read first, so that nothing is applied if it cannot be read.
  void applyAll() {
    const std::string events =
        options_.events ? readTextFile(*options_.events, "a readable event file") : "";
    for (const std::string& file : options_.configurations)
      applyFile(file);
    if (options_.events) playEvents(events, *options_.events);
  }

  void applyFile(const std::string& file) {
    const ReadConfiguration read = readOpenConfigFile(file, options_.leniency, progress_);
    warn(read.warnings);
    {
      const ApplyProgress shown(agent_, progress_, file, rulesOnInterfaces(read.configuration));
      agent_.apply(read.configuration);
    }
    report(file);
  }

  void playEvents(const std::string& events, const std::string& file) {
    EventPlayer player(agent_, std::filesystem::path(file).parent_path(), options_.leniency);
    forEachEvent(events, file, [&](const EventPlace& place, const Event& written) {
      const Event event = checkedEvent(agent_, written);
      const PlayedEvent played{place, event, player.play(event)};
      warn(played.effects.warnings);
      report(played);
    });
  }

  void warn(const std::vector<std::string>& warnings) {
    out_.flush();
    reportWarnings(err_, warnings);
  }

  void reportBadInput(const char* what) {
    out_.flush();
    raiseStatus(reportError(err_, what));
  }

  void report(const std::optional<std::string>& file) {
    const AgentState state = agent_.state(lists());
    if (options_.json) {
      writeJsonReport(out_, file, state);
    } else {
      writeTextReport(out_,
                      file ? printable(*file, Limits::shownTextBytes) + " applied" : "all removed",
                      state);
    }
    checkStrict(state);
  }

  void report(const PlayedEvent& played) {
    const bool needsState =
        options_.json || options_.strict || std::holds_alternative<Show>(played.event);
    const AgentState state = needsState ? agent_.state(lists()) : AgentState();
    if (options_.json) {
      writeJsonReport(out_, played, state);
    } else {
      writeTextReport(out_, played, state);
    }
    checkStrict(state);
  }

  // Only JSON has the users.
  [[nodiscard]] UserLists lists() const { return options_.json ? UserLists::all : UserLists::none; }

  void checkStrict(const AgentState& state) {
    if (options_.strict && !isProgrammed(state)) raiseStatus(ExitStatus::failure);
  }

  void reportMissing() {
    out_.flush();
    writeMissing(err_, agent_.state(UserLists::none), agent_.rules());
  }

  void raiseStatus(ExitStatus status) {
    if (status_ < status) status_ = status;
  }

  const RunOptions& options_;
  std::ostream& out_;
  std::ostream& err_;
  ForwardingAgent agent_;
  Progress progress_{Progress::terminal(STDERR_FILENO)};
  ExitStatus status_ = ExitStatus::success;
};

}  // namespace

ExitStatus runConfigurations(const RunOptions& options, std::ostream& out, std::ostream& err) {
  return Run(options, out, err).runAll();
}

}  // namespace ZelAgent
