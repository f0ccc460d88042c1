#pragma once

#include <cstdint>
#include <string>

#include "Blinklog/Site.h"

namespace Blinklog {

/// One message of a ring, as a dump returns it.
struct Record {
  std::uint64_t sequence;
  /// The wall-clock time of the message, in nanoseconds since 1970. It never decreases from one
  /// message to the next.
  std::uint64_t time;
  const Site* site;
  /// The fragments of the site, with the arguments inserted.
  std::string text;
};

}  // namespace Blinklog
