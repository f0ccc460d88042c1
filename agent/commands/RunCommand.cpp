#include "agent/commands/RunCommand.h"

#include <optional>
#include <ostream>

#include "agent/ForwardingAgent.h"
#include "agent/config/ConfigError.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/config/PrintableText.h"
#include "agent/render/JsonReport.h"
#include "agent/render/TextReport.h"

namespace ZelAgent {
namespace {

class Run final {
 public:
  Run(const RunOptions& options, std::ostream& out, std::ostream& err)
      : options_(options), out_(out), err_(err), agent_(options.chipCapacity) {}

  [[nodiscard]] ExitStatus runAll() {
    for (const std::string& file : options_.configurations) {
      if (!applyFile(file)) break;
    }
    agent_.removeAll();
    report(std::nullopt);
    if (!out_.flush()) {
      err_ << "error: standard output cannot be written\n";
      raiseStatus(ExitStatus::failure);
    }
    return status_;
  }

 private:
  bool applyFile(const std::string& file) {
    try {
      const ReadConfiguration read = readOpenConfigFile(file);
      out_.flush();
      for (const std::string& warning : read.warnings)
        err_ << "warning: " << warning << '\n';
      agent_.apply(read.configuration);
      report(file);
      return true;
    } catch (const ConfigError& error) {
      out_.flush();
      err_ << "error: " << error.what() << '\n';
      raiseStatus(ExitStatus::badInput);
      return false;
    }
  }

  void report(const std::optional<std::string>& file) {
    const AgentState state = agent_.state();
    if (options_.json) {
      writeJsonReport(out_, file, state);
    } else {
      writeTextReport(out_, file ? printable(*file, 1000) + " applied" : "all removed", state);
    }
    if (options_.strict && hasFailedAction(state)) raiseStatus(ExitStatus::failure);
  }

  void raiseStatus(ExitStatus status) {
    if (status_ < status) status_ = status;
  }

  const RunOptions& options_;
  std::ostream& out_;
  std::ostream& err_;
  ForwardingAgent agent_;
  ExitStatus status_ = ExitStatus::success;
};

}  // namespace

ExitStatus runConfigurations(const RunOptions& options, std::ostream& out, std::ostream& err) {
  return Run(options, out, err).runAll();
}

}  // namespace ZelAgent
