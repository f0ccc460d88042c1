#pragma once

#include <chrono>
#include <cstddef>

#include "agent/language/Limits.h"

namespace ZelAgent {

/// The limits of a daemon for its clients.
struct ServerLimits {
  /// Clients that are connected at the same time.
  std::size_t clients = Limits::clients;
  /// The longest answer, in bytes. At most one answer waits for each client.
  std::size_t unsentBytes = Limits::answerBytes;
  /// How long a client may read nothing of an answer that waits, in milliseconds. 0 is without a
  /// limit. Other values are at least 2 ms.
  std::chrono::milliseconds clientTimeout = Limits::clientTimeout;
  /// The time in which a client must read a whole answer, as a multiple of `clientTimeout`. At
  /// least 1.
  unsigned answerTimeouts = Limits::answerTimeouts;
  /// The answers that wait for all clients together, in bytes; see `AnswerRoom`. A value below
  /// `unsentBytes` means `unsentBytes`.
  std::size_t totalUnsentBytes = Limits::waitingAnswersBytes;
};

}  // namespace ZelAgent
