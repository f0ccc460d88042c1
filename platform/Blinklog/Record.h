#pragma once

#include <cstdint>
#include <string>

#include "Blinklog/Site.h"

namespace Blinklog {

/// One message of a ring, as a dump returns it.
struct Record {
  std::uint64_t sequence;
  const Site* site;
  /// The fragments of the site, with the arguments inserted.
  std::string text;
};

}  // namespace Blinklog
