#include "agent/commands/offline/TruncatedRing.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "Blinklog/Ring.h"
#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

struct Warning {
  LineStart start;
  std::string text;
};

// Never freed, since messages are sent until the process ends.
const Warning* warning = nullptr;
struct sigaction before {};

// A store to the ring has raised the signal, outside of all library functions. So the handler may
// call any of them.
void printWarning() {
  const std::string line = (warning->start ? warning->start() : "") + warning->text;
  const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
  static_cast<void>(written);  // there is nowhere else to report to
}

void handle(int signal, siginfo_t* info, void* /*context*/) {
  const int error = errno;
  const bool isByProcess = info->si_code <= 0;  // such a signal has no address
  if (!isByProcess && Blinklog::ring().leaveFile(info->si_addr)) {
    printWarning();
    errno = error;
    return;
  }
  // Otherwise the access is repeated, and raises the signal again.
  sigaction(signal, &before, nullptr);
  if (isByProcess) raise(signal);
}

}  // namespace

void surviveTruncationOf(const std::string& file, LineStart start) {
  warning = new Warning{
      std::move(start),
      "warning: " + printable(file, Limits::shownTextBytes) +
          ": was truncated, or its disk failed; the trace is in memory only from now on\n"};
  struct sigaction action {};
  action.sa_sigaction = &handle;
  action.sa_flags = SA_SIGINFO;
  sigemptyset(&action.sa_mask);
  sigaction(SIGBUS, &action, &before);
}

}  // namespace ZelAgent
