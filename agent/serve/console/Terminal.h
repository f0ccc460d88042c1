#pragma once

#include <csignal>

#include "agent/serve/console/Pager.h"

namespace ZelAgent {

/// The size of the terminal at the descriptor. Unknown if it is none.
[[nodiscard]] Screen screenOf(int descriptor);

/// Reads one key from the terminal of standard input, without Enter and without an echo. Ctrl-C is
/// a key. Negative at the end of input.
[[nodiscard]] int readKey();

/// While it exists, Ctrl-C does not end the process. It interrupts a wait and is remembered.
class InterruptWatch final {
 public:
  InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  ~InterruptWatch();

  /// Whether Ctrl-C was typed since the last call of `clear`.
  [[nodiscard]] static bool isInterrupted() noexcept;
  static void clear() noexcept;

 private:
  struct sigaction before_ {};
};

}  // namespace ZelAgent
