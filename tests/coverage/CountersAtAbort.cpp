// Counters of coverage are written when a process exits, and a death test's process aborts. With
// this in a program or a shared library, what leads to an abort is counted as well.

#include <csignal>

extern "C" void __gcov_dump();

namespace {

using Handler = void (*)(int);

void writeCounters(int signal);

const Handler handlerBefore = std::signal(SIGABRT, writeCounters);

// The handler of another one, or the end of the process, follows when this one has returned.
void writeCounters(int signal) {
  __gcov_dump();
  std::signal(signal, handlerBefore);
  std::raise(signal);
}

}  // namespace
