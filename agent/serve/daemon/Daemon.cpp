#include "agent/serve/daemon/Daemon.h"

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
#include "agent/serve/daemon/CoalescedCall.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"
#include "agent/serve/daemon/PipeListener.h"
#include "agent/serve/daemon/RecoveryTimer.h"
#include "agent/serve/daemon/ReloadReport.h"
#include "agent/serve/daemon/SignalWatch.h"
#include "agent/serve/daemon/Stream.h"

namespace ZelAgent {
namespace {

// Prints a line on a stream that may be closed.
void printLine(std::ostream& err, std::string_view line) {
  err << line << std::endl;
  err.clear();
}

// Prints the text trace on a stream during its lifetime.
class TraceOn final {
 public:
  explicit TraceOn(std::ostream& err)
      : before_(Mox::traceSinkIs([&err](std::string_view line) { printLine(err, line); })) {}
  TraceOn(const TraceOn&) = delete;
  TraceOn& operator=(const TraceOn&) = delete;
  ~TraceOn() { Mox::traceSinkIs(std::move(before_)); }

 private:
  Mox::TraceSink before_;
};

}  // namespace

Daemon::Daemon(const DaemonOptions& options, std::ostream& out, std::ostream& err)
    : options_(options),
      out_(out),
      err_(err),
      served_(options.configuration, options.chip, options.limits.clientTimeout, options.leniency) {}

Daemon::~Daemon() {
  served_.agent().removeAll();
}

ExitStatus Daemon::serve() {
  std::signal(SIGPIPE, SIG_IGN);
  const auto end = [this] { loop_.stop(); };
  const SignalWatch onTerminate(loop_, SIGTERM, end);
  const SignalWatch onInterrupt(loop_, SIGINT, end);
  CoalescedCall reloads(loop_, [this] { reload(); });
  const SignalWatch onHangUp(loop_, SIGHUP, [&reloads] { reloads.request(); });
  const RecoveryTimer recovery(loop_, served_);
  printLines(warningLines(served_.start()));
  ListeningSocket socket(options_.socket);
  ControlServer server(loop_, served_, options_.limits);
  const PipeListener listener(loop_, socket, [&server](std::unique_ptr<Stream> client) {
    server.accept(std::move(client));
  });
  if (!announce()) return ExitStatus::failure;
  loop_.run();
  return ExitStatus::success;
}

void Daemon::reload() {
  printLines(reportReload(options_.configuration, [this] { return served_.reload(); }));
}

void Daemon::printLines(const std::vector<std::string>& lines) {
  for (const std::string& line : lines)
    printLine(err_, line);
}

bool Daemon::announce() {
  out_ << "serving on " << printable(options_.socket, Limits::shownTextBytes) << std::endl;
  if (out_) return true;
  printLines({"error: standard output cannot be written"});
  return false;
}

ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err) {
  const TraceOn traceOn(err);
  try {
    return Daemon(options, out, err).serve();
  } catch (const std::bad_alloc&) {
    Duolog::outOfMemory();
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  } catch (const std::runtime_error& error) {
    return reportError(err, error.what(), ExitStatus::failure);
  }
}

}  // namespace ZelAgent
