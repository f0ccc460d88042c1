// Interrupts the system calls of a thread with signals, when it waits in one.
#pragma once

#include <pthread.h>
#include <sys/types.h>

namespace ZelAgent {

// The thread that creates this. It handles SIGUSR1 while this exists, and the system does not
// restart the calls that the signal interrupts.
class SignalledThread final {
 public:
  SignalledThread();
  SignalledThread(const SignalledThread&) = delete;
  SignalledThread& operator=(const SignalledThread&) = delete;
  ~SignalledThread();

  // These are for another thread.
  // Waits until the thread waits in a system call.
  void waitUntilItWaits() const;
  // Interrupts the system call in which the thread waits.
  void interrupt() const;

 private:
  pthread_t thread_;
  pid_t id_;
};

}  // namespace ZelAgent
