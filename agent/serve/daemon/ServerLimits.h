#pragma once

#include <chrono>
#include <cstddef>

#include "agent/language/Limits.h"

namespace ZelAgent {

/// The limits of a daemon for its clients.
struct ServerLimits {
  /// Clients that are connected at the same time. Default: 256.
  std::size_t clients = Limits::clients;
  /// The longest answer, in bytes. At most one answer waits for each client. Default: 8 MiB.
  std::size_t unsentBytes = Limits::answerBytes;
  /// How long a client may read nothing of an answer that waits, in milliseconds. 0 is without a
  /// limit. Other values are at least 2 ms. Default: 30 s.
  std::chrono::milliseconds clientTimeout = Limits::clientTimeout;
  /// The time in which a client must read a whole answer, as a multiple of `clientTimeout`. At
  /// least 1. Default: 10, which is 5 minutes with the default of `clientTimeout`.
  unsigned answerTimeouts = 10;
  /// The answers that wait for all clients together, in bytes; see `AnswerRoom`. A value below
  /// `unsentBytes` means `unsentBytes`. Default: 64 MiB.
  std::size_t totalUnsentBytes = std::size_t{64} << 20U;
};

}  // namespace ZelAgent
