#include "agent/serve/daemon/Daemon.h"

#include <unistd.h>

#include <csignal>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "Duolog/OutOfMemory.h"
#include "Mox/TraceHandle.h"
#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Progress.h"
#include "agent/model/forwarding/ApplyProgress.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"
#include "agent/serve/daemon/PipeListener.h"
#include "agent/serve/daemon/ProgrammingLog.h"
#include "agent/serve/daemon/RecoveryTimer.h"
#include "agent/serve/daemon/ReloadReport.h"
#include "agent/serve/daemon/RequestedReloads.h"
#include "agent/serve/daemon/SignalWatch.h"
#include "agent/serve/daemon/Stream.h"

namespace ZelAgent {
namespace {

// Prints the text trace in the log during its lifetime.
class TraceOn final {
 public:
  explicit TraceOn(DaemonLog& log)
      : before_(Mox::traceSinkIs(
            [&log](std::string_view line) { log.print(LogPriority::debug, line); })) {}
  TraceOn(const TraceOn&) = delete;
  TraceOn& operator=(const TraceOn&) = delete;
  ~TraceOn() { Mox::traceSinkIs(std::move(before_)); }

 private:
  Mox::TraceSink before_;
};

ExitStatus end(DaemonLog& log, std::string_view why, ExitStatus status) {
  log.print("error: " + std::string(why));
  return status;
}

}  // namespace

Daemon::Daemon(const DaemonOptions& options, std::ostream& out, DaemonLog& log)
    : options_(options),
      out_(out),
      log_(log),
      served_(options.configuration, options.chip, options.limits.clientTimeout, options.leniency) {
}

Daemon::~Daemon() {
  served_.agent().removeAll();
}

ExitStatus Daemon::serve() {
  std::signal(SIGPIPE, SIG_IGN);
  const auto end = [this] { loop_.stop(); };
  const SignalWatch onTerminate(loop_, SIGTERM, end);
  const SignalWatch onInterrupt(loop_, SIGINT, end);
  RequestedReloads reloads(loop_, served_, [this](const auto& lines) { printLines(lines); });
  const SignalWatch onHangUp(loop_, SIGHUP, [&reloads] { reloads.request(); });
  const ProgrammingLog programming(
      loop_, served_.agent(),
      [this](LogPriority priority, const std::string& line) { log_.print(priority, line); });
  const RecoveryTimer recovery(loop_, served_);
  printLines(warningLines(start()));
  ListeningSocket socket(options_.socket);
  ControlServer server(loop_, served_, options_.limits);
  const PipeListener listener(loop_, socket, [&server](std::unique_ptr<Stream> client) {
    server.accept(std::move(client));
  });
  if (!announce()) return ExitStatus::failure;
  loop_.run();
  return ExitStatus::success;
}

std::vector<std::string> Daemon::start() {
  Progress progress(Progress::terminal(STDERR_FILENO));
  const ApplyProgress shown(served_.agent(), progress, options_.configuration, 0);
  return served_.start();
}

void Daemon::printLines(const std::vector<std::string>& lines) {
  for (const std::string& line : lines)
    log_.print(line);
}

bool Daemon::announce() {
  out_ << "serving on " << printable(options_.socket, Limits::shownTextBytes) << std::endl;
  if (out_) return true;
  printLines({"error: standard output cannot be written"});
  return false;
}

ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err) {
  DaemonLog log(err, logFormOf(STDERR_FILENO));
  const TraceOn traceOn(log);
  try {
    return Daemon(options, out, log).serve();
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  } catch (const ConfigError& error) {
    return end(log, error.what(), ExitStatus::badInput);
  } catch (const std::runtime_error& error) {
    return end(log, error.what(), ExitStatus::failure);
  }
}

}  // namespace ZelAgent
