#include "agent/serve/daemon/Daemon.h"

#include <csignal>
#include <exception>
#include <ostream>
#include <stdexcept>

#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"
#include "agent/serve/daemon/EventLoop.h"
#include "agent/serve/daemon/ListeningSocket.h"

namespace ZelAgent {

Daemon::Daemon(const DaemonOptions& options, std::ostream& out, std::ostream& err)
    : options_(options),
      out_(out),
      err_(err),
      served_(options.configuration, options.chipCapacity) {}

Daemon::~Daemon() {
  served_.agent().removeAll();
}

ExitStatus Daemon::serve() {
  std::signal(SIGPIPE, SIG_IGN);
  const auto end = [this] { loop_.stop(); };
  const SignalWatch onTerminate(loop_, SIGTERM, end);
  const SignalWatch onInterrupt(loop_, SIGINT, end);
  const SignalWatch onHangUp(loop_, SIGHUP, [this] { reload(); });
  warn(served_.start());
  ListeningSocket socket(options_.socket);
  const ControlServer server(loop_, socket, served_, options_.limits);
  if (!announce()) return ExitStatus::failure;
  loop_.run();
  return ExitStatus::success;
}

void Daemon::reload() {
  try {
    warn(served_.reload());
    printLine(printable(options_.configuration, 1000) + " applied");
  } catch (const ConfigError& error) {
    printLine(std::string("error: ") + error.what() + "; the configuration in force is unchanged");
  } catch (const std::exception& error) {
    printLine("error: the reload failed: " + printable(error.what(), 1000));
  }
}

void Daemon::printLine(const std::string& line) {
  err_ << line << std::endl;
  err_.clear();
}

void Daemon::warn(const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings)
    printLine("warning: " + warning);
}

bool Daemon::announce() {
  out_ << "serving on " << printable(options_.socket, 1000) << std::endl;
  if (out_) return true;
  printLine("error: standard output cannot be written");
  return false;
}

ExitStatus serve(const DaemonOptions& options, std::ostream& out, std::ostream& err) {
  try {
    return Daemon(options, out, err).serve();
  } catch (const ConfigError& error) {
    return reportError(err, error.what());
  } catch (const std::runtime_error& error) {
    return reportError(err, error.what(), ExitStatus::failure);
  }
}

}  // namespace ZelAgent
