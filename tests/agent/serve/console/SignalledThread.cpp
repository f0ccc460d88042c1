#include "tests/agent/serve/console/SignalledThread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace ZelAgent {
namespace {

std::atomic<int> handled = 0;

void waitFor(const char* what, const std::function<bool()>& hasHappened) {
  constexpr int mostLooks = 100000;
  for (int looks = 0; looks < mostLooks; ++looks) {
    if (hasHappened()) return;
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  }
  ADD_FAILURE() << "this has not happened: " << what;
}

// The state letter of proc(5) follows the name of the program, which is in brackets.
char stateOf(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t end = line.rfind(") ");
  return end == std::string::npos ? '?' : line[end + 2];
}

}  // namespace

SignalledThread::SignalledThread() : thread_(pthread_self()), id_(gettid()) {
  struct sigaction action {};
  action.sa_handler = [](int) { ++handled; };
  EXPECT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
}

SignalledThread::~SignalledThread() {
  std::signal(SIGUSR1, SIG_DFL);
}

void SignalledThread::waitUntilItWaits() const {
  waitFor("the thread waits", [this] { return stateOf(id_) == 'S'; });
}

void SignalledThread::interrupt() const {
  waitUntilItWaits();
  const int before = handled;
  EXPECT_EQ(pthread_kill(thread_, SIGUSR1), 0);
  waitFor("the signal is handled", [before] { return handled == before + 1; });
}

}  // namespace ZelAgent
